#pragma once

#include <QString>

/**
 * Warnings about what a page asks for. A page chooses their texts and their number, so both are bounded:
 * nothing in them ends a line, and each page has a share of them. All on the Qt thread.
 */
namespace marlune::db {

/** A text of a page, as a message shows it: cut after 80 characters, control characters written out. */
QString shown(const QString& text);

/** Whether a warning may be logged: not when a page is being served that has used up its share. */
bool may_warn();

/** Logs the warning if it may be. */
void warn(const QString& text);

/** One page's share of warnings. */
class WarningShare {
public:
    /** For the next page. */
    void renew() { left_ = whole; }

    /** True while some are left. The last one is followed by a line that says so. */
    bool take();

private:
    static constexpr int whole = 100;

    int left_ = whole;
};

/** While it lives, warnings are for the account of a page. */
class WarningScope {
public:
    explicit WarningScope(WarningShare& share);
    ~WarningScope();
    Q_DISABLE_COPY_MOVE(WarningScope)

private:
    WarningShare* outer_;
};

}  // namespace marlune::db

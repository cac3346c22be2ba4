#pragma once

#include <QString>

/**
 * Warnings about requests of a page. A page chooses their texts and their number, so both are
 * limited: the texts contain no line breaks, and each page has a limited number of warnings. All
 * only on the Qt thread.
 */
namespace marlune::db {

/**
 * Returns a text of a page for a message: at most 80 characters, with control characters escaped.
 */
QString shown(const QString& text);

/**
 * Whether a warning may be logged: not while the library serves a page that has reached its limit.
 */
bool may_warn();

/** Logs the warning if it is allowed. */
void warn(const QString& text);

/** The number of warnings that one page may still cause. */
class WarningShare {
public:
    /** Starts again for the next page. */
    void renew() { left_ = whole; }

    /**
     * Returns true while warnings are left. Instead of the last one, it logs that further ones are
     * not logged.
     */
    bool take();

private:
    static constexpr int whole = 100;

    int left_ = whole;
};

/** While it exists, warnings count for the page. */
class WarningScope {
public:
    explicit WarningScope(WarningShare& share);
    ~WarningScope();
    Q_DISABLE_COPY_MOVE(WarningScope)

private:
    WarningShare* outer_;
};

}  // namespace marlune::db

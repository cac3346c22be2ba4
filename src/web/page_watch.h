#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace marlune {

/**
 * Detects pages that do not respond. It requests a sign of life from the page at intervals; the
 * scene passes the request to the page and the response back. Belongs to a web view.
 */
class PageWatch : public QObject {
    Q_OBJECT
    /** Inactive while there is no page, or while the page waits for the user. */
    Q_PROPERTY(bool active READ is_active WRITE set_active)
    Q_PROPERTY(bool hanging READ is_hanging NOTIFY hangingChanged)

public:
    /** The page counts as hanging after this many requests without a response. */
    static constexpr int PATIENCE = 5;

    explicit PageWatch(QObject* parent,
                       std::chrono::milliseconds interval = std::chrono::seconds(1));

    bool is_active() const { return timer_.isActive(); }
    void set_active(bool active);
    bool is_hanging() const { return hanging_; }

    /** The page has responded, or has been replaced by another one. */
    Q_INVOKABLE void answer();

    /** Ends a page's process by its id, without asking the page. */
    Q_INVOKABLE void end_process(qlonglong id);

signals:
    void asked();
    void hangingChanged(bool hanging);

private:
    void ask();
    void set_hanging(bool hanging);

    QTimer timer_;
    // A count instead of a time, because no response can arrive while the Qt thread is busy.
    int unanswered_ = 0;
    bool hanging_ = false;
};

}  // namespace marlune

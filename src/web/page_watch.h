#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace marlune {

/**
 * Notices when a page answers no more. It asks the page for a sign of life at intervals; the scene
 * carries the question there and the answer back. Belongs to a web view.
 */
class PageWatch : public QObject {
    Q_OBJECT
    /** Off where there is no page, or one that waits for the user. */
    Q_PROPERTY(bool active READ is_active WRITE set_active)
    Q_PROPERTY(bool hanging READ is_hanging NOTIFY hangingChanged)

public:
    /** The page hangs when it leaves so many questions unanswered. */
    static constexpr int PATIENCE = 5;

    explicit PageWatch(QObject* parent,
                       std::chrono::milliseconds interval = std::chrono::seconds(1));

    bool is_active() const { return timer_.isActive(); }
    void set_active(bool active);
    bool is_hanging() const { return hanging_; }

    /** The page has answered, or there is another one. */
    Q_INVOKABLE void answer();

    /** Ends a page's process, by its number, without asking the page. */
    Q_INVOKABLE void end_process(qlonglong id);

signals:
    void asked();
    void hangingChanged(bool hanging);

private:
    void ask();
    void set_hanging(bool hanging);

    QTimer timer_;
    // Counted and not timed: while the Qt thread stands still, nobody's answer can come.
    int unanswered_ = 0;
    bool hanging_ = false;
};

}  // namespace marlune

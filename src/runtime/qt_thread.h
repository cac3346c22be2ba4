#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace marlune {

/**
 * The one thread that all of Qt runs on: either start() makes it, or the host gives one of its own.
 * It enters once per process, runs Qt's event loop, and leaves. The members may be called on any
 * thread.
 */
class QtThread {
public:
    /** Never destroyed: a host that exits without M::destroy() must not be ended by std::thread. */
    static QtThread& instance();

    /**
     * Runs the function on a new thread. After the first start, that thread finds nothing to do.
     */
    void start(void (*run)());

    /** Makes the calling thread the Qt thread. False where one has entered before. */
    bool enter();

    /** Called by the Qt thread as its last step. */
    void leave();

    /**
     * Waits for leave(), and then until the thread made by start() has ended: what Qt keeps for a
     * thread is destroyed after the thread's function. False where that takes longer than the
     * limit.
     */
    bool wait_for_end(std::chrono::seconds limit);

    /** Waits until calls are served, which never happens if nothing starts the thread. */
    void wait_until_ready() const;

    /** True from start() or enter() on. */
    bool is_started() const { return started_; }

    bool is_current() const;

    /** In a forked child, which has no Qt thread. Nothing waits for one from then on. */
    void abandon() { abandoned_ = true; }
    bool is_abandoned() const { return abandoned_; }

private:
    QtThread() = default;

    std::atomic<std::thread::id> id_;
    std::atomic<bool> started_ = false;
    std::atomic<bool> entered_ = false;
    std::atomic<bool> abandoned_ = false;

    std::mutex handle_mutex_;
    std::thread handle_;

    std::mutex end_mutex_;
    std::condition_variable end_changed_;
    bool ended_ = false;
};

/** True on the Qt thread, from the first step of the start to the end of its event loop. */
bool on_qt_thread();

/** True from the moment that calls are served. */
bool is_ready();

}  // namespace marlune

#include "runtime/qt_thread.h"

#include "marlune/app.h"

namespace marlune {

using namespace std::chrono_literals;

QtThread& QtThread::instance()
{
    static auto* const thread = new QtThread;
    return *thread;
}

void QtThread::start(void (*run)())
{
    const std::lock_guard lock(handle_mutex_);
    std::thread made(run);
    started_ = true;
    if (handle_.joinable())
        made.detach();
    else
        handle_ = std::move(made);
}

bool QtThread::enter()
{
    if (entered_.exchange(true))
        return false;
    started_ = true;
    id_ = std::this_thread::get_id();
    return true;
}

void QtThread::leave()
{
    id_ = std::thread::id();
    const std::lock_guard lock(end_mutex_);
    ended_ = true;
    end_changed_.notify_all();
}

bool QtThread::wait_for_end(std::chrono::seconds limit)
{
    {
        std::unique_lock lock(end_mutex_);
        if (!end_changed_.wait_for(lock, limit, [this] { return ended_; }))
            return false;
    }
    const std::lock_guard lock(handle_mutex_);
    if (handle_.joinable())
        handle_.join();
    return true;
}

void QtThread::wait_until_ready() const
{
    while (!is_ready() && !abandoned_)
        std::this_thread::sleep_for(50ms);
}

bool QtThread::is_current() const
{
    return id_.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

bool on_qt_thread()
{
    return QtThread::instance().is_current();
}

bool is_ready()
{
    return std::atomic_ref(MARLUNE_CTX).load(std::memory_order_acquire) != nullptr;
}

}  // namespace marlune

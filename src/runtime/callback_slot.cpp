#include "runtime/callback_slot.h"

#include <condition_variable>

namespace marlune {

namespace {

/** Never destroyed: threads of the host may outlive the library. */
std::condition_variable& call_ended()
{
    static auto* const condition = new std::condition_variable;
    return *condition;
}

}  // namespace

std::mutex& HostFunction::mutex()
{
    static auto* const mutex = new std::mutex;
    return *mutex;
}

HostFunction::Owner HostFunction::leave()
{
    const std::lock_guard lock(mutex());
    if (--calls_ > 0)
        return nullptr;
    // Under the lock: a waiting thread may destroy this as soon as it has the lock.
    call_ended().notify_all();
    return std::move(self_);
}

void HostFunction::let_go(Owner function)
{
    if (!function)
        return;
    std::unique_lock lock(mutex());
    HostFunction& running = *function;
    if (HostCallbackScope::active() && running.calls_ > 0)
        running.self_ = std::move(function);
    else
        call_ended().wait(lock, [&] { return running.calls_ == 0; });
}

}  // namespace marlune

#pragma once

#include "runtime/host_callback.h"

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

namespace marlune {

template <typename Signature>
class CallbackSlot;

/**
 * A place for a function of the host. Any thread may fill it, at any time, without waiting for the Qt
 * thread, which alone calls it: a call that is under way keeps the function that it has found.
 */
template <typename... Parameters>
class CallbackSlot<void(Parameters...)> {
public:
    using Function = std::function<void(Parameters...)>;
    using Stored = std::shared_ptr<const Function>;

    /** What is to be stored; null for an empty function. */
    static Stored store(Function function)
    {
        return function ? std::make_shared<const Function>(std::move(function)) : nullptr;
    }

    /** Returns what was there, whose end is the caller's: it may run code of the host. */
    Stored exchange(Stored stored) { return stored_.exchange(std::move(stored)); }

    /** Does nothing when the slot is empty. */
    template <typename... Arguments>
    void call(QObject* caller, Arguments&&... arguments) const
    {
        if (const Stored stored = stored_.load())
            call_host(caller, *stored, std::forward<Arguments>(arguments)...);
    }

private:
    std::atomic<Stored> stored_;
};

}  // namespace marlune

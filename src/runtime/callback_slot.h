#pragma once

#include "runtime/host_callback.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace marlune {

/** A function of the host, whatever its signature, and how many calls of it are under way. */
class HostFunction {
public:
    using Owner = std::unique_ptr<HostFunction>;

    HostFunction() = default;
    virtual ~HostFunction() = default;
    Q_DISABLE_COPY_MOVE(HostFunction)

    /** The one lock of all slots and counts. Never held while code of the host runs. */
    static std::mutex& mutex();

    /** Under the lock. */
    void enter() { ++calls_; }

    /** Gives the function back where nobody else owns it any more. */
    Owner leave();

    /**
     * Ends a function that no slot has any more, once no call of it is under way. In a callback, which
     * may be such a call, that is left to the call.
     */
    static void let_go(Owner function);

private:
    int calls_ = 0;
    Owner self_;
};

template <typename Signature>
class CallbackSlot;

/**
 * A place for a function of the host. Any thread may fill it, at any time; the Qt thread calls what it
 * holds, itself and no copy of it, so that it keeps what it changes of itself.
 */
template <typename Result, typename... Parameters>
class CallbackSlot<Result(Parameters...)> {
public:
    using Function = std::function<Result(Parameters...)>;

    class Stored : public HostFunction {
    public:
        explicit Stored(Function stored) : function(std::move(stored)) {}

        const Function function;
    };

    CallbackSlot() = default;

    /** On the Qt thread. */
    ~CallbackSlot()
    {
        // The host's captures may take a view down as they go.
        const HostCallbackScope scope;
        HostFunction::let_go(exchange(nullptr));
    }

    Q_DISABLE_COPY_MOVE(CallbackSlot)

    /** What is to be stored; null for an empty function. */
    static std::unique_ptr<Stored> store(Function function)
    {
        return function ? std::make_unique<Stored>(std::move(function)) : nullptr;
    }

    /** Returns what was there, for HostFunction::let_go(). */
    std::unique_ptr<Stored> exchange(std::unique_ptr<Stored> stored)
    {
        const std::lock_guard lock(HostFunction::mutex());
        return std::exchange(stored_, std::move(stored));
    }

    bool is_empty() const
    {
        const std::lock_guard lock(HostFunction::mutex());
        return !stored_;
    }

    /** Gives a default value when the slot is empty, and when the host lets an exception out. */
    template <typename... Arguments>
    Result call(QObject* caller, Arguments&&... arguments)
    {
        // First, so that a function that ends with this call does so within it.
        const HostCallbackScope scope;
        const Call call(*this);
        if (!call.stored)
            return Result();
        return call_host(caller, call.stored->function, std::forward<Arguments>(arguments)...);
    }

private:
    /** Entered under the lock: whoever takes the function out afterwards knows of this call. */
    struct Call {
        explicit Call(const CallbackSlot& slot)
        {
            const std::lock_guard lock(HostFunction::mutex());
            stored = slot.stored_.get();
            if (stored)
                stored->enter();
        }
        ~Call()
        {
            if (stored)
                stored->leave();
        }
        Q_DISABLE_COPY_MOVE(Call)

        Stored* stored;
    };

    std::unique_ptr<Stored> stored_;
};

}  // namespace marlune

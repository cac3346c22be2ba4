#pragma once

#include "runtime/host_callback.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace marlune {

/** A function of the host of any signature, with the number of its calls in progress. */
class HostFunction {
public:
    using Owner = std::unique_ptr<HostFunction>;

    HostFunction() = default;
    virtual ~HostFunction() = default;
    Q_DISABLE_COPY_MOVE(HostFunction)

    /** The one lock for all slots and counts. Never held while code of the host runs. */
    static std::mutex& mutex();

    /** Under the lock. */
    void enter() { ++calls_; }

    /** Returns the function when no one else owns it any more. */
    Owner leave();

    /**
     * Destroys a function that has left its slot, as soon as no call of it is in progress. In a
     * callback, which may be such a call, the call destroys it.
     */
    static void let_go(Owner function);

private:
    int calls_ = 0;
    Owner self_;
};

template <typename Signature>
class CallbackSlot;

/**
 * Holds a function of the host. Any thread may set it at any time; the Qt thread calls it, without
 * copying it, so that it keeps its state.
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
        // The destructors of the host's captures may destroy a view.
        const HostCallbackScope scope;
        HostFunction::let_go(exchange(nullptr));
    }

    Q_DISABLE_COPY_MOVE(CallbackSlot)

    /** Wraps the function for exchange(); null for an empty one. */
    static std::unique_ptr<Stored> store(Function function)
    {
        return function ? std::make_unique<Stored>(std::move(function)) : nullptr;
    }

    /** Returns the former function, for HostFunction::let_go(). */
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

    /** Returns a default value when the slot is empty or the function throws. */
    template <typename... Arguments>
    Result call(QObject* caller, Arguments&&... arguments)
    {
        // First, so that it is still active if the end of the call destroys the function.
        const HostCallbackScope scope;
        const Call call(*this);
        if (!call.stored)
            return Result();
        return call_host(caller, call.stored->function, std::forward<Arguments>(arguments)...);
    }

private:
    /** Entered under the lock, so that a thread that replaces the function sees the call. */
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

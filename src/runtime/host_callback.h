#pragma once

#include "runtime/report_exception.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <utility>

namespace marlune {

/**
 * Marks that a callback of the host is on the Qt thread's stack. The scene that caused it is on
 * that stack too, so nothing that the scene uses may be destroyed meanwhile.
 */
class HostCallbackScope {
public:
    HostCallbackScope();
    ~HostCallbackScope();
    Q_DISABLE_COPY_MOVE(HostCallbackScope)

    /** True when the calling thread is in a callback. */
    static bool active();

    /**
     * Runs the work at once, or from the event loop after the outermost callback has returned. An
     * exception that it throws then is reported with the name of `receiver`.
     */
    static void run_outside(std::function<void()> work, QObject* receiver = nullptr);

    /** Discards the work that waits for a callback to return. */
    static void discard_waiting();

private:
    template <typename Work>
    friend void run_in_turn(QObject& target, Work& work);

    static bool any_waiting();
    static void put_off(std::function<void()> work, QObject* receiver);
    static void run_waiting();
};

/** Like run_outside(), for work on an object, which may be destroyed first. */
template <typename Object, typename Work>
void run_outside_callbacks(Object& object, Work work)
{
    HostCallbackScope::run_outside(
        [guarded = QPointer<Object>(&object), work = std::move(work)] {
            if (guarded)
                work(*guarded);
        },
        &object);
}

/** Wraps a member so that it runs after callbacks have returned. */
template <typename Object, typename... Parameters>
auto outside_callbacks(void (Object::*member)(Parameters...))
{
    return [member](Object& object, Parameters... arguments) {
        run_outside_callbacks(object, [=](Object& target) { (target.*member)(arguments...); });
    };
}

/**
 * Runs work that another thread has queued on the target. When a callback processes events, the
 * work must not run below it, since the rules for calls in callbacks are not meant for other
 * threads. It then waits for the callback to return, keeps its order, and is discarded when its
 * target is destroyed.
 */
template <typename Work>
void run_in_turn(QObject& target, Work& work)
{
    if (!HostCallbackScope::active() && !HostCallbackScope::any_waiting())
        return work();
    const auto waiting = std::make_shared<Work>(std::move(work));
    HostCallbackScope::put_off(
        [guarded = QPointer<QObject>(&target), waiting] {
            if (guarded)
                (*waiting)();
        },
        &target);
    HostCallbackScope::run_waiting();
}

/**
 * Calls a function of the host without copying it, so that it keeps its state; it must exist until
 * it has returned. An exception is reported and goes no further, because the script engines that
 * may be on the stack cannot be unwound; the result is then a default value.
 */
template <typename Result, typename... Parameters, typename... Arguments>
Result call_host(QObject* caller, const std::function<Result(Parameters...)>& function,
                 Arguments&&... arguments)
{
    const HostCallbackScope scope;
    try {
        return function(std::forward<Arguments>(arguments)...);
    } catch (...) {
        report_exception(caller, "a host callback threw an unknown exception");
    }
    return Result();
}

}  // namespace marlune

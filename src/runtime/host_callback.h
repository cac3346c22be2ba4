#pragma once

#include "runtime/qt_thread.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <utility>

namespace marlune {

/**
 * Marks that a callback of the host is on the Qt thread's stack. The scene that gave rise to it is on
 * that stack too, so nothing may be taken down from under it meanwhile.
 */
class HostCallbackScope {
public:
    HostCallbackScope();
    ~HostCallbackScope();
    Q_DISABLE_COPY_MOVE(HostCallbackScope)

    /** Whether the calling thread is in a callback. */
    static bool active();

    /**
     * Runs the work at once, or from the event loop once the outermost callback has returned. What it
     * throws then is reported as of `receiver`.
     */
    static void run_outside(std::function<void()> work, QObject* receiver = nullptr);

    /** Drops what waits for a callback to return. */
    static void discard_waiting();

private:
    template <typename Work>
    friend void run_in_turn(QObject& target, Work& work);

    static bool any_waiting();
    static void put_off(std::function<void()> work, QObject* receiver);
    static void run_waiting();
};

/** Like run_outside(), for work on an object that may be gone by then. */
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

/** A member as work that waits for callbacks to return. */
template <typename Object, typename... Parameters>
auto outside_callbacks(void (Object::*member)(Parameters...))
{
    return [member](Object& object, Parameters... arguments) {
        run_outside_callbacks(object, [=](Object& target) { (target.*member)(arguments...); });
    };
}

/**
 * Runs what another thread has queued on the target. A callback that lets events be served must not have
 * the work run under it: the rules for the calls of a callback are not meant for other threads. Such work
 * waits for the callback to return, keeps its place, and is dropped where its target goes.
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
 * Calls a function of the host, itself and no copy of it, so that it keeps what it changes of itself: it
 * must stay until it has returned. An exception that the host lets out is reported and ends here, and
 * the result is a default value: script engines that may be on the stack cannot be unwound.
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

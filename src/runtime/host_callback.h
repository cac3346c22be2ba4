#pragma once

#include "runtime/qt_thread.h"

#include <QPointer>

#include <exception>
#include <functional>
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

    /** Runs the work at once, or from the event loop once the outermost callback has returned. */
    static void run_outside(std::function<void()> work);
};

/** Like run_outside(), for work on an object that may be gone by then. */
template <typename Object, typename Work>
void run_outside_callbacks(Object& object, Work work)
{
    HostCallbackScope::run_outside([guarded = QPointer<Object>(&object), work = std::move(work)] {
        if (guarded)
            work(*guarded);
    });
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
    } catch (const std::exception& error) {
        report_exception(caller, error.what());
    } catch (...) {
        report_exception(caller, "a host callback has thrown an unknown exception");
    }
    return Result();
}

}  // namespace marlune

#include "library/shutdown.h"

#include "marlune/app.h"

#include "library/animations.h"
#include "media/media_part.h"
#include "runtime/exit_handlers.h"
#include "runtime/host_callback.h"
#include "runtime/live_objects.h"
#include "runtime/platform.h"
#include "runtime/qt_thread.h"
#include "web/web_part.h"

#include <QCoreApplication>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>

// What ~QApplication begins with. Exported by Qt for its own modules, without a header of its own.
Q_CORE_EXPORT void qt_call_post_routines();

namespace marlune::shutdown {

namespace {

using namespace std::chrono_literals;

std::atomic<bool> given_up = false;

/**
 * Refuses new calls, serves those that are queued, and stops Qt's own timers (an animation timer
 * that still ran at exit would be stopped on the wrong thread). Calls that these steps queue are
 * discarded, which releases their callers.
 */
void close_calls()
{
    LiveObjects::instance().close();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::removePostedEvents(nullptr);
    HostCallbackScope::discard_waiting();
}

/**
 * Ends the web engine's threads and processes. ~QApplication would do it, but never runs, since the
 * application object is never destroyed; and engine threads that were still at work when the host
 * returns from main() would crash in what exit() takes down.
 */
void stop_engine()
{
    web_part::close_pages();
    qt_call_post_routines();
    platform::end_engine_processes();
}

void stop_parts()
{
    close_calls();
    media_part::close_players();
    stop_engine();
}

/**
 * At exit() on a thread of the host: the Qt thread may be at work in what exit() takes down next.
 */
void end_from_outside()
{
    if (!QtThread::instance().is_abandoned() && !given_up && !on_qt_thread())
        M::destroy();
}

void end_with_process(int exit_code)
{
    end_from_outside();
    if (QtThread::instance().is_abandoned() || !on_qt_thread()
        || LiveObjects::instance().is_closed())
        return;
    // exit() was called in a callback, to which it does not return. The page that gave rise to it
    // cannot be closed, since it is still on the stack, and the engine cannot be ended before it.
    if (web_part::has_pages()) {
        platform::end_engine_processes();
        platform::end_this_process(exit_code);
    }
    // Not stop(): exit() destroys this thread's thread_local objects, Qt's clock of animations
    // among them, before it runs any handler.
    stop_parts();
}

/** In the child, which has no Qt thread, so that nothing would release a lock that it holds. */
void abandon_in_fork()
{
    QtThread::instance().abandon();
    LiveObjects::instance().abandon();
}

}  // namespace

void prepare_process()
{
    static std::once_flag once;
    std::call_once(once, [] {
        platform::stay_loaded();
        set_exit_handlers({end_from_outside, end_with_process});
        register_exit_handlers();
        platform::run_in_forked_child(abandon_in_fork);
    });
}

void stop()
{
    stop_parts();
    end_animations();
}

void request_and_wait()
{
    constexpr auto limit = 10s;
    QtThread& thread = QtThread::instance();
    if (!thread.is_started() || thread.is_abandoned())
        return;

    // Posted, not called: a loop that is about to be entered would miss a quit that comes
    // before it.
    thread.wait_until_ready();
    LiveObjects::instance().post(static_cast<QObject*>(MARLUNE_CTX),
                                 [] { QCoreApplication::quit(); });
    if (thread.wait_for_end(limit))
        return;
    given_up = true;
    std::fprintf(stderr,
                 "marlune: the Qt thread is still busy 10 s after M::destroy; "
                 "does a host callback block it?\n");
}

}  // namespace marlune::shutdown

#include "marlune/app.h"

#include "runtime/animations.h"
#include "runtime/application.h"
#include "runtime/context.h"
#include "runtime/host_callback.h"
#include "runtime/live_objects.h"
#include "runtime/media_part.h"
#include "runtime/platform.h"
#include "runtime/process_end.h"
#include "runtime/qt_thread.h"
#include "runtime/startup.h"
#include "runtime/trace.h"
#include "runtime/web_part.h"

#include <QCoreApplication>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>
#include <utility>

// What ~QApplication begins with. Exported by Qt for its own modules, without a header of its own.
Q_CORE_EXPORT void qt_call_post_routines();

namespace marlune {

M* MARLUNE = nullptr;
void* MARLUNE_APP = nullptr;
void* MARLUNE_CTX = nullptr;

namespace {

using namespace std::chrono_literals;

constexpr auto readiness_step = 50ms;
constexpr auto stop_limit = 10s;

std::string version = "0.1.2+4b4e766";

/**
 * The Qt thread of create_app. Not detached, so that M::destroy can wait for its very end: what Qt
 * keeps for a thread goes down after the thread's function. Never destroyed, since a host that ends
 * without M::destroy must not be ended by std::thread.
 */
struct QtThread {
    std::mutex mutex;
    std::thread handle;
};

QtThread& qt_thread()
{
    static auto* const thread = new QtThread;
    return *thread;
}

std::atomic<std::thread::id> qt_thread_id;
std::atomic<bool> start_requested = false;
std::atomic<bool> start_begun = false;
std::atomic<bool> end_given_up = false;
std::atomic<bool> forked = false;

/** Tells M::destroy that the event loop has ended. Never destroyed either. */
struct LoopEnd {
    std::mutex mutex;
    std::condition_variable changed;
    bool reached = false;
};

LoopEnd& loop_end()
{
    static auto* const end = new LoopEnd;
    return *end;
}

// The exported globals are plain pointers for the host; between threads they are handed over as atomics.
template <typename Pointer>
void publish(Pointer& global, Pointer value)
{
    std::atomic_ref(global).store(value, std::memory_order_release);
}

template <typename Pointer>
Pointer published(Pointer& global)
{
    return std::atomic_ref(global).load(std::memory_order_acquire);
}

MarluneCtx* context()
{
    return static_cast<MarluneCtx*>(published(MARLUNE_CTX));
}

/**
 * The loop has ended: refuses new calls, serves those that are queued, and lets Qt's own objects come
 * to rest (an animation timer still running at exit would be stopped on the wrong thread). Whatever
 * those leave behind is discarded, which releases its caller.
 */
void close_calls()
{
    LiveObjects::instance().close();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::removePostedEvents(nullptr);
    HostCallbackScope::discard_waiting();
}

/**
 * Ends the web engine's threads and processes. The application object stays for good, and its
 * destructor, which would do this, never runs; but threads of the engine that were still at work when
 * the host leaves main would crash in what exit() takes down.
 */
void stop_engine()
{
    web_part::close_pages();
    qt_call_post_routines();
    platform::end_engine_processes();
}

/** All that the end of the event loop gives rise to. */
void stop()
{
    close_calls();
    media_part::close_players();
    stop_engine();
}

void report_end()
{
    qt_thread_id = std::thread::id();
    const std::lock_guard lock(loop_end().mutex);
    loop_end().reached = true;
    loop_end().changed.notify_all();
}

bool wait_for_loop_end()
{
    std::unique_lock lock(loop_end().mutex);
    return loop_end().changed.wait_for(lock, stop_limit, [] { return loop_end().reached; });
}

/** The threads of the host and the Qt thread may still be at work in what exit() takes down next. */
void end_from_outside()
{
    if (!forked && !end_given_up && !on_qt_thread())
        M::destroy();
}

void end_with_process(int exit_code)
{
    end_from_outside();
    if (forked || !on_qt_thread() || LiveObjects::instance().is_closed())
        return;
    // exit() was called in a callback, to which it does not return. The page that gave rise to it cannot
    // be closed, since it is still on the stack, and the engine cannot be ended before it.
    if (web_part::has_pages()) {
        platform::end_engine_processes();
        platform::end_this_process(exit_code);
    }
    stop();
}

/** There is no Qt thread in the child, and nobody to let go of a lock. */
void leave_to_parent()
{
    forked = true;
    LiveObjects::instance().abandon();
}

/** What the library needs of the process, whoever gives the Qt thread. */
void prepare_process()
{
    static std::once_flag once;
    std::call_once(once, [] {
        platform::stay_loaded();
        end_before_what_stands();
        platform::run_in_forked_child(leave_to_parent);
    });
}

}  // namespace

void end_before_what_stands()
{
    // Enough for all that comes with the first scenes of each kind; a game may load for ever.
    constexpr int most = 64;
    static std::atomic<int> times = 0;
    if (times.fetch_add(1, std::memory_order_relaxed) < most)
        platform::run_at_exit(end_from_outside, end_with_process);
}

bool is_ready()
{
    return context() != nullptr;
}

bool on_qt_thread()
{
    return qt_thread_id.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

M& M::operator=(const M&)
{
    return *this;
}

M& M::operator=(M&&)
{
    return *this;
}

void M::create_app()
{
    trace("marlune::create_app", "M");
    if (published(MARLUNE)) {
        std::fprintf(stderr, "application is already constructed\n");
        std::fflush(stderr);
        return;
    }
    prepare_process();
    const std::lock_guard lock(qt_thread().mutex);
    std::thread started(_create_app);
    start_requested = true;
    // Of two starts in quick succession, the second thread finds nothing to do.
    if (qt_thread().handle.joinable())
        started.detach();
    else
        qt_thread().handle = std::move(started);
}

void M::_create_app()
{
    trace("marlune::_create_app()", "T");
    if (start_begun.exchange(true))
        return;
    start_requested = true;
    qt_thread_id = std::this_thread::get_id();
    prepare_process();

    startup::before_application();
    Application* const application = startup::make_application();
    publish<void*>(MARLUNE_APP, application);
    web_part::set_up_profile();
    startup::after_application();
    publish(MARLUNE, new M);
    publish<void*>(MARLUNE_CTX, new MarluneCtx);

    trace("marlune::_create_app", "T");
    trace("static_cast<QApplication*>(MARLUNE_APP)->exec()", "T");
    end_before_what_stands();
    QApplication::exec();
    stop();
    // Not at an exit() in a callback: what the thread keeps, and with it the clock, goes before all handlers.
    end_animations();
    report_end();
}

void M::ensure_qt_eventloop_is_running()
{
    trace("marlune::qt_is_running?", "M");
    while (!is_ready() && !forked)
        std::this_thread::sleep_for(readiness_step);
}

void M::processEvents()
{
    trace("marlune::processEvents", "M");
    QCoreApplication::processEvents();
}

void M::destroy()
{
    trace("marlune::destroy", "M");
    if (on_qt_thread())
        return QCoreApplication::quit();
    if (!start_requested || forked)
        return;

    // Posted, not called: a loop that is about to be entered would miss a quit that comes before it.
    ensure_qt_eventloop_is_running();
    LiveObjects::instance().post(context(), [] { QCoreApplication::quit(); });

    if (!wait_for_loop_end()) {
        end_given_up = true;
        std::fprintf(stderr,
                     "marlune: the Qt thread is still busy 10 s after M::destroy; "
                     "does a host callback block it?\n");
        return;
    }
    const std::lock_guard lock(qt_thread().mutex);
    if (qt_thread().handle.joinable())
        qt_thread().handle.join();
}

std::string M::get_version_full()
{
    trace("marlune::get_version_full", "M");
    return version;
}

void M::set_ffmpeg_debug(bool)
{
    trace("marlune::set_ffmpeg_debug", "M");
    // Nothing to set once the library runs; the option is read at the start.
}

void M::set_ffmpeg_protocol_whitelist(std::string)
{
    trace("marlune::set_ffmpeg_protocol_whitelist", "M");
    // The list is the host's; nothing here reads it.
}

}  // namespace marlune

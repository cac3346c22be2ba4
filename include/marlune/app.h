#pragma once

#include <marlune/export.h>

#include <string>

namespace marlune {

/**
 * The library as a whole. It starts and stops the Qt thread, on which the library does all its
 * work.
 *
 * @code
 * marlune::opts::PATH_PROJECT_ROOT = "C:/game";  // options first, see <marlune/options.h>
 * marlune::M::create_app();                      // returns at once
 * {
 *     marlune::MQuickView view;                  // waits until the Qt thread is ready
 *     ...
 *     view.destroy();
 * }
 * marlune::M::destroy();                         // last
 * @endcode
 *
 * Lifetime: the library starts once per process. It cannot be started again after destroy().
 * Threads: every member may be called on any thread of the host, unless its comment says otherwise.
 */
class MARLUNE_EXPORT M {
public:
    M() = default;
    M(const M&) = default;

    /** Assignment does nothing: there is no state to copy. */
    M& operator=(const M&);
    /** Assignment does nothing: there is no state to move. */
    M& operator=(M&&);

    /**
     * Starts the library: reads the options of <marlune/options.h> and starts the Qt thread.
     *
     * Does not block. Facade constructors wait until the Qt thread is ready; to wait without
     * constructing a facade, call ensure_qt_eventloop_is_running().
     *
     * Once the library has started, even if it has stopped since, a call writes
     * "application is already constructed" to the standard error stream and does nothing else.
     * The check reads MARLUNE, which is set late in the start sequence: a second call that follows
     * the first within moments writes nothing, and has no effect either.
     *
     * @throws std::system_error when the thread cannot be started.
     */
    static void create_app();

    /**
     * Runs the Qt thread on the calling thread, for a host that supplies that thread itself. Call
     * it instead of create_app(). Blocks until destroy() has been called. Returns at once if the
     * library has already been started.
     */
    static void _create_app();

    /**
     * Blocks until the Qt thread is ready to serve facades, checking every 50 ms. Returns at once
     * if it is ready. Blocks forever if the library is never started.
     */
    static void ensure_qt_eventloop_is_running();

    /** Processes the pending Qt events of the calling thread. Hosts do not need to call it. */
    static void processEvents();

    /**
     * Stops the library: ends the Qt thread's event loop and returns once the Qt thread no longer
     * uses any object of the host.
     *
     * Call it last, after MView::destroy() on every facade. Views that are still alive are not
     * destroyed; from then on, calls on them return their defaults. The host may return from `main`
     * as soon as this call has returned. Does nothing if the library was never started. On Linux,
     * exit() calls it if the host has not.
     *
     * Blocks until the Qt thread has finished its current work, for at most 10 s. On the Qt thread
     * (in a host callback) it does not block.
     */
    static void destroy();

    /**
     * Returns the library's version, such as "0.1.2+4b4e766": release, plus sign, source revision.
     */
    static std::string get_version_full();

    /**
     * Does nothing; the interface requires it. Set opts::FFMPEG_DEBUG before create_app() instead.
     */
    static void set_ffmpeg_debug(bool enabled);

    /** Does nothing; the interface requires it. opts::FFMPEG_PROTOCOL_WHITELIST keeps its value. */
    static void set_ffmpeg_protocol_whitelist(std::string whitelist);
};

/** The library's singleton. Null until the Qt thread has built the application; never reset. */
extern MARLUNE_EXPORT M* MARLUNE;

/** The `QApplication` object. Set on the Qt thread as soon as it is constructed; never reset. */
extern MARLUNE_EXPORT void* MARLUNE_APP;

/**
 * The context object (a `QObject`) through which views are created. Set on the Qt thread just
 * before it enters its event loop: a non-null value means that the Qt thread is ready. Never reset.
 */
extern MARLUNE_EXPORT void* MARLUNE_CTX;

}  // namespace marlune

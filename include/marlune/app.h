#pragma once

#include <marlune/export.h>

#include <string>

namespace marlune {

/**
 * The library as a whole: starts and stops the one Qt thread on which all of its work is done.
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
 * Lifetime: one start a process. After destroy() the library cannot be started again.
 * Threads: every member may be called on any thread of the host, except where a member says otherwise.
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
     * Does not block. Facade constructors wait for the thread to be ready by themselves;
     * ensure_qt_eventloop_is_running() waits without constructing one.
     *
     * A call made after the library has started (even if it has been stopped since) writes
     * "application is already constructed" to the standard error stream and does nothing else.
     * The test is made on MARLUNE, which is set late in the start: a second call in quick succession
     * writes nothing, and has no effect either.
     *
     * @throws std::system_error when the thread cannot be started.
     */
    static void create_app();

    /**
     * The body of the Qt thread, for a host that wants to supply that thread itself.
     * Blocks until destroy() has been called. Call it instead of create_app(). Returns at once where
     * the library has been started already.
     */
    static void _create_app();

    /**
     * Blocks until the Qt thread is ready to serve facades, looking every 50 ms.
     * Returns at once when it is. Waits for ever when the library is never started.
     */
    static void ensure_qt_eventloop_is_running();

    /** Processes the pending Qt events of the calling thread. A host has no need to call it. */
    static void processEvents();

    /**
     * Ends the Qt thread's event loop and returns when that thread has let go of the host's objects.
     *
     * Call it last, after MView::destroy() of every facade: views that still live then are not
     * destroyed, and calls on them return their defaults from then on. The host may leave `main` as
     * soon as this has returned. Without a start it does nothing. On Linux it is called by exit()
     * where the host has not.
     *
     * Blocks for as long as the work under way on the Qt thread takes, but no longer than 10 s.
     * Called on the Qt thread (in a host callback) it does not block.
     */
    static void destroy();

    /** The library's version, such as "0.1.2+4b4e766": release, plus sign, source revision. */
    static std::string get_version_full();

    /** Does nothing; set opts::FFMPEG_DEBUG before create_app() instead. */
    static void set_ffmpeg_debug(bool enabled);

    /** Does nothing; opts::FFMPEG_PROTOCOL_WHITELIST keeps its value. */
    static void set_ffmpeg_protocol_whitelist(std::string whitelist);
};

/** The library's singleton. Null until the Qt thread has built the application; never reset. */
extern MARLUNE_EXPORT M* MARLUNE;

/** The `QApplication` object. Set on the Qt thread as soon as it is constructed; never reset. */
extern MARLUNE_EXPORT void* MARLUNE_APP;

/**
 * The context object (a `QObject`) on which views are made. Set on the Qt thread just before the
 * event loop is entered; non-null says that the Qt thread is ready. Never reset.
 */
extern MARLUNE_EXPORT void* MARLUNE_CTX;

}  // namespace marlune

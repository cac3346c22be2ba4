#pragma once

#include <marlune/export.h>

#include <string>

/**
 * Start options. Write them before M::create_app(): the Qt thread reads them once, without a lock,
 * while it starts. Later changes have no effect. The library does not validate them.
 */
namespace marlune::opts {

/**
 * When false, the default, web pages run without a sandbox, without web security and without site
 * isolation. Set it to true unless you wrote every page that a view may ever show.
 */
extern MARLUNE_EXPORT bool SANDBOXED;

/**
 * Default false. When true, the library connects as a writing client to the debug pipe
 * (`\\.\pipe\webview.debug.sock`; on Linux the Unix-domain stream socket `webview.debug.sock` in
 * `$XDG_RUNTIME_DIR`, or in the system's temporary directory if that variable is not set). If no
 * server listens on the pipe, the library writes one line to the standard error stream.
 */
extern MARLUNE_EXPORT bool LOGGING_DEBUG;

/** Default false. When true, the web engine uses software rendering instead of the GPU. */
extern MARLUNE_EXPORT bool GPU_DISABLED;

/** Default false. When true, the multimedia back end writes debug output. */
extern MARLUNE_EXPORT bool FFMPEG_DEBUG;

/**
 * The game's root directory, in the narrow local code page, without a trailing slash; default
 * empty. The library expects Qt's files in its subdirectory "/addons/webview/": "qml", "plugins",
 * "QtWebEngineProcess.exe" (also on Linux), "resources" and "translations/qtwebengine_locales".
 */
extern MARLUNE_EXPORT std::string PATH_PROJECT_ROOT;

/**
 * The protocols that the host allows its media to use, separated by commas. The library does not
 * read it; the interface requires it.
 */
extern MARLUNE_EXPORT std::string FFMPEG_PROTOCOL_WHITELIST;

}  // namespace marlune::opts

#pragma once

class QObject;

namespace marlune::bench {

/** Makes the engine know the scheme "raw". Before it starts, the library's or any other's. */
void register_raw_scheme();

/**
 * Has "raw" served by a handler that anybody would write: it looks the file up and replies with one
 * copy. `qt_thread` is any object of that thread.
 */
void install_raw_scheme(QObject* qt_thread);

}  // namespace marlune::bench

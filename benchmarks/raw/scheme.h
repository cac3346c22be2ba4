#pragma once

class QObject;

namespace marlune::bench {

/**
 * Registers the scheme "raw" with the engine. Call before the start of the library or of raw Qt.
 */
void register_raw_scheme();

/**
 * Serves "raw" by a minimal handler: it looks up the file and replies with one copy. `qt_thread` is
 * any object that lives on that thread.
 */
void install_raw_scheme(QObject* qt_thread);

}  // namespace marlune::bench

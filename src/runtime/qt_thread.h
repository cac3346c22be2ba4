#pragma once

class QObject;

namespace marlune {

/** True on the Qt thread, from the first step of the start to the end of its event loop. */
bool on_qt_thread();

/** True from the moment that calls are served. For any thread. */
bool is_ready();

/**
 * Writes the one critical message about the exception that is being handled, which has ended a call on
 * `receiver`. `unknown` stands for one that says nothing of itself.
 */
void report_exception(QObject* receiver, const char* unknown = "unknown exception");

}  // namespace marlune

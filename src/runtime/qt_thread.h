#pragma once

class QObject;

namespace marlune {

/** True on the Qt thread, from the first step of the start to the end of its event loop. */
bool on_qt_thread();

/** Writes the one critical message about an exception that has ended a call on `receiver`. */
void report_exception(QObject* receiver, const char* what);

}  // namespace marlune

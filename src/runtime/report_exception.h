#pragma once

class QObject;

namespace marlune {

/**
 * Logs the one critical message about the exception that is being handled, which has ended a call
 * on `receiver`. `unknown` stands for an exception without a message.
 */
void report_exception(QObject* receiver, const char* unknown = "unknown exception");

}  // namespace marlune

#pragma once

#include <string>

class QVersionNumber;

/**
 * The start of the library on the Qt thread. Qt, its web engine and its multimedia back end each
 * read their settings once, from the environment and from static calls, so the order is fixed.
 */
namespace marlune::startup {

/** The whole start. When it returns, the event loop can run, and calls are served. */
void start();

// The steps that start() takes, one by one for tests.
void set_directories();
void set_qt_configuration(const std::string& addon_dir);
void set_application_identity();
void set_multimedia();
void set_chromium_flags();
void set_defaults();

/**
 * Warns when the Qt that runs has another minor version than the one the library was built with.
 */
void warn_of_other_qt(const QVersionNumber& running);

/** Warns of a relative project root: the web engine ends a process that gives it relative paths. */
void warn_of_relative_root(const std::string& root);

}  // namespace marlune::startup

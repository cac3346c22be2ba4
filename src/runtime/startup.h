#pragma once

#include <string>

class QVersionNumber;

namespace marlune {

class Application;

/** "/addons/webview/" under the project root, as it stood when the library started. */
const std::string& addon_dir();

/**
 * The Qt thread's start, in the one order that Qt, its web engine and its multimedia back end allow:
 * each reads its settings once, from the environment and from static calls.
 */
namespace startup {

/** The debug pipe, directories, environment, scheme and engine: all that must precede the application. */
void before_application();

/** The application object; MARLUNE_APP. The process keeps its locale. */
Application* make_application();

/** What comes after the profile and its scheme handler. */
void after_application();

/** The parts, each for itself, so that they can be looked at one by one. */
void set_directories();
void set_qt_configuration(const std::string& addon_dir);
void set_application_identity();
void set_multimedia();
void set_chromium_flags();
void set_defaults();

/** Says so when the Qt that runs, by its version, is another than the one that the library was built with. */
void warn_of_other_qt(const QVersionNumber& running);

/** The web engine ends a process whose files it is to look for by a relative path. */
void warn_of_relative_root(const std::string& root);

}  // namespace startup

}  // namespace marlune

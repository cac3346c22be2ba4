#pragma once

#include <string>

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

/** The application object; MARLUNE_APP. */
Application* make_application();

/** The parts, each for itself, so that they can be looked at one by one. */
void set_directories();
void set_qt_configuration();
void set_application_identity();
void set_multimedia();
void set_chromium_flags();
void set_defaults();

}  // namespace startup

}  // namespace marlune

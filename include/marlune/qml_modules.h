#pragma once

#include <marlune/export.h>

/**
 * Each declares one of the library's QML modules, version 1.0, to Qt. The library does so by itself
 * when it is loaded; calling one again is harmless. In the global namespace, like the functions that
 * Qt's own build tools generate.
 */
MARLUNE_EXPORT void qml_register_types_Debug();
MARLUNE_EXPORT void qml_register_types_Multimedia();
MARLUNE_EXPORT void qml_register_types_Splash();
MARLUNE_EXPORT void qml_register_types_Web();

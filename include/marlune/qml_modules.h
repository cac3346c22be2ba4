#pragma once

#include <marlune/export.h>

/**
 * Each of these functions declares one of the library's QML modules, version 1.0, to Qt. The
 * library calls them on the Qt thread while it starts, before any view loads a component, so that a
 * host does not need to; a further call changes nothing. The functions only declare the modules;
 * the library registers the modules' QML types itself, while it starts or when a view first needs
 * them. The functions are in the global namespace, like those that Qt's own build tools generate.
 */
MARLUNE_EXPORT void qml_register_types_Debug();
MARLUNE_EXPORT void qml_register_types_Multimedia();
MARLUNE_EXPORT void qml_register_types_Splash();
MARLUNE_EXPORT void qml_register_types_Web();

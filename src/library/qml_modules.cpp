#include "marlune/qml_modules.h"

#include "library/qml_modules.h"
#include "library/qml_plugins.h"
#include "runtime/trace.h"

#include <QtPlugin>
#include <QtQml>

Q_IMPORT_PLUGIN(DebugPlugin)
Q_IMPORT_PLUGIN(MultimediaPlugin)
Q_IMPORT_PLUGIN(SplashPlugin)
Q_IMPORT_PLUGIN(WebPlugin)

void qml_register_types_Debug()
{
    marlune::trace("qml_register_types_Debug", "T");
    qmlRegisterModule("Debug", 1, 0);
}

void qml_register_types_Multimedia()
{
    marlune::trace("qml_register_types_Multimedia", "T");
    qmlRegisterModule("Multimedia", 1, 0);
}

void qml_register_types_Splash()
{
    marlune::trace("qml_register_types_Splash", "T");
    qmlRegisterModule("Splash", 1, 0);
}

void qml_register_types_Web()
{
    marlune::trace("qml_register_types_Web", "T");
    qmlRegisterModule("Web", 1, 0);
}

void marlune::declare_qml_modules()
{
    qml_register_types_Debug();
    qml_register_types_Multimedia();
    qml_register_types_Splash();
    qml_register_types_Web();
}

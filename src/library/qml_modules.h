#pragma once

namespace marlune {

/** Registers the library's QML modules with Qt, before any view loads a component. */
void declare_qml_modules();

}  // namespace marlune

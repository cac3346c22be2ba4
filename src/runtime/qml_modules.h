#pragma once

namespace marlune {

/** Declares the library's QML modules to Qt, before any view loads a component of one. */
void declare_qml_modules();

}  // namespace marlune

#pragma once

#include <QString>

namespace marlune {

/**
 * Deciphers a component that the library stores into its temporary file and makes it a QML type of
 * its module. The file is deleted once the event loop turns, when the scene has been made from it.
 *
 * A component has the same file path for the life of the process, so that the type stays registered
 * under one URL. False, with a warning, when there is no such component or its file cannot be
 * written.
 */
bool publish_component(const QString& module, const QString& name);

/** Publishes all components of a module, for one that is made of others which lie beside it. */
void publish_module(const QString& module);

}  // namespace marlune

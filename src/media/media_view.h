#pragma once

#include <QtGlobal>

class QIODevice;
class QMediaPlayer;
class QObject;
class QQmlContext;

/** Helpers that all media views share. Only on the Qt thread. */
namespace marlune {

/**
 * Deletes the object, and with it its threads, when the library stops, if it still exists then. The
 * scene that contains it remains: the host may have released the scene's device already.
 */
void delete_at_shutdown(QObject* object);

/**
 * Removes the player from its scene and deletes it after it has opened its source. Does not wait
 * for that.
 */
void end_when_loaded(QMediaPlayer* player);

/** Returns a device that fails to open: for a source that a player must not try to open. */
QIODevice* refusing_device();

/** Sets the context property "ctx" to the view and publishes the components of the module. */
void prepare_media_context(QQmlContext* root_context, QObject* view);

/** Returns the fill mode if hosts may set it, otherwise 0. */
uint accepted_fill_mode(uint fill_mode);

}  // namespace marlune

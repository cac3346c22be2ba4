#pragma once

#include <QtGlobal>

class QIODevice;
class QMediaPlayer;
class QObject;
class QQmlContext;

/** What the views of this part have in common. On the Qt thread only. */
namespace marlune {

/**
 * Ends the object, and with it its threads, when the library stops, if it stands then. What it is in
 * stays: the host may have taken the device of its scenes down already.
 */
void delete_at_shutdown(QObject* object);

/** Takes the player from its scene and ends it when it has opened its source, for which nobody waits. */
void end_when_loaded(QMediaPlayer* player);

/** What cannot be opened: for a source that a player must not even try. */
QIODevice* refusing_device();

/** Gives a scene its view, as "ctx", and the components of this part. */
void prepare_media_context(QQmlContext* root_context, QObject* view);

/** The number of a fill mode that hosts may set; 0 for any other. */
uint accepted_fill_mode(uint fill_mode);

}  // namespace marlune

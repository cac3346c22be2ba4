#pragma once

#include <QtGlobal>

class QObject;
class QQmlContext;

/** What the views of this part have in common. On the Qt thread only. */
namespace marlune {

/**
 * Ends the object, and with it its threads, when the library stops, if it stands then. What it is in
 * stays: the host may have taken the device of its scenes down already.
 */
void end_with_library(QObject* object);

/** Gives a scene its view, as "ctx", and the components of this part. */
void prepare_media_context(QQmlContext* root_context, QObject* view);

/** The number of a fill mode that hosts may set; 0 for any other. */
uint accepted_fill_mode(uint fill_mode);

}  // namespace marlune

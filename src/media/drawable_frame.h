#pragma once

#include <QVideoFrame>

namespace marlune {

/**
 * The frame as Qt's video output draws it right: with premultiplied alpha, and opaque where it has no
 * alpha channel. The frame itself where that is so already, as it is of all but RGB films.
 */
QVideoFrame drawable(const QVideoFrame& frame);

}  // namespace marlune

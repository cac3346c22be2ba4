#pragma once

#include <QVideoFrame>

namespace marlune {

/**
 * Returns the frame in a format that Qt's video output draws correctly: with premultiplied alpha,
 * and opaque if it has no alpha channel. Returns the frame itself if it needs no conversion, which
 * is the case for all videos except RGB.
 */
QVideoFrame drawable(const QVideoFrame& frame);

}  // namespace marlune

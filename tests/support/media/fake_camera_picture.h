#pragma once

#include "support/media/fake_camera.h"

#include <cstdint>

namespace marlune::test {

// In the format YUYV: two bytes a pixel.
inline constexpr uint32_t CAMERA_BYTES_A_ROW = CAMERA_WIDTH * 2;
inline constexpr uint32_t CAMERA_BYTES_A_PICTURE = CAMERA_BYTES_A_ROW * CAMERA_HEIGHT;

/** Draws a frame of a camera: see FakeCamera. */
void draw_camera_picture(uint8_t* picture, Colour border, uint32_t number);

}  // namespace marlune::test

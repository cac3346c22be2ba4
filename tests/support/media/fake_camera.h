#pragma once

#include "support/image.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/**
 * Simulated cameras. A program that links this library has no others: it replaces the system's
 * functions for the video devices below /dev and answers as a kernel driver would (V4L2, with
 * buffers of the caller). It passes all other calls on to the system.
 *
 * @code
 * plug_cameras({{.name = "Integrated Webcam"}, {.name = "Capture Card", .border = MAGENTA}});
 * @endcode
 */
namespace marlune::test {

inline constexpr Colour YELLOW{255, 255, 0, 255};
inline constexpr Colour CYAN{0, 255, 255, 255};
inline constexpr Colour MAGENTA{255, 0, 255, 255};

/**
 * A camera. Its image has four quarters, red and green above blue and white, in a border whose
 * colour identifies the camera. CAMERA_NUMBER contains the number of the frame, in black and white
 * bits.
 */
struct FakeCamera {
    std::string name;
    Colour border = YELLOW;
    bool has_controls = true;  // for exposure, focus, light and zoom
    bool is_locked = false;    // it is listed, but cannot be used
};

inline constexpr uint32_t CAMERA_WIDTH = 320;
inline constexpr uint32_t CAMERA_HEIGHT = 240;
inline constexpr uint32_t CAMERA_BORDER = 20;
inline constexpr uint32_t CAMERA_NUMBER_BITS = 12;
inline constexpr Rect CAMERA_NUMBER{40, 100, 20 * CAMERA_NUMBER_BITS, 40};

/**
 * Replaces the system's cameras with these, /dev/video0 and so on in their order. The former ones
 * are unplugged, even while they run. Returns when Qt has noticed, if Qt lists cameras by then.
 */
void plug_cameras(const std::vector<FakeCamera>& cameras);

/** Unplugs one camera. The others keep their places. */
void unplug_camera(const std::string& name);

/** The names of the cameras that are sending frames, and of those that a program has opened. */
std::vector<std::string> running_cameras();
std::vector<std::string> open_cameras();

/** The number of frames that all cameras have sent since the process began. */
int camera_pictures();

/**
 * The value of a control, by its number in linux/v4l2-controls.h; empty if the camera has no such
 * control.
 */
std::optional<int> camera_control(const std::string& name, uint32_t control);

}  // namespace marlune::test

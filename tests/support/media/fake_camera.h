#pragma once

#include "support/image.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/**
 * Cameras that are not there. A program that links this library has no other cameras than those: it
 * stands before the system's own functions and answers for the video devices below /dev as a kernel's
 * driver would (V4L2, with buffers of the caller's own). All else goes through to the system.
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
 * Its picture has four quarters, red and green above blue and white, in a border that tells one camera
 * from another; in CAMERA_NUMBER stands the number of the frame, in black and white bits.
 */
struct FakeCamera {
    std::string name;
    Colour border = YELLOW;
    bool has_controls = true;  // of exposure, focus, light and zoom
    bool is_locked = false;    // it is seen, but may not be used
};

inline constexpr uint32_t CAMERA_WIDTH = 320;
inline constexpr uint32_t CAMERA_HEIGHT = 240;
inline constexpr uint32_t CAMERA_BORDER = 20;
inline constexpr uint32_t CAMERA_NUMBER_BITS = 12;
inline constexpr Rect CAMERA_NUMBER{40, 100, 20 * CAMERA_NUMBER_BITS, 40};

/**
 * Makes these the system's cameras, /dev/video0 and so on in their order; those that there were are
 * unplugged, even while they run. Returns when Qt knows of it, if it asks for cameras at all by now.
 */
void plug_cameras(const std::vector<FakeCamera>& cameras);

/** Takes one away and leaves the others where they are. */
void unplug_camera(const std::string& name);

/** The names of those that are giving pictures, and of those that somebody has opened. */
std::vector<std::string> running_cameras();
std::vector<std::string> open_cameras();

/** How many pictures have been given since the process began. */
int camera_pictures();

/** A control's value, by its number in linux/v4l2-controls.h; nothing where there is no such control. */
std::optional<int> camera_control(const std::string& name, uint32_t control);

}  // namespace marlune::test

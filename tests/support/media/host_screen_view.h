#pragma once

#include "support/host_view.h"
#include "support/media/screen_server.h"

#include <marlune/mscreen_capture_view.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace marlune::test {

/** A screen capture view. What waits draws frames meanwhile; an AssertionResult says what was there. */
class HostScreenView : public HostViewOf<MScreenCaptureView> {
public:
    using HostViewOf::HostViewOf;

    /** Makes the component's scene. */
    bool load();

    /** Chooses a screen and makes the component's scene. */
    bool load(const std::string& screen);

    /** Waits until a pixel of the texture has a colour. */
    testing::AssertionResult wait_for_colour(uint32_t x, uint32_t y, Colour colour);

    /** Waits until an area of the texture has a colour, all of it. */
    testing::AssertionResult wait_for_colour(Rect area, Colour colour);

    /** Waits until there is a notice where the middle of the picture would be, and nothing around. */
    testing::AssertionResult wait_for_notice();
};

/** How many threads of this process take pictures of screens. */
int capturing_threads();

/** Whether the texture has nothing but a notice in its middle. */
bool shows_notice(const Image& image);

}  // namespace marlune::test

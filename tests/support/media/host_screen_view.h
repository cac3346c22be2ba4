#pragma once

#include "support/host_view.h"
#include "support/media/screen_server.h"

#include <marlune/mscreen_capture_view.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace marlune::test {

/**
 * A screen capture view. The members that wait draw frames meanwhile; an AssertionResult states the
 * actual content if a wait fails.
 */
class HostScreenView : public HostViewOf<MScreenCaptureView> {
public:
    using HostViewOf::HostViewOf;

    /** Loads the component. */
    bool load();

    /** Chooses a screen and loads the component. */
    bool load(const std::string& screen);

    /** Waits until a pixel of the texture has a colour. */
    testing::AssertionResult wait_for_colour(uint32_t x, uint32_t y, Colour colour);

    /** Waits until a whole area of the texture has a colour. */
    testing::AssertionResult wait_for_colour(Rect area, Colour colour);

    /**
     * Waits until the texture shows a notice in the middle of the image's place, and nothing around
     * it.
     */
    testing::AssertionResult wait_for_notice();
};

/** The number of threads of this process that capture screens. */
int capturing_threads();

/** Whether the texture shows nothing but a notice in its middle. */
bool shows_notice(const Image& image);

}  // namespace marlune::test

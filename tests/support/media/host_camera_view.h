#pragma once

#include "support/media/fake_camera.h"
#include "support/media/followed_view.h"

#include <marlune/mcamera_view.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace marlune::test {

// Numbers that hosts get.
enum CameraError { NO_CAMERA_ERROR, CAMERA_ERROR };

/** Has all callbacks of a view write to `log`, which they keep alive. */
void write_to(std::shared_ptr<EventLog> log, const MCameraView& view);

/**
 * A camera view whose callbacks are all followed, by names without "set_func_".
 *
 * @code
 * plug_cameras({{.name = "Integrated Webcam"}});
 * HostCameraView view;
 * ASSERT_TRUE(view.show("integrated"));
 * EXPECT_TRUE(view.goes_on());
 * @endcode
 */
class HostCameraView : public FollowedView<MCameraView> {
public:
    explicit HostCameraView(Size resolution = {}, VulkanHost& host = test::host());

    /** Makes the component's scene. */
    bool load();

    /** Chooses a camera, makes the scene, starts the camera, and waits for its picture. */
    testing::AssertionResult show(const std::string& hint = {});

    /** The number of the frame, of a picture that fills the texture; nothing when that is no number. */
    std::optional<int> frame_number();

    /** Waits until later frames are shown than there is now. */
    testing::AssertionResult goes_on();

    /** Waits until a point of the camera's picture, which fills the texture, has a colour. */
    testing::AssertionResult wait_for_colour_at(uint32_t x, uint32_t y, Colour colour);

    /** Waits until the border around the picture is that of a camera. */
    testing::AssertionResult wait_for_border(Colour colour);
};

}  // namespace marlune::test

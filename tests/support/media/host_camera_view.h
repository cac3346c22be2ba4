#pragma once

#include "support/getters.h"
#include "support/media/fake_camera.h"
#include "support/media/followed_view.h"

#include <marlune/mcamera_view.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace marlune::test {

// Values of the public interface that hosts read.
enum CameraError { NO_CAMERA_ERROR, CAMERA_ERROR };

using CameraGetters =
    Getters<&MCameraView::get_is_active, &MCameraView::is_available, &MCameraView::get_fill_mode,
            &MCameraView::get_error, &MCameraView::get_error_string,
            &MCameraView::get_exposure_mode, &MCameraView::get_exposure_compensation,
            &MCameraView::get_exposure_time, &MCameraView::get_manual_exposure_time,
            &MCameraView::minimum_exposure_time, &MCameraView::maximum_exposure_time,
            &MCameraView::get_iso_sensitivity, &MCameraView::get_manual_iso_sensitivity,
            &MCameraView::minimum_iso_sensitivity, &MCameraView::maximum_iso_sensitivity,
            &MCameraView::get_flash_mode, &MCameraView::get_is_flash_ready,
            &MCameraView::get_torch_mode, &MCameraView::get_focus_mode,
            &MCameraView::get_focus_distance, &MCameraView::get_focus_point,
            &MCameraView::get_custom_focus_point, &MCameraView::get_white_balance_mode,
            &MCameraView::get_color_temperature, &MCameraView::get_zoom_factor,
            &MCameraView::get_minimum_zoom_factor, &MCameraView::get_maximum_zoom_factor>;

/** Registers callbacks for all events of a view. They write to `log` and keep it alive. */
void write_to(std::shared_ptr<EventLog> log, const MCameraView& view);

/**
 * A camera view with a log of all its callbacks, by their names without "set_func_".
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

    /** Loads the component. */
    bool load();

    /** Chooses a camera, loads the component, starts the camera, and waits for its image. */
    testing::AssertionResult show(const std::string& hint = {});

    /**
     * The number of the frame, from a camera image that fills the texture; empty if the bits form
     * no number.
     */
    std::optional<int> frame_number();

    /** Waits until the texture shows a later frame than now. */
    testing::AssertionResult goes_on();

    /** Waits until a point of the camera's image, which fills the texture, has a colour. */
    testing::AssertionResult wait_for_colour_at(uint32_t x, uint32_t y, Colour colour);

    /** Waits until the border around the image is that of a camera. */
    testing::AssertionResult wait_for_border(Colour colour);
};

}  // namespace marlune::test

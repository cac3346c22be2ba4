// The settings of a camera, down to the device's own controls and back to the host; and facades
// without a camera.

#include "support/media/host_camera_view.h"
#include "support/message_log.h"

#include <linux/v4l2-controls.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

using Names = std::vector<std::string>;
using Point = std::vector<float>;

constexpr Point nowhere()
{
    return {-1, -1};
}

// Numbers that hosts set and get.
enum ExposureMode { AUTOMATIC_EXPOSURE, MANUAL_EXPOSURE, PORTRAIT };
enum FlashMode { FLASH_OFF, FLASH_ON, AUTOMATIC_FLASH };
enum TorchMode { TORCH_OFF, TORCH_ON };
enum FocusMode { AUTOMATIC_FOCUS, MANUAL_FOCUS = 5 };
enum WhiteBalance { AUTOMATIC_BALANCE, MANUAL_BALANCE, SUNLIGHT, CLOUDY };

class CameraControls : public testing::Test {
protected:
    void SetUp() override
    {
        plug_cameras({{.name = "Able"}, {.name = "Plain", .has_controls = false}});
        view = std::make_unique<HostCameraView>();
        view->facade().set_camera_hint("able");
    }

    const MCameraView& camera() { return view->facade(); }
    std::optional<int> control(uint32_t id) { return camera_control("Able", id); }

    /** The reports since the last call. */
    Names take_reports()
    {
        const Names texts = view->reports(taken_);
        taken_ += texts.size();
        return texts;
    }

    std::unique_ptr<HostCameraView> view;

private:
    size_t taken_ = 0;
};

// --- Zoom ----------------------------------------------------------------------------------------

TEST_F(CameraControls, zoom_within_the_range_of_the_camera)
{
    EXPECT_EQ(camera().get_minimum_zoom_factor(), 1);
    const float maximum = camera().get_maximum_zoom_factor();
    EXPECT_GT(maximum, 1);
    EXPECT_EQ(camera().get_zoom_factor(), 1);

    camera().set_zoom_factor(1.5f);
    EXPECT_EQ(camera().get_zoom_factor(), 1.5f);
    EXPECT_GT(control(V4L2_CID_ZOOM_ABSOLUTE), 100);
    EXPECT_LT(control(V4L2_CID_ZOOM_ABSOLUTE), 400);
    EXPECT_EQ(take_reports(), Names{"zoom_factor_changed"});

    camera().set_zoom_factor(1000);
    EXPECT_EQ(camera().get_zoom_factor(), maximum);
    EXPECT_EQ(control(V4L2_CID_ZOOM_ABSOLUTE), 400);
    camera().set_zoom_factor(-3);
    EXPECT_EQ(camera().get_zoom_factor(), 1);
    EXPECT_EQ(control(V4L2_CID_ZOOM_ABSOLUTE), 100);
}

TEST_F(CameraControls, zoom_at_a_rate)
{
    camera().zoom_to(2, 0);
    EXPECT_EQ(camera().get_zoom_factor(), 2);
    EXPECT_EQ(control(V4L2_CID_ZOOM_ABSOLUTE), 400);
    camera().zoom_to(1, 1000);
    EXPECT_TRUE(view->draw_until([&] { return control(V4L2_CID_ZOOM_ABSOLUTE) == 100; }));
    EXPECT_TRUE(view->wait_for_event("zoom_factor_changed"));
}

// --- Exposure ------------------------------------------------------------------------------------

TEST_F(CameraControls, expose_as_long_as_the_host_wants)
{
    EXPECT_EQ(camera().get_exposure_mode(), AUTOMATIC_EXPOSURE);
    EXPECT_FLOAT_EQ(camera().get_exposure_time(), 0.025f);
    EXPECT_EQ(camera().get_manual_exposure_time(), -1);
    EXPECT_TRUE(camera().is_exposure_mode_supported(MANUAL_EXPOSURE));

    camera().set_exposure_mode(MANUAL_EXPOSURE);
    EXPECT_EQ(camera().get_exposure_mode(), MANUAL_EXPOSURE);
    EXPECT_EQ(control(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_MANUAL);
    EXPECT_EQ(take_reports(), Names{"exposure_mode_changed"});

    camera().set_manual_exposure_time(0.1f);
    EXPECT_FLOAT_EQ(camera().get_manual_exposure_time(), 0.1f);
    EXPECT_FLOAT_EQ(camera().get_exposure_time(), 0.1f);
    EXPECT_EQ(control(V4L2_CID_EXPOSURE_ABSOLUTE), 1000);
    EXPECT_EQ(take_reports(), Names{"exposure_time_changed 0.1"});

    camera().set_auto_exposure_time();
    EXPECT_TRUE(view->wait_for_event("exposure_time_changed", 2));
    camera().set_exposure_mode(AUTOMATIC_EXPOSURE);
    EXPECT_EQ(camera().get_exposure_mode(), AUTOMATIC_EXPOSURE);
}

TEST_F(CameraControls, expose_brighter)
{
    camera().set_exposure_compensation(0.125f);
    EXPECT_EQ(camera().get_exposure_compensation(), 0.125f);
    EXPECT_EQ(control(V4L2_CID_AUTO_EXPOSURE_BIAS), 125) << "in thousandths of EV";
    EXPECT_EQ(take_reports(), Names{"exposure_compensation_changed 0.125"});
}

TEST_F(CameraControls, leave_the_mode_where_the_camera_has_none_of_a_kind)
{
    for (const int mode : {int(PORTRAIT), 16, 17, -1, 1000}) {
        EXPECT_FALSE(camera().is_exposure_mode_supported(mode)) << mode;
        camera().set_exposure_mode(mode);
        EXPECT_EQ(camera().get_exposure_mode(), AUTOMATIC_EXPOSURE) << mode;
    }
    EXPECT_EQ(take_reports(), Names{});
}

TEST_F(CameraControls, are_as_sensitive_as_the_host_wants)
{
    EXPECT_EQ(camera().get_iso_sensitivity(), 200);
    EXPECT_EQ(camera().get_manual_iso_sensitivity(), -1);
    EXPECT_EQ(camera().minimum_iso_sensitivity(), 100);
    camera().set_manual_iso_sensitivity(100);
    EXPECT_EQ(camera().get_iso_sensitivity(), 100);
    EXPECT_EQ(control(V4L2_CID_ISO_SENSITIVITY), 100);
    EXPECT_EQ(control(V4L2_CID_ISO_SENSITIVITY_AUTO), V4L2_ISO_SENSITIVITY_MANUAL);
    camera().set_auto_iso_sensitivity();
    EXPECT_EQ(camera().get_manual_iso_sensitivity(), -1);
    EXPECT_EQ(control(V4L2_CID_ISO_SENSITIVITY_AUTO), V4L2_ISO_SENSITIVITY_AUTO);
}

// --- Light and focus -----------------------------------------------------------------------------

TEST_F(CameraControls, balance_white)
{
    EXPECT_EQ(camera().get_white_balance_mode(), AUTOMATIC_BALANCE);
    EXPECT_EQ(camera().get_color_temperature(), 0);
    EXPECT_TRUE(camera().is_white_balance_mode_supported(SUNLIGHT));

    camera().set_white_balance_mode(CLOUDY);
    EXPECT_EQ(camera().get_white_balance_mode(), CLOUDY);
    EXPECT_EQ(control(V4L2_CID_AUTO_WHITE_BALANCE), 0);
    EXPECT_EQ(control(V4L2_CID_WHITE_BALANCE_TEMPERATURE), 6000);
    EXPECT_EQ(take_reports(), Names{"white_balance_mode_changed"});

    camera().set_color_temperature(3200);
    EXPECT_EQ(camera().get_white_balance_mode(), MANUAL_BALANCE);
    EXPECT_EQ(camera().get_color_temperature(), 3200);
    EXPECT_EQ(control(V4L2_CID_WHITE_BALANCE_TEMPERATURE), 3200);
    EXPECT_EQ(take_reports(), (Names{"white_balance_mode_changed", "color_temperature_changed"}));

    camera().set_color_temperature(0);
    EXPECT_EQ(camera().get_white_balance_mode(), AUTOMATIC_BALANCE);
    EXPECT_EQ(control(V4L2_CID_AUTO_WHITE_BALANCE), 1);
}

TEST_F(CameraControls, focus_at_a_distance)
{
    EXPECT_EQ(camera().get_focus_mode(), AUTOMATIC_FOCUS);
    EXPECT_TRUE(camera().is_focus_mode_supported(MANUAL_FOCUS));
    camera().set_focus_mode(MANUAL_FOCUS);
    EXPECT_EQ(camera().get_focus_mode(), MANUAL_FOCUS);
    EXPECT_EQ(take_reports(), Names{"focus_mode_changed"});
    camera().set_focus_distance(0.5f);
    EXPECT_EQ(camera().get_focus_distance(), 0.5f);
    EXPECT_EQ(take_reports(), Names{"focus_distance_changed"});
}

TEST_F(CameraControls, have_no_point_to_focus_on)
{
    expect_message("set_custom_focus_point: give both x and y");
    EXPECT_EQ(camera().get_focus_point(), nowhere());
    EXPECT_EQ(camera().get_custom_focus_point(), nowhere());
    camera().set_custom_focus_point({0.25f, 0.75f});
    camera().set_custom_focus_point({0.25f});
    EXPECT_EQ(camera().get_custom_focus_point(), nowhere()) << "these cameras have no such point";
}

TEST_F(CameraControls, flash)
{
    EXPECT_TRUE(camera().get_is_flash_ready());
    EXPECT_TRUE(camera().is_flash_mode_supported(FLASH_OFF));
    EXPECT_FALSE(camera().is_flash_mode_supported(100));
    EXPECT_TRUE(camera().is_torch_mode_supported(TORCH_OFF));
    EXPECT_FALSE(camera().is_torch_mode_supported(100));
    camera().set_flash_mode(AUTOMATIC_FLASH);
    EXPECT_EQ(camera().get_flash_mode(), AUTOMATIC_FLASH);
    EXPECT_EQ(control(V4L2_CID_FLASH_LED_MODE), V4L2_FLASH_LED_MODE_FLASH);
    EXPECT_EQ(take_reports(), Names{"flash_mode_changed"});
}

// --- What cannot be set --------------------------------------------------------------------------

void call_every_control(const MCameraView& camera)
{
    camera.set_exposure_mode(MANUAL_EXPOSURE);
    camera.set_exposure_compensation(1);
    camera.set_manual_exposure_time(0.1f);
    camera.set_auto_exposure_time();
    camera.set_manual_iso_sensitivity(100);
    camera.set_auto_iso_sensitivity();
    camera.set_flash_mode(FLASH_ON);
    camera.set_torch_mode(TORCH_ON);
    camera.set_focus_mode(MANUAL_FOCUS);
    camera.set_focus_distance(0.5f);
    camera.set_custom_focus_point({0.5f, 0.5f});
    camera.set_white_balance_mode(SUNLIGHT);
    camera.set_color_temperature(5000);
    camera.set_zoom_factor(2);
    camera.zoom_to(2, 1);
}

TEST_F(CameraControls, of_a_camera_without_them_change_nothing)
{
    // Qt checks most of them before it sets them, but not all.
    allow_messages_matching("Unable to [gs]et the V4L2 Parameter");
    camera().set_camera_hint("plain");
    camera().start();
    take_reports();
    call_every_control(camera());
    EXPECT_EQ(camera().get_exposure_mode(), AUTOMATIC_EXPOSURE);
    EXPECT_EQ(camera().get_exposure_compensation(), 0);
    EXPECT_LE(camera().get_exposure_time(), 0);
    EXPECT_EQ(camera().get_manual_exposure_time(), -1);
    EXPECT_EQ(camera().minimum_exposure_time(), -1);
    EXPECT_EQ(camera().maximum_exposure_time(), -1);
    EXPECT_EQ(camera().get_iso_sensitivity(), -1);
    EXPECT_EQ(camera().get_manual_iso_sensitivity(), -1);
    EXPECT_EQ(camera().minimum_iso_sensitivity(), -1);
    EXPECT_EQ(camera().maximum_iso_sensitivity(), -1);
    EXPECT_EQ(camera().get_flash_mode(), FLASH_OFF);
    EXPECT_FALSE(camera().get_is_flash_ready());
    EXPECT_EQ(camera().get_torch_mode(), TORCH_OFF);
    EXPECT_EQ(camera().get_focus_mode(), AUTOMATIC_FOCUS);
    EXPECT_EQ(camera().get_white_balance_mode(), AUTOMATIC_BALANCE);
    EXPECT_EQ(camera().get_color_temperature(), 0);
    EXPECT_EQ(camera().get_zoom_factor(), 1);
    EXPECT_EQ(camera().get_minimum_zoom_factor(), 1);
    EXPECT_EQ(camera().get_maximum_zoom_factor(), 1);
    EXPECT_EQ(take_reports(), Names{"focus_distance_changed"}) << "the one that Qt does not check";
    EXPECT_EQ(running_cameras(), Names{"Plain"});
}

TEST_F(CameraControls, take_numbers_that_are_none)
{
    allow_messages_matching("Unable to set the V4L2 Parameter");
    for (const float number : {std::numeric_limits<float>::quiet_NaN(),
                               std::numeric_limits<float>::infinity(), -1e30f}) {
        camera().set_zoom_factor(number);
        camera().zoom_to(number, number);
        camera().set_exposure_compensation(number);
        camera().set_manual_exposure_time(number);
        camera().set_focus_distance(number);
        camera().set_custom_focus_point({number, number});
    }
    for (const int number : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        camera().set_manual_iso_sensitivity(number);
        camera().set_color_temperature(number);
        camera().set_white_balance_mode(number);
        camera().set_focus_mode(number);
        camera().set_flash_mode(number);
        camera().set_torch_mode(number);
    }
    camera().start();
    EXPECT_EQ(running_cameras(), Names{"Able"});
}

TEST_F(CameraControls, do_not_report_what_the_camera_supports)
{
    expect_message("get_supported_features: not implemented");
    EXPECT_EQ(camera().get_supported_features(), 0);
}

// --- Facades without a camera --------------------------------------------------------------------

void expect_defaults_of_no_camera(const MCameraView& view)
{
    CameraGetters::expect_defaults(view);
    EXPECT_FALSE(view.is_exposure_mode_supported(0));
    EXPECT_FALSE(view.is_flash_mode_supported(0));
    EXPECT_FALSE(view.is_torch_mode_supported(0));
    EXPECT_FALSE(view.is_focus_mode_supported(0));
    EXPECT_FALSE(view.is_white_balance_mode_supported(0));
}

void call_every_setter(const MCameraView& view)
{
    view.start();
    view.stop();
    view.set_active(true);
    view.set_auto_play(true);
    view.set_fill_mode(STRETCH);
    call_every_control(view);
    write_to(std::make_shared<EventLog>(), view);
}

TEST(CameraFacade, has_the_defaults_of_no_camera_before_it_has_chosen_one)
{
    expect_message("get_supported_features: not implemented");
    plug_cameras({{.name = "Able"}});
    HostCameraView view;
    call_every_setter(view.facade());
    expect_defaults_of_no_camera(view.facade());
    EXPECT_EQ(view->get_supported_features(), 0);
    EXPECT_TRUE(open_cameras().empty());
}

TEST(CameraFacade, has_the_defaults_of_no_view_after_destroy)
{
    plug_cameras({{.name = "Able"}});
    HostCameraView view;
    ASSERT_TRUE(view.show());
    const MCameraView stale = view.facade();
    view->destroy();
    stale.set_camera_hint("0");
    call_every_setter(stale);
    expect_defaults_of_no_camera(stale);
    EXPECT_EQ(stale.get_supported_features(), 0);
    EXPECT_FALSE(stale.load("Multimedia", "Camera"));
    EXPECT_TRUE(wait_until([] { return open_cameras().empty(); }));
}

}  // namespace

}  // namespace marlune::test

// The image of a camera in a scene, and the camera's life: on, off, unplugged, gone.

#include "support/media/host_camera_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace marlune {

using namespace test;

namespace {

using Names = std::vector<std::string>;

class Camera : public testing::Test {
protected:
    void SetUp() override
    {
        plug_cameras({{.name = "Integrated Webcam"},
                      {.name = "USB Camera Pro", .border = CYAN},
                      {.name = "Capture Card", .border = MAGENTA, .has_controls = false}});
    }
};

/** For an unplugged camera: Qt's messages depend on what it was doing. */
void allow_qt_to_miss_it()
{
    allow_messages_matching("Cannot take buffer|Cannot add buffer|Couldn't add V4L2 buffer");
}

// --- The picture ---------------------------------------------------------------------------------

TEST_F(Camera, shows_what_it_sees)
{
    HostCameraView view;
    ASSERT_TRUE(view.show());
    EXPECT_TRUE(view.wait_for_border(YELLOW));
    EXPECT_TRUE(view.wait_for_colour_at(60, 60, RED));
    EXPECT_TRUE(view.wait_for_colour_at(260, 60, GREEN));
    EXPECT_TRUE(view.wait_for_colour_at(60, 180, BLUE));
    EXPECT_TRUE(view.wait_for_colour_at(260, 180, WHITE));
}

TEST_F(Camera, shows_one_frame_after_the_other)
{
    HostCameraView view;
    ASSERT_TRUE(view.show());
    int last = *view.frame_number();
    for (int frames = 0; frames < 30; ++frames) {
        const auto is_later = [&] {
            const std::optional<int> number = view.frame_number();
            const bool later = number && *number > last;
            last = later ? *number : last;
            return later;
        };
        ASSERT_TRUE(view.draw_until(is_later)) << "after frame " << last;
    }
}

TEST_F(Camera, fills_the_scene_in_three_ways)
{
    // The image is 4:3, the scene 2:1. Whole, it leaves 85 columns free on either side; cropped, it
    // loses 64 rows of its 384 above and below.
    HostCameraView view({512, 256});
    ASSERT_TRUE(view.show());
    constexpr Colour FREE = TRANSPARENT;
    EXPECT_TRUE(view.wait_for_colour(8, 128, YELLOW, 12)) << "stretched";
    EXPECT_TRUE(view.wait_for_colour(160, 8, YELLOW, 12)) << "stretched";

    view->set_fill_mode(PRESERVE_ASPECT_FIT);
    EXPECT_TRUE(view.wait_for_colour(8, 128, FREE)) << "whole";
    EXPECT_TRUE(view.wait_for_colour(80, 128, FREE)) << "whole";
    EXPECT_TRUE(view.wait_for_colour(94, 128, YELLOW, 12)) << "whole";
    EXPECT_TRUE(view.wait_for_colour(418, 128, YELLOW, 12)) << "whole";
    EXPECT_TRUE(view.wait_for_colour(432, 128, FREE)) << "whole";
    EXPECT_TRUE(view.wait_for_colour(160, 8, YELLOW, 12)) << "whole";

    view->set_fill_mode(PRESERVE_ASPECT_CROP);
    EXPECT_TRUE(view.wait_for_colour(8, 128, YELLOW, 12)) << "cropped";
    EXPECT_TRUE(view.wait_for_colour(160, 8, RED, 12)) << "cropped";
    EXPECT_TRUE(view.wait_for_colour(400, 248, WHITE, 12)) << "cropped";
}

TEST_F(Camera, takes_unknown_fill_modes_for_a_known_one)
{
    HostCameraView view;
    EXPECT_EQ(view->get_fill_mode(), unsigned(PRESERVE_ASPECT_FIT));
    for (const unsigned int mode : {7u, 3u, 2147483647u, 4294967294u, 2147483648u}) {
        view->set_fill_mode(PRESERVE_ASPECT_CROP);
        EXPECT_EQ(view->get_fill_mode(), unsigned(PRESERVE_ASPECT_CROP));
        view->set_fill_mode(mode);
        EXPECT_EQ(view->get_fill_mode(), unsigned(STRETCH)) << mode;
    }
    view->set_fill_mode(4294967295u);
    EXPECT_EQ(view->get_fill_mode(), 4294967295u) << "as a signed number it is in range";
}

TEST_F(Camera, is_shown_by_a_view_each)
{
    std::deque<HostCameraView> views(3);
    for (size_t i = 0; i < views.size(); ++i)
        ASSERT_TRUE(views[i].show(std::to_string(i)));
    EXPECT_EQ(running_cameras(), (Names{"Capture Card", "Integrated Webcam", "USB Camera Pro"}));
    EXPECT_TRUE(views[0].wait_for_border(YELLOW));
    EXPECT_TRUE(views[1].wait_for_border(CYAN));
    EXPECT_TRUE(views[2].wait_for_border(MAGENTA));
    for (HostCameraView& view : views)
        EXPECT_TRUE(view.goes_on());
}

TEST_F(Camera, shows_a_notice_where_no_camera_is_plugged)
{
    plug_cameras({});
    HostCameraView view;
    view->set_camera_hint("0");
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(view.draw_until([&] { return shows_something(view.picture(), "words"); }));
    EXPECT_TRUE(view.wait_for_event("error_occurred", "1 no cameras found"));
}

TEST_F(Camera, shows_a_notice_while_it_is_off)
{
    HostCameraView view;
    view->set_camera_hint("0");
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(view.draw_until([&] { return shows_something(view.picture(), "words"); }));
    EXPECT_FALSE(view->get_is_active()) << "the scene has switched the camera on";
}

// --- On and off ----------------------------------------------------------------------------------

TEST_F(Camera, runs_from_its_start_to_its_stop)
{
    HostCameraView view;
    view->set_camera_hint("usb");
    EXPECT_FALSE(view->get_is_active());
    EXPECT_TRUE(view->is_available());
    EXPECT_TRUE(running_cameras().empty());
    view->start();
    EXPECT_TRUE(view->get_is_active());
    EXPECT_EQ(running_cameras(), Names{"USB Camera Pro"});
    view->start();
    view->stop();
    EXPECT_FALSE(view->get_is_active());
    EXPECT_TRUE(running_cameras().empty());
    view->stop();
    EXPECT_EQ(view.reports(), (Names{"active_changed", "active_changed"}));
    EXPECT_EQ(view->get_error(), NO_CAMERA_ERROR);
    EXPECT_EQ(view->get_error_string(), "");
}

TEST_F(Camera, is_switched_on_and_off_without_waiting)
{
    HostCameraView view;
    view->set_camera_hint("usb");
    view->set_active(true);
    EXPECT_TRUE(view->get_is_active()) << "in turn, before any later call";
    view->set_active(false);
    EXPECT_FALSE(view->get_is_active());
    EXPECT_EQ(view.reports(), (Names{"active_changed", "active_changed"}));
}

TEST_F(Camera, is_left_running_by_auto_play_off)
{
    HostCameraView view;
    view->set_auto_play(true);
    view->set_camera_hint("0");
    EXPECT_FALSE(view->get_is_active()) << "choosing a camera has started it";
    view->set_auto_play(false);
    EXPECT_FALSE(view->get_is_active());
    view->set_auto_play(true);
    EXPECT_TRUE(view->get_is_active());
    view->set_auto_play(false);
    EXPECT_TRUE(view->get_is_active());
    EXPECT_EQ(running_cameras(), Names{"Integrated Webcam"});
}

TEST_F(Camera, shows_its_picture_again_after_a_stop)
{
    HostCameraView view;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(view.show(i == 0 ? "0" : "-1"));
        view->stop();
        EXPECT_TRUE(view.draw_until([&] { return !view.frame_number(); }))
            << "the last image is still shown";
        view->start();
        EXPECT_TRUE(view.goes_on());
        view->stop();
    }
}

TEST_F(Camera, answers_a_callback_that_asks_it)
{
    HostCameraView view;
    const MCameraView facade = view.facade();
    std::atomic<int> answer = -1;
    view->set_func_active_changed([&answer, facade] { answer = facade.get_is_active(); });
    view->set_camera_hint("0");
    view->start();
    EXPECT_EQ(answer, 1);
    view->stop();
    EXPECT_EQ(answer, 0);
}

// --- What goes wrong -----------------------------------------------------------------------------

TEST_F(Camera, reports_that_another_view_uses_it)
{
    expect_message("Cannot request V4L2_MEMORY_USERPTR buffers");
    HostCameraView first, second;
    ASSERT_TRUE(first.show("0"));
    second->set_camera_hint("0");
    ASSERT_TRUE(second.load());
    EXPECT_TRUE(second.draw_until([&] { return shows_something(second.picture(), "words"); }));
    const Image off = second.picture();
    second->start();
    EXPECT_EQ(second->get_error(), CAMERA_ERROR);
    EXPECT_EQ(second->get_error_string(), "Camera is in use");
    EXPECT_EQ(second.reports(),
              (Names{"error_occurred 1 Camera is in use", "error_changed", "active_changed"}));
    EXPECT_TRUE(second.draw_until([&] { return second.picture() != off; })) << "other words";
    EXPECT_TRUE(first.goes_on()) << "the first view no longer shows the camera";
}

TEST_F(Camera, can_be_opened_once_the_other_view_has_gone)
{
    expect_message("Cannot request V4L2_MEMORY_USERPTR buffers");
    HostCameraView view;
    {
        HostCameraView other;
        ASSERT_TRUE(other.show("usb"));
        other->stop();
        view->set_camera_hint("usb");
        view->start();
        EXPECT_EQ(view->get_error(), CAMERA_ERROR) << "off, the other one still has it";
    }
    ASSERT_TRUE(view.show("usb"));
    EXPECT_EQ(view->get_error(), NO_CAMERA_ERROR);
    EXPECT_TRUE(view.wait_for_border(CYAN));
}

TEST_F(Camera, reports_that_it_may_not_be_used)
{
    expect_message_matching("Unable to open the camera \"/dev/video0\".*Permission denied");
    plug_cameras({{.name = "Locked", .is_locked = true}});
    HostCameraView view;
    view->set_camera_hint("0");
    ASSERT_TRUE(view.load());
    view->start();
    EXPECT_EQ(view->get_error(), CAMERA_ERROR);
    EXPECT_EQ(view->get_error_string(), "Cannot open camera");
    EXPECT_EQ(view.reports(),
              (Names{"error_occurred 1 Cannot open camera", "error_changed", "active_changed"}));
    EXPECT_TRUE(view.draw_until([&] { return shows_something(view.picture(), "words"); }));
}

void set_and_ask_everything(const MCameraView& camera)
{
    camera.set_exposure_mode(1);
    camera.set_exposure_compensation(0.5f);
    camera.set_manual_exposure_time(0.02f);
    camera.set_auto_exposure_time();
    camera.set_manual_iso_sensitivity(200);
    camera.set_auto_iso_sensitivity();
    camera.set_focus_mode(5);
    camera.set_focus_distance(0.5f);
    camera.set_focus_mode(0);
    camera.set_flash_mode(1);
    camera.set_torch_mode(1);
    camera.set_white_balance_mode(1);
    camera.set_color_temperature(4000);
    camera.set_zoom_factor(1.5f);
    camera.zoom_to(2, 1);
    EXPECT_EQ(camera.get_exposure_time(), -1);
    EXPECT_EQ(camera.get_iso_sensitivity(), -1);
    camera.get_is_flash_ready();
}

TEST_F(Camera, that_may_not_be_used_takes_no_setting)
{
    expect_message_matching("Unable to open the camera \"/dev/video0\".*Permission denied");
    plug_cameras({{.name = "Locked", .is_locked = true}});
    HostCameraView view;
    view->set_camera_hint("0");
    set_and_ask_everything(view.facade());
    EXPECT_EQ(view->get_error(), CAMERA_ERROR);
}

TEST_F(Camera, that_is_unplugged_takes_no_setting)
{
    allow_qt_to_miss_it();
    HostCameraView view;
    ASSERT_TRUE(view.show("0"));
    view->set_focus_mode(5);
    unplug_camera("Integrated Webcam");
    ASSERT_TRUE(view.draw_until([] { return open_cameras().empty(); }));
    set_and_ask_everything(view.facade());
    EXPECT_TRUE(view->is_available());
}

TEST_F(Camera, that_is_unplugged_is_reported_and_does_not_disturb_others)
{
    allow_qt_to_miss_it();
    HostCameraView view, other;
    ASSERT_TRUE(view.show("0"));
    ASSERT_TRUE(other.show("1"));
    unplug_camera("Integrated Webcam");
    EXPECT_TRUE(view.draw_until([] { return running_cameras() == Names{"USB Camera Pro"}; }));
    EXPECT_TRUE(view.draw_until([&] { return !view.frame_number(); }));
    EXPECT_TRUE(view.draw_until([&] { return shows_something(view.picture(), "words"); }));
    EXPECT_TRUE(other.goes_on());
    view->stop();
    EXPECT_FALSE(view->get_is_active());
}

TEST_F(Camera, that_was_unplugged_can_be_opened_once_it_is_back)
{
    allow_qt_to_miss_it();
    HostCameraView view;
    ASSERT_TRUE(view.show("usb"));
    unplug_camera("USB Camera Pro");
    EXPECT_TRUE(view.draw_until([] { return running_cameras().empty(); }));
    EXPECT_TRUE(view->get_is_active()) << "it is not reported";
    plug_cameras({{.name = "USB Camera Pro", .border = CYAN}});
    view->set_camera_hint("usb");
    view->start();
    EXPECT_TRUE(view.goes_on());
    EXPECT_TRUE(view.wait_for_border(CYAN));
}

TEST_F(Camera, follows_another_that_was_plugged_since)
{
    allow_qt_to_miss_it();
    HostCameraView view;
    ASSERT_TRUE(view.show("0"));
    plug_cameras({{.name = "New", .border = MAGENTA}});
    EXPECT_TRUE(view.draw_until([] { return running_cameras().empty(); }));
    view->set_camera_hint("new");
    view->start();
    EXPECT_TRUE(view.wait_for_border(MAGENTA));
    EXPECT_TRUE(view.goes_on());
}

TEST_F(Camera, that_is_found_later_is_shown_in_the_scene_that_is_there)
{
    plug_cameras({});
    HostCameraView view;
    view->set_camera_hint("0");
    view->set_fill_mode(STRETCH);
    ASSERT_TRUE(view.load());
    plug_cameras({{.name = "Late", .border = CYAN}});
    view->set_camera_hint("0");
    view->start();
    EXPECT_TRUE(view.goes_on());
    EXPECT_TRUE(view.wait_for_border(CYAN));
}

// --- Its end -------------------------------------------------------------------------------------

TEST_F(Camera, goes_with_its_scene)
{
    HostCameraView view;
    ASSERT_TRUE(view.show("usb"));
    view->set_focus_distance(0.25f);
    view->reset();
    EXPECT_TRUE(open_cameras().empty()) << "the camera is still open";
    EXPECT_TRUE(view.wait_for_event("active_changed"));
    EXPECT_FALSE(view->get_is_active());
    EXPECT_FALSE(view->is_available());
    EXPECT_EQ(view->get_focus_distance(), 0);
    EXPECT_EQ(view->get_focus_point(), std::vector<float>());
    view->start();
    EXPECT_TRUE(open_cameras().empty()) << "there is none to start";
    view->reset();
}

TEST_F(Camera, is_chosen_again_for_the_next_scene)
{
    HostCameraView view;
    ASSERT_TRUE(view.show("usb"));
    view->set_focus_distance(0.25f);
    ASSERT_TRUE(view.load());
    EXPECT_FALSE(view->get_is_active());
    EXPECT_TRUE(view->is_available());
    EXPECT_EQ(view->get_focus_distance(), 1) << "not the camera's initial value";
    view->start();
    EXPECT_TRUE(view.goes_on());
    EXPECT_TRUE(view.wait_for_border(CYAN));
}

TEST_F(Camera, is_kept_by_reset_while_no_scene_has_it)
{
    HostCameraView view;
    view->set_camera_hint("usb");
    view->start();
    view->reset();
    EXPECT_FALSE(view->get_is_active());
    EXPECT_TRUE(view->is_available());
}

TEST_F(Camera, is_given_back_when_its_view_is_destroyed_while_it_runs)
{
    for (int i = 0; i < 5; ++i) {
        HostCameraView view;
        ASSERT_TRUE(view.show("0"));
    }
    EXPECT_TRUE(wait_until([] { return open_cameras().empty(); }));
}

TEST_F(Camera, is_given_back_when_its_view_is_destroyed_at_once)
{
    for (int i = 0; i < 20; ++i) {
        HostCameraView view;
        view->set_camera_hint("0");
        view->set_active(true);
    }
    EXPECT_TRUE(wait_until([] { return open_cameras().empty(); }));
}

}  // namespace

}  // namespace marlune

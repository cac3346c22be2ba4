// The controls of the video player, operated by the mouse and the keys that a host sends.

#include "support/media/host_video_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

constexpr Size WIDE{640, 360};

enum PlayerKey : uint32_t { KEY_0 = 0x30, KEY_5 = 0x35, KEY_9 = 0x39, KEY_M = 0x4d };

struct Point {
    uint32_t x, y;
};

// The positions of the controls in a scene of 640 x 360; they scale with larger scenes.
constexpr uint32_t BAR_Y = 316, BAR_LEFT = 12, BAR_RIGHT = 628;
constexpr Point TO_START{25, 340}, PLAY{54, 340}, MUTE{83, 340};
constexpr uint32_t VOLUME_LEFT = 98, VOLUME_RIGHT = 153;
constexpr Point SUBTITLES{499, 340}, AUDIO{528, 340}, RATE{557, 340}, LOOP{586, 340},
    FILL{615, 340};
// A corner that the controls cover, but a square image does not.
constexpr Point CORNER{5, 355};
constexpr Point MIDDLE{320, 180};

uint32_t on_bar(double fraction)
{
    return uint32_t(std::lround(BAR_LEFT + fraction * (BAR_RIGHT - BAR_LEFT)));
}

class Controls : public testing::Test {
protected:
    testing::AssertionResult open_paused(const std::string& clip)
    {
        view->set_auto_play(false);
        if (const testing::AssertionResult opened = view.open(clip); !opened)
            return opened;
        view->pause();
        return view.wait_for_event("playback_state_changed", std::to_string(PAUSED));
    }

    void click(Point point)
    {
        // The buttons depend on the source, and are laid out when a frame is drawn.
        view.draw_frame();
        view.click(point.x, point.y);
    }

    uint8_t alpha_at(Point point) { return view.picture().pixel(point.x, point.y).a; }

    bool are_shown()
    {
        return view.draw_until([&] { return alpha_at(CORNER) > 200; });
    }

    bool are_hidden()
    {
        return view.draw_until([&] { return alpha_at(CORNER) == 0; });
    }

    /** Whether the player reaches a position within `tolerance` ms. */
    testing::AssertionResult comes_to(double position, double tolerance = 40)
    {
        if (view.draw_until(
                [&] { return std::abs(double(view->get_position()) - position) <= tolerance; }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
            << "it is at " << view->get_position() << " ms, not at " << position;
    }

    bool comes_to_state(PlaybackState state)
    {
        return view.draw_until([&] { return view->get_playback_state() == state; });
    }

    HostVideoView view{WIDE};
};

// --- Keys ----------------------------------------------------------------------------------------

TEST_F(Controls, play_and_pause_with_the_space_bar)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    view.type(KEY_SPACE, " ");
    EXPECT_EQ(view->get_playback_state(), PAUSED);
    view.type(KEY_SPACE, " ");
    EXPECT_EQ(view->get_playback_state(), PLAYING);
}

TEST_F(Controls, go_back_and_forth_with_the_arrows)
{
    ASSERT_TRUE(open_paused("numbered.mp4"));
    view.type(KEY_RIGHT);
    EXPECT_TRUE(comes_to(5000));
    view.type(KEY_RIGHT);
    EXPECT_TRUE(comes_to(10000)) << "the end";
    view.type(KEY_LEFT);
    EXPECT_TRUE(comes_to(5000));
    view.type(KEY_LEFT);
    view.type(KEY_LEFT);
    EXPECT_TRUE(comes_to(0)) << "no further than the start";
}

TEST_F(Controls, go_to_a_tenth_with_a_digit)
{
    ASSERT_TRUE(open_paused("numbered.mp4"));
    view.type(KEY_5, "5");
    EXPECT_TRUE(comes_to(5000));
    view.type(KEY_9, "9");
    EXPECT_TRUE(comes_to(9000));
    view.type(KEY_0, "0");
    EXPECT_TRUE(comes_to(0));
}

TEST_F(Controls, turn_the_volume_with_the_arrows)
{
    ASSERT_TRUE(view.load());
    view.type(KEY_UP);
    EXPECT_EQ(view->get_volume(), 1) << "no louder than that";
    view.type(KEY_DOWN);
    view.type(KEY_DOWN);
    EXPECT_NEAR(view->get_volume(), 0.9, 0.001);
    view.type(KEY_UP);
    EXPECT_NEAR(view->get_volume(), 0.95, 0.001);
}

TEST_F(Controls, switch_the_sound_off_and_on_with_m)
{
    ASSERT_TRUE(view.load());
    view.type(KEY_M, "m");
    EXPECT_TRUE(view->get_muted());
    view.type(KEY_M, "m");
    EXPECT_FALSE(view->get_muted());
    view.type(KEY_M, "m");
    view.type(KEY_UP);
    EXPECT_FALSE(view->get_muted()) << "a change of the volume must end muting";
}

TEST_F(Controls, survive_every_key_without_a_source)
{
    ASSERT_TRUE(view.load());
    for (const uint32_t key : {uint32_t(KEY_LEFT), uint32_t(KEY_RIGHT), uint32_t(KEY_5),
                               uint32_t(KEY_SPACE), uint32_t(KEY_ESCAPE), uint32_t(KEY_ENTER)})
        view.type(key);
    EXPECT_EQ(view->get_playback_state(), STOPPED);
}

// --- The mouse -----------------------------------------------------------------------------------

TEST_F(Controls, play_and_pause_at_a_click_on_the_picture)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    click(MIDDLE);
    EXPECT_EQ(view->get_playback_state(), PAUSED);
    click(MIDDLE);
    EXPECT_EQ(view->get_playback_state(), PLAYING);
}

TEST_F(Controls, play_and_pause_at_the_button)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    click(PLAY);
    EXPECT_EQ(view->get_playback_state(), PAUSED);
    click(PLAY);
    EXPECT_EQ(view->get_playback_state(), PLAYING);
}

TEST_F(Controls, play_again_from_the_end)
{
    ASSERT_TRUE(view.open("short.mp4"));
    ASSERT_TRUE(view.wait_for_event("media_status_changed", std::to_string(END_OF_MEDIA)));
    const size_t first = view.events().size();
    click(PLAY);
    EXPECT_TRUE(view.wait_for_event("media_status_changed", std::to_string(END_OF_MEDIA), first));
}

TEST_F(Controls, leave_the_picture_alone_at_a_click_between_the_buttons)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    click({400, 340});
    EXPECT_EQ(view->get_playback_state(), PLAYING);
}

TEST_F(Controls, go_where_the_bar_is_clicked)
{
    ASSERT_TRUE(open_paused("numbered.mp4"));
    for (const double fraction : {0.5, 0.1, 0.9}) {
        view.click(on_bar(fraction), BAR_Y);
        EXPECT_TRUE(comes_to(fraction * 10000));
    }
    click(TO_START);
    EXPECT_TRUE(comes_to(0));
}

TEST_F(Controls, go_along_while_the_handle_is_dragged)
{
    ASSERT_TRUE(open_paused("numbered.mp4"));
    view.move(on_bar(0.2), BAR_Y);
    view.press(on_bar(0.2), BAR_Y);
    EXPECT_TRUE(comes_to(2000));
    view.move(on_bar(0.4), BAR_Y);
    EXPECT_TRUE(comes_to(4000)) << "without a release";
    view.move(on_bar(0.6), 100);
    view.release(on_bar(0.6), 100);
    EXPECT_TRUE(comes_to(6000)) << "wherever the pointer has strayed to";
    view.move(on_bar(0.8), BAR_Y);
    view.draw_frame();
    EXPECT_TRUE(comes_to(6000)) << "nothing is dragged any more";
}

TEST_F(Controls, show_the_time_under_the_pointer_above_the_bar)
{
    ASSERT_TRUE(open_paused("numbered.mp4"));
    view.move(MIDDLE.x, MIDDLE.y);
    ASSERT_TRUE(are_shown());
    const Rect above{on_bar(0.7) - 15, BAR_Y - 26, 30, 12};
    const auto bright_pixels = [&] {
        const Image image = view.picture();
        int count = 0;
        for (uint32_t y = above.y; y < above.y + above.height; ++y) {
            for (uint32_t x = above.x; x < above.x + above.width; ++x)
                count += image.pixel(x, y).g > 160;
        }
        return count;
    };
    view.draw_frame();
    const int before = bright_pixels();
    view.move(on_bar(0.7), BAR_Y);
    EXPECT_TRUE(view.draw_until([&] { return std::abs(bright_pixels() - before) > 20; }));
    EXPECT_EQ(view->get_position(), 0u) << "hovering has moved the position";
}

TEST_F(Controls, turn_the_volume_with_slider_and_wheel)
{
    ASSERT_TRUE(view.load());
    view.click((VOLUME_LEFT + VOLUME_RIGHT) / 2, 340);
    EXPECT_NEAR(view->get_volume(), 0.5, 0.03);
    const float volume = view->get_volume();
    view->mouse_wheel_up(MIDDLE.x, MIDDLE.y);
    EXPECT_NEAR(view->get_volume(), volume + 0.05, 0.001);
    view->mouse_wheel_down(MIDDLE.x, MIDDLE.y);
    EXPECT_NEAR(view->get_volume(), volume, 0.001);
}

TEST_F(Controls, switch_the_sound_off_and_on_at_the_button)
{
    ASSERT_TRUE(view.load());
    click(MUTE);
    EXPECT_TRUE(view->get_muted());
    click(MUTE);
    EXPECT_FALSE(view->get_muted());
}

TEST_F(Controls, switch_repeating_on_and_off)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    click(LOOP);
    EXPECT_EQ(view->get_loops(), -1);
    click(LOOP);
    EXPECT_EQ(view->get_loops(), 1);
}

// --- The menus -----------------------------------------------------------------------------------

TEST_F(Controls, offer_rates)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    click(RATE);
    view.type(KEY_DOWN);
    view.type(KEY_ENTER);
    EXPECT_EQ(view->get_playback_rate(), 1.25);
    click(RATE);
    view.type(KEY_UP);
    view.type(KEY_UP);
    view.type(KEY_UP);
    view.type(KEY_SPACE);
    EXPECT_EQ(view->get_playback_rate(), 0.5);
    EXPECT_EQ(view->get_playback_state(), PLAYING) << "the key was the menu's";
}

TEST_F(Controls, offer_ways_to_fill_the_scene)
{
    ASSERT_TRUE(view.open("quadrants.mp4"));
    click(FILL);
    view.type(KEY_DOWN);
    view.type(KEY_ENTER);
    EXPECT_EQ(view->get_fill_mode(), unsigned(PRESERVE_ASPECT_CROP));
    click(FILL);
    view.type(KEY_DOWN);
    view.type(KEY_ENTER);
    EXPECT_EQ(view->get_fill_mode(), unsigned(STRETCH));
    EXPECT_TRUE(view.wait_for_colour(20, 120, RED));
}

TEST_F(Controls, offer_tracks)
{
    ASSERT_TRUE(view.open("tracks.mkv"));
    click(AUDIO);
    view.type(KEY_DOWN);
    view.type(KEY_ENTER);
    EXPECT_EQ(view->get_active_audio_track(), 1);
    click(SUBTITLES);
    view.type(KEY_DOWN);
    view.type(KEY_DOWN);
    view.type(KEY_ENTER);
    EXPECT_EQ(view->get_active_subtitle_track(), 1);
    click(SUBTITLES);
    view.type(KEY_UP);
    view.type(KEY_UP);
    view.type(KEY_ENTER);
    EXPECT_EQ(view->get_active_subtitle_track(), -1);
}

TEST_F(Controls, know_which_track_the_host_has_chosen)
{
    ASSERT_TRUE(view.open("tracks.mkv"));
    view->set_active_subtitle_track(0);
    click(SUBTITLES);
    view.type(KEY_DOWN);
    view.type(KEY_ENTER);
    EXPECT_EQ(view->get_active_subtitle_track(), 1) << "the one below the first";
}

TEST_F(Controls, take_a_choice_with_the_mouse)
{
    ASSERT_TRUE(view.open("tracks.mkv"));
    click(AUDIO);
    view.draw_frame();
    // The last entry, just above the bar.
    view.click(AUDIO.x, BAR_Y - 30);
    EXPECT_EQ(view->get_active_audio_track(), 1);
}

TEST_F(Controls, close_a_menu_without_a_choice)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    click(RATE);
    view.type(KEY_DOWN);
    view.type(KEY_ESCAPE);
    EXPECT_EQ(view->get_playback_rate(), 1);
    view.type(KEY_SPACE);
    EXPECT_EQ(view->get_playback_state(), PAUSED) << "the player does not receive keys again";
    click(RATE);
    click({200, 100});
    EXPECT_EQ(view->get_playback_state(), PAUSED) << "a press beside the menu only closes it";
    click({200, 100});
    EXPECT_EQ(view->get_playback_state(), PLAYING);
}

// --- Shown and hidden ----------------------------------------------------------------------------

TEST_F(Controls, stay_unless_they_are_to_hide)
{
    ASSERT_TRUE(view.open("quadrants.mp4"));
    ASSERT_TRUE(are_shown());
    ASSERT_TRUE(view.draw_until([&] { return view->get_position() > 3700; }));
    EXPECT_GT(alpha_at(CORNER), 200);
}

TEST_F(Controls, hide_while_they_are_not_used_and_come_back_at_the_first_move)
{
    view->set_loops(static_cast<unsigned int>(-1));
    view->set_controls_auto_hide(true);
    ASSERT_TRUE(view.open("quadrants.mp4"));
    EXPECT_TRUE(are_shown());
    EXPECT_TRUE(are_hidden());
    view.move(100, 100);
    EXPECT_TRUE(are_shown());
    EXPECT_TRUE(are_hidden());
    view.type(KEY_M, "m");
    EXPECT_TRUE(are_shown()) << "at a key too";
}

TEST_F(Controls, stay_while_paused_or_in_use)
{
    view->set_loops(static_cast<unsigned int>(-1));
    view->set_controls_auto_hide(true);
    ASSERT_TRUE(view.open("quadrants.mp4"));
    ASSERT_TRUE(are_hidden());
    view->pause();
    EXPECT_TRUE(are_shown()) << "the controls of a paused player are hidden";
    view->play();
    EXPECT_TRUE(are_hidden());
}

TEST_F(Controls, are_absent_when_they_are_switched_off)
{
    view->set_controls(false);
    ASSERT_TRUE(view.open("quadrants.mp4"));
    ASSERT_TRUE(view.wait_for_colour(240, 90, RED));
    EXPECT_EQ(view.picture().pixel(CORNER.x, CORNER.y), TRANSPARENT);
    click(MIDDLE);
    view.type(KEY_SPACE, " ");
    view.type(KEY_M, "m");
    view->mouse_wheel_down(MIDDLE.x, MIDDLE.y);
    EXPECT_EQ(view->get_playback_state(), PLAYING);
    EXPECT_FALSE(view->get_muted());
    EXPECT_EQ(view->get_volume(), 1);
    view->set_controls(true);
    EXPECT_TRUE(are_shown());
    view->set_controls(false);
    EXPECT_TRUE(are_hidden());
}

// --- Notices -------------------------------------------------------------------------------------

TEST_F(Controls, show_that_no_source_is_set)
{
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(view.draw_until([&] { return alpha_at(MIDDLE) > 0; }));
    ASSERT_TRUE(view.change_to("quadrants.mp4"));
    EXPECT_TRUE(view.draw_until([&] {
        return alpha_at({320, 170}) == 0;
    })) << "the notice is still shown with a source";
}

TEST_F(Controls, show_that_a_source_cannot_be_played)
{
    view->set_source(clip_url("missing.mp4"));
    ASSERT_TRUE(view.load());
    ASSERT_TRUE(view.wait_for_event("error_occurred"));
    EXPECT_TRUE(view.draw_until([&] { return alpha_at(MIDDLE) > 0; }));
    EXPECT_EQ(alpha_at({20, 180}), 0);
    view->set_controls(false);
    EXPECT_TRUE(view.draw_until([&] { return alpha_at(MIDDLE) == 0; }));
}

class ControlsOfSize : public testing::TestWithParam<Size> {};

INSTANTIATE_TEST_SUITE_P(Sizes, ControlsOfSize,
                         testing::Values(Size{256, 256}, Size{1280, 720}, Size{1920, 1080}),
                         [](const auto& info) {
                             return std::to_string(info.param.width) + "x"
                                 + std::to_string(info.param.height);
                         });

TEST_P(ControlsOfSize, fit_in_and_take_input_everywhere)
{
    const auto [width, height] = GetParam();
    HostVideoView view(GetParam());
    ASSERT_TRUE(view.open("tracks.mkv"));
    for (uint32_t x = 4; x < width; x += width / 40) {
        view.click(x, height - height / 20);
        view.type(KEY_ESCAPE);
    }
    for (int i = 0; i < 5; ++i)
        view.draw_frame();
    EXPECT_TRUE(shows_something(view.picture(), "there are controls"));
    EXPECT_TRUE(view.console().take_messages().empty());
}

}  // namespace

}  // namespace marlune::test

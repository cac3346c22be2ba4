// Playback through the facade: the frames in the texture, and the reports to the host.

#include "support/media/host_video_view.h"

#include <marlune/app.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The aspect ratio of the numbered clips.
constexpr Size WIDE{640, 360};

/** A view of the video alone, without controls. */
class Player : public testing::Test {
protected:
    void SetUp() override { view->set_controls(false); }

    /** Opens a clip and leaves it paused at its start. */
    testing::AssertionResult open_paused(const std::string& clip)
    {
        view->set_auto_play(false);
        if (const testing::AssertionResult opened = view.open(clip); !opened)
            return opened;
        view->pause();
        return view.wait_for_event("playback_state_changed", std::to_string(PAUSED));
    }

    HostVideoView view{WIDE};
};

/** Where each of `wanted` first stands in `reports`, in their order. */
testing::AssertionResult come_in_order(const std::vector<std::string>& reports,
                                       const std::vector<std::string>& wanted)
{
    auto position = reports.begin();
    for (const std::string& event : wanted) {
        position = std::find(position, reports.end(), event);
        if (position == reports.end()) {
            auto failure = testing::AssertionFailure() << event << " is not in its place in:";
            for (const std::string& text : reports)
                failure << "\n  " << text;
            return failure;
        }
    }
    return testing::AssertionSuccess();
}

TEST_F(Player, starts_by_itself_and_reports_it_in_order)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(view.wait_for_event("media_status_changed", std::to_string(BUFFERED_MEDIA)));
    ASSERT_TRUE(view.wait_for_event("position_changed"));
    EXPECT_TRUE(come_in_order(
        view.reports(),
        {"media_status_changed 1", "source_changed " + clip_url("numbered.mp4"),
         "duration_changed 10000", "tracks_changed", "metadata_changed", "seekable_changed true",
         "has_audio_changed true", "has_video_changed true", "media_status_changed 2",
         "playing_changed true", "playback_state_changed 1", "media_status_changed 4",
         "buffer_progress_changed 1", "media_status_changed 5"}));
    EXPECT_EQ(view->get_playback_state(), PLAYING);
    EXPECT_EQ(view->get_duration(), 10000u);
    EXPECT_TRUE(view->get_has_audio() && view->get_has_video() && view->get_seekable());
    EXPECT_EQ(view->get_error(), NO_ERROR);
    EXPECT_EQ(view->get_error_string(), "");
    EXPECT_EQ(view->get_source(), clip_url("numbered.mp4"));
    EXPECT_EQ(view->get_buffer_progress(), 1);
}

TEST_F(Player, shows_one_frame_after_the_other)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    int last = -1;
    for (int frames = 0; frames < 20; ++frames) {
        const auto goes_on = [&] {
            const std::optional<int> number = view.frame_number();
            const bool newer = number && *number > last;
            if (newer)
                last = *number;
            return newer;
        };
        ASSERT_TRUE(view.draw_until(goes_on)) << "after frame " << last;
    }
    const double shown_ms = last * 1000 / 60.0;
    EXPECT_NEAR(shown_ms, double(view->get_position()), 150)
        << "the frame does not match the position";
}

TEST_F(Player, waits_for_play_where_auto_play_is_off)
{
    view->set_auto_play(false);
    ASSERT_TRUE(view.open("numbered.mp4"));
    EXPECT_EQ(view->get_playback_state(), STOPPED);
    EXPECT_EQ(view->get_media_status(), LOADED_MEDIA);
    view->play();
    EXPECT_EQ(view->get_playback_state(), PLAYING);
    EXPECT_TRUE(view.draw_until([&] { return view.frame_number() > 5; }));
}

TEST_F(Player, takes_a_source_before_it_has_a_scene_and_does_not_play_it)
{
    view->set_source(clip_url("short.mp4"));
    EXPECT_TRUE(wait_until([&] { return view->get_media_status() == LOADED_MEDIA; }));
    EXPECT_EQ(view->get_playback_state(), STOPPED);
    EXPECT_EQ(view->get_source(), clip_url("short.mp4"));
}

TEST_F(Player, holds_its_picture_while_it_is_paused)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(view.draw_until([&] { return view.frame_number() > 10; }));
    view->pause();
    EXPECT_EQ(view->get_playback_state(), PAUSED);
    ASSERT_TRUE(view.wait_for_event("playing_changed", "false"));
    const uint64_t position = view->get_position();
    std::optional<int> number;
    for (int i = 0; i < 20; ++i) {
        view.draw_frame();
        const auto shown = view.frame_number();
        EXPECT_TRUE(i < 3 || shown == number) << "frame " << i << " after the pause";
        number = shown;
    }
    EXPECT_EQ(view->get_position(), position);
    view->play();
    EXPECT_TRUE(view.draw_until([&] { return view.frame_number() > *number + 10; }));
}

TEST_F(Player, goes_back_to_the_start_when_it_is_stopped)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(view.draw_until([&] { return view.frame_number() > 10; }));
    const size_t first = view.events().size();
    view->stop();
    EXPECT_EQ(view->get_playback_state(), STOPPED);
    EXPECT_EQ(view->get_position(), 0u);
    EXPECT_EQ(view->get_media_status(), LOADED_MEDIA);
    EXPECT_TRUE(come_in_order(
        view.reports(first),
        {"playing_changed false", "playback_state_changed 0", "media_status_changed 2"}));
    EXPECT_TRUE(view.wait_for_colour(320, 180, TRANSPARENT)) << "the last frame is still shown";
    view->play();
    EXPECT_TRUE(view.draw_until([&] {
        const auto number = view.frame_number();
        return number && *number < 60;
    })) << "from the start";
}

TEST_F(Player, seeks_to_the_very_frame)
{
    ASSERT_TRUE(open_paused("numbered.mp4"));
    for (const int frame : {300, 90, 499, 598, 1, 0, 299}) {
        const int middle = (2 * frame + 1) * 1000 / (2 * 60);
        view->set_position(middle);
        EXPECT_TRUE(view.wait_for_frame_number(frame)) << middle << " ms";
        EXPECT_EQ(view->get_position(), uint64_t(middle));
    }
}

TEST_F(Player, goes_on_from_where_it_has_been_moved_to)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(view.draw_until([&] { return view.frame_number() > 10; }));
    view->set_position(6000);
    EXPECT_TRUE(view.draw_until([&] { return view.frame_number() > 380; }));
    EXPECT_GT(view->get_position(), 6200u);
    view->set_position(1000);
    EXPECT_TRUE(view.draw_until([&] {
        const auto number = view.frame_number();
        return number && *number > 60 && *number < 200;
    }));
}

TEST_F(Player, reports_the_end_and_plays_again)
{
    ASSERT_TRUE(view.open("short.mp4"));
    ASSERT_TRUE(view.wait_for_event("media_status_changed", std::to_string(END_OF_MEDIA)));
    ASSERT_TRUE(view.wait_for_event("playback_state_changed", std::to_string(STOPPED)));
    EXPECT_EQ(view->get_playback_state(), STOPPED);
    EXPECT_EQ(view->get_media_status(), END_OF_MEDIA);
    const size_t first = view.events().size();
    view->play();
    EXPECT_TRUE(view.wait_for_event("media_status_changed", std::to_string(END_OF_MEDIA), first));
}

TEST_F(Player, plays_as_often_as_the_host_says)
{
    EXPECT_EQ(view->get_loops(), 1);
    view->set_loops(3);
    EXPECT_EQ(view->get_loops(), 3);
    EXPECT_TRUE(view.wait_for_event("loops_changed"));
    ASSERT_TRUE(view.open("short.mp4"));
    const auto start = Clock::now();
    ASSERT_TRUE(view.wait_for_event("media_status_changed", std::to_string(END_OF_MEDIA)));
    const std::chrono::duration<double> taken = Clock::now() - start;
    EXPECT_GT(taken.count(), 2.5);
    EXPECT_LT(taken.count(), 6);
}

TEST_F(Player, plays_for_ever)
{
    view->set_loops(static_cast<unsigned int>(-1));
    EXPECT_EQ(view->get_loops(), -1);
    ASSERT_TRUE(view.open("short.mp4"));
    int last = 0, rounds = 0;
    EXPECT_TRUE(view.draw_until([&] {
        const int number = view.frame_number().value_or(last);
        rounds += number < last;
        last = number;
        return rounds == 3;
    }));
    EXPECT_EQ(view->get_playback_state(), PLAYING);
}

class PlayerAtRate : public Player, public testing::WithParamInterface<double> {};

INSTANTIATE_TEST_SUITE_P(Rates, PlayerAtRate, testing::Values(0.5, 1.0, 2.0), [](const auto& info) {
    return std::to_string(int(info.param * 100)) + "_percent";
});

TEST_P(PlayerAtRate, keeps_the_pace)
{
    view->set_playback_rate(GetParam());
    EXPECT_EQ(view->get_playback_rate(), GetParam());
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(view.draw_until([&] { return view->get_position() > 400; }));
    const uint64_t first_position = view->get_position();
    const auto start = Clock::now();
    ASSERT_TRUE(view.draw_until([&] { return Clock::now() - start > 2s; }));
    const std::chrono::duration<double, std::milli> passed = Clock::now() - start;
    const double played = double(view->get_position() - first_position);
    EXPECT_NEAR(played / passed.count(), GetParam(), GetParam() * 0.1);
    EXPECT_NEAR(view.frame_number().value_or(-1) * 1000 / 60.0, double(view->get_position()),
                200 * GetParam());
}

TEST_F(Player, reports_the_rate)
{
    view->set_playback_rate(1.5);
    EXPECT_TRUE(view.wait_for_event("playback_rate_changed", "1.5"));
}

TEST_F(Player, takes_another_source_while_it_plays)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(view.draw_until([&] { return view.frame_number() > 10; }));
    const size_t first = view.events().size();
    view->set_fill_mode(STRETCH);
    ASSERT_TRUE(view.change_to("quadrants.mp4"));
    EXPECT_TRUE(
        come_in_order(view.reports(first),
                      {"playback_state_changed 0", "source_changed " + clip_url("quadrants.mp4"),
                       "duration_changed 4000", "media_status_changed 2"}));
    EXPECT_EQ(view->get_playback_state(), STOPPED) << "the new source waits";
    view->play();
    EXPECT_TRUE(view.wait_for_colour(100, 90, RED));
}

TEST_F(Player, releases_its_source)
{
    ASSERT_TRUE(view.open("short.mp4"));
    view->set_source("");
    EXPECT_TRUE(view.wait_for_event("media_status_changed", std::to_string(NO_MEDIA)));
    EXPECT_EQ(view->get_source(), "");
    EXPECT_EQ(view->get_duration(), 0u);
    EXPECT_EQ(view->get_playback_state(), STOPPED);
    EXPECT_FALSE(view->get_has_video());
}

// --- The picture ---------------------------------------------------------------------------------

TEST_F(Player, fills_the_scene_in_the_mode_that_is_set)
{
    EXPECT_EQ(view->get_fill_mode(), unsigned(PRESERVE_ASPECT_FIT));
    ASSERT_TRUE(open_paused("quadrants.mp4"));

    // Square in a scene of 640 x 360: whole, it is 360 px wide.
    ASSERT_TRUE(view.wait_for_colour(240, 90, RED));
    const Image whole = view.picture();
    EXPECT_TRUE(every_pixel_in(whole, Rect{145, 5, 170, 170}.inside(8), RED, "upper left", 6));
    EXPECT_TRUE(every_pixel_in(whole, Rect{325, 5, 170, 170}.inside(8), GREEN, "upper right", 6));
    EXPECT_TRUE(every_pixel_in(whole, Rect{145, 185, 170, 170}.inside(8), BLUE, "lower left", 6));
    EXPECT_TRUE(every_pixel_in(whole, Rect{325, 185, 170, 170}.inside(8), WHITE, "lower right", 6));
    EXPECT_TRUE(every_pixel_in(whole, {0, 0, 138, 360}, TRANSPARENT, "what is left free"));
    EXPECT_TRUE(every_pixel_in(whole, {502, 0, 138, 360}, TRANSPARENT, "what is left free"));

    view->set_fill_mode(STRETCH);
    ASSERT_TRUE(view.wait_for_colour(10, 10, RED));
    EXPECT_TRUE(
        every_pixel_in(view.picture(), Rect{0, 0, 320, 180}.inside(8), RED, "stretched", 6));
    EXPECT_TRUE(
        every_pixel_in(view.picture(), Rect{320, 180, 320, 180}.inside(8), WHITE, "stretched", 6));

    // Cropped it is 640 px high, of which the middle 360 are seen: the centre stays where it is.
    view->set_fill_mode(PRESERVE_ASPECT_CROP);
    EXPECT_EQ(view->get_fill_mode(), unsigned(PRESERVE_ASPECT_CROP));
    for (int i = 0; i < 3; ++i)
        view.draw_frame();
    EXPECT_TRUE(every_pixel_in(view.picture(), Rect{0, 0, 320, 180}.inside(8), RED, "cropped", 6));
}

TEST_F(Player, takes_unknown_fill_modes_for_the_first)
{
    view->set_fill_mode(3);
    EXPECT_EQ(view->get_fill_mode(), unsigned(STRETCH));
    view->set_fill_mode(static_cast<unsigned int>(-1));
    EXPECT_EQ(view->get_fill_mode(), static_cast<unsigned int>(-1));
    ASSERT_TRUE(open_paused("quadrants.mp4"));
    ASSERT_TRUE(view.wait_for_colour(240, 90, RED));
    EXPECT_EQ(view.picture().pixel(50, 90), TRANSPARENT) << "the whole picture";
}

TEST_F(Player, shows_4k)
{
    ASSERT_TRUE(open_paused("uhd.mp4"));
    ASSERT_TRUE(view.wait_for_colour(320, 180, GREEN));
    EXPECT_TRUE(every_pixel_in(view.picture(), view.picture().area(), GREEN, "all of it", 6));
}

TEST_F(Player, keeps_to_the_times_of_uneven_frames)
{
    ASSERT_TRUE(open_paused("uneven.mkv"));
    // Of 30 frames a second all are there in the first second, then each third.
    for (const auto& [position, frame] : {std::pair{510, 15}, {1510, 45}, {1110, 33}, {2310, 69}}) {
        view->set_position(position);
        EXPECT_TRUE(view.wait_for_frame_number(frame)) << position << " ms";
    }
}

TEST_F(Player, plays_vp9_with_opus_and_paints_what_is_see_through)
{
    ASSERT_TRUE(view.open("alpha.webm"));
    EXPECT_TRUE(view->get_has_audio());
    EXPECT_TRUE(view.wait_for_colour(320 - 60, 180, RED, 12));
    EXPECT_TRUE(view.wait_for_colour(320 + 60, 180, RED, 12)) << "alpha is not decoded";
    EXPECT_EQ(view->get_metadata().at("VideoCodec"), "VP9");
    EXPECT_EQ(view->get_metadata().at("AudioCodec"), "Opus");
}

// --- Sound ---------------------------------------------------------------------------------------

TEST_F(Player, turns_the_volume)
{
    EXPECT_EQ(view->get_volume(), 1);
    view->set_volume(0.25f);
    EXPECT_EQ(view->get_volume(), 0.25f);
    EXPECT_TRUE(view.wait_for_event("volume_changed", "0.25"));
    view->set_volume(7);
    EXPECT_EQ(view->get_volume(), 1) << "the volume is above its maximum";
    view->set_volume(-1);
    EXPECT_EQ(view->get_volume(), 0);
}

TEST_F(Player, switches_the_sound_off_and_on)
{
    EXPECT_FALSE(view->get_muted());
    view->set_muted(true);
    EXPECT_TRUE(view->get_muted()) << "calls of one thread are served in turn";
    EXPECT_TRUE(view.wait_for_event("muted_changed", "true"));
    view->set_muted(false);
    EXPECT_FALSE(view->get_muted());
    EXPECT_TRUE(view.wait_for_event("muted_changed", "false"));
}

TEST_F(Player, plays_sound_without_a_picture)
{
    ASSERT_TRUE(view.open("tone.m4a"));
    EXPECT_TRUE(view->get_has_audio());
    EXPECT_FALSE(view->get_has_video());
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 300; }));
    EXPECT_TRUE(every_pixel_in(view.picture(), view.picture().area(), TRANSPARENT, "no picture"));
}

TEST_F(Player, plays_a_picture_without_sound)
{
    ASSERT_TRUE(view.open("long.mp4"));
    EXPECT_FALSE(view->get_has_audio());
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 300; }));
}

}  // namespace

}  // namespace marlune::test

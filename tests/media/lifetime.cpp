// The life of players, and facades without one.

#include "support/media/host_video_view.h"
#include "support/message_log.h"

#include <marlune/app.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <thread>

namespace marlune {

using namespace test;

namespace {

using namespace std::chrono_literals;

constexpr Size WIDE{640, 360};

void call_every_setter(const MVideoPlayerView& view)
{
    view.play();
    view.pause();
    view.stop();
    view.set_source("nowhere.mp4");
    view.set_position(1);
    view.set_playback_rate(2);
    view.set_volume(0.5f);
    view.set_muted(true);
    view.set_loops(2);
    view.set_fill_mode(2);
    view.set_controls(false);
    view.set_controls_auto_hide(true);
    view.set_auto_play(false);
    view.set_active_audio_track(0);
    view.set_active_video_track(0);
    view.set_active_subtitle_track(0);
    write_to(std::make_shared<EventLog>(), view);
    view.reset();
}

void expect_defaults_of_no_view(const MVideoPlayerView& view)
{
    VideoGetters::expect_defaults(view);
    EXPECT_FALSE(view.load("Multimedia", "VideoPlayer"));
}

TEST(VideoFacade, has_a_view_with_the_defaults_of_one)
{
    HostVideoView view;
    EXPECT_EQ(view->get_source(), "");
    EXPECT_EQ(view->get_volume(), 1);
    EXPECT_FALSE(view->get_muted());
    EXPECT_EQ(view->get_loops(), 1);
    EXPECT_EQ(view->get_playback_rate(), 1);
    EXPECT_EQ(view->get_playback_state(), STOPPED);
    EXPECT_EQ(view->get_media_status(), NO_MEDIA);
    EXPECT_EQ(view->get_error(), NO_ERROR);
    EXPECT_EQ(view->get_fill_mode(), unsigned(PRESERVE_ASPECT_FIT));
    EXPECT_TRUE(view->get_controls());
    EXPECT_FALSE(view->get_controls_auto_hide());
    EXPECT_EQ(view->get_active_audio_track(), -1);
    EXPECT_EQ(view->get_active_video_track(), -1);
    EXPECT_EQ(view->get_active_subtitle_track(), -1);
    EXPECT_EQ(view->get_refresh_rate(), 63) << "the members of a view do not work";
}

TEST(VideoFacade, has_the_defaults_of_no_view_after_destroy)
{
    start_library();
    MVideoPlayerView view;
    view.destroy();
    call_every_setter(view);
    expect_defaults_of_no_view(view);
    view.destroy();
}

TEST(VideoFacade, that_is_stale_answers_with_the_defaults)
{
    HostVideoView view;
    ASSERT_TRUE(view.open("short.mp4"));
    MVideoPlayerView stale = view.facade();
    view->destroy();
    call_every_setter(stale);
    expect_defaults_of_no_view(stale);
}

TEST(VideoFacade, takes_every_call_before_it_has_a_scene)
{
    allow_messages_matching("Cannot set active track without open source");
    HostVideoView view;
    call_every_setter(view.facade());
    EXPECT_EQ(view->get_source(), "nowhere.mp4");
    EXPECT_EQ(view->get_playback_rate(), 2);
    EXPECT_EQ(view->get_loops(), 2);
    EXPECT_EQ(view->get_fill_mode(), 2u);
    EXPECT_FALSE(view->get_controls());
    EXPECT_TRUE(view->get_controls_auto_hide());
}

TEST(Players, are_ended_by_reset_while_they_play)
{
    HostVideoView view(WIDE);
    view->set_controls(false);
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(view.draw_until([&] { return view.frame_number() > 10; }));
    const uint64_t texture = view->get_texture();
    view->reset();
    EXPECT_EQ(view->get_playback_state(), STOPPED) << "in turn, before any later call";
    EXPECT_EQ(view->get_source(), "");
    EXPECT_EQ(view->get_duration(), 0u);
    EXPECT_EQ(view->get_texture(), texture);
    EXPECT_TRUE(view.frame_number()) << "the texture has lost its last frame";
    EXPECT_TRUE(view.wait_for_event("playing_changed", "false"));
    view->reset();

    ASSERT_TRUE(view.load()) << "the next scene does not start with the last source";
    EXPECT_TRUE(view.draw_until([&] {
        const auto number = view.frame_number();
        return number && *number > 10;
    }));
}

TEST(Players, hand_their_settings_on_to_the_next_scene)
{
    HostVideoView view;
    ASSERT_TRUE(view.open("numbered.mp4"));
    view->set_volume(0.25f);
    view->set_muted(true);
    view->set_loops(3);
    view->set_playback_rate(2);
    view->set_fill_mode(2);
    view->reset();
    ASSERT_TRUE(view.open("short.mp4"));
    EXPECT_EQ(view->get_volume(), 0.25f);
    EXPECT_TRUE(view->get_muted());
    EXPECT_EQ(view->get_loops(), 3);
    EXPECT_EQ(view->get_playback_rate(), 2);
    EXPECT_EQ(view->get_fill_mode(), 2u);
    EXPECT_EQ(view->get_playback_state(), PLAYING);
}

TEST(Players, take_a_source_between_two_scenes)
{
    HostVideoView view;
    ASSERT_TRUE(view.open("numbered.mp4"));
    view->reset();
    view->set_source(clip_url("short.mp4"));
    EXPECT_TRUE(wait_until([&] { return view->get_duration() == 1000; }));
    EXPECT_EQ(view->get_playback_state(), STOPPED);
    ASSERT_TRUE(view.load());
    EXPECT_EQ(view->get_source(), clip_url("short.mp4"));
    EXPECT_TRUE(view.wait_for_event("media_status_changed", std::to_string(END_OF_MEDIA)));
}

TEST(Players, are_destroyed_while_they_play)
{
    for (int i = 0; i < 3; ++i) {
        HostVideoView view;
        ASSERT_TRUE(view.open("numbered.mp4"));
        ASSERT_TRUE(view.draw_until([&] { return view->get_position() > 50; }));
    }
}

TEST(Players, are_destroyed_while_they_load)
{
    for (int i = 0; i < 5; ++i) {
        HostVideoView view;
        view->set_source(clip_url("long.mp4"));
        ASSERT_TRUE(view.load());
    }
    for (int i = 0; i < 5; ++i) {
        HostVideoView view;
        view->set_source(clip_url("long.mp4"));
    }
}

TEST(Players, play_eight_at_once)
{
    std::deque<HostVideoView> views;
    for (int i = 0; i < 8; ++i) {
        HostVideoView& view = views.emplace_back(WIDE);
        view->set_controls(false);
        ASSERT_TRUE(view.open("numbered.mp4"));
    }
    for (HostVideoView& view : views) {
        EXPECT_TRUE(view.draw_until([&] { return view.frame_number() > 20; }));
        EXPECT_EQ(view->get_playback_state(), PLAYING);
        EXPECT_EQ(view->get_error(), NO_ERROR);
    }
}

TEST(Players, answer_a_callback_that_asks_them)
{
    HostVideoView view;
    const MVideoPlayerView facade = view.facade();
    std::atomic<int64_t> duration = -1;
    std::atomic<bool> was_reset = false;
    view->set_func_on_duration_changed(
        [&, facade](int64_t) { duration = int64_t(facade.get_duration()); });
    view->set_func_on_playback_state_changed([&, facade](int state) {
        if (state == PLAYING && !was_reset.exchange(true))
            facade.reset();
    });
    view->set_source(clip_url("short.mp4"));
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(view.draw_until([&] { return duration == 1000; }));
    EXPECT_TRUE(view.draw_until([&] { return was_reset && view->get_source().empty(); }));
}

TEST(Players, are_given_callbacks_while_they_play)
{
    HostVideoView view;
    ASSERT_TRUE(view.open("numbered.mp4"));
    std::atomic<int> calls = 0;
    const auto end = std::chrono::steady_clock::now() + 500ms;
    std::thread host([&] {
        while (std::chrono::steady_clock::now() < end)
            view->set_func_on_position_changed([&calls](int64_t) { ++calls; });
    });
    view.draw_until([&] { return std::chrono::steady_clock::now() > end; });
    host.join();
    EXPECT_GT(calls, 0);
    view->set_func_on_position_changed({});
}

}  // namespace

}  // namespace marlune

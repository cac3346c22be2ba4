// Hosts call a player inside its own callbacks: every member in every callback.

#include "support/callback_sweep.h"
#include "support/media/host_video_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

using Video = MVideoPlayerView;

std::vector<Member<Video>> members()
{
    return with_others<Video>(
        {
            {"play", [](Video& view) { view.play(); }},
            {"pause", [](Video& view) { view.pause(); }},
            {"stop", [](Video& view) { view.stop(); }},
            {"reset", [](Video& view) { view.reset(); }},
            {"destroy", [](Video& view) { view.destroy(); }},
            {"render", [](Video& view) { view.render(); }},
            {"set_source", [](Video& view) { view.set_source(clip_url("quadrants.mp4")); }},
            {"set_no_source", [](Video& view) { view.set_source(""); }},
            {"set_position", [](Video& view) { view.set_position(100); }},
            {"set_playback_rate", [](Video& view) { view.set_playback_rate(3); }},
            {"set_loops", [](Video& view) { view.set_loops(7); }},
            {"set_active_audio_track", [](Video& view) { view.set_active_audio_track(1); }},
            {"set_active_video_track", [](Video& view) { view.set_active_video_track(-1); }},
            {"set_active_subtitle_track", [](Video& view) { view.set_active_subtitle_track(1); }},
        },
        [](Video& view) {
            VideoGetters::call(view);
            view.set_volume(0.3f);
            view.set_muted(true);
            view.set_fill_mode(2);
            view.set_controls(true);
            view.set_controls_auto_hide(true);
            view.set_auto_play(false);
        });
}

void load_clip(HostVideoView& view)
{
    view->set_source(clip_url("tracks.mkv"));
}

void fail_to_load(HostVideoView& view)
{
    view->set_source(clip_url("text.mp4"));
}

void play_clip(HostVideoView& view)
{
    load_clip(view);
    view->play();
}

/** All callbacks except three, which no action of a host causes. */
constexpr Occasion<HostVideoView> OCCASIONS[] = {
    {"volume_changed", [](HostVideoView& view) { view->set_volume(0.6f); }},
    {"muted_changed", [](HostVideoView& view) { view->set_muted(!view->get_muted()); }},
    {"playback_rate_changed", [](HostVideoView& view) { view->set_playback_rate(1.5); }},
    {"loops_changed", [](HostVideoView& view) { view->set_loops(3); }},
    {"source_changed", load_clip},
    {"media_status_changed", load_clip},
    {"duration_changed", load_clip},
    {"tracks_changed", load_clip},
    {"metadata_changed", load_clip},
    {"seekable_changed", load_clip},
    {"has_audio_changed", load_clip},
    {"has_video_changed", load_clip},
    {"error_occurred", fail_to_load},
    {"error_changed", fail_to_load},
    {"playing_changed", play_clip},
    {"playback_state_changed", play_clip},
    {"buffer_progress_changed", play_clip},
    {"position_changed", play_clip},
    {"video_output_changed",
     [](HostVideoView& view) {
         view->reset();
         view.load();
     }},
};

void call_in_callbacks(std::shared_ptr<CallerInCallback<Video>> caller, const Video& view)
{
#define MARLUNE_CALL(source, name, parameters, signal, slot) \
    view.set_func_on_##name([caller](const auto&...) { caller->on(#name); });
    MARLUNE_VIDEO_CALLBACKS(MARLUNE_CALL)
#undef MARLUNE_CALL
}

class CallsInVideoCallbacks : public testing::TestWithParam<Member<Video>> {
protected:
    void SetUp() override
    {
        allow_messages_matching("Cannot set active track without open source");
    }

    void make_view()
    {
        view.emplace(Size{640, 360});
        facade().set_auto_play(false);
        ASSERT_TRUE(view->load());
    }

    /** Nothing is loaded, all settings stand at their start, and there is a scene. */
    void go_to_start()
    {
        // What has been put off is done by then, if it was the view's end.
        const bool is_gone = !view || facade().get_loops() == 0;
        if (is_gone || GetParam().name == std::string("reset"))
            return make_view();
        facade().set_source("");
        facade().set_playback_rate(1);
        facade().set_loops(1);
        facade().set_volume(1);
    }

    bool still_plays()
    {
        facade().set_source(clip_url("short.mp4"));
        return view->draw_until([&] { return facade().get_duration() == 1000; });
    }

    Video& facade() { return view->facade(); }

    std::optional<HostVideoView> view;
};

INSTANTIATE_TEST_SUITE_P(Members, CallsInVideoCallbacks, testing::ValuesIn(members()),
                         name_of<Video>);

TEST_P(CallsInVideoCallbacks, leave_a_player_that_plays)
{
    for (const auto& [callback, provoke] : OCCASIONS) {
        SCOPED_TRACE(std::string(GetParam().name) + " in " + callback);
        go_to_start();
        const auto caller =
            std::make_shared<CallerInCallback<Video>>(facade(), callback, GetParam());
        call_in_callbacks(caller, facade());
        provoke(*view);
        ASSERT_TRUE(view->draw_until([&] { return caller->has_called(); }));
        go_to_start();
        EXPECT_TRUE(still_plays());
    }
}

TEST(SourcesSetInCallbacks, are_opened_once_the_callback_has_returned)
{
    HostVideoView view({640, 360});
    const MVideoPlayerView facade = view.facade();
    std::atomic<bool> set = false;
    view->set_func_on_duration_changed([&, facade](int64_t duration) {
        if (duration != 1000)
            return;
        facade.set_source(clip_url("quadrants.mp4"));
        EXPECT_EQ(facade.get_source(), clip_url("short.mp4"));
        set = true;
    });
    view->set_source(clip_url("short.mp4"));
    EXPECT_TRUE(view.draw_until([&] { return view->get_duration() == 4000; }));
    EXPECT_TRUE(set);
    EXPECT_EQ(view->get_source(), clip_url("quadrants.mp4"));
}

TEST(SourcesSetInCallbacks, come_before_what_the_callback_does_after_them)
{
    HostVideoView view({640, 360});
    view->set_auto_play(false);
    ASSERT_TRUE(view.load());
    const MVideoPlayerView facade = view.facade();
    view->set_func_on_tracks_changed([facade] {
        if (facade.get_source() != clip_url("short.mp4"))
            return;
        facade.set_source(clip_url("numbered.mp4"));
        facade.play();
    });
    view->set_source(clip_url("short.mp4"));
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 200; }));
    EXPECT_EQ(view->get_source(), clip_url("numbered.mp4"));
}

TEST(SourcesSetInCallbacks, come_before_calls_that_are_made_later)
{
    HostVideoView view({640, 360});
    const MVideoPlayerView facade = view.facade();
    view->set_func_on_volume_changed([facade](float) {
        facade.set_source(clip_url("short.mp4"));
        facade.reset();
    });
    view->set_volume(0.5f);
    view->set_source(clip_url("quadrants.mp4"));
    EXPECT_EQ(view->get_source(), clip_url("quadrants.mp4"));
    EXPECT_TRUE(wait_until([&] { return view->get_duration() == 4000; }));
}

}  // namespace

}  // namespace marlune::test

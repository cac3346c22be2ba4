#pragma once

#include "support/getters.h"
#include "support/input.h"
#include "support/media/followed_view.h"

#include <marlune/mvideo_player_view.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace marlune::test {

// Values of the public interface that hosts read.
enum PlaybackState { STOPPED, PLAYING, PAUSED };
enum MediaStatus {
    NO_MEDIA,
    LOADING_MEDIA,
    LOADED_MEDIA,
    STALLED_MEDIA,
    BUFFERING_MEDIA,
    BUFFERED_MEDIA,
    END_OF_MEDIA,
    INVALID_MEDIA,
};
enum MediaError { NO_ERROR, RESOURCE_ERROR, FORMAT_ERROR, NETWORK_ERROR, ACCESS_DENIED_ERROR };

using VideoGetters = Getters<
    &MVideoPlayerView::get_source, &MVideoPlayerView::get_position, &MVideoPlayerView::get_duration,
    &MVideoPlayerView::get_buffer_progress, &MVideoPlayerView::get_playback_rate,
    &MVideoPlayerView::get_volume, &MVideoPlayerView::get_muted, &MVideoPlayerView::get_loops,
    &MVideoPlayerView::get_playback_state, &MVideoPlayerView::get_media_status,
    &MVideoPlayerView::get_error, &MVideoPlayerView::get_error_string,
    &MVideoPlayerView::get_has_audio, &MVideoPlayerView::get_has_video,
    &MVideoPlayerView::get_seekable, &MVideoPlayerView::get_fill_mode,
    &MVideoPlayerView::get_controls, &MVideoPlayerView::get_controls_auto_hide,
    &MVideoPlayerView::get_active_audio_track, &MVideoPlayerView::get_active_video_track,
    &MVideoPlayerView::get_active_subtitle_track, &MVideoPlayerView::get_current_subtitle_name,
    &MVideoPlayerView::get_metadata, &MVideoPlayerView::get_audio_tracks,
    &MVideoPlayerView::get_video_tracks, &MVideoPlayerView::get_subtitle_tracks>;

/** Registers callbacks for all events of a view. They write to `log` and keep it alive. */
void write_to(std::shared_ptr<EventLog> log, const MVideoPlayerView& view);

/** The path of a clip that the set-up of the tests has created. */
std::string clip_path(const std::string& name);
std::string clip_url(const std::string& name);

/**
 * A video player view with a log of all its callbacks, by their names without "set_func_on_".
 *
 * @code
 * HostVideoView view;
 * ASSERT_TRUE(view.open("numbered.mp4"));
 * EXPECT_TRUE(view.wait_for_event("playback_state_changed", "1"));
 * EXPECT_EQ(view.frame_number(), 42);
 * @endcode
 */
class HostVideoView : public FollowedView<MVideoPlayerView> {
public:
    explicit HostVideoView(Size resolution = {}, VulkanHost& host = test::host());

    /** Loads the component. */
    bool load();

    /** Sets a clip as the source, loads the component, and waits until the clip has been loaded. */
    testing::AssertionResult open(const std::string& clip);

    /** Sets a clip as the source and waits until it has been loaded. */
    testing::AssertionResult change_to(const std::string& clip);

    /**
     * The frame number that a numbered clip shows if it fills the whole texture; empty if the bits
     * form no number. Reads the upper part of the texture, so controls at the bottom do no harm.
     */
    std::optional<int> frame_number();

    testing::AssertionResult wait_for_frame_number(int number);

    /**
     * Move the mouse, press or click at a pixel of the texture. A click moves the mouse there
     * first, as a hand does.
     */
    void move(uint32_t x, uint32_t y);
    void press(uint32_t x, uint32_t y);
    void release(uint32_t x, uint32_t y);
    void click(uint32_t x, uint32_t y);

private:
    testing::AssertionResult wait_until_loaded(size_t first);
};

}  // namespace marlune::test

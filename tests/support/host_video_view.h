#pragma once

#include "support/host_view.h"
#include "support/input.h"

#include <marlune/video_player_view.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

// Numbers that hosts get.
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
enum FillMode { STRETCH, PRESERVE_ASPECT_FIT, PRESERVE_ASPECT_CROP };

/** What a player has told its host, once. */
struct PlayerEvent {
    std::string name;   // of the callback, without "set_func_on_"
    std::string value;  // its arguments as text, with spaces between them
    std::thread::id thread;
};

std::ostream& operator<<(std::ostream& out, const PlayerEvent& event);

/** All that a player has told, in the order in which it came. For any thread. */
class PlayerLog {
public:
    void add(PlayerEvent event);
    std::vector<PlayerEvent> all() const;

private:
    mutable std::mutex mutex_;
    std::vector<PlayerEvent> events_;
};

/** Has all callbacks of a view write to `log`, which they keep alive. */
void write_to(std::shared_ptr<PlayerLog> log, const MVideoPlayerView& view);

/** The path of a clip that the tests' set-up has made. */
std::string clip_path(const std::string& name);
std::string clip_url(const std::string& name);

/**
 * A video player view whose callbacks are all followed. What waits draws frames meanwhile. An
 * AssertionResult says what was there instead of what was awaited.
 *
 * @code
 * HostVideoView view;
 * ASSERT_TRUE(view.open("numbered.mp4"));
 * EXPECT_TRUE(view.wait_for_event("playback_state_changed", "1"));
 * EXPECT_EQ(view.frame_number(), 42);
 * @endcode
 */
class HostVideoView : public HostViewOf<MVideoPlayerView> {
public:
    explicit HostVideoView(Size resolution = {}, VulkanHost& host = test::host());

    /** Makes the component's scene. */
    bool load();

    /** Sets a clip as the source, makes the scene, and waits until the clip has been loaded. */
    testing::AssertionResult open(const std::string& clip);

    /** Sets a clip as the source and waits until it has been loaded. */
    testing::AssertionResult change_to(const std::string& clip);

    std::vector<PlayerEvent> events() const { return log_->all(); }

    /** Names of the events from `first` on, each with its value: "playing_changed true". */
    std::vector<std::string> told(size_t first = 0) const;

    /** Waits for an event, counted from the event `first` on. */
    testing::AssertionResult wait_for_event(const std::string& name, const std::string& value,
                                            size_t first = 0);
    testing::AssertionResult wait_for_event(const std::string& name, size_t first = 0);

    /** Waits until a pixel of the texture has a colour. */
    testing::AssertionResult wait_for_colour(uint32_t x, uint32_t y, Colour colour,
                                             int tolerance = 6);

    /**
     * What a numbered clip that fills the whole texture shows; nothing when that is no number. The
     * upper part of the texture is read, so controls at the bottom do no harm.
     */
    std::optional<int> frame_number();

    testing::AssertionResult wait_for_frame_number(int number);

    /** The mouse, at a pixel of the texture. A click moves there first, as a hand does. */
    void move(uint32_t x, uint32_t y);
    void press(uint32_t x, uint32_t y);
    void release(uint32_t x, uint32_t y);
    void click(uint32_t x, uint32_t y);

private:
    std::string describe_events(size_t first) const;
    testing::AssertionResult wait_until_loaded(size_t first);

    std::shared_ptr<PlayerLog> log_ = std::make_shared<PlayerLog>();
};

}  // namespace marlune::test

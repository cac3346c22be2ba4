#pragma once

#include <marlune/mquick_view.h>
#include <marlune/video_callbacks.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace marlune {

/**
 * A view that plays a video file, a sound file or a stream. See MView for what all views have in
 * common.
 *
 * @code
 * marlune::MVideoPlayerView view;
 * view.set_view_monitor(instance);
 * view.set_statistics_monitor(physical_device, device);
 * view.set_resolution({1280, 720});
 * view.set_func_on_error_occurred([](int error, std::string text) { ... });
 * view.set_source("file:///games/intro.mp4");
 * if (!view.load("Multimedia", "VideoPlayer")) ...
 * @endcode
 *
 * The component "VideoPlayer" shows the picture, subtitles and controls; a host that needs only the
 * picture switches the controls off. Separate threads decode and play: the members return once the
 * player has received the request, and the callbacks report the result. The picture appears in the
 * frames that the host draws with render(); sound and position advance independently of them.
 *
 * The player lives as long as the scene: reset() deletes it and creates a new player, without a
 * source, for the next load(). The new player takes over volume, muting, rate and loops, and load()
 * gives it the source that was last set.
 *
 * Without a view (see MView) a member returns at once: 0, false, or an empty string, map or list.
 *
 * Constructing this facade creates a second, unused view that stays until the process ends: keep
 * one view and load it again instead of constructing a new one for each video.
 */
class MARLUNE_EXPORT MVideoPlayerView : public MQuickView {
public:
    /** Entries of a source or a track by name, such as "Title", "Language" or "VideoCodec". */
    using Metadata = std::map<std::string, std::string>;

    /**
     * Creates a view. Blocks until the Qt thread is ready, and forever if the library is never
     * started.
     */
    MVideoPlayerView();

    /**
     * Like MView::reset(), but does not block: it runs on the Qt thread before any later call.
     * Until it has run, it may use the queue. Other threads must therefore not use the queue until
     * a later blocking call of this thread, for example a getter, has returned.
     */
    void reset() const override;

    /** Starts to play, or resumes after pause(). Blocks. */
    void play() const;
    /** Pauses and keeps the position and the picture. Blocks. */
    void pause() const;
    /** Stops, returns to the start and removes the picture. Blocks. */
    void stop() const;

    /** Returns the URL of the source; empty at first. Blocks. */
    std::string get_source() const;

    /**
     * Sets the source: a URL ("file:///a b.mp4", "https://...") or the path of a file. Pipes,
     * terminals and directories are refused with error 1. Blocks, but returns before the source has
     * loaded; callbacks report the progress. Stops what is playing; the new source plays after
     * play(). In a view without a scene the source is loaded as well, and set_auto_play()
     * determines whether load() starts it.
     *
     * In a callback it returns at once and takes effect after the callback has returned. The same
     * applies to later calls of that callback that act on the player; they keep their order.
     */
    void set_source(std::string source) const;

    /** Returns the position in ms. Blocks. */
    uint64_t get_position() const;
    /** Moves to a position, in ms from the start of the source. Does not block. */
    void set_position(uint64_t position) const;
    /** Returns the source's length in ms; 0 if it is unknown. Blocks. */
    uint64_t get_duration() const;
    /** Returns how full the buffer is, from 0 to 1. Blocks. */
    float get_buffer_progress() const;

    /** Returns the playback rate: 1 is the source's own rate, 2 twice as fast. Blocks. */
    double get_playback_rate() const;
    /** Sets the playback rate. Blocks. */
    void set_playback_rate(double rate) const;

    /** Returns the volume from 0 to 1, on a linear scale of sound pressure; default 1. Blocks. */
    float get_volume() const;
    /** Sets the volume from 0 to 1. Blocks. */
    void set_volume(float volume) const;
    /** Returns whether the sound is off; default false. Blocks. */
    bool get_muted() const;
    /** Switches the sound off or on. Does not block. */
    void set_muted(bool muted) const;

    /** Returns how often a source is played; default 1, and -1 means forever. Blocks. */
    int get_loops() const;
    /** Sets how often a source is played. As an unsigned number, forever is 4294967295. Blocks. */
    void set_loops(unsigned int loops) const;

    /** Returns 0 stopped, 1 playing, 2 paused. Blocks. */
    int get_playback_state() const;
    /**
     * Returns 0 no media, 1 loading, 2 loaded, 3 stalled, 4 buffering, 5 buffered, 6 end of media,
     * 7 invalid media. Blocks.
     */
    int get_media_status() const;
    /** Returns 0 no error, 1 resource, 2 format, 3 network, 4 access denied. Blocks. */
    int get_error() const;
    /** Returns a message for people; empty if there is no error. Blocks. */
    std::string get_error_string() const;

    /** Returns whether the source has sound. Blocks. */
    bool get_has_audio() const;
    /** Returns whether the source has a picture. Blocks. */
    bool get_has_video() const;
    /** Returns whether set_position() can move the position. Blocks. */
    bool get_seekable() const;

    /**
     * Returns how the picture fills the scene: 0 stretched, 1 scaled to fit (the default),
     * 2 cropped. Blocks.
     */
    unsigned int get_fill_mode() const;
    /**
     * Sets how the picture fills the scene. Any other number means 0, except 4294967295, which
     * means 1. Blocks.
     */
    void set_fill_mode(unsigned int mode) const;

    /** Returns whether the scene shows controls; default true. Blocks. */
    bool get_controls() const;
    /** Shows or hides the controls. Blocks. */
    void set_controls(bool enabled) const;
    /** Returns whether the controls disappear while nobody uses them; default false. Blocks. */
    bool get_controls_auto_hide() const;
    /** Sets whether the controls disappear while nobody uses them. Blocks. */
    void set_controls_auto_hide(bool enabled) const;

    /**
     * Sets whether load() starts to play; default true. Takes effect at the next load(). Does not
     * block.
     */
    void set_auto_play(bool enabled) const;

    /** Returns the index of the active audio track, from 0; -1 for none. Blocks. */
    int get_active_audio_track() const;
    /**
     * Selects the audio track. An index that does not exist is passed to the player unchanged. Does
     * not block.
     */
    void set_active_audio_track(int track) const;
    /** Returns the index of the active video track, from 0; -1 for none. Blocks. */
    int get_active_video_track() const;
    /**
     * Selects the video track. An index that does not exist is passed to the player unchanged. Does
     * not block.
     */
    void set_active_video_track(int track) const;
    /** Returns the index of the active subtitle track, from 0; -1 for none. Blocks. */
    int get_active_subtitle_track() const;
    /**
     * Selects the subtitle track. -1, and any index that does not exist, switches subtitles off.
     * Does not block.
     */
    void set_active_subtitle_track(int track) const;
    /**
     * Returns the language of the active subtitle track, such as "English"; empty if subtitles are
     * off. Blocks.
     */
    std::string get_current_subtitle_name() const;

    /**
     * Returns the metadata of the source. Entries that are not texts, such as images, are empty.
     * Blocks.
     */
    Metadata get_metadata() const;
    /** Returns the metadata of the audio tracks, in the order of their indices. Blocks. */
    std::vector<Metadata> get_audio_tracks() const;
    /** Returns the metadata of the video tracks, in the order of their indices. Blocks. */
    std::vector<Metadata> get_video_tracks() const;
    /** Returns the metadata of the subtitle tracks, in the order of their indices. Blocks. */
    std::vector<Metadata> get_subtitle_tracks() const;

    // The callbacks of video_callbacks.h: each member registers one. An empty function unregisters
    // it. The members do not wait for the Qt thread. They wait only for a running call of the
    // previous function; in a callback they do not wait for that either. Register the callbacks
    // before playback starts, so that none is missed. The library calls them on the Qt thread.
#define MARLUNE_DECLARE_VIDEO_CALLBACK(source, name, parameters, signal, slot) \
    void set_func_on_##name(std::function<void parameters> callback) const;
    MARLUNE_VIDEO_CALLBACKS(MARLUNE_DECLARE_VIDEO_CALLBACK)
#undef MARLUNE_DECLARE_VIDEO_CALLBACK
};

static_assert(sizeof(MVideoPlayerView) == sizeof(MView));

}  // namespace marlune

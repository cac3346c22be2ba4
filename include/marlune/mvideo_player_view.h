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
 * A view that plays a video or sound file, or a stream. MView tells what all views have in common.
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
 * The component "VideoPlayer" shows the picture, subtitles and controls; a host that wants the picture
 * alone switches the controls off. Playing is done on threads of its own: the members return when the
 * player has been told, and the callbacks tell what came of it. The picture is seen in the frames that
 * the host draws with render(); sound and position go on without.
 *
 * The player lives as long as the scene: reset() ends it, and a new one without a source stands ready
 * for the next load(). That takes over volume, muting, rate and loops from the old one; and load() gives
 * it the source that was set last.
 *
 * Without a view (see MView) a member returns at once: 0, false, or an empty string, map or list.
 *
 * Making one makes a second view, which is not used and stays until the process ends: keep such a view
 * and load it again, rather than making one for each video.
 */
class MARLUNE_EXPORT MVideoPlayerView : public MQuickView {
public:
    /** Entries of a source or a track by their names, as in "Title", "Language" or "VideoCodec". */
    using Metadata = std::map<std::string, std::string>;

    /** Makes a view. Blocks until the Qt thread is ready; waits for ever if the library is never started. */
    MVideoPlayerView();

    /**
     * As MView::reset(), but does not block: it takes place in turn, before any later call. Until then it
     * may still use the queue, so that another thread must leave that alone until this thread's next call
     * that blocks, a getter for one, has returned.
     */
    void reset() const override;

    /** Begins, or goes on after pause(). Blocks. */
    void play() const;
    /** Holds the position and the picture. Blocks. */
    void pause() const;
    /** Goes back to the start and takes the picture away. Blocks. */
    void stop() const;

    /** The URL of the source; empty at first. Blocks. */
    std::string get_source() const;

    /**
     * Sets what is played: a URL ("file:///a b.mp4", "https://...") or a file's path as it is. Pipes,
     * terminals and folders are refused: they fail with error 1. Blocks, but not for the loading, of which
     * the callbacks tell. Stops what is playing; the new source waits for play(). In a view without a scene
     * it is loaded too, and set_auto_play() tells whether load() starts it.
     *
     * In a callback it returns at once, and takes place when the callback has returned; so does what the
     * callback does to the player after it, in its order.
     */
    void set_source(std::string source) const;

    /** Where it is, in ms. Blocks. */
    uint64_t get_position() const;
    /** Goes to a position in ms, from the source's start. Does not block. */
    void set_position(uint64_t position) const;
    /** The source's length in ms; 0 when it is not known. Blocks. */
    uint64_t get_duration() const;
    /** From 0 to 1. Blocks. */
    float get_buffer_progress() const;

    /** 1 is the source's own rate, 2 twice as fast. Blocks. */
    double get_playback_rate() const;
    void set_playback_rate(double rate) const;

    /** From 0 to 1, in equal steps of sound pressure; default 1. Blocks. */
    float get_volume() const;
    void set_volume(float volume) const;
    /** Blocks. */
    bool get_muted() const;
    /** Does not block. */
    void set_muted(bool muted) const;

    /** How often a source is played; default 1, and -1 for ever. Blocks. */
    int get_loops() const;
    /** As an unsigned number, for ever is 4294967295. Blocks. */
    void set_loops(unsigned int loops) const;

    /** 0 stopped, 1 playing, 2 paused. Blocks. */
    int get_playback_state() const;
    /** 0 no media, 1 loading, 2 loaded, 3 stalled, 4 buffering, 5 buffered, 6 at the end, 7 invalid. Blocks. */
    int get_media_status() const;
    /** 0 none, 1 resource, 2 format, 3 network, 4 access denied. Blocks. */
    int get_error() const;
    /** For people; empty without an error. Blocks. */
    std::string get_error_string() const;

    /** Whether the source has sound, or a picture. They block. */
    bool get_has_audio() const;
    bool get_has_video() const;
    /** Whether set_position() can move it. Blocks. */
    bool get_seekable() const;

    /** How the picture fills the scene: 0 stretched, 1 whole (the default), 2 cropped. Blocks. */
    unsigned int get_fill_mode() const;
    /** Any other number is taken for 0, but for 4294967295, which shows the picture as 1 does. Blocks. */
    void set_fill_mode(unsigned int mode) const;

    /** Whether the scene shows controls; default true. Blocks. */
    bool get_controls() const;
    void set_controls(bool enabled) const;
    /** Whether the controls go away while nobody uses them; default false. Blocks. */
    bool get_controls_auto_hide() const;
    void set_controls_auto_hide(bool enabled) const;

    /** Whether load() begins to play; default true. Takes effect at the next load(). Does not block. */
    void set_auto_play(bool enabled) const;

    /** The number of the track that plays, from 0; -1 for none. Blocks. */
    int get_active_audio_track() const;
    /** A number that there is not is handed to the player as it is. Does not block. */
    void set_active_audio_track(int track) const;
    int get_active_video_track() const;
    void set_active_video_track(int track) const;
    int get_active_subtitle_track() const;
    /** -1, and any number that there is not, switches subtitles off. Does not block. */
    void set_active_subtitle_track(int track) const;
    /** The language of the subtitles that are on, as in "English"; empty when they are off. Blocks. */
    std::string get_current_subtitle_name() const;

    /** What is known of the source. Entries without a text, such as pictures, are empty. Blocks. */
    Metadata get_metadata() const;
    /** The tracks, in the order of their numbers. They block. */
    std::vector<Metadata> get_audio_tracks() const;
    std::vector<Metadata> get_video_tracks() const;
    std::vector<Metadata> get_subtitle_tracks() const;

    // The callbacks: a member for each that sets the function to call. Empty: none. They do not wait for
    // the Qt thread, only for a call of the former function that is under way, and in a callback not even
    // for that. Set them before playing begins, to miss none. Called on the Qt thread.
#define MARLUNE_DECLARE_VIDEO_CALLBACK(source, name, parameters, signal, slot) \
    void set_func_on_##name(std::function<void parameters> callback) const;
    MARLUNE_VIDEO_CALLBACKS(MARLUNE_DECLARE_VIDEO_CALLBACK)
#undef MARLUNE_DECLARE_VIDEO_CALLBACK
};

static_assert(sizeof(MVideoPlayerView) == sizeof(MView));

}  // namespace marlune

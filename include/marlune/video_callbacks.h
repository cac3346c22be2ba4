#pragma once

/**
 * The callbacks of a video player view, one per row. A row with the name muted_changed stands for
 * the member MVideoPlayerView::set_func_on_muted_changed(), which registers the callback: a
 * `std::function` with the row's parameters, here `std::function<void(bool muted)>`.
 *
 * The columns: the object that emits the signal (Player for QMediaPlayer, Output for QAudioOutput),
 * the name, the parameters, the signal that triggers the callback, and the slot of the internal
 * view that calls it. The comment on a row says when the callback is called and what its parameters
 * mean. Callbacks run on the Qt thread.
 */
#define MARLUNE_VIDEO_CALLBACKS(X)                                                               \
    /** Another audio, video or subtitle track plays, or none. */                                \
    X(Player, active_tracks_changed, (), activeTracksChanged, onActiveTracksChanged)             \
    /** Never called by this library. The interface requires it. */                              \
    X(Player, audio_buffer_output_changed, (), audioBufferOutputChanged,                         \
      onAudioBufferOutputChanged)                                                                \
    /** Never called by this library. The interface requires it. */                              \
    X(Player, audio_output_changed, (), audioOutputChanged, onAudioOutputChanged)                \
    /** `filled`: how full the buffer is, from 0 to 1. */                                        \
    X(Player, buffer_progress_changed, (float filled), bufferProgressChanged,                    \
      onBufferProgressChanged)                                                                   \
    /** `duration`: the source's length in ms once it is known; 0 when the source is removed. */ \
    X(Player, duration_changed, (int64_t duration), durationChanged, onDurationChanged)          \
    /** The error has changed or has been cleared. get_error() returns it. */                    \
    X(Player, error_changed, (), errorChanged, onErrorChanged)                                   \
    /** `error`: as returned by get_error(). `text` is a message for people. */                  \
    X(Player, error_occurred, (int error, std::string text), errorOccurred, onErrorOccurred)     \
    /** `has_audio`: whether the source has sound. */                                            \
    X(Player, has_audio_changed, (bool has_audio), hasAudioChanged, onHasAudioChanged)           \
    /** `has_video`: whether the source has a picture. */                                        \
    X(Player, has_video_changed, (bool has_video), hasVideoChanged, onHasVideoChanged)           \
    /** The number of loops has changed, by set_loops() or by the user of the controls. */       \
    X(Player, loops_changed, (), loopsChanged, onLoopsChanged)                                   \
    /** `status`: as returned by get_media_status(). */                                          \
    X(Player, media_status_changed, (int status), mediaStatusChanged, onMediaStatusChanged)      \
    /** The results of get_metadata() and of the lists of tracks have changed. */                \
    X(Player, metadata_changed, (), metaDataChanged, onMetaDataChanged)                          \
    /** `muted`: whether the sound is off. */                                                    \
    X(Output, muted_changed, (bool muted), mutedChanged, )                                       \
    /** `rate`: the new playback rate; 1 is the source's own rate. */                            \
    X(Player, playback_rate_changed, (float rate), playbackRateChanged, onPlaybackRateChanged)   \
    /** `state`: 0 stopped, 1 playing, 2 paused. */                                              \
    X(Player, playback_state_changed, (int state), playbackStateChanged, onPlaybackStateChanged) \
    /** `playing`: whether the player plays. */                                                  \
    X(Player, playing_changed, (bool playing), playingChanged, onPlayingChanged)                 \
    /** `position`: the position in ms; called several times a second while the player plays. */ \
    X(Player, position_changed, (int64_t position), positionChanged, onPositionChanged)          \
    /** `seekable`: whether set_position() can move the position. */                             \
    X(Player, seekable_changed, (bool seekable), seekableChanged, onSeekableChanged)             \
    /** `url`: the URL of the new source. */                                                     \
    X(Player, source_changed, (std::string url), sourceChanged, onSourceChanged)                 \
    /** The tracks of the source are known, or have been removed. */                             \
    X(Player, tracks_changed, (), tracksChanged, onTracksChanged)                                \
    /** A scene has connected its video output to the player, or disconnected it. */             \
    X(Player, video_output_changed, (), videoOutputChanged, onVideoOutputChanged)                \
    /** `volume`: the new volume, from 0 to 1. */                                                \
    X(Output, volume_changed, (float volume), volumeChanged, )

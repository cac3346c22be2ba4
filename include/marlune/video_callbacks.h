#pragma once

/**
 * What a player tells its host. Each row stands for a member of MVideoPlayerView, `set_func_on_` with
 * the row's second word appended, that takes a function of the third: set_func_on_muted_changed() takes
 * a `std::function<void(bool muted)>`. A row: who tells it (Player or Output), name, parameters, and
 * the signal of Qt Multimedia that stands behind it.
 */
#define MARLUNE_VIDEO_CALLBACKS(X)                                                                      \
    /** Another audio, video or subtitle track plays, or none. */                                       \
    X(Player, active_tracks_changed, (), activeTracksChanged, onActiveTracksChanged)                    \
    /** Never by anything that this library does. */                                                    \
    X(Player, audio_buffer_output_changed, (), audioBufferOutputChanged, onAudioBufferOutputChanged)    \
    /** Never by anything that this library does. */                                                    \
    X(Player, audio_output_changed, (), audioOutputChanged, onAudioOutputChanged)                       \
    /** How full the buffer is, from 0 to 1. */                                                         \
    X(Player, buffer_progress_changed, (float filled), bufferProgressChanged, onBufferProgressChanged)  \
    /** The length of the source, in ms, once it is known; 0 when it is taken away. */                  \
    X(Player, duration_changed, (int64_t duration), durationChanged, onDurationChanged)                 \
    /** Another error, or none any more: get_error() tells. */                                          \
    X(Player, error_changed, (), errorChanged, onErrorChanged)                                          \
    /** 1 resource, 2 format, 3 network, 4 access denied; `text` for people. */                         \
    X(Player, error_occurred, (int error, std::string text), errorOccurred, onErrorOccurred)            \
    /** Whether the source has sound. */                                                                \
    X(Player, has_audio_changed, (bool has_audio), hasAudioChanged, onHasAudioChanged)                  \
    /** Whether the source has a picture. */                                                            \
    X(Player, has_video_changed, (bool has_video), hasVideoChanged, onHasVideoChanged)                  \
    /** set_loops(), or the user of the controls. */                                                    \
    X(Player, loops_changed, (), loopsChanged, onLoopsChanged)                                          \
    /** 0 no media, 1 loading, 2 loaded, 3 stalled, 4 buffering, 5 buffered, 6 at the end, 7 invalid. */\
    X(Player, media_status_changed, (int status), mediaStatusChanged, onMediaStatusChanged)             \
    /** What get_metadata() and the lists of tracks give. */                                            \
    X(Player, metadata_changed, (), metaDataChanged, onMetaDataChanged)                                 \
    /** Sound off or on again. */                                                                       \
    X(Output, muted_changed, (bool muted), mutedChanged, )                                              \
    /** 1 is the source's own rate. */                                                                  \
    X(Player, playback_rate_changed, (float rate), playbackRateChanged, onPlaybackRateChanged)          \
    /** 0 stopped, 1 playing, 2 paused. */                                                              \
    X(Player, playback_state_changed, (int state), playbackStateChanged, onPlaybackStateChanged)        \
    /** Whether it plays. */                                                                            \
    X(Player, playing_changed, (bool playing), playingChanged, onPlayingChanged)                        \
    /** Where it is, in ms, several times a second while it plays. */                                   \
    X(Player, position_changed, (int64_t position), positionChanged, onPositionChanged)                 \
    /** Whether set_position() can move it. */                                                          \
    X(Player, seekable_changed, (bool seekable), seekableChanged, onSeekableChanged)                    \
    /** The new source's URL. */                                                                        \
    X(Player, source_changed, (std::string url), sourceChanged, onSourceChanged)                        \
    /** The source's tracks are known, or gone. */                                                      \
    X(Player, tracks_changed, (), tracksChanged, onTracksChanged)                                       \
    /** A scene takes the picture, or lets go of it. */                                                 \
    X(Player, video_output_changed, (), videoOutputChanged, onVideoOutputChanged)                       \
    /** From 0 to 1. */                                                                                 \
    X(Output, volume_changed, (float volume), volumeChanged, )

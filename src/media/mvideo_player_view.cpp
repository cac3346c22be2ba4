#include "marlune/mvideo_player_view.h"

#include "media/metadata.h"
#include "media/video_view.h"
#include "runtime/facade_call.h"
#include "runtime/host_callback.h"
#include "runtime/set_callback.h"
#include "views/view_factory.h"

#include <QMediaMetaData>

#include <utility>

namespace marlune {

using Metadata = MVideoPlayerView::Metadata;

static Metadata convert(const QMediaMetaData& metadata, To<Metadata>)
{
    return to_host(metadata);
}

static std::vector<Metadata> convert(const QList<QMediaMetaData>& tracks, To<std::vector<Metadata>>)
{
    return to_host(tracks);
}

namespace {

/** Wraps a member of the player as work that belongs to a source. */
template <typename... Parameters>
auto in_turn(void (QMediaPlayer::*member)(Parameters...))
{
    return [member](VideoView& view, Parameters... arguments) {
        view.in_turn([=](QMediaPlayer& player) { (player.*member)(arguments...); });
    };
}

// The objects that the calls run on; null if the scene has deleted them.
constexpr auto player = &VideoView::player;
constexpr auto output = &VideoView::audio_output;

}  // namespace

MVideoPlayerView::MVideoPlayerView()
{
    view_ = make_view<VideoView>("marlune::MVideoPlayerView", "marlune::_create_videoplayerview",
                                 view_);
}

void MVideoPlayerView::play() const
{
    complete(view_, &VideoView::play);
}

void MVideoPlayerView::pause() const
{
    complete(view_, &VideoView::pause);
}

void MVideoPlayerView::stop() const
{
    complete(view_, &VideoView::stop);
}

void MVideoPlayerView::reset() const
{
    post(view_, outside_callbacks(&View::reset));
}

std::string MVideoPlayerView::get_source() const
{
    return ask(view_, std::string(), player,
               [](QMediaPlayer& asked) { return asked.source().toString(); });
}

void MVideoPlayerView::set_source(std::string source) const
{
    tell(view_, &VideoView::set_source, std::move(source));
}

uint64_t MVideoPlayerView::get_position() const
{
    return ask(view_, uint64_t{0}, player, &QMediaPlayer::position);
}

void MVideoPlayerView::set_position(uint64_t position) const
{
    post(view_, in_turn(&QMediaPlayer::setPosition), position);
}

uint64_t MVideoPlayerView::get_duration() const
{
    return ask(view_, uint64_t{0}, player, &QMediaPlayer::duration);
}

float MVideoPlayerView::get_buffer_progress() const
{
    return ask(view_, 0.0f, player, &QMediaPlayer::bufferProgress);
}

double MVideoPlayerView::get_playback_rate() const
{
    return ask(view_, 0.0, player, &QMediaPlayer::playbackRate);
}

void MVideoPlayerView::set_playback_rate(double rate) const
{
    complete(view_, player, &QMediaPlayer::setPlaybackRate, rate);
}

float MVideoPlayerView::get_volume() const
{
    return ask(view_, 0.0f, output, &QAudioOutput::volume);
}

void MVideoPlayerView::set_volume(float volume) const
{
    complete(view_, output, &QAudioOutput::setVolume, volume);
}

bool MVideoPlayerView::get_muted() const
{
    return ask(view_, false, output, &QAudioOutput::isMuted);
}

void MVideoPlayerView::set_muted(bool muted) const
{
    post(view_, muted ? &VideoView::mute : &VideoView::unmute);
}

int MVideoPlayerView::get_loops() const
{
    return ask(view_, 0, player, &QMediaPlayer::loops);
}

void MVideoPlayerView::set_loops(unsigned int loops) const
{
    complete(view_, player, &QMediaPlayer::setLoops, loops);
}

int MVideoPlayerView::get_playback_state() const
{
    return ask(view_, 0, player, &QMediaPlayer::playbackState);
}

int MVideoPlayerView::get_media_status() const
{
    return ask(view_, 0, player, &QMediaPlayer::mediaStatus);
}

int MVideoPlayerView::get_error() const
{
    return ask(view_, 0, player, &QMediaPlayer::error);
}

std::string MVideoPlayerView::get_error_string() const
{
    return ask(view_, std::string(), player, &QMediaPlayer::errorString);
}

bool MVideoPlayerView::get_has_audio() const
{
    return ask(view_, false, player, &QMediaPlayer::hasAudio);
}

bool MVideoPlayerView::get_has_video() const
{
    return ask(view_, false, player, &QMediaPlayer::hasVideo);
}

bool MVideoPlayerView::get_seekable() const
{
    return ask(view_, false, player, &QMediaPlayer::isSeekable);
}

unsigned int MVideoPlayerView::get_fill_mode() const
{
    return ask(view_, 0u, &VideoView::fill_mode);
}

void MVideoPlayerView::set_fill_mode(unsigned int mode) const
{
    complete(view_, &VideoView::set_fill_mode, mode);
}

bool MVideoPlayerView::get_controls() const
{
    return ask(view_, false, &VideoView::controls_enabled);
}

void MVideoPlayerView::set_controls(bool enabled) const
{
    complete(view_, &VideoView::set_controls_enabled, enabled);
}

bool MVideoPlayerView::get_controls_auto_hide() const
{
    return ask(view_, false, &VideoView::controls_auto_hide);
}

void MVideoPlayerView::set_controls_auto_hide(bool enabled) const
{
    complete(view_, &VideoView::set_controls_auto_hide, enabled);
}

void MVideoPlayerView::set_auto_play(bool enabled) const
{
    post(view_, &VideoView::set_auto_play, enabled);
}

int MVideoPlayerView::get_active_audio_track() const
{
    return ask(view_, 0, player, &QMediaPlayer::activeAudioTrack);
}

void MVideoPlayerView::set_active_audio_track(int track) const
{
    post(view_, in_turn(&QMediaPlayer::setActiveAudioTrack), track);
}

int MVideoPlayerView::get_active_video_track() const
{
    return ask(view_, 0, player, &QMediaPlayer::activeVideoTrack);
}

void MVideoPlayerView::set_active_video_track(int track) const
{
    post(view_, &VideoView::set_active_video_track, track);
}

int MVideoPlayerView::get_active_subtitle_track() const
{
    return ask(view_, 0, player, &QMediaPlayer::activeSubtitleTrack);
}

void MVideoPlayerView::set_active_subtitle_track(int track) const
{
    post(view_, &VideoView::set_active_subtitle_track, track);
}

std::string MVideoPlayerView::get_current_subtitle_name() const
{
    return ask(view_, std::string(), &VideoView::get_current_subtitle_name);
}

MVideoPlayerView::Metadata MVideoPlayerView::get_metadata() const
{
    return ask(view_, Metadata(), player, &QMediaPlayer::metaData);
}

std::vector<MVideoPlayerView::Metadata> MVideoPlayerView::get_audio_tracks() const
{
    return ask(view_, std::vector<Metadata>(), player, &QMediaPlayer::audioTracks);
}

std::vector<MVideoPlayerView::Metadata> MVideoPlayerView::get_video_tracks() const
{
    return ask(view_, std::vector<Metadata>(), player, &QMediaPlayer::videoTracks);
}

std::vector<MVideoPlayerView::Metadata> MVideoPlayerView::get_subtitle_tracks() const
{
    return ask(view_, std::vector<Metadata>(), player, &QMediaPlayer::subtitleTracks);
}

#define MARLUNE_DEFINE_VIDEO_CALLBACK(source, name, parameters, signal, slot)                \
    void MVideoPlayerView::set_func_on_##name(std::function<void parameters> callback) const \
    {                                                                                        \
        set_callback_in_place(                                                               \
            view_, [](VideoView & view) -> auto& { return view.callbacks().name; },          \
            std::move(callback));                                                            \
    }
MARLUNE_VIDEO_CALLBACKS(MARLUNE_DEFINE_VIDEO_CALLBACK)
#undef MARLUNE_DEFINE_VIDEO_CALLBACK

}  // namespace marlune

#include "marlune/video_player_view.h"

#include "media/metadata.h"
#include "media/video_view.h"
#include "runtime/call.h"
#include "runtime/host_callback.h"
#include "runtime/set_callback.h"
#include "views/view_factory.h"

#include <QMediaMetaData>

#include <functional>
#include <utility>

namespace marlune {

namespace {

/** Carries a question to the view's player; a view whose scene has ended it gives the default too. */
template <typename Result, typename Work>
Result ask_player(const char* name, View* target, Result fallback, Work work)
{
    return call<VideoView>(
        name, target, Delivery::Queued, fallback, [&](VideoView& view) -> Result {
            QMediaPlayer* const player = view.player();
            return player ? static_cast<Result>(std::invoke(work, *player)) : fallback;
        });
}

template <typename Result, typename Work>
Result ask_output(const char* name, View* target, Result fallback, Work work)
{
    return call<VideoView>(
        name, target, Delivery::Queued, fallback, [&](VideoView& view) -> Result {
            QAudioOutput* const output = view.audio_output();
            return output ? static_cast<Result>(std::invoke(work, *output)) : fallback;
        });
}

/** Work on the player, to be carried in one way or another. */
template <typename Work>
auto on_player(Work work)
{
    return [work = std::move(work)](VideoView& view) {
        if (QMediaPlayer* const player = view.player())
            work(*player);
    };
}

/** The same, for work that belongs to a source. */
template <typename Work>
auto in_turn(Work work)
{
    return [work = std::move(work)](VideoView& view) { view.in_turn(work); };
}

}  // namespace

MVideoPlayerView::MVideoPlayerView()
{
    view_ = make_view<VideoView>("marlune::MVideoPlayerView", "marlune::_create_videoplayerview",
                                 view_);
}

void MVideoPlayerView::play() const
{
    call<VideoView>("marlune::MVideoPlayerView::play", view_, Delivery::Blocking, &VideoView::play);
}

void MVideoPlayerView::pause() const
{
    call<VideoView>("marlune::MVideoPlayerView::pause", view_, Delivery::Blocking,
                    &VideoView::pause);
}

void MVideoPlayerView::stop() const
{
    call<VideoView>("marlune::MVideoPlayerView::stop", view_, Delivery::Blocking, &VideoView::stop);
}

void MVideoPlayerView::reset() const
{
    post<VideoView>("marlune::MVideoPlayerView::reset", view_, [](VideoView& target) {
        run_outside_callbacks(target, [](VideoView& view) { view.reset(); });
    });
}

std::string MVideoPlayerView::get_source() const
{
    return ask_player(
        "marlune::MVideoPlayerView::get_source", view_, std::string(),
        [](QMediaPlayer& player) { return player.source().toString().toStdString(); });
}

void MVideoPlayerView::set_source(std::string source) const
{
    call<VideoView>("marlune::MVideoPlayerView::set_source", view_, Delivery::Queued,
                    [source = std::move(source)](VideoView& view) {
                        view.set_source(QString::fromStdString(source));
                    });
}

uint64_t MVideoPlayerView::get_position() const
{
    return ask_player("marlune::MVideoPlayerView::get_position", view_, uint64_t{0},
                      &QMediaPlayer::position);
}

void MVideoPlayerView::set_position(uint64_t position) const
{
    post<VideoView>("marlune::MVideoPlayerView::set_position", view_,
                    in_turn([position](QMediaPlayer& player) {
                        player.setPosition(static_cast<qint64>(position));
                    }));
}

uint64_t MVideoPlayerView::get_duration() const
{
    return ask_player("marlune::MVideoPlayerView::get_duration", view_, uint64_t{0},
                      &QMediaPlayer::duration);
}

float MVideoPlayerView::get_buffer_progress() const
{
    return ask_player("marlune::MVideoPlayerView::get_buffer_progress", view_, 0.0f,
                      &QMediaPlayer::bufferProgress);
}

double MVideoPlayerView::get_playback_rate() const
{
    return ask_player("marlune::MVideoPlayerView::get_playback_rate", view_, 0.0,
                      &QMediaPlayer::playbackRate);
}

void MVideoPlayerView::set_playback_rate(double rate) const
{
    call<VideoView>("marlune::MVideoPlayerView::set_playback_rate", view_, Delivery::Blocking,
                    on_player([rate](QMediaPlayer& player) { player.setPlaybackRate(rate); }));
}

float MVideoPlayerView::get_volume() const
{
    return ask_output("marlune::MVideoPlayerView::get_volume", view_, 0.0f, &QAudioOutput::volume);
}

void MVideoPlayerView::set_volume(float volume) const
{
    call<VideoView>("marlune::MVideoPlayerView::set_volume", view_, Delivery::Blocking,
                    [volume](VideoView& view) {
                        if (QAudioOutput* const output = view.audio_output())
                            output->setVolume(volume);
                    });
}

bool MVideoPlayerView::get_muted() const
{
    return ask_output("marlune::MVideoPlayerView::get_muted", view_, false, &QAudioOutput::isMuted);
}

void MVideoPlayerView::set_muted(bool muted) const
{
    post<VideoView>("marlune::MVideoPlayerView::set_muted", view_,
                    muted ? &VideoView::mute : &VideoView::unmute);
}

int MVideoPlayerView::get_loops() const
{
    return ask_player("marlune::MVideoPlayerView::get_loops", view_, 0, &QMediaPlayer::loops);
}

void MVideoPlayerView::set_loops(unsigned int loops) const
{
    call<VideoView>(
        "marlune::MVideoPlayerView::set_loops", view_, Delivery::Blocking,
        on_player([loops](QMediaPlayer& player) { player.setLoops(static_cast<int>(loops)); }));
}

int MVideoPlayerView::get_playback_state() const
{
    return ask_player("marlune::MVideoPlayerView::get_playback_state", view_, 0,
                      &QMediaPlayer::playbackState);
}

int MVideoPlayerView::get_media_status() const
{
    return ask_player("marlune::MVideoPlayerView::get_media_status", view_, 0,
                      &QMediaPlayer::mediaStatus);
}

int MVideoPlayerView::get_error() const
{
    return ask_player("marlune::MVideoPlayerView::get_error", view_, 0, &QMediaPlayer::error);
}

std::string MVideoPlayerView::get_error_string() const
{
    return ask_player("marlune::MVideoPlayerView::get_error_string", view_, std::string(),
                      [](QMediaPlayer& player) { return player.errorString().toStdString(); });
}

bool MVideoPlayerView::get_has_audio() const
{
    return ask_player("marlune::MVideoPlayerView::get_has_audio", view_, false,
                      &QMediaPlayer::hasAudio);
}

bool MVideoPlayerView::get_has_video() const
{
    return ask_player("marlune::MVideoPlayerView::get_has_video", view_, false,
                      &QMediaPlayer::hasVideo);
}

bool MVideoPlayerView::get_seekable() const
{
    return ask_player("marlune::MVideoPlayerView::get_seekable", view_, false,
                      &QMediaPlayer::isSeekable);
}

unsigned int MVideoPlayerView::get_fill_mode() const
{
    return call<VideoView>("marlune::MVideoPlayerView::get_fill_mode", view_, Delivery::Queued, 0u,
                           &VideoView::fill_mode);
}

void MVideoPlayerView::set_fill_mode(unsigned int mode) const
{
    call<VideoView>("marlune::MVideoPlayerView::set_fill_mode", view_, Delivery::Blocking,
                    [mode](VideoView& view) { view.set_fill_mode(mode); });
}

bool MVideoPlayerView::get_controls() const
{
    return call<VideoView>("marlune::MVideoPlayerView::get_controls", view_, Delivery::Queued,
                           false, &VideoView::controls_enabled);
}

void MVideoPlayerView::set_controls(bool enabled) const
{
    call<VideoView>("marlune::MVideoPlayerView::set_controls", view_, Delivery::Blocking,
                    [enabled](VideoView& view) { view.set_controls_enabled(enabled); });
}

bool MVideoPlayerView::get_controls_auto_hide() const
{
    return call<VideoView>("marlune::MVideoPlayerView::get_controls_auto_hide", view_,
                           Delivery::Queued, false, &VideoView::controls_auto_hide);
}

void MVideoPlayerView::set_controls_auto_hide(bool enabled) const
{
    call<VideoView>("marlune::MVideoPlayerView::set_controls_auto_hide", view_, Delivery::Blocking,
                    [enabled](VideoView& view) { view.set_controls_auto_hide(enabled); });
}

void MVideoPlayerView::set_auto_play(bool enabled) const
{
    post<VideoView>("marlune::MVideoPlayerView::set_auto_play", view_,
                    [enabled](VideoView& view) { view.set_auto_play(enabled); });
}

int MVideoPlayerView::get_active_audio_track() const
{
    return ask_player("marlune::MVideoPlayerView::get_active_audio_track", view_, 0,
                      &QMediaPlayer::activeAudioTrack);
}

void MVideoPlayerView::set_active_audio_track(int track) const
{
    post<VideoView>("marlune::MVideoPlayerView::set_active_audio_track", view_,
                    in_turn([track](QMediaPlayer& player) { player.setActiveAudioTrack(track); }));
}

int MVideoPlayerView::get_active_video_track() const
{
    return ask_player("marlune::MVideoPlayerView::get_active_video_track", view_, 0,
                      &QMediaPlayer::activeVideoTrack);
}

void MVideoPlayerView::set_active_video_track(int track) const
{
    post<VideoView>("marlune::MVideoPlayerView::set_active_video_track", view_,
                    [track](VideoView& view) { view.set_active_video_track(track); });
}

int MVideoPlayerView::get_active_subtitle_track() const
{
    return ask_player("marlune::MVideoPlayerView::get_active_subtitle_track", view_, 0,
                      &QMediaPlayer::activeSubtitleTrack);
}

void MVideoPlayerView::set_active_subtitle_track(int track) const
{
    post<VideoView>("marlune::MVideoPlayerView::set_active_subtitle_track", view_,
                    [track](VideoView& view) { view.set_active_subtitle_track(track); });
}

std::string MVideoPlayerView::get_current_subtitle_name() const
{
    return call<VideoView>("marlune::MVideoPlayerView::get_current_subtitle_name", view_,
                           Delivery::Queued, std::string(), [](VideoView& view) {
                               return view.get_current_subtitle_name().toStdString();
                           });
}

MVideoPlayerView::Metadata MVideoPlayerView::get_metadata() const
{
    return ask_player("marlune::MVideoPlayerView::get_metadata", view_, Metadata(),
                      [](QMediaPlayer& player) { return to_host(player.metaData()); });
}

std::vector<MVideoPlayerView::Metadata> MVideoPlayerView::get_audio_tracks() const
{
    return ask_player("marlune::MVideoPlayerView::get_audio_tracks", view_, std::vector<Metadata>(),
                      [](QMediaPlayer& player) { return to_host(player.audioTracks()); });
}

std::vector<MVideoPlayerView::Metadata> MVideoPlayerView::get_video_tracks() const
{
    return ask_player("marlune::MVideoPlayerView::get_video_tracks", view_, std::vector<Metadata>(),
                      [](QMediaPlayer& player) { return to_host(player.videoTracks()); });
}

std::vector<MVideoPlayerView::Metadata> MVideoPlayerView::get_subtitle_tracks() const
{
    return ask_player("marlune::MVideoPlayerView::get_subtitle_tracks", view_,
                      std::vector<Metadata>(),
                      [](QMediaPlayer& player) { return to_host(player.subtitleTracks()); });
}

#define MARLUNE_DEFINE_VIDEO_CALLBACK(source, name, parameters, signal, slot)                      \
    void MVideoPlayerView::set_func_on_##name(std::function<void parameters> callback) const       \
    {                                                                                              \
        set_callback_in_place<VideoView>(                                                          \
            "marlune::MVideoPlayerView::set_func_on_" #name, view_,                                \
            [](VideoView & view) -> auto& { return view.callbacks().name; }, std::move(callback)); \
    }
MARLUNE_VIDEO_CALLBACKS(MARLUNE_DEFINE_VIDEO_CALLBACK)
#undef MARLUNE_DEFINE_VIDEO_CALLBACK

}  // namespace marlune

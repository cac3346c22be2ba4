#include "media/video_view.h"

#include "media/frame_filter.h"
#include "media/media_source.h"
#include "media/media_view.h"
#include "media/time_text.h"
#include "runtime/host_callback.h"
#include "runtime/trace.h"

#include <QFileInfo>
#include <QMediaMetaData>
#include <QTimer>
#include <QtQml>

#include <chrono>
#include <utility>

namespace marlune {

namespace {

using namespace std::chrono_literals;

constexpr auto position_interval = 500ms;
constexpr qint64 ms_a_second = 1000;
constexpr int no_track = -1;
// No device draws larger frames, in px per side.
constexpr int most_drawn = 32768;

void register_type()
{
    // Register once: each registration adds to Qt's tables.
    [[maybe_unused]] static const int id = qmlRegisterUncreatableType<VideoView>(
        "Custom", 1, 0, "VideoView", QStringLiteral("Don't try to add to a qml definition"));
    [[maybe_unused]] static const int filter =
        qmlRegisterType<FrameFilter>("Custom", 1, 0, "FrameFilter");
}

bool is_loading(const QMediaPlayer* player)
{
    return player && player->mediaStatus() == QMediaPlayer::LoadingMedia;
}

}  // namespace

VideoView::VideoView() : QuickView("VideoView")
{
    trace("VideoView::VideoView()", "T");
    make_player(this);
    make_output();
    connect_callbacks();
    connect_player();
    connect_output();
}

VideoView::~VideoView()
{
    // While this is still a VideoView: the scene may call it until the scene is deleted.
    withdraw();
    is_ending_ = true;
    if (is_loading(player_)) {
        player_->disconnect(this);
        end_when_loaded(std::exchange(player_, nullptr));
    }
    reset();
    delete player_;
    delete audio_output_;
}

void VideoView::make_player(QObject* parent)
{
    const QPointer old = player_;
    player_ = new QMediaPlayer(parent);
    delete_at_shutdown(player_);
    if (!old)
        return;
    old->disconnect(this);
    player_->setPlaybackRate(old->playbackRate());
    player_->setLoops(old->loops());
}

void VideoView::make_output()
{
    const QPointer old = audio_output_;
    audio_output_ = new QAudioOutput(this);
    delete_at_shutdown(audio_output_);
    player_->setAudioOutput(audio_output_);
    if (!old)
        return;
    old->disconnect(this);
    audio_output_->setVolume(old->volume());
    audio_output_->setMuted(old->isMuted());
}

/** Connected first, so that the host is notified of a change before the scene. */
void VideoView::connect_callbacks()
{
#define MARLUNE_CONNECT_Player(signal, slot) \
    connect(player_, &QMediaPlayer::signal, this, &VideoView::slot);
#define MARLUNE_CONNECT_Output(signal, slot)
#define MARLUNE_CONNECT_VIDEO_CALLBACK(source, name, parameters, signal, slot) \
    MARLUNE_CONNECT_##source(signal, slot)
    MARLUNE_VIDEO_CALLBACKS(MARLUNE_CONNECT_VIDEO_CALLBACK)
#undef MARLUNE_CONNECT_VIDEO_CALLBACK
#undef MARLUNE_CONNECT_Output
#undef MARLUNE_CONNECT_Player
}

void VideoView::connect_player()
{
    connect(player_, &QMediaPlayer::sourceChanged, this, &VideoView::take_source);
    if (!position_timer_) {
        position_timer_ = new QTimer(this);
        position_timer_->setInterval(position_interval);
        connect(position_timer_, &QTimer::timeout, this, &VideoView::tick);
    }
    connect(player_, &QMediaPlayer::playingChanged, this,
            [this](bool playing) { playing_ = playing; });
    connect(player_, &QMediaPlayer::durationChanged, this, &VideoView::take_duration);
    connect(player_, &QMediaPlayer::playbackStateChanged, this, &VideoView::follow_state);
    connect(player_, &QMediaPlayer::activeTracksChanged, this, &VideoView::activeTracksChanged);
    connect(player_, &QMediaPlayer::tracksChanged, this, &VideoView::count_tracks);
    // Before playback starts: Qt knows the size as soon as it knows the tracks.
    connect(player_, &QMediaPlayer::tracksChanged, this, &VideoView::leave_out_stretched_video);
}

void VideoView::connect_output()
{
    connect(audio_output_, &QAudioOutput::mutedChanged, this,
            [this](bool muted) { callbacks_.muted_changed.call(this, muted); });
    connect(audio_output_, &QAudioOutput::volumeChanged, this,
            [this](float volume) { callbacks_.volume_changed.call(this, volume); });
}

/**
 * Pixels need not be square, and Qt scales frames to square pixels. For a file that declares pixels
 * thousands of times as wide as high, Qt 6.8 would allocate gigabytes, or scale a frame without the
 * resources for it.
 */
void VideoView::leave_out_stretched_video()
{
    const QVideoSink* const sink = player_->videoSink();
    if (!sink || player_->activeVideoTrack() == no_track)
        return;
    const QSize size = sink->videoSize();
    const bool is_sane = size.width() <= most_drawn
        && size.height() <= most_drawn
        // Negative if it exceeds Qt's integer range.
        && (size == QSize() || size.isValid());
    if (!is_sane) {
        qWarning("%s: the video is %d x %d px and is not shown; each side can be at most %d px",
                 qUtf8Printable(objectName()), size.width(), size.height(), most_drawn);
        player_->setActiveVideoTrack(no_track);
    }
}

void VideoView::prepare_context(QQmlContext* root_context)
{
    register_type();
    prepare_media_context(root_context, this);
}

void VideoView::post_setup(QQmlEngine*, QObject* root)
{
    do_waiting_work();
    if (audio_output_)
        audio_output_->setParent(root);
    if (!player_)
        return;
    player_->setParent(root);
    open(path_or_url_);
    if (auto_play_)
        play();
}

void VideoView::before_reset()
{
    if (!is_ending_)
        do_waiting_work();
    if (player_)
        player_->stop();
    const bool goes_with_scene = !player_ || player_->parent() != this;
    if (goes_with_scene && !is_ending_)
        replace_player();
}

/** Creates a player for the next scene; the current one is deleted with its scene. */
void VideoView::replace_player()
{
    const QPointer old = player_;
    make_player(this);
    make_output();
    // From here on, changes are reported.
    connect_callbacks();
    connect_player();
    connect_output();
    emit playerChanged();
    emit audioOutputChanged();
    take_duration(player_->duration());
    count_tracks();
    if (is_loading(old))
        end_when_loaded(old);
}

/**
 * Deleting a loading player would block the Qt thread until its source is open, which never happens
 * on a network share whose server is gone.
 */
void VideoView::leave_loading_player()
{
    const QPointer old = player_;
    make_player(old->parent());
    player_->setVideoSink(old->videoSink());
    player_->setAudioOutput(audio_output_);
    connect_callbacks();
    connect_player();
    emit playerChanged();
    // The new player has no change to report about the previous source.
    if (old->isSeekable())
        onSeekableChanged(false);
    if (old->hasAudio())
        onHasAudioChanged(false);
    if (old->hasVideo())
        onHasVideoChanged(false);
    take_duration(player_->duration());
    count_tracks();
    end_when_loaded(old);
}

void VideoView::set_source(const QString& source)
{
    if (!HostCallbackScope::active()) {
        do_waiting_work();
        return open(source);
    }
    waiting_.emplace_back([this, source] { open(source); });
    run_outside_callbacks(*this, [](VideoView& view) { view.do_waiting_work(); });
}

void VideoView::in_turn(std::function<void(QMediaPlayer& player)> work)
{
    const auto on_player = [this, work = std::move(work)] {
        if (player_)
            work(*player_);
    };
    if (HostCallbackScope::active() && !waiting_.empty())
        return waiting_.push_back(on_player);
    do_waiting_work();
    on_player();
}

void VideoView::do_waiting_work()
{
    for (const auto& work : std::exchange(waiting_, {}))
        work();
}

void VideoView::open(const QString& text)
{
    path_or_url_ = text;
    if (!player_)
        return;
    const MediaSource source = to_source(text);
    if (is_loading(player_) && player_->source() != source.url) {
        leave_loading_player();
        if (text.isEmpty())
            return report_no_source();
    }
    if (source.is_refused)
        player_->setSourceDevice(refusing_device(), source.url);
    else
        player_->setSource(source.url);
}

/** For a new player: having no source is not a change for it. */
void VideoView::report_no_source()
{
    onMediaStatusChanged(QMediaPlayer::NoMedia);
    onSourceChanged(QUrl());
    take_source(QUrl());
}

void VideoView::take_source(const QUrl& source)
{
    const QString path = source.path(QUrl::FullyDecoded);
    const bool is_file = kind_of(path) == FileKind::File;
    path_or_url_humanized_ = is_file ? QFileInfo(path).fileName() : source.toString();
    // Not the notify signal of the property: scenes listen to this one.
    emit m_ui_controls_source_humanizedChanged();
    path_or_url_ = source.toString();
    emit m_path_or_urlChanged();
}

void VideoView::take_duration(qint64 duration)
{
    duration_ = duration;
    emit durationChanged();
}

void VideoView::follow_state(QMediaPlayer::PlaybackState state)
{
    if (state != QMediaPlayer::PlayingState)
        return position_timer_->stop();
    position_timer_->start();
    count_tracks();
}

void VideoView::count_tracks()
{
    count_audio_tracks_ = player_ ? int(player_->audioTracks().size()) : 0;
    count_video_tracks_ = player_ ? int(player_->videoTracks().size()) : 0;
    count_subtitle_tracks_ = player_ ? int(player_->subtitleTracks().size()) : 0;
    emit countSubtitleTracksChanged();
    emit countAudioTracksChanged();
    emit countVideoTracksChanged();
}

void VideoView::tick()
{
    if (player_)
        show_position(player_->position());
}

void VideoView::show_position(qint64 position)
{
    const qint64 seconds = position / ms_a_second;
    if (seconds == playing_position_)
        return;
    playing_position_pct_ = double(position) * 100.0 / double(duration_);
    emit playing_position_pctChanged();
    playing_position_ = seconds;
    emit playing_positionChanged();
    playing_position_str_ = time_text(seconds);
    emit playing_position_strChanged();
    playing_minus_position_str_ = u'-' + time_text((duration_ - position) / ms_a_second);
    emit playing_minus_position_strChanged();
}

void VideoView::set_controls_enabled(bool enabled)
{
    controls_enabled_ = enabled;
    emit controls_enabledChanged();
}

void VideoView::set_controls_auto_hide(bool enabled)
{
    controls_auto_hide_ = enabled;
    emit controls_auto_hideChanged();
}

void VideoView::play()
{
    in_turn(&QMediaPlayer::play);
}

void VideoView::pause()
{
    in_turn(&QMediaPlayer::pause);
}

void VideoView::stop()
{
    in_turn(&QMediaPlayer::stop);
}

void VideoView::mute()
{
    if (audio_output_)
        audio_output_->setMuted(true);
}

void VideoView::unmute()
{
    if (audio_output_)
        audio_output_->setMuted(false);
}

void VideoView::set_active_subtitle_track(int track)
{
    in_turn([this, track](QMediaPlayer& player) {
        const auto count = player.subtitleTracks().size();
        const bool there = qint64(track) + 1 <= count;
        player.setActiveSubtitleTrack(there ? track : no_track);
        emit activeTracksChanged();
    });
}

QString VideoView::get_current_subtitle_name()
{
    const int active = player_ ? player_->activeSubtitleTrack() : no_track;
    if (active == no_track)
        return QString();
    return player_->subtitleTracks().value(active).stringValue(QMediaMetaData::Language);
}

void VideoView::set_position(qint64 position)
{
    if (player_ && player_->isSeekable())
        player_->setPosition(position);
    else
        qWarning("set_position failed");
}

void VideoView::setVideoSink(QVideoSink* sink)
{
    if (!player_)
        return;
    player_->setVideoSink(sink);
    leave_out_stretched_video();
    emit playerChanged();
}

void VideoView::set_active_video_track(int track)
{
    in_turn([this, track](QMediaPlayer& player) {
        player.setActiveVideoTrack(track);
        leave_out_stretched_video();
    });
}

QString VideoView::playing_position_to_str(qint64 seconds)
{
    return time_text(seconds);
}

void VideoView::set_fill_mode(uint fill_mode)
{
    fill_mode_ = accepted_fill_mode(fill_mode);
    emit fill_modeChanged();
}

}  // namespace marlune

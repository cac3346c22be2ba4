#pragma once

#include "marlune/video_callbacks.h"
#include "runtime/callback_slot.h"
#include "views/quick_view.h"

#include <QAudioOutput>
#include <QMediaPlayer>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVideoSink>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class QTimer;

namespace marlune {

/** The callbacks of the host that a player calls. */
struct VideoCallbacks {
#define MARLUNE_VIDEO_CALLBACK_SLOT(source, name, parameters, signal, slot) \
    CallbackSlot<void parameters> name;
    MARLUNE_VIDEO_CALLBACKS(MARLUNE_VIDEO_CALLBACK_SLOT)
#undef MARLUNE_VIDEO_CALLBACK_SLOT
};

/**
 * The view that plays a source. Its scene, the component "VideoPlayer", binds to its properties and
 * calls its functions.
 */
class VideoView : public QuickView {
    Q_OBJECT
    Q_PROPERTY(QString path_or_url MEMBER path_or_url_ NOTIFY m_path_or_urlChanged)
    Q_PROPERTY(QString path_or_url_humanized MEMBER path_or_url_humanized_ NOTIFY
                   m_path_or_url_humanizedChanged)
    Q_PROPERTY(uint fill_mode MEMBER fill_mode_ NOTIFY fill_modeChanged)
    Q_PROPERTY(bool ui_controls_source_humanized MEMBER ui_controls_source_humanized_ NOTIFY
                   m_ui_controls_source_humanizedChanged)
    Q_PROPERTY(qlonglong playing_position MEMBER playing_position_ NOTIFY playing_positionChanged)
    Q_PROPERTY(QString playing_position_str MEMBER playing_position_str_ NOTIFY
                   playing_position_strChanged)
    Q_PROPERTY(QString playing_minus_position_str MEMBER playing_minus_position_str_ NOTIFY
                   playing_minus_position_strChanged)
    Q_PROPERTY(
        double playing_position_pct MEMBER playing_position_pct_ NOTIFY playing_position_pctChanged)
    Q_PROPERTY(qlonglong duration MEMBER duration_ NOTIFY durationChanged)
    Q_PROPERTY(
        int countSubtitleTracks MEMBER count_subtitle_tracks_ NOTIFY countSubtitleTracksChanged)
    Q_PROPERTY(int countAudioTracks MEMBER count_audio_tracks_ NOTIFY countAudioTracksChanged)
    Q_PROPERTY(int countVideoTracks MEMBER count_video_tracks_ NOTIFY countVideoTracksChanged)
    Q_PROPERTY(bool controls_enabled MEMBER controls_enabled_ NOTIFY controls_enabledChanged)
    Q_PROPERTY(bool controls_auto_hide MEMBER controls_auto_hide_ NOTIFY controls_auto_hideChanged)
    Q_PROPERTY(QMediaPlayer* player MEMBER player_ NOTIFY playerChanged)
    Q_PROPERTY(QAudioOutput* audioOutput MEMBER audio_output_ NOTIFY audioOutputChanged)

public:
    VideoView();
    ~VideoView() override;

    void prepare_context(QQmlContext* root_context) override;
    void post_setup(QQmlEngine* engine, QObject* root) override;
    void before_reset() override;

    /** Null if the scene has replaced the player with another one and deleted that. */
    QMediaPlayer* player() const { return player_; }
    QAudioOutput* audio_output() const { return audio_output_; }
    /** Callbacks may be set on any thread. */
    VideoCallbacks& callbacks() { return callbacks_; }

    /**
     * In a callback, runs after the callback has returned: the player may be loading another
     * source.
     */
    void set_source(const QString& source);

    /**
     * Runs work on the player, if there is one: immediately, but after any source that is waiting.
     */
    void in_turn(std::function<void(QMediaPlayer& player)> work);

    void set_active_video_track(int track);
    void set_auto_play(bool enabled) { auto_play_ = enabled; }
    uint fill_mode() const { return fill_mode_; }
    bool controls_enabled() const { return controls_enabled_; }
    void set_controls_enabled(bool enabled);
    bool controls_auto_hide() const { return controls_auto_hide_; }
    void set_controls_auto_hide(bool enabled);

    /** Called by the timer during playback: the texts change once per whole second. */
    void show_position(qint64 position);

    Q_INVOKABLE void play();
    Q_INVOKABLE void pause();
    Q_INVOKABLE void stop();
    Q_INVOKABLE void mute();
    Q_INVOKABLE void unmute();
    Q_INVOKABLE void set_active_subtitle_track(int track);
    Q_INVOKABLE QString get_current_subtitle_name();
    Q_INVOKABLE void set_position(qint64 position);
    Q_INVOKABLE void setVideoSink(QVideoSink* sink);
    Q_INVOKABLE QString playing_position_to_str(qint64 seconds);
    Q_INVOKABLE void set_fill_mode(uint fill_mode);

public slots:
    void onActiveTracksChanged();
    void onAudioBufferOutputChanged();
    void onAudioOutputChanged();
    void onBufferProgressChanged(float filled);
    void onDurationChanged(qint64 duration);
    void onErrorChanged();
    void onErrorOccurred(QMediaPlayer::Error error, QString errorString);
    void onHasAudioChanged(bool available);
    void onHasVideoChanged(bool videoAvailable);
    void onLoopsChanged();
    void onMediaStatusChanged(QMediaPlayer::MediaStatus status);
    void onMetaDataChanged();
    void onPlaybackRateChanged(qreal rate);
    void onPlaybackStateChanged(QMediaPlayer::PlaybackState newState);
    void onPlayingChanged(bool playing);
    void onPositionChanged(qint64 position);
    void onSeekableChanged(bool seekable);
    void onSourceChanged(QUrl media);
    void onTracksChanged();
    void onVideoOutputChanged();

signals:
    void fill_modeChanged();
    void playerChanged();
    void audioOutputChanged();
    void m_path_or_urlChanged();
    void m_path_or_url_humanizedChanged();
    void m_ui_controls_source_humanizedChanged();
    void playing_positionChanged();
    void playing_position_strChanged();
    void durationChanged();
    void playing_position_pctChanged();
    void playing_minus_position_strChanged();
    void activeTracksChanged();
    void tracksChanged();
    void countVideoTracksChanged();
    void countAudioTracksChanged();
    void countSubtitleTracksChanged();
    void controls_enabledChanged();
    void controls_auto_hideChanged();

private:
    void make_player(QObject* parent);
    void make_output();
    void connect_callbacks();
    void connect_player();
    void connect_output();
    void replace_player();
    void leave_loading_player();
    void do_waiting_work();
    void open(const QString& text);
    void report_no_source();
    void take_source(const QUrl& source);
    void take_duration(qint64 duration);
    void follow_state(QMediaPlayer::PlaybackState state);
    void count_tracks();
    void leave_out_stretched_video();
    void tick();

    // Children of the view, and from post_setup() on of the scene, with which they are deleted.
    QPointer<QMediaPlayer> player_;
    QPointer<QAudioOutput> audio_output_;
    VideoCallbacks callbacks_;
    QString path_or_url_humanized_;
    QString path_or_url_;
    bool playing_ = false;
    QTimer* position_timer_ = nullptr;
    qint64 playing_position_ = 0;
    QString playing_position_str_ = QStringLiteral("00:00:00");
    QString playing_minus_position_str_ = QStringLiteral("-00:00:00");
    double playing_position_pct_ = 0;
    bool ui_controls_source_humanized_ = true;
    qint64 duration_ = 0;
    bool auto_play_ = true;
    int count_subtitle_tracks_ = 0;
    int count_audio_tracks_ = 0;
    int count_video_tracks_ = 0;
    bool controls_enabled_ = true;
    bool controls_auto_hide_ = false;
    uint fill_mode_ = 1;
    std::vector<std::function<void()>> waiting_;  // until a callback has returned
    bool is_ending_ = false;
};

}  // namespace marlune

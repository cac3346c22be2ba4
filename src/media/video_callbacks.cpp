// The slots of VideoView that report its player's signals to the host.

#include "media/video_view.h"

namespace marlune {

void VideoView::onActiveTracksChanged()
{
    callbacks_.active_tracks_changed.call(this);
}

void VideoView::onAudioBufferOutputChanged()
{
    callbacks_.audio_buffer_output_changed.call(this);
}

void VideoView::onAudioOutputChanged()
{
    callbacks_.audio_output_changed.call(this);
}

void VideoView::onBufferProgressChanged(float filled)
{
    callbacks_.buffer_progress_changed.call(this, filled);
}

void VideoView::onDurationChanged(qint64 duration)
{
    callbacks_.duration_changed.call(this, duration);
}

void VideoView::onErrorChanged()
{
    callbacks_.error_changed.call(this);
}

void VideoView::onErrorOccurred(QMediaPlayer::Error error, QString errorString)
{
    callbacks_.error_occurred.call(this, static_cast<int>(error), errorString.toStdString());
}

void VideoView::onHasAudioChanged(bool available)
{
    callbacks_.has_audio_changed.call(this, available);
}

void VideoView::onHasVideoChanged(bool videoAvailable)
{
    callbacks_.has_video_changed.call(this, videoAvailable);
}

void VideoView::onLoopsChanged()
{
    callbacks_.loops_changed.call(this);
}

void VideoView::onMediaStatusChanged(QMediaPlayer::MediaStatus status)
{
    callbacks_.media_status_changed.call(this, static_cast<int>(status));
}

void VideoView::onMetaDataChanged()
{
    callbacks_.metadata_changed.call(this);
}

void VideoView::onPlaybackRateChanged(qreal rate)
{
    callbacks_.playback_rate_changed.call(this, static_cast<float>(rate));
}

void VideoView::onPlaybackStateChanged(QMediaPlayer::PlaybackState newState)
{
    callbacks_.playback_state_changed.call(this, static_cast<int>(newState));
}

void VideoView::onPlayingChanged(bool playing)
{
    callbacks_.playing_changed.call(this, playing);
}

void VideoView::onPositionChanged(qint64 position)
{
    callbacks_.position_changed.call(this, position);
}

void VideoView::onSeekableChanged(bool seekable)
{
    callbacks_.seekable_changed.call(this, seekable);
}

void VideoView::onSourceChanged(QUrl media)
{
    callbacks_.source_changed.call(this, media.toString().toStdString());
}

void VideoView::onTracksChanged()
{
    callbacks_.tracks_changed.call(this);
}

void VideoView::onVideoOutputChanged()
{
    callbacks_.video_output_changed.call(this);
}

}  // namespace marlune

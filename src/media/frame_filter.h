#pragma once

#include <QObject>
#include <QSize>
#include <QString>
#include <QVideoFrame>
#include <QVideoSink>

#include <mutex>

namespace marlune {

/**
 * Connects a player to the video output of its scene and passes on only frames that the output can
 * draw. The output would draw alpha channels that are not premultiplied, interpret unused bytes as
 * alpha, and crash with a frame that is larger than the device's textures can be.
 *
 * The filter also keeps the subtitles, as plain text for the scene: the output would show a new
 * subtitle only with the next frame, and thus none while the player is paused.
 */
class FrameFilter : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVideoSink* videoSink READ video_sink CONSTANT)
    Q_PROPERTY(QVideoSink* output MEMBER output_ NOTIFY outputChanged)
    Q_PROPERTY(QString subtitleText READ subtitle_text NOTIFY subtitleTextChanged)

public:
    explicit FrameFilter(QObject* parent = nullptr);

    /** The sink that receives the player's frames, on another thread. */
    QVideoSink* video_sink() { return &sink_; }
    QString subtitle_text() const;

signals:
    void outputChanged();
    void subtitleTextChanged();

private:
    void take_frame(const QVideoFrame& frame);
    void take_subtitle(const QString& text);
    void announce_subtitle();
    bool fits_output(QSize size);

    // Set before the player gets the sink, and valid until the player has released it.
    QVideoSink* output_ = nullptr;
    QSize refused_size_;
    mutable std::mutex subtitle_mutex_;
    QString subtitle_text_;
    bool subtitle_announced_ = false;
    QVideoSink sink_;
};

}  // namespace marlune

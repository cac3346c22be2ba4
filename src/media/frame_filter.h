#pragma once

#include <QObject>
#include <QSize>
#include <QString>
#include <QVideoFrame>
#include <QVideoSink>

#include <mutex>

namespace marlune {

/**
 * Stands between a player and the video output of its scene, and passes on only what that can draw: it
 * would show alpha channels that are not premultiplied, take unused bytes for one, and crash the game with
 * a frame that is larger than the device's textures can be.
 *
 * Subtitles end here, as plain text for the scene: the output would show new ones with the next frame
 * only, and so none while the player is paused.
 */
class FrameFilter : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVideoSink* videoSink READ video_sink CONSTANT)
    Q_PROPERTY(QVideoSink* output MEMBER output_ NOTIFY outputChanged)
    Q_PROPERTY(QString subtitleText READ subtitle_text NOTIFY subtitleTextChanged)

public:
    explicit FrameFilter(QObject* parent = nullptr);

    /** What the player gives its frames to, on a thread of its own. */
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

    // Set before the player gets the sink, and there until the player has let go of it.
    QVideoSink* output_ = nullptr;
    QSize refused_size_;
    mutable std::mutex subtitle_mutex_;
    QString subtitle_text_;
    bool subtitle_announced_ = false;
    QVideoSink sink_;
};

}  // namespace marlune

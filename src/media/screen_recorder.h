#pragma once

#include <QMediaCaptureSession>
#include <QObject>
#include <QPointer>
#include <QProperty>
#include <QScreenCapture>
#include <QString>
#include <QVideoSink>

namespace marlune {

/**
 * Captures a screen into the sink that its scene sets. Setting the sink chooses the screen by the
 * current hint.
 *
 * Capturing follows changes of `active`, which is initially true: a scene that has set all
 * properties emits activeChanged() once to start.
 */
class ScreenRecorder : public QObject {
    Q_OBJECT
    Q_PROPERTY(uint active READ active WRITE set_active NOTIFY activeChanged)
    Q_PROPERTY(QString physical_screen_hint MEMBER physical_screen_hint_)
    Q_PROPERTY(QVideoSink* videoSink READ video_sink WRITE set_video_sink NOTIFY videoSinkChanged)
    // Only for the scene, which displays it: hosts are not notified of errors.
    Q_PROPERTY(QString errorString READ error_string BINDABLE bindable_error_string)

public:
    explicit ScreenRecorder(QObject* parent = nullptr);
    ~ScreenRecorder() override;

    bool active() const { return active_; }
    void set_active(uint active);

    QVideoSink* video_sink() const { return video_sink_; }
    void set_video_sink(QVideoSink* sink);

    /** Empty while there is no error. */
    QString error_string() const { return error_string_; }
    QBindable<QString> bindable_error_string() const { return &error_string_; }

signals:
    void videoSinkChanged();
    void activeChanged();

private slots:
    void on_set_active();

private:
    void take_error();

    bool active_ = true;
    QString physical_screen_hint_ = QStringLiteral("-1");
    QProperty<QString> error_string_;
    QMediaCaptureSession session_;
    QPointer<QScreenCapture> screen_capture_;
    QPointer<QVideoSink> video_sink_;
};

}  // namespace marlune

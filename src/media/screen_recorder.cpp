#include "media/screen_recorder.h"

#include "media/media_part.h"
#include "media/media_view.h"
#include "media/screen_choice.h"

#include <QGuiApplication>
#include <QScreen>

namespace marlune {

namespace {

/** Returns null if there is no screen at all. */
QScreen* screen_for(const QString& hint)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    QList<ScreenNames> names;
    for (const QScreen* const screen : screens)
        names.append({screen->serialNumber(), screen->model(), screen->name()});
    const ScreenChoice choice = choose_screen(hint, names);
    if (!choice.warning.isEmpty())
        qWarning("%s", qUtf8Printable(choice.warning));
    return choice.index ? screens.at(*choice.index) : QGuiApplication::primaryScreen();
}

}  // namespace

/**
 * In an X11 session, Qt 6.8 uses a capture method that captures the whole desktop for the first
 * screen and does not find the others; the other method is slower. The library chooses here and not
 * at the first capture, because threads of a running game may be reading the environment.
 */
void media_part::choose_screen_capture()
{
    constexpr auto choice = "QT_SCREEN_CAPTURE_BACKEND";
    const bool is_x11 = qgetenv("XDG_SESSION_TYPE").toLower() == "x11";
    const bool has_several = QGuiApplication::screens().size() > 1;
    if (is_x11 && has_several && !qEnvironmentVariableIsSet(choice))
        qputenv(choice, "grabwindow");
}

ScreenRecorder::ScreenRecorder(QObject* parent)
    : QObject(parent), screen_capture_(new QScreenCapture(this))
{
    delete_at_shutdown(screen_capture_);
    connect(this, &ScreenRecorder::activeChanged, this, &ScreenRecorder::on_set_active);
    connect(screen_capture_, &QScreenCapture::errorChanged, this, &ScreenRecorder::take_error);
    take_error();  // a system without support reports it from the start
}

ScreenRecorder::~ScreenRecorder()
{
    // Deleted before the session, because its thread still writes to the session's sink.
    delete screen_capture_;
}

void ScreenRecorder::set_active(uint active)
{
    if ((active != 0) == active_)
        return;
    active_ = active != 0;
    emit activeChanged();
}

void ScreenRecorder::set_video_sink(QVideoSink* sink)
{
    if (sink == video_sink_)
        return;
    video_sink_ = sink;
    session_.setVideoSink(sink);
    emit videoSinkChanged();
    if (!screen_capture_)
        return;
    screen_capture_->setScreen(screen_for(physical_screen_hint_));
    session_.setScreenCapture(screen_capture_);
}

void ScreenRecorder::on_set_active()
{
    if (!screen_capture_)
        return;
    screen_capture_->setActive(active_);
    take_error();
    // If a display does not report its own screens, Qt 6.8 fails without an error.
    if (active_ && !screen_capture_->isActive() && error_string_.value().isEmpty())
        error_string_ = tr("The display provides no picture");
}

void ScreenRecorder::take_error()
{
    error_string_ = screen_capture_->errorString();
}

}  // namespace marlune

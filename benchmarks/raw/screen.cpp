#include "raw/screen.h"

#include "raw/call.h"
#include "raw/scene.h"

#include <QGuiApplication>
#include <QMediaCaptureSession>
#include <QMetaObject>
#include <QScreenCapture>
#include <QVideoSink>

namespace marlune::bench {

namespace {

constexpr auto component = "qrc:/Bench/RawVideo.qml";

QMediaCaptureSession* make_session(QVideoSink* sink)
{
    auto* const session = new QMediaCaptureSession;
    auto* const capture = new QScreenCapture(session);
    session->setVideoSink(sink);
    capture->setScreen(QGuiApplication::screens().constFirst());
    session->setScreenCapture(capture);
    return session;
}

}  // namespace

RawScreen::RawScreen(QObject* qt_thread, const Gpu& gpu, Picture picture)
{
    const auto set_up = [&] {
        scene_ = new RawScene(gpu, picture, component);
        texture_ = scene_->texture();
        session_ = make_session(scene_->video_sink());
    };
    call(qt_thread, set_up);
}

RawScreen::~RawScreen()
{
    // The capturing thread writes to the scene's sink.
    const auto take_down = [scene = scene_, session = session_] {
        delete session->screenCapture();
        delete session;
        scene->deleteLater();
    };
    call(scene_, take_down);
}

void RawScreen::capture(bool on) const
{
    call(session_, [session = session_, on] { session->screenCapture()->setActive(on); });
}

void RawScreen::render() const
{
    call(scene_, [scene = scene_] { scene->render(); });
}

}  // namespace marlune::bench

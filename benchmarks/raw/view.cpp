#include "raw/view.h"

#include "raw/scene.h"

#include <QMetaObject>

namespace marlune::bench {

namespace {

constexpr auto blocking = Qt::BlockingQueuedConnection;

}  // namespace

RawView::RawView(QObject* qt_thread, const Gpu& gpu, Picture picture) : qt_thread_(qt_thread)
{
    const auto make = [&gpu, picture] { return new RawScene(gpu, picture); };
    QMetaObject::invokeMethod(qt_thread_, make, blocking, &scene_);
}

RawView::~RawView()
{
    QMetaObject::invokeMethod(
        qt_thread_, [scene = scene_] { delete scene; }, blocking);
}

void RawView::render() const
{
    QMetaObject::invokeMethod(
        scene_, [scene = scene_] { scene->render(); }, blocking);
}

void RawView::mouse_move(uint32_t x, uint32_t y) const
{
    const auto move = [scene = scene_, x, y] { scene->mouse_move(QPointF(x, y)); };
    QMetaObject::invokeMethod(scene_, move, blocking);
}

int RawView::get_refresh_rate() const
{
    int rate = 0;
    const auto get = [scene = scene_] { return scene->refresh_rate(); };
    QMetaObject::invokeMethod(scene_, get, blocking, &rate);
    return rate;
}

}  // namespace marlune::bench

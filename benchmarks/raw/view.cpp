#include "raw/view.h"

#include "raw/call.h"
#include "raw/scene.h"

namespace marlune::bench {

RawView::RawView(QObject* qt_thread, const Gpu& gpu, Picture picture) : qt_thread_(qt_thread)
{
    scene_ = call(qt_thread, [&] { return new RawScene(gpu, picture); });
}

RawView::~RawView()
{
    call(qt_thread_, [scene = scene_] { delete scene; });
}

void RawView::render() const
{
    call(scene_, [scene = scene_] { scene->render(); });
}

void RawView::mouse_move(uint32_t x, uint32_t y) const
{
    const auto move = [scene = scene_, x, y] { scene->mouse_move(QPointF(x, y)); };
    call(scene_, move);
}

int RawView::get_refresh_rate() const
{
    return call(scene_, [scene = scene_] { return scene->refresh_rate(); });
}

}  // namespace marlune::bench

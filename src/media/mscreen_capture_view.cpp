#include "marlune/screen_capture_view.h"

#include "media/screen_capture_view.h"
#include "runtime/call.h"
#include "views/view_factory.h"

namespace marlune {

MScreenCaptureView::MScreenCaptureView()
{
    view_ = make_view<ScreenCaptureView>("marlune::MScreenCaptureView",
                                         "marlune::_create_screencaptureview", view_);
}

void MScreenCaptureView::set_active(bool active) const
{
    call<ScreenCaptureView>("marlune::MScreenCaptureView::set_active", view_, Delivery::Blocking,
                            [active](ScreenCaptureView& view) { view.set_active(active); });
}

void MScreenCaptureView::set_physical_screen(std::string screen) const
{
    constexpr auto name = "marlune::MScreenCaptureView::set_physical_screen";
    const auto set = [hint = QString::fromStdString(screen)](ScreenCaptureView& view) {
        view.set_physical_screen_hint(hint);
    };
    // There the scene follows at once, and nothing may be locked while it does.
    if (on_qt_thread())
        return call<ScreenCaptureView>(name, view_, Delivery::Queued, set);

    // What the signal brings about is queued.
    visit<ScreenCaptureView>(name, view_, set);
}

}  // namespace marlune

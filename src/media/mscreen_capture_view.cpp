#include "marlune/mscreen_capture_view.h"

#include "media/screen_capture_view.h"
#include "runtime/facade_call.h"
#include "views/view_factory.h"

#include <utility>

namespace marlune {

MScreenCaptureView::MScreenCaptureView()
{
    view_ = make_view<ScreenCaptureView>("marlune::MScreenCaptureView",
                                         "marlune::_create_screencaptureview", view_);
}

void MScreenCaptureView::set_active(bool active) const
{
    complete(view_, &ScreenCaptureView::set_active, active);
}

void MScreenCaptureView::set_physical_screen(std::string screen) const
{
    // On the Qt thread the scene reacts immediately, and no lock may be held while it does.
    if (on_qt_thread())
        tell(view_, &ScreenCaptureView::set_physical_screen_hint, std::move(screen));
    else
        with_live_object(view_, &ScreenCaptureView::set_physical_screen_hint, std::move(screen));
}

}  // namespace marlune

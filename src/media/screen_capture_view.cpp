#include "media/screen_capture_view.h"

#include "media/media_view.h"
#include "media/screen_recorder.h"
#include "runtime/trace.h"

#include <QtQml>

namespace marlune {

namespace {

void register_type()
{
    // Register once: each registration adds to Qt's tables.
    [[maybe_unused]] static const int id =
        qmlRegisterType<ScreenRecorder>("Custom", 1, 0, "ScreenRecorder");
}

}  // namespace

ScreenCaptureView::ScreenCaptureView() : QuickView("ScreenCaptureView")
{
    trace("ScreenCaptureView::ScreenCaptureView()", "T");
}

ScreenCaptureView::~ScreenCaptureView()
{
    // While this is still a ScreenCaptureView: other threads set the hint, and the scene reads it.
    withdraw();
    reset();
}

void ScreenCaptureView::prepare_context(QQmlContext* root_context)
{
    register_type();
    prepare_media_context(root_context, this);
}

void ScreenCaptureView::set_active(bool active)
{
    active_ = active;
    emit activeChanged();
}

QString ScreenCaptureView::physical_screen_hint() const
{
    const std::lock_guard lock(hint_mutex_);
    return physical_screen_hint_;
}

void ScreenCaptureView::set_physical_screen_hint(const QString& hint)
{
    {
        const std::lock_guard lock(hint_mutex_);
        physical_screen_hint_ = hint;
    }
    emit physical_screen_hintChanged();
}

// Values that a scene writes are reported only if they differ, as with any property.

void ScreenCaptureView::write_active(uint active)
{
    if ((active != 0) != active_)
        set_active(active != 0);
}

void ScreenCaptureView::write_physical_screen_hint(const QString& hint)
{
    if (hint != physical_screen_hint())
        set_physical_screen_hint(hint);
}

}  // namespace marlune

#include "marlune/mview.h"

#include "runtime/facade_call.h"
#include "runtime/host_callback.h"
#include "runtime/qt_thread.h"
#include "runtime/set_callback.h"
#include "views/resource_server.h"
#include "views/view.h"

#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace marlune {

static QSizeF convert(std::tuple<uint32_t, uint32_t> size, To<QSizeF>)
{
    return {static_cast<qreal>(std::get<0>(size)), static_cast<qreal>(std::get<1>(size))};
}

static std::tuple<uint32_t, uint32_t> convert(QSizeF size, To<std::tuple<uint32_t, uint32_t>>)
{
    return {static_cast<uint32_t>(size.width()), static_cast<uint32_t>(size.height())};
}

namespace {

std::string yes_or_no(bool value)
{
    return value ? "true" : "false";
}

std::string to_text(QSize size)
{
    return std::to_string(size.width()) + 'x' + std::to_string(size.height());
}

QPointF to_point(uint32_t x, uint32_t y)
{
    return {static_cast<qreal>(x), static_cast<qreal>(y)};
}

}  // namespace

MView::MView() = default;

MView::MView(const MView& other) = default;

MView& MView::operator=(const MView& other) = default;

MView& MView::operator=(MView&& other)
{
    view_ = other.view_;
    return *this;
}

void MView::set_view_monitor(VkInstance& instance) const
{
    complete(view_, outside_callbacks(&View::set_view_monitor), instance);
}

void MView::set_statistics_monitor(VkPhysicalDevice& physical_device, VkDevice& device) const
{
    complete(view_, &View::set_statistics_monitor, physical_device, device);
}

void MView::set_resolution(std::tuple<uint32_t, uint32_t> resolution) const
{
    tell(view_, &View::set_resolution, resolution);
}

std::tuple<uint32_t, uint32_t> MView::get_resolution() const
{
    return ask(view_, std::tuple<uint32_t, uint32_t>(0, 0), &View::get_resolution);
}

void MView::set_refresh_rate(int rate) const
{
    tell(view_, &View::set_refresh_rate, rate);
}

int MView::get_refresh_rate() const
{
    return ask(view_, 60, &View::get_refresh_rate);
}

void MView::set_mipmaps_enabled(bool enabled) const
{
    tell(view_, &View::set_mipmaps_enabled, enabled);
}

int MView::get_mips_count() const
{
    return ask(view_, 1, &View::get_mips_count);
}

void MView::render() const
{
    complete(view_, &View::render);
}

uint64_t MView::get_texture() const
{
    return ask(view_, uint64_t{0}, &View::get_texture);
}

void MView::reset() const
{
    complete(view_, outside_callbacks(&View::reset));
}

void MView::destroy()
{
    // Where another thread's copy has deleted the view, the call does not run.
    complete(view_,
             [](View& target) { run_outside_callbacks(target, [](View& view) { delete &view; }); });
    view_ = nullptr;
}

void MView::mouse_click(uint16_t button, uint16_t action, uint32_t x, uint32_t y) const
{
    tell(view_, &View::mouse_click, button, action, to_point(x, y));
}

void MView::mouse_move(uint32_t x, uint32_t y) const
{
    complete(view_, &View::mouse_move, to_point(x, y));
}

void MView::mouse_wheel_down(uint32_t x, uint32_t y) const
{
    tell(view_, &View::mouse_wheel, to_point(x, y), -1);
}

void MView::mouse_wheel_up(uint32_t x, uint32_t y) const
{
    tell(view_, &View::mouse_wheel, to_point(x, y), 1);
}

void MView::key_event(uint32_t key, uint16_t action, const std::string& text) const
{
    tell(view_, &View::key_event, key, action, text);
}

void MView::set_func_javascript_console_log(JavaScriptConsoleLog callback) const
{
    set_callback(view_, WaitFor::Cleanup, &View::javascript_console_log, std::move(callback));
}

void MView::set_func_resource_file(ResourceFile callback) const
{
    // The constructor of a plain MView has not waited for the start.
    QtThread::instance().wait_until_ready();
    const ResourceServer server = resource_server();
    set_callback(
        server.object, WaitFor::Cleanup, [file = server.file](QObject&) -> auto& { return *file; },
        std::move(callback));
}

void MView::set_func_resource_file_free(std::function<void()>) const
{
    trace("marlune::MView::set_func_resource_file_free", "M");
}

std::vector<std::map<std::string, std::string>> MView::get_physical_screens() const
{
    trace("marlune::MView::get_physical_screens", "M");
    std::vector<std::map<std::string, std::string>> screens;
    if (!is_ready())
        return screens;  // Qt's list is being filled
    for (const QScreen* const screen : QGuiApplication::screens()) {
        screens.push_back({
            {"name", screen->name().toStdString()},
            {"model", screen->model().toStdString()},
            {"manufacturer", screen->manufacturer().toStdString()},
            {"serialNumber", screen->serialNumber().toStdString()},
            {"availableSize", to_text(screen->availableSize())},
            {"virtualSize", to_text(screen->virtualSize())},
            {"isPortrait", yes_or_no(screen->isPortrait(screen->orientation()))},
            {"isLandscape", yes_or_no(screen->isLandscape(screen->orientation()))},
            {"refreshRate", QString::number(screen->refreshRate(), 'f', 6).toStdString()},
        });
    }
    return screens;
}

}  // namespace marlune

#include "marlune/view.h"

#include "runtime/call.h"
#include "runtime/host_callback.h"
#include "runtime/set_callback.h"
#include "runtime/web_part.h"
#include "views/view.h"

#include "marlune/app.h"

#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace marlune {

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
    call<View>("marlune::MView::set_view_monitor", view_, Delivery::Blocking,
               [instance](View& target) {
                   run_outside_callbacks(
                       target, [instance](View& view) { view.set_view_monitor(instance); });
               });
}

void MView::set_statistics_monitor(VkPhysicalDevice& physical_device, VkDevice& device) const
{
    call<View>("marlune::MView::set_statistics_monitor", view_, Delivery::Blocking,
               [physical_device, device](View& view) {
                   view.set_statistics_monitor(physical_device, device);
               });
}

void MView::set_resolution(std::tuple<uint32_t, uint32_t> resolution) const
{
    call<View>("marlune::MView::set_resolution", view_, Delivery::Queued, [resolution](View& view) {
        const auto [width, height] = resolution;
        view.set_resolution(QSizeF(width, height));
    });
}

std::tuple<uint32_t, uint32_t> MView::get_resolution() const
{
    using Resolution = std::tuple<uint32_t, uint32_t>;
    return call<View>("marlune::MView::get_resolution", view_, Delivery::Queued, Resolution(0, 0),
                      [](View& view) {
                          const QSizeF size = view.get_resolution();
                          return Resolution(static_cast<uint32_t>(size.width()),
                                            static_cast<uint32_t>(size.height()));
                      });
}

void MView::set_refresh_rate(int rate) const
{
    call<View>("marlune::MView::set_refresh_rate", view_, Delivery::Queued,
               [rate](View& view) { view.set_refresh_rate(rate); });
}

int MView::get_refresh_rate() const
{
    return call<View>("marlune::MView::get_refresh_rate", view_, Delivery::Queued, 60,
                      [](View& view) { return view.get_refresh_rate(); });
}

void MView::set_mipmaps_enabled(bool enabled) const
{
    call<View>("marlune::MView::set_mipmaps_enabled", view_, Delivery::Queued,
               [enabled](View& view) { view.set_mipmaps_enabled(enabled); });
}

int MView::get_mips_count() const
{
    return call<View>("marlune::MView::get_mips_count", view_, Delivery::Queued, 1,
                      [](View& view) { return view.get_mips_count(); });
}

void MView::render() const
{
    call<View>("marlune::MView::render", view_, Delivery::Blocking,
               [](View& view) { view.render(); });
}

uint64_t MView::get_texture() const
{
    return call<View>("marlune::MView::get_texture", view_, Delivery::Queued, uint64_t{0},
                      [](View& view) { return uint64_t{view.get_texture()}; });
}

void MView::reset() const
{
    call<View>("marlune::MView::reset", view_, Delivery::Blocking, [](View& target) {
        run_outside_callbacks(target, [](View& view) { view.reset(); });
    });
}

void MView::destroy()
{
    // Another thread's copy may have deleted the view by now: then the call does not run.
    call<View>("marlune::MView::destroy", view_, Delivery::Blocking, [](View& target) {
        run_outside_callbacks(target, [](View& view) { delete &view; });
    });
    view_ = nullptr;
}

void MView::mouse_click(uint16_t button, uint16_t action, uint32_t x, uint32_t y) const
{
    call<View>("marlune::MView::mouse_click", view_, Delivery::Queued,
               [=](View& view) { view.mouse_click(button, action, to_point(x, y)); });
}

void MView::mouse_move(uint32_t x, uint32_t y) const
{
    call<View>("marlune::MView::mouse_move", view_, Delivery::Blocking,
               [=](View& view) { view.mouse_move(to_point(x, y)); });
}

void MView::mouse_wheel_down(uint32_t x, uint32_t y) const
{
    call<View>("marlune::MView::mouse_wheel_down", view_, Delivery::Queued,
               [=](View& view) { view.mouse_wheel(to_point(x, y), -1); });
}

void MView::mouse_wheel_up(uint32_t x, uint32_t y) const
{
    call<View>("marlune::MView::mouse_wheel_up", view_, Delivery::Queued,
               [=](View& view) { view.mouse_wheel(to_point(x, y), 1); });
}

void MView::key_event(uint32_t key, uint16_t action, const std::string& text) const
{
    call<View>("marlune::MView::key_event", view_, Delivery::Queued, [=](View& view) {
        view.key_event(static_cast<int>(key), action, QString::fromStdString(text));
    });
}

void MView::set_func_javascript_console_log(JavaScriptConsoleLog callback) const
{
    set_callback<View>("marlune::MView::set_func_javascript_console_log", view_, Delivery::Blocking,
                       &View::javascript_console_log, std::move(callback));
}

void MView::set_func_resource_file(ResourceFile callback) const
{
    // A plain facade gets here without having waited for the start.
    M::ensure_qt_eventloop_is_running();
    set_callback<QObject>(
        "marlune::MView::set_func_resource_file", web_part::scheme_handler(), Delivery::Blocking,
        [](QObject&) -> auto& { return web_part::resource_file(); }, std::move(callback));
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

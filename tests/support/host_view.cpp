#include "support/host_view.h"

#include "support/library.h"

namespace marlune::test {

namespace {

MQuickView make_view()
{
    start_library();
    return {};
}

/** An interval is whole ms and the rate read back is rounded, so one ms is added to be sure. */
std::chrono::milliseconds interval_of(const MView& view)
{
    return std::chrono::milliseconds(1000 / view.get_refresh_rate() + 1);
}

}  // namespace

HostView::HostView(Size resolution, VulkanHost& host)
    : host_(host), resolution_(resolution), facade_(make_view())
{
    facade_.set_view_monitor(host.instance());
    facade_.set_statistics_monitor(host.physical_device(), host.device());
    facade_.set_resolution({resolution.width, resolution.height});
    facade_.set_func_javascript_console_log(write_to(console_));
}

HostView::~HostView()
{
    facade_.destroy();
}

bool HostView::load(const std::string& scene)
{
    const bool loaded = facade_.load("Scenes", scene);
    last_asked_ = std::chrono::steady_clock::now();
    return loaded;
}

void HostView::render()
{
    facade_.render();
    last_asked_ = std::chrono::steady_clock::now();
}

void HostView::draw_frame()
{
    std::this_thread::sleep_until(last_asked_ + interval_of(facade_));
    render();
}

Image HostView::picture(uint32_t level)
{
    return picture(resolution_, level);
}

Image HostView::picture(Size size, uint32_t level)
{
    return host_.read_back(facade_.get_texture(), size.width, size.height, level);
}

void HostView::type(uint32_t key, const std::string& text)
{
    facade_.key_event(key, 0, text);
    facade_.key_event(key, 1, text);
}

MView::JavaScriptConsoleLog write_to(std::shared_ptr<ConsoleLog> log)
{
    return [log = std::move(log)](int level, std::string message, int line, std::string source) {
        log->add({level, std::move(message), line, std::move(source), std::this_thread::get_id()});
    };
}

}  // namespace marlune::test

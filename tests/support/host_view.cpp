#include "support/host_view.h"

#include <stdexcept>

namespace marlune::test {

namespace {

constexpr uint32_t KEY_SPACE = 0x20;

/**
 * An interval is a whole number of ms and the rate that the view returns is rounded, so this adds
 * one ms.
 */
std::chrono::milliseconds interval_of(const MView& view)
{
    return std::chrono::milliseconds(1000 / view.get_refresh_rate() + 1);
}

}  // namespace

void set_up(const MView& view, Size resolution, VulkanHost& host)
{
    view.set_view_monitor(host.instance());
    view.set_statistics_monitor(host.physical_device(), host.device());
    view.set_resolution({resolution.width, resolution.height});
}

HostViewBase::HostViewBase(MView& view, Size resolution, VulkanHost& host)
    : view_(view), host_(host), resolution_(resolution)
{
    set_up(view, resolution, host);
    view_.set_func_javascript_console_log(write_to(console_));
}

void HostViewBase::render()
{
    view_.render();
    note_frame();
}

void HostViewBase::draw_frame()
{
    std::this_thread::sleep_until(last_asked_ + interval_of(view_));
    render();
}

Image HostViewBase::picture(uint32_t level)
{
    return picture(resolution_, level);
}

Image HostViewBase::picture(Size size, uint32_t level)
{
    return host_.read_back(view_.get_texture(), size.width, size.height, level);
}

void HostViewBase::type(uint32_t key, const std::string& text)
{
    view_.key_event(key, 0, text);
    view_.key_event(key, 1, text);
}

void HostViewBase::note_frame()
{
    last_asked_ = std::chrono::steady_clock::now();
}

bool HostView::load(const std::string& scene)
{
    const bool loaded = facade().load("Scenes", scene);
    note_frame();
    return loaded;
}

int HostView::frames_rendered()
{
    console().take();
    facade().key_event(KEY_SPACE, 0, " ");
    const std::string name = "framesRendered=";
    for (const std::string& message : console().take_messages()) {
        if (message.starts_with(name))
            return std::stoi(message.substr(name.size()));
    }
    throw std::logic_error("the scene does not count frames");
}

MView::JavaScriptConsoleLog write_to(std::shared_ptr<ConsoleLog> log)
{
    return [log = std::move(log)](int level, std::string message, int line, std::string source) {
        log->add({level, std::move(message), line, std::move(source), std::this_thread::get_id()});
    };
}

}  // namespace marlune::test

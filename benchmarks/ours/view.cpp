#include "ours/view.h"

#include <marlune/app.h>
#include <marlune/options.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

namespace marlune::bench {

namespace {

// The highest rate that the library allows, so that the interval between two frames is always long
// enough.
constexpr int refresh_rate = 120;
constexpr std::chrono::milliseconds frame_pause(17);

}  // namespace

Library::Library()
{
    const char* root = std::getenv("MARLUNE_PROJECT_ROOT");
    if (!root)
        throw std::runtime_error("MARLUNE_PROJECT_ROOT is not set");
    opts::PATH_PROJECT_ROOT = root;
    M::create_app();
}

Library::~Library()
{
    M::destroy();
}

void set_up(const MView& view, Gpu& gpu, Picture picture)
{
    view.set_view_monitor(gpu.instance);
    view.set_statistics_monitor(gpu.physical_device, gpu.device);
    view.set_resolution({picture.width, picture.height});
    view.set_mipmaps_enabled(picture.mipmaps);
}

BenchView::BenchView(Gpu& gpu, Picture picture)
{
    set_up(facade_, gpu, picture);
    facade_.set_func_javascript_console_log([this](int, std::string message, int, std::string) {
        frames_drawn_ = std::stoull(message);
    });
    if (!facade_.load("Bench", "Bench"))
        throw std::runtime_error("the library cannot load the scene (--verbose shows why)");
    // Set only now: on a slow machine, frames of that rate would be due while the scene still
    // loads.
    facade_.set_refresh_rate(refresh_rate);
}

BenchView::~BenchView()
{
    facade_.destroy();
}

uint64_t BenchView::frames_drawn()
{
    facade_.mouse_click(0, 0, 1, 1);
    facade_.mouse_click(0, 1, 1, 1);
    return frames_drawn_;
}

void wait_for_next_frame()
{
    std::this_thread::sleep_for(frame_pause);
}

}  // namespace marlune::bench

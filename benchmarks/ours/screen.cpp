#include "ours/screen.h"

#include <stdexcept>

namespace marlune::bench {

namespace {

// As for pages: each of a host's sixty frames a second is to be due.
constexpr int highest_refresh_rate = 120;

}  // namespace

BenchScreen::BenchScreen(Gpu& gpu, Picture picture)
{
    facade_.set_view_monitor(gpu.instance);
    facade_.set_statistics_monitor(gpu.physical_device, gpu.device);
    facade_.set_resolution({picture.width, picture.height});
    facade_.set_refresh_rate(highest_refresh_rate);
    facade_.set_active(false);
    if (!facade_.load("Multimedia", "ScreenCapture"))
        throw std::runtime_error("the library cannot load a screen (--verbose shows why)");
}

BenchScreen::~BenchScreen()
{
    facade_.destroy();
}

}  // namespace marlune::bench

#include "ours/screen.h"

#include "ours/view.h"

#include <stdexcept>

namespace marlune::bench {

namespace {

// As for pages: each of a host's sixty frames a second must be due.
constexpr int highest_refresh_rate = 120;

}  // namespace

BenchScreen::BenchScreen(Gpu& gpu, Picture picture)
{
    set_up(facade_, gpu, picture);
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

#include "ours/video.h"

#include "ours/view.h"

#include <stdexcept>

namespace marlune::bench {

namespace {

// As for pages: each of a host's sixty frames a second must be due.
constexpr int highest_refresh_rate = 120;
constexpr unsigned int for_ever = -1;

}  // namespace

BenchVideo::BenchVideo(Gpu& gpu, Picture picture, const std::string& clip, Controls controls)
{
    set_up(facade_, gpu, picture);
    facade_.set_refresh_rate(highest_refresh_rate);
    facade_.set_controls(controls == Controls::Shown);
    facade_.set_auto_play(false);
    facade_.set_loops(for_ever);
    facade_.set_source(clip);
    if (!facade_.load("Multimedia", "VideoPlayer"))
        throw std::runtime_error("the library cannot load a player (--verbose shows why)");
}

BenchVideo::~BenchVideo()
{
    facade_.destroy();
}

}  // namespace marlune::bench

#include "measures/measures.h"

#include "ours/video.h"
#include "raw/video.h"
#include "support/clips.h"

#include <marlune/app.h>

#include <QObject>

#include <stdexcept>
#include <thread>

namespace marlune::bench {

namespace {

constexpr Picture small{640, 360};
constexpr int calls_a_round = 50;
constexpr auto patience = 20s;

/** Starts to play, and returns once the player plays. */
template <typename Video>
void play(const Video& video)
{
    video.play();
    const auto end = Clock::now() + patience;
    while (video.position() == 0) {
        if (Clock::now() > end)
            throw std::runtime_error("a player does not play");
        std::this_thread::sleep_for(5ms);
    }
}

}  // namespace

void measure_video_calls(Table& table, Effort effort, Gpu& gpu)
{
    const std::string clip = clip_url("small.mp4");
    const BenchVideo library(gpu, small, clip, Controls::Shown);
    const RawVideo raw(static_cast<QObject*>(MARLUNE_CTX), gpu, small, clip);
    play(library);
    play(raw);

    const auto measure = [&](const char* name, auto call) {
        const auto times = compare_times<Microseconds>(
            {effort.samples(300), 5s, calls_a_round}, [&] { call(library); }, [&] { call(raw); },
            [] {});
        table.add({name, "us", times});
    };
    measure("call while it plays, position", [](const auto& video) { video.position(); });
    measure("call while it plays, metadata", [](const auto& video) { video.metadata(); });
}

}  // namespace marlune::bench

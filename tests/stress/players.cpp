// Scenes of players are loaded and reset repeatedly: a player always releases its memory.

#include "support/media/host_video_view.h"
#include "support/process/endurance.h"
#include "support/process/memory.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>

namespace marlune::test {

namespace {

/**
 * In KiB a cycle. A player with its threads and pictures is some MiB, a frame of its pictures half a
 * MiB; in few cycles the allocator's own ups and downs are nearly that.
 */
double tolerated_growth()
{
    return is_soak() ? 32 : 512;
}

TEST(Players, that_are_loaded_and_reset_leave_memory_flat)
{
    Watchdog watchdog;
    HoldingsTrend trend;
    HostVideoView view({640, 360});
    view->set_refresh_rate(120);
    const int cycles = times(60, 1000);
    for (int cycle = 0; cycle < cycles; ++cycle) {
        ASSERT_TRUE(view.open(cycle % 2 ? "numbered.mp4" : "tracks.mkv"));
        ASSERT_TRUE(view.draw_until([&] { return view->get_position() > 50; }));
        view->reset();
        EXPECT_EQ(view->get_playback_state(), STOPPED);
        watchdog.step();
        trend.sample();
    }
    const double growth = trend.growth_kib();
    std::cout << trend.report() << ", " << growth << " KiB a cycle" << std::endl;
    RecordProperty("growth_kib_a_cycle", std::to_string(growth));
    EXPECT_EQ(trend.last().files, trend.after_warm_up().files);
    EXPECT_LE(trend.last().threads, trend.after_warm_up().threads + 1);
    if (!memory_is_held_back()) {
        EXPECT_LT(growth, tolerated_growth());
    }
}

}  // namespace

}  // namespace marlune::test

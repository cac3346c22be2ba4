// Scenes of cameras are loaded and reset, cameras are chosen repeatedly, and plugged and unplugged
// while many threads of a host use them: a camera always releases its memory.

#include "support/media/host_camera_view.h"
#include "support/message_log.h"
#include "support/process/endurance.h"
#include "support/process/memory.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

const std::vector<FakeCamera> TWO = {{.name = "First"}, {.name = "Second", .border = CYAN}};

/** In KiB a cycle. A camera's buffers are 300 KiB, its images in the scene as much again. */
double tolerated_growth()
{
    return is_soak() ? 16 : 256;
}

void expect_flat(const HoldingsTrend& trend)
{
    const double growth = trend.growth_kib();
    std::cout << trend.report() << ", " << growth << " KiB a cycle" << std::endl;
    testing::Test::RecordProperty("growth_kib_a_cycle", std::to_string(growth));
    EXPECT_LE(trend.last().files, trend.after_warm_up().files + 1);
    EXPECT_LE(trend.last().threads, trend.after_warm_up().threads + 1);
    if (!memory_is_held_back()) {
        EXPECT_LT(growth, tolerated_growth());
    }
}

TEST(Cameras, that_are_loaded_and_reset_leave_memory_flat)
{
    plug_cameras(TWO);
    Watchdog watchdog;
    HoldingsTrend trend;
    HostCameraView view({320, 256});
    view->set_refresh_rate(120);
    const int cycles = times(45, 1000);
    for (int cycle = 0; cycle < cycles; ++cycle) {
        ASSERT_TRUE(view.show(std::to_string(cycle % 2)));
        view->reset();
        EXPECT_FALSE(view->get_is_active());
        watchdog.step();
        trend.sample();
    }
    expect_flat(trend);
}

TEST(Cameras, that_are_chosen_over_and_over_leave_memory_flat)
{
    plug_cameras(TWO);
    Watchdog watchdog;
    HoldingsTrend trend;
    HostCameraView view({320, 256});
    ASSERT_TRUE(view.show("0"));
    const int cycles = times(60, 5000);
    for (int cycle = 0; cycle < cycles; ++cycle) {
        for (int i = 0; i < 10; ++i) {
            view->set_camera_hint(std::to_string(i % 2));
            view->start();
        }
        EXPECT_EQ(running_cameras(), std::vector<std::string>{"Second"});
        view.render();
        watchdog.step();
        trend.sample();
    }
    EXPECT_TRUE(view.goes_on());
    EXPECT_TRUE(view.wait_for_border(CYAN));
    expect_flat(trend);
}

TEST(Cameras, come_and_go_while_hosts_use_them)
{
    // Qt's messages about a camera that is unplugged while it is opened, started or read depend on
    // timing.
    allow_messages_matching("V4L2|v4l2|Cannot (take|add) buffer|Unable to open the camera");
    allow_messages_matching("Camera: wrong camera number supplied");
    plug_cameras(TWO);
    Watchdog watchdog;
    HostCameraView view({320, 256}), other({320, 256});
    ASSERT_TRUE(view.show("0"));
    ASSERT_TRUE(other.show("1"));

    const std::vector<std::function<void(const MCameraView&, int)>> calls = {
        [](const MCameraView& camera, int turn) {
            camera.set_camera_hint(std::to_string(turn % 3));
        },
        [](const MCameraView& camera, int) { camera.start(); },
        [](const MCameraView& camera, int turn) { camera.set_active(turn % 2); },
        [](const MCameraView& camera, int turn) { camera.set_zoom_factor(turn % 3); },
        [](const MCameraView& camera, int turn) {
            camera.set_color_temperature(3000 + turn % 1000);
        },
        [](const MCameraView& camera, int turn) { camera.set_fill_mode(turn % 4); },
        [](const MCameraView& camera, int) { camera.get_error_string(); },
        [](const MCameraView& camera, int) { camera.get_custom_focus_point(); },
        [](const MCameraView& camera, int) { camera.set_func_active_changed([] {}); },
        [](const MCameraView& camera, int) { camera.stop(); },
    };
    {
        const int turns = times(60, 2000);
        std::vector<std::jthread> hosts;
        for (int thread = 0; thread < 3; ++thread) {
            const MCameraView camera = (thread == 0 ? other : view).facade();
            hosts.emplace_back([&calls, &watchdog, camera, thread](std::stop_token stop) {
                for (int turn = thread; !stop.stop_requested(); ++turn) {
                    calls[turn * 7 % calls.size()](camera, turn);
                    watchdog.step();
                }
            });
        }
        for (int turn = 0; turn < turns; ++turn) {
            plug_cameras(std::vector(TWO.begin(), TWO.begin() + turn % 3));
            view.render();
            other.render();
        }
    }

    plug_cameras(TWO);
    ASSERT_TRUE(view.show("0")) << "a camera cannot be shown afterwards";
    EXPECT_TRUE(view.wait_for_border(YELLOW));
    ASSERT_TRUE(other.show("1"));
    EXPECT_TRUE(other.wait_for_border(CYAN));
}

}  // namespace

}  // namespace marlune::test

// Views are created and destroyed repeatedly: a view always releases its memory.

#include "support/host_view.h"
#include "support/process/endurance.h"
#include "support/process/memory.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

struct Component {
    const char* module;
    const char* name;
};

/** The life of a view in a game whose player opens and closes its screen twice. */
void live(const Component& first, const Component& second)
{
    HostView view;
    view->set_refresh_rate(120);
    view->set_mipmaps_enabled(true);
    ASSERT_TRUE(view->load(first.module, first.name));
    view.draw_frame();
    view.draw_frame();
    view->reset();
    ASSERT_TRUE(view->load(second.module, second.name));
    view.draw_frame();
}

/**
 * In KiB a cycle. The smallest leak of a view would be an engine or a texture, hundreds of KiB. A few
 * cycles cannot show less than that, because the allocator varies by some MiB. In many cycles the
 * validation layer's own records show, which grow by 1 or 2 KiB.
 */
double tolerated_growth()
{
    return is_soak() ? 8 : 256;
}

void expect_flat(const HoldingsTrend& trend, int cycles_a_sample)
{
    const double growth = trend.growth_kib() / cycles_a_sample;
    std::cout << trend.report() << ", " << growth << " KiB a cycle" << std::endl;
    testing::Test::RecordProperty("growth_kib_a_cycle", std::to_string(growth));
    EXPECT_EQ(trend.last().files, trend.after_warm_up().files);
    EXPECT_LE(trend.last().threads, trend.after_warm_up().threads);
    if (!memory_is_held_back()) {
        EXPECT_LT(growth, tolerated_growth());
    }
}

/** Shows the components in turn until `cycles` views have been created and destroyed. */
void expect_flat_cycles(const std::vector<Component>& components, int cycles)
{
    Watchdog watchdog;
    HoldingsTrend trend;
    const auto count = static_cast<int>(components.size());
    for (int round = 0; round < cycles / count; ++round) {
        for (int i = 0; i < count; ++i) {
            ASSERT_NO_FATAL_FAILURE(live(components[i], components[(i + 1) % count]));
            watchdog.step();
        }
        trend.sample();
    }
    expect_flat(trend, count);
}

TEST(Cycles, of_one_scene_leave_memory_flat)
{
    expect_flat_cycles({{"Splash", "Splash"}}, times(60, 1000));
}

TEST(Cycles, through_all_scenes_leave_memory_flat)
{
    expect_flat_cycles({{"Debug", "Debug"},
                        {"Debug", "DebugMouse"},
                        {"Debug", "DebugVideo"},
                        {"Splash", "Splash"},
                        {"Splash", "StackViewFancy"}},
                       times(75, 1000));
}

}  // namespace

}  // namespace marlune::test

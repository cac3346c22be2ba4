// The library from its start to its stop, many times, each in a process of its own: it leaves no
// process behind and writes no message. Calls that wait when the library stops return.

#include "support/any_call.h"
#include "support/host_view.h"
#include "support/library.h"
#include "support/process/endurance.h"
#include "support/process/processes.h"
#include "support/process/sanitizers.h"
#include "support/process/scenarios.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <unistd.h>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

// --- What happens in the processes -------------------------------------------------------------

constexpr uint32_t KEY_SPACE = 0x20;
constexpr int CALLERS = 8;

/** For views that are never destroyed: it must outlive them. */
VulkanHost& lasting_host()
{
    static auto* const host = new VulkanHost;
    return *host;
}

MQuickView view_with(const std::string& scene, VulkanHost& host = lasting_host())
{
    MQuickView view;
    set_up(view, {256, 256}, host);
    require(view.load("Scenes", scene), "the scene loads");
    view.render();
    return view;
}

void nothing_loaded()
{
    start_library();
    M::ensure_qt_eventloop_is_running();
    M::destroy();
}

void stopped_at_once()
{
    start_library();
    M::destroy();
}

void scene_destroyed()
{
    VulkanHost host;
    start_library();
    MQuickView view = view_with("Moving", host);
    view.destroy();
    M::destroy();
}

void scene_left_standing()
{
    leave_views_behind();
    start_library();
    view_with("Moving");
    M::destroy();
}

/** With text, so that fonts are in use. */
void show_splash(const MQuickView& view)
{
    require(view.load("Splash", "Splash"), "the component loads");
    view.render();
}

void component_left_standing()
{
    leave_views_behind();
    start_library();
    show_splash(view_with("Moving"));
    M::destroy();
}

void component_destroyed()
{
    VulkanHost host;
    start_library();
    MQuickView view = view_with("Moving", host);
    show_splash(view);
    view.destroy();
    M::destroy();
}

bool is_default(const MQuickView& view)
{
    return view.get_resolution() == std::tuple(0u, 0u);
}

void require_defaults(const MQuickView& view)
{
    require(is_default(view), "there is no view any more");
    require(view.get_texture() == 0, "the texture is 0");
    require(!view.load("Scenes", "Moving"), "nothing is loaded");
}

/** Threads that call until the library has gone. They end when this goes. */
std::vector<std::jthread> callers_of(const MQuickView& view)
{
    std::vector<std::jthread> callers;
    for (int i = 0; i < CALLERS; ++i) {
        callers.emplace_back([view] {
            for (unsigned number = 0; !is_default(view); ++number)
                require(make_any_call(view, number, lasting_host()),
                        "an answer is the view's or the default");
            require_defaults(view);
        });
    }
    return callers;
}

void callers_at_work()
{
    leave_views_behind();
    start_library();
    const Watchdog watchdog;
    const MQuickView view = view_with("Moving");
    const auto callers = callers_of(view);
    std::this_thread::sleep_for(std::chrono::milliseconds(getpid() % 50));
    M::destroy();
}

/** Every caller waits, and the end as well, before the Qt thread gets round to any of them. */
void callers_waiting_in_line()
{
    leave_views_behind();
    start_library();
    const Watchdog watchdog;
    const MQuickView view = view_with("ConsoleEmitter");
    std::atomic<bool> busy = false;
    view.set_func_javascript_console_log([&](int, std::string, int, std::string) {
        busy = true;
        std::this_thread::sleep_for(300ms);
    });
    const std::jthread occupier([view] { view.key_event(KEY_SPACE, 0, "text"); });
    require(wait_until([&] { return busy.load(); }), "the Qt thread is kept busy");
    const auto callers = callers_of(view);
    M::destroy();
    require_defaults(view);
}

void callback_that_never_returns()
{
    leave_views_behind();
    start_library();
    const MQuickView view = view_with("ConsoleEmitter");
    static std::atomic<bool> busy = false;
    view.set_func_javascript_console_log([](int, std::string, int, std::string) {
        busy = true;
        std::this_thread::sleep_for(1h);
    });
    std::thread([view] { view.key_event(KEY_SPACE, 0, "text"); }).detach();
    require(wait_until([] { return busy.load(); }), "the Qt thread is kept busy");
    std::thread([view] { view.get_resolution(); }).detach();
    M::destroy();
}

void views_being_made()
{
    leave_views_behind();
    start_library();
    const Watchdog watchdog;
    M::ensure_qt_eventloop_is_running();
    std::atomic<int> made = 0;
    std::vector<std::jthread> makers;
    for (int i = 0; i < CALLERS; ++i) {
        makers.emplace_back([&] {
            for (bool is_over = false; !is_over; ++made) {
                MQuickView view;
                is_over = is_default(view);
                view.destroy();
            }
        });
    }
    require(wait_until([&] { return made > 100; }), "views are made");
    M::destroy();
}

void waiting_for_the_start()
{
    leave_views_behind();
    const Watchdog watchdog;
    std::vector<std::jthread> early;
    for (int i = 0; i < CALLERS; ++i) {
        early.emplace_back([] {
            MQuickView view;
            view.destroy();
        });
    }
    start_library();
    M::destroy();
}

const Scenarios SCENARIOS = {
    {"nothing_loaded", nothing_loaded},
    {"stopped_at_once", stopped_at_once},
    {"scene_destroyed", scene_destroyed},
    {"scene_left_standing", scene_left_standing},
    {"component_destroyed", component_destroyed},
    {"component_left_standing", component_left_standing},
    {"callers_at_work", callers_at_work},
    {"callers_waiting_in_line", callers_waiting_in_line},
    {"callback_that_never_returns", callback_that_never_returns},
    {"views_being_made", views_being_made},
    {"waiting_for_the_start", waiting_for_the_start},
};

// --- What is seen of them from outside ---------------------------------------------------------

class LibraryScenarios : public testing::TestWithParam<std::string> {};

TEST_P(LibraryScenarios, end_cleanly_every_time)
{
    for (int i = 0; i < times(2, 50) && !HasFailure(); ++i)
        EXPECT_EQ(lines_of_scenario(GetParam()), std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(Process, LibraryScenarios,
                         testing::ValuesIn(SCENARIOS.names("callback_that_never_returns")),
                         [](const auto& test) { return test.param; });

TEST(Stop, gives_up_on_a_callback_that_never_returns)
{
    const std::vector<std::string> lines = lines_of_scenario("callback_that_never_returns");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines.front().starts_with("marlune: the Qt thread is still busy")) << lines.front();
}

}  // namespace

}  // namespace marlune::test

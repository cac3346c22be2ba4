// A process ends cleanly while its cameras still run, wait or are being unplugged. Each case runs
// in a process of its own.

#include "support/library.h"
#include "support/media/host_camera_view.h"
#include "support/process/processes.h"
#include "support/process/sanitizers.h"
#include "support/process/scenarios.h"

#include <marlune/app.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

void start_with_cameras()
{
    plug_cameras({{.name = "First"}, {.name = "Second"}});
    start_library();
}

MCameraView running_view(const std::string& hint)
{
    MCameraView view;
    set_up(view, {640, 360});
    view.set_camera_hint(hint);
    require(view.load("Multimedia", "Camera"), "the scene loads");
    view.start();
    const int before = camera_pictures();
    require(wait_until([&] {
                view.render();
                return camera_pictures() > before + 5;
            }),
            "it runs");
    return view;
}

void orderly_end()
{
    start_with_cameras();
    MCameraView view = running_view("0");
    view.destroy();
    M::destroy();
    require(open_cameras().empty(), "the camera has been given back");
    release_host();
}

void stop_while_they_run()
{
    leave_views_behind();
    start_with_cameras();
    const MCameraView view = running_view("0");
    running_view("1");
    require(running_cameras().size() == 2, "both run");
    M::destroy();
    require(open_cameras().empty(), "they have been given back before the host leaves main");
    require(!view.get_is_active(), "calls after the stop return their defaults");
    view.set_camera_hint("1");
    view.set_func_active_changed([] {});
    view.start();
    view.reset();
    require(open_cameras().empty(), "and do nothing");
}

void stop_while_they_start()
{
    leave_views_behind();
    start_with_cameras();
    std::vector<MCameraView> views(4);
    for (const MCameraView& view : views) {
        view.set_camera_hint("0");
        view.set_active(true);
        view.set_camera_hint("1");
    }
    M::destroy();
    require(open_cameras().empty(), "they have been given back");
}

void stop_after_another_was_chosen()
{
    leave_views_behind();
    start_with_cameras();
    const MCameraView view = running_view("0");
    view.set_camera_hint("1");
    view.start();
    M::destroy();
    require(open_cameras().empty(), "the one that was chosen first has been given back too");
}

void stop_with_a_view_that_was_reset()
{
    leave_views_behind();
    start_with_cameras();
    const MCameraView view = running_view("0");
    view.reset();
    M::destroy();
    require(open_cameras().empty(), "it has been given back");
}

void stop_after_it_was_unplugged()
{
    leave_views_behind();
    start_with_cameras();
    running_view("0");
    unplug_camera("First");
    M::destroy();
    require(open_cameras().empty(), "it has been given back");
}

void exit_while_it_runs()
{
    leave_views_behind();
    start_with_cameras();
    running_view("0");
    M::destroy();
    std::exit(EXIT_SUCCESS);
}

const Scenarios SCENARIOS = {
    {"orderly_end", orderly_end},
    {"stop_while_they_run", stop_while_they_run},
    {"stop_while_they_start", stop_while_they_start},
    {"stop_after_another_was_chosen", stop_after_another_was_chosen},
    {"stop_with_a_view_that_was_reset", stop_with_a_view_that_was_reset},
    {"stop_after_it_was_unplugged", stop_after_it_was_unplugged},
    {"exit_while_it_runs", exit_while_it_runs},
};

class CameraScenarios : public testing::TestWithParam<std::string> {};

TEST_P(CameraScenarios, end_cleanly_and_leave_no_process_behind)
{
    EXPECT_TRUE(ends_cleanly(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Process, CameraScenarios, testing::ValuesIn(SCENARIOS.names()),
                         [](const auto& test) { return test.param; });

}  // namespace

}  // namespace marlune::test

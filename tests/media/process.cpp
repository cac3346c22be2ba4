// A process ends cleanly while its players still play, load or wait. Each case runs in a process of
// its own.

#include "support/library.h"
#include "support/media/host_video_view.h"
#include "support/process/processes.h"
#include "support/process/sanitizers.h"
#include "support/process/scenarios.h"

#include <marlune/app.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

namespace marlune::test {

namespace {

/** The running threads of players. */
int player_threads()
{
    return count_threads(getpid(), "QFFmpeg.*");
}

MVideoPlayerView playing_view(const std::string& clip)
{
    MVideoPlayerView view;
    set_up(view, {640, 360});
    view.set_loops(static_cast<unsigned int>(-1));
    view.set_source(clip_url(clip));
    require(view.load("Multimedia", "VideoPlayer"), "the scene loads");
    require(wait_until([&] {
                view.render();
                return view.get_position() > 200;
            }),
            "it plays");
    return view;
}

void orderly_end()
{
    start_library();
    MVideoPlayerView view = playing_view("numbered.mp4");
    view.destroy();
    M::destroy();
    release_host();
}

void stop_while_it_plays()
{
    leave_views_behind();
    start_library();
    const MVideoPlayerView view = playing_view("numbered.mp4");
    playing_view("tracks.mkv");
    require(player_threads() >= 4, "players work on threads");
    M::destroy();
    require(player_threads() == 0, "which end before the host leaves main");
    require(view.get_position() == 0, "calls after the stop return their defaults");
    view.set_func_on_position_changed([](int64_t) {});
    view.reset();
}

void stop_while_it_loads()
{
    leave_views_behind();
    start_library();
    std::vector<MVideoPlayerView> views(4);
    for (const MVideoPlayerView& view : views)
        view.set_source(clip_url("long.mp4"));
    M::destroy();
}

void stop_with_a_view_that_was_reset()
{
    leave_views_behind();
    start_library();
    const MVideoPlayerView view = playing_view("numbered.mp4");
    view.reset();
    M::destroy();
}

void exit_while_it_plays()
{
    leave_views_behind();
    start_library();
    playing_view("numbered.mp4");
    M::destroy();
    std::exit(EXIT_SUCCESS);
}

void return_while_it_plays()
{
    leave_views_behind();
    start_library();
    playing_view("numbered.mp4");
}

void exit_in_a_position_callback()
{
    leave_views_behind();
    start_library();
    const MVideoPlayerView view = playing_view("numbered.mp4");
    view.set_func_on_position_changed([](int64_t) { std::exit(EXIT_SUCCESS); });
    wait_until([&] {
        view.render();
        return false;
    });
    require(false, "exit() does not return");
}

const Scenarios SCENARIOS = {
    {"orderly_end", orderly_end},
    {"stop_while_it_plays", stop_while_it_plays},
    {"stop_while_it_loads", stop_while_it_loads},
    {"stop_with_a_view_that_was_reset", stop_with_a_view_that_was_reset},
    {"exit_while_it_plays", exit_while_it_plays},
    {"return_while_it_plays", return_while_it_plays},
    {"exit_in_a_position_callback", exit_in_a_position_callback},
};

class PlayerScenarios : public testing::TestWithParam<std::string> {};

TEST_P(PlayerScenarios, end_cleanly_and_leave_no_process_behind)
{
    EXPECT_TRUE(ends_cleanly(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Process, PlayerScenarios, testing::ValuesIn(SCENARIOS.names()),
                         [](const auto& test) { return test.param; });

}  // namespace

}  // namespace marlune::test

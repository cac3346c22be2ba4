// Hosts that end as game engines do: without M::destroy, on any thread, while other threads still
// work, or in a forked process; and the state of the library in a game that continues after the
// library has stopped.

#include "support/host_view.h"
#include "support/library.h"
#include "support/message_log.h"
#include "support/process/processes.h"
#include "support/process/sanitizers.h"
#include "support/process/scenarios.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <tuple>

#include <sys/wait.h>
#include <unistd.h>

namespace marlune::test {

namespace {

// --- The code of the processes -------------------------------------------------------------------

/** Never destroyed: it must outlive the views. */
VulkanHost& lasting_host()
{
    static auto* const host = new VulkanHost;
    return *host;
}

MQuickView view_with(const std::string& scene)
{
    MQuickView view;
    set_up(view, {256, 256}, lasting_host());
    require(view.load("Scenes", scene), "the scene loads");
    return view;
}

/** Starts a thread that renders until the process ends. */
void keep_rendering()
{
    leave_views_behind();
    start_library();
    static const MQuickView view = view_with("Moving");
    static std::atomic<int> frames = 0;
    std::thread([] {
        for (;; ++frames)
            view.render();
    }).detach();
    require(wait_until([] { return frames > 20; }), "frames are drawn");
}

void exit_while_rendering()
{
    keep_rendering();
    std::exit(EXIT_SUCCESS);
}

void return_while_rendering()
{
    keep_rendering();
}

void start_and_return()
{
    start_library();
}

void ready_and_return()
{
    start_library();
    M::ensure_qt_eventloop_is_running();
}

void exit_in_a_callback()
{
    leave_views_behind();
    start_library();
    const MQuickView view = view_with("ConsoleEmitter");
    view.set_func_javascript_console_log(
        [](int, std::string, int, std::string) { std::exit(EXIT_SUCCESS); });
    view.key_event(0x20, 0, "text");
    require(false, "exit() does not return");
}

void calls_in_a_forked_process()
{
    start_library();
    MQuickView view = view_with("Moving");
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(20);  // ends a process that hangs
        require(view.get_resolution() == std::tuple(0u, 0u), "the resolution is the default");
        require(view.get_texture() == 0, "the texture is the default");
        require(!view.load("Scenes", "Moving"), "nothing is loaded");
        view.set_func_javascript_console_log([](int, std::string, int, std::string) {});
        view.render();
        view.destroy();
        MQuickView made;
        require(made.get_texture() == 0, "a new facade has no view there");
        made.set_func_resource_file({});
        M::destroy();
        ::_exit(EXIT_SUCCESS);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    require(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS,
            "every call returns its default at once");
    require(view.get_texture() != 0, "the parent continues");
    view.destroy();
    M::destroy();
    delete &lasting_host();
}

void go_on_after_the_end()
{
    start_library();
    MWebView page;
    set_up(page, {256, 256}, lasting_host());
    require(page.load(), "the page loads");
    page.load_html("<p>text", "");
    for (int i = 0; i < 50; ++i)
        page.render();
    require(wait_until([] { return !page_processes().empty(); }), "there is a page");
    page.destroy();
    M::destroy();
    std::string processes;
    for (const Process& process : descendants())
        processes += process.name + ' ';
    require(descendants().empty(), "no process is left: " + processes);
    delete &lasting_host();
}

const Scenarios SCENARIOS = {
    {"exit_while_rendering", exit_while_rendering},
    {"return_while_rendering", return_while_rendering},
    {"start_and_return", start_and_return},
    {"ready_and_return", ready_and_return},
    {"exit_in_a_callback", exit_in_a_callback},
    {"calls_in_a_forked_process", calls_in_a_forked_process},
    {"go_on_after_the_end", go_on_after_the_end},
};

// --- The tests of these processes ----------------------------------------------------------------

class Ends : public testing::TestWithParam<std::string> {};

TEST_P(Ends, cleanly)
{
    for (int i = 0; i < 3 && !HasFailure(); ++i)
        EXPECT_TRUE(ends_cleanly(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Process, Ends, testing::ValuesIn(SCENARIOS.names()),
                         [](const auto& test) { return test.param; });

TEST(Library, may_be_unloaded_after_it_has_stopped)
{
    for (int i = 0; i < 3 && !HasFailure(); ++i) {
        const ProgramResult result = run_program(
            {MARLUNE_LOADING_HOST, MARLUNE_LIBRARY, std::getenv("MARLUNE_PROJECT_ROOT")});
        EXPECT_EQ(result.exit_code, 0) << result.error;
        EXPECT_TRUE(result.left_behind.empty());
    }
}

}  // namespace

}  // namespace marlune::test

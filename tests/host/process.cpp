// The library in a process, from before its start to the end of main(): each scenario runs in a
// process of its own, because the library starts only once in a process.

#include "support/host_view.h"
#include "support/library.h"
#include "support/process/processes.h"
#include "support/process/sanitizers.h"
#include "support/process/scenarios.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <atomic>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace marlune::test {

namespace {

// --- The code of the processes -------------------------------------------------------------------

MQuickView loaded_view()
{
    MQuickView view;
    set_up(view);
    require(view.load("Scenes", "Moving"), "the scene loads");
    return view;
}

void require_defaults(const MQuickView& view)
{
    require(view.get_texture() == 0, "the texture is 0");
    require(view.get_mips_count() == 1, "the number of levels is 1");
    require(view.get_refresh_rate() == 60, "the rate is 60");
    require(view.get_resolution() == std::tuple(0u, 0u), "the resolution is (0, 0)");
    require(!view.load("Scenes", "Moving"), "nothing is loaded");
    view.render();
    view.mouse_move(1, 1);
    view.key_event(0x41, 0, "a");
    view.reset();
}

void ordinary_run()
{
    start_library();
    MQuickView view = loaded_view();
    view.render();
    view.destroy();
    M::destroy();
    release_host();
}

void second_start()
{
    start_library();
    M::ensure_qt_eventloop_is_running();
    M::create_app();
    M::destroy();
}

void start_after_stop()
{
    start_library();
    M::ensure_qt_eventloop_is_running();
    M::destroy();
    M::create_app();
}

void two_starts_in_quick_succession()
{
    start_library();
    M::create_app();
    M::create_app();
    MQuickView view = loaded_view();
    view.render();
    view.destroy();
    M::destroy();
    release_host();
}

void screens_during_the_start()
{
    start_library();
    while (MView().get_physical_screens().empty())
        std::this_thread::yield();
    require(std::atomic_ref(MARLUNE_CTX).load() != nullptr, "the library is ready by then");
    M::destroy();
}

void start_without_a_reader_of_the_debug_pipe()
{
    ::setenv("XDG_RUNTIME_DIR", "/no/such/folder", 1);
    opts::LOGGING_DEBUG = true;
    start_library();
    M::ensure_qt_eventloop_is_running();
    M::destroy();
}

std::string number_of_the_host()
{
    char text[8];
    std::snprintf(text, sizeof(text), "%.1f", 1.5);
    return text;
}

void require_points_in_rates()
{
    for (const auto& screen : MView().get_physical_screens())
        require(screen.at("refreshRate").find('.') != std::string::npos, "a rate has a point");
}

/** A process of a user with a German environment, whose game never sets the locale. */
void german_user()
{
    start_library();
    MWebView page;
    set_up(page);
    require(page.load(), "the page loads");
    require(number_of_the_host() == "1.5", "the game's numbers have points");
    require(std::setlocale(LC_ALL, nullptr) == std::string("C"), "the game keeps its locale");
    require_points_in_rates();
    page.destroy();
    M::destroy();
    release_host();
}

void german_game()
{
    require(std::setlocale(LC_ALL, "") != nullptr, "there is a German locale");
    start_library();
    M::ensure_qt_eventloop_is_running();
    require(number_of_the_host() == "1,5",
            "the game's numbers have commas, as the game has chosen");
    require_points_in_rates();
    M::destroy();
}

void stop_without_start()
{
    M::destroy();
    M::destroy();
}

void stop_right_after_start()
{
    start_library();
    M::destroy();
}

void stop_twice()
{
    start_library();
    M::ensure_qt_eventloop_is_running();
    M::destroy();
    M::destroy();
}

void engine_with_processes_of_its_own()
{
    start_library();
    MQuickView view = loaded_view();
    require(wait_until([] { return !engine_processes().empty(); }), "the engine has processes");
    view.destroy();
    M::destroy();
    release_host();
    // The processes end at the latest with this one; the test that runs this scenario looks for any
    // that remain.
}

void stop_with_a_loaded_view()
{
    leave_views_behind();
    start_library();
    const MQuickView view = loaded_view();
    view.render();
    M::destroy();
}

void calls_after_stop()
{
    leave_views_behind();
    start_library();
    MQuickView view = loaded_view();
    M::destroy();
    require_defaults(view);
    view.destroy();
    require_defaults(view);
}

void calls_on_several_threads_during_stop()
{
    leave_views_behind();
    start_library();
    const MQuickView view = loaded_view();
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([view] { wait_until([&] { return view.get_refresh_rate() == 60; }); });
    }
    M::destroy();
}

void view_right_after_start()
{
    start_library();
    MQuickView view;
    require(view.get_resolution() == std::tuple(1920u, 1080u),
            "the constructor waits for the start");
    view.destroy();
    M::destroy();
}

void view_before_start()
{
    std::jthread early([] {
        MQuickView view;
        view.destroy();
    });
    start_library();
    early.join();
    M::destroy();
}

void thread_of_the_host()
{
    opts::PATH_PROJECT_ROOT = std::getenv("MARLUNE_PROJECT_ROOT");
    std::thread thread(M::_create_app);
    MQuickView view = loaded_view();
    view.destroy();
    M::destroy();
    thread.join();
    release_host();
}

void stop_from_a_callback()
{
    leave_views_behind();
    start_library();
    const MQuickView view = loaded_view();
    require(view.load("Scenes", "ConsoleEmitter"), "the scene loads");
    view.set_func_javascript_console_log([](int, std::string, int, std::string) { M::destroy(); });
    view.key_event(0x41, 0, "a");
    require(wait_until([&] { return view.get_refresh_rate() == 60; }), "the library stops");
    M::destroy();
}

void before_the_start()
{
    MView view;
    require(view.get_physical_screens().empty(), "no screens are known");
    require(view.get_texture() == 0, "a plain facade works");
    require(MARLUNE == nullptr && MARLUNE_APP == nullptr && MARLUNE_CTX == nullptr,
            "nothing is published");
    view.destroy();
}

void exit_instead_of_return()
{
    start_library();
    MQuickView view = loaded_view();
    view.destroy();
    M::destroy();
    release_host();
    std::exit(EXIT_SUCCESS);
}

const Scenarios SCENARIOS = {
    {"ordinary_run", ordinary_run},
    {"second_start", second_start},
    {"start_after_stop", start_after_stop},
    {"two_starts_in_quick_succession", two_starts_in_quick_succession},
    {"screens_during_the_start", screens_during_the_start},
    {"start_without_a_reader_of_the_debug_pipe", start_without_a_reader_of_the_debug_pipe},
    {"german_user", german_user},
    {"german_game", german_game},
    {"stop_without_start", stop_without_start},
    {"stop_right_after_start", stop_right_after_start},
    {"stop_twice", stop_twice},
    {"engine_with_processes_of_its_own", engine_with_processes_of_its_own},
    {"stop_with_a_loaded_view", stop_with_a_loaded_view},
    {"calls_after_stop", calls_after_stop},
    {"calls_on_several_threads_during_stop", calls_on_several_threads_during_stop},
    {"view_right_after_start", view_right_after_start},
    {"view_before_start", view_before_start},
    {"thread_of_the_host", thread_of_the_host},
    {"stop_from_a_callback", stop_from_a_callback},
    {"before_the_start", before_the_start},
    {"exit_instead_of_return", exit_instead_of_return},
};

// --- The tests of these processes ----------------------------------------------------------------

using Lines = std::vector<std::string>;

constexpr const char* ALREADY = "application is already constructed";

class LibraryScenarios : public testing::TestWithParam<std::string> {};

TEST_P(LibraryScenarios, end_cleanly_log_nothing_and_leave_no_process_behind)
{
    EXPECT_EQ(lines_of_scenario(GetParam()), Lines());
}

INSTANTIATE_TEST_SUITE_P(Process, LibraryScenarios,
                         testing::Values("ordinary_run", "engine_with_processes_of_its_own",
                                         "two_starts_in_quick_succession",
                                         "screens_during_the_start", "stop_without_start",
                                         "stop_right_after_start", "stop_twice",
                                         "stop_with_a_loaded_view", "calls_after_stop",
                                         "calls_on_several_threads_during_stop",
                                         "view_right_after_start", "view_before_start",
                                         "thread_of_the_host", "stop_from_a_callback",
                                         "before_the_start", "exit_instead_of_return"),
                         [](const auto& test) { return test.param; });

TEST(Start, a_second_time_is_refused_on_the_error_stream)
{
    EXPECT_EQ(lines_of_scenario("second_start"), Lines{ALREADY});
}

/** Processes of a user whose language writes numbers with commas. */
class GermanProcess : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(folder_);
        run_program({"/usr/bin/localedef", "--inputfile=de_DE", "--charmap=UTF-8",
                     folder_ / "de_DE.UTF-8"});
        if (!std::filesystem::exists(folder_ / "de_DE.UTF-8"))
            GTEST_SKIP() << "the package locales is not installed";
        ::setenv("LOCPATH", folder_.c_str(), 1);
        ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    }

    void TearDown() override
    {
        ::unsetenv("LC_ALL");
        ::unsetenv("LOCPATH");
        std::filesystem::remove_all(folder_);
    }

private:
    const std::filesystem::path folder_ =
        std::filesystem::path(testing::TempDir()) / "german_locale";
};

TEST_P(GermanProcess, keeps_its_format_of_numbers)
{
    EXPECT_EQ(lines_of_scenario(GetParam()), Lines());
}

INSTANTIATE_TEST_SUITE_P(Start, GermanProcess, testing::Values("german_user", "german_game"),
                         [](const auto& test) { return test.param; });

TEST(Start, logs_that_the_debug_pipe_has_no_reader)
{
    EXPECT_EQ(lines_of_scenario("start_without_a_reader_of_the_debug_pipe"),
              Lines{"Failed to connect to named pipe. Error: 2"});
}

TEST(Start, after_the_library_has_stopped_is_refused_on_the_error_stream)
{
    EXPECT_EQ(lines_of_scenario("start_after_stop"), Lines{ALREADY});
}

}  // namespace

}  // namespace marlune::test

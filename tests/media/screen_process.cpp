// Displays that cannot be captured or that change meanwhile, and the end of a process that
// captures. Each case runs in a process of its own.

#include "support/library.h"
#include "support/media/host_screen_view.h"
#include "support/message_log.h"
#include "support/process/sanitizers.h"
#include "support/process/scenarios.h"

#include <marlune/app.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace marlune::test {

namespace {

constexpr Size SIZE{640, 480};
constexpr Rect SCREEN{0, 0, 640, 480};

MScreenCaptureView capturing_view()
{
    MScreenCaptureView view;
    set_up(view, SIZE);
    require(view.load("Multimedia", "ScreenCapture"), "the scene loads");
    require(wait_until([&] {
                view.render();
                const Image image = host().read_back(view.get_texture(), SIZE.width, SIZE.height);
                return is_close(image.pixel(320, 240), RED, 1);
            }),
            "it captures");
    return view;
}

/** A red desktop, and the library. */
std::unique_ptr<ScreenServer> start(const ScreenServer::Options& options = {})
{
    auto server = std::make_unique<ScreenServer>(options);
    server->paint(SCREEN, RED);
    start_library();
    return server;
}

void orderly_end()
{
    const auto server = start();
    MScreenCaptureView view = capturing_view();
    view.destroy();
    M::destroy();
    release_host();
}

void stop_while_it_captures()
{
    leave_views_behind();
    const auto server = start();
    const MScreenCaptureView view = capturing_view();
    capturing_view();
    require(wait_until([] { return capturing_threads() == 2; }),
            "they capture on threads of their own");
    M::destroy();
    require(wait_until([] { return capturing_threads() == 0; }),
            "which end before the host leaves main");
    view.set_active(false);
    view.set_physical_screen("1");
    view.reset();
}

void stop_with_a_view_that_is_off()
{
    leave_views_behind();
    const auto server = start();
    capturing_view().set_active(false);
    M::destroy();
}

void stop_with_a_view_that_was_reset()
{
    leave_views_behind();
    const auto server = start();
    capturing_view().reset();
    M::destroy();
}

void exit_while_it_captures()
{
    leave_views_behind();
    static const auto server = start();
    capturing_view();
    M::destroy();
    std::exit(EXIT_SUCCESS);
}

/** Stops the library after the views declared after it, and before its display ends. */
struct Stop {
    ~Stop()
    {
        M::destroy();
        release_host();
    }
};

/** True for the same text, although the edges of its letters may differ each time. */
bool say_the_same(const Image& left, const Image& right)
{
    int different = 0;
    for (uint32_t y = 0; y < left.height(); ++y) {
        for (uint32_t x = 0; x < left.width(); ++x)
            different += !is_close(left.pixel(x, y), right.pixel(x, y), 64);
    }
    return different < 100;
}

void display_that_refuses()
{
    // Without this extension Qt does not find its screen among those of the display.
    const auto server = start({.arguments = {"-extension", "RANDR"}});
    const Stop stop;
    HostScreenView view(SIZE);
    require(view.load(), "the scene loads");
    require(bool(view.wait_for_notice()), "it says that there is no picture");
    const Image refusal = view.picture();
    view->set_active(false);
    const auto says_something_else = [&] {
        return shows_notice(view.picture()) && !say_the_same(view.picture(), refusal);
    };
    require(view.draw_until(says_something_else), "it says that capturing is off");
    view->set_active(true);
    require(view.draw_until([&] { return say_the_same(view.picture(), refusal); }),
            "and why there is none, again");
}

void screen_that_is_taken_away()
{
    const Rect front{0, 0, 640, 480}, side{640, 0, 640, 480};
    const auto server =
        start({.width = 1280,
               .monitors = {{.name = "Front", .area = front, .primary = true, .model = "Front"},
                            {.name = "Side", .area = side}}});
    server->paint(side, BLUE);
    const Stop stop;
    HostScreenView view(SIZE);
    require(view.load("side"), "the scene loads");
    require(bool(view.wait_for_colour(SCREEN, BLUE)), "it captures");
    server->take_away("Side");
    const auto is_gone = [&] { return view->get_physical_screens().size() == 1; };
    require(view.draw_until(is_gone), "the screen has gone");
    require(bool(view.wait_for_notice()), "it says that there is no picture");
    require(view.load("side"), "the scene loads again");
    require(bool(view.wait_for_colour(SCREEN, RED)), "with the screen that is left");
}

const Scenarios SCENARIOS = {
    {"display_that_refuses", display_that_refuses},
    {"screen_that_is_taken_away", screen_that_is_taken_away},
    {"orderly_end", orderly_end},
    {"stop_while_it_captures", stop_while_it_captures},
    {"stop_with_a_view_that_is_off", stop_with_a_view_that_is_off},
    {"stop_with_a_view_that_was_reset", stop_with_a_view_that_was_reset},
    {"exit_while_it_captures", exit_while_it_captures},
};

class ScreenScenarios : public testing::TestWithParam<std::string> {};

TEST_P(ScreenScenarios, end_cleanly_and_leave_no_process_behind)
{
    EXPECT_TRUE(ends_cleanly(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Process, ScreenScenarios, testing::ValuesIn(SCENARIOS.names()),
                         [](const auto& test) { return test.param; });

}  // namespace

}  // namespace marlune::test

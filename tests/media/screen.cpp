// A screen as a view shows it, through the facade.

#include "support/input.h"
#include "support/media/host_screen_view.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace marlune {

using namespace test;

namespace {

constexpr Size SIZE{640, 480};
constexpr Rect SCREEN{0, 0, 640, 480};
constexpr Colour BACKGROUND{32, 64, 96, 255};

std::unique_ptr<ScreenServer> server;

/** From before the library's start until after its stop. */
class OneScreen : public testing::Environment {
    void SetUp() override { server = std::make_unique<ScreenServer>(ScreenServer::Options{}); }
    void TearDown() override { server.reset(); }
};

// Registered first, and so torn down last.
[[maybe_unused]] testing::Environment* const one_screen =
    testing::AddGlobalTestEnvironment(new OneScreen);

class Screen : public testing::Test {
protected:
    void SetUp() override { server->paint(SCREEN, BACKGROUND); }

    testing::AssertionResult shows(Colour colour) { return view.wait_for_colour(SCREEN, colour); }

    HostScreenView view{SIZE};
};

// --- The picture ---------------------------------------------------------------------------------

TEST_F(Screen, is_shown_pixel_by_pixel)
{
    struct Window {
        Rect area;
        Colour colour;
    };
    const std::vector<Window> windows = {
        {{0, 0, 1, 1}, WHITE},
        {{639, 479, 1, 1}, RED},
        {{100, 50, 200, 100}, {250, 128, 3, 255}},
        {{400, 50, 200, 100}, {1, 2, 3, 255}},
        {{100, 300, 37, 41}, GREEN},
        {{401, 301, 101, 99}, {127, 0, 254, 255}},
    };
    for (const Window& window : windows)
        server->paint(window.area, window.colour);
    ASSERT_TRUE(view.load());
    ASSERT_TRUE(view.wait_for_colour({10, 10, 1, 1}, BACKGROUND));
    const Image image = view.picture();
    for (const Window& window : windows)
        EXPECT_TRUE(every_pixel_in(image, window.area, window.colour, "a window's own colour"));
    EXPECT_TRUE(every_pixel_in(image, {0, 200, 640, 80}, BACKGROUND, "between the windows"));
    EXPECT_TRUE(every_pixel_in(image, {301, 40, 98, 120}, BACKGROUND, "beside a window"));
    keep_picture(image);
}

TEST_F(Screen, is_shown_as_it_changes)
{
    ASSERT_TRUE(view.load());
    for (uint8_t i = 0; i < 20; ++i) {
        const Colour colour{uint8_t(255 - 10 * i), uint8_t(10 * i), uint8_t(i % 2 * 200), 255};
        server->paint(SCREEN, colour);
        ASSERT_TRUE(shows(colour)) << "in step " << int(i);
    }
}

TEST_F(Screen, is_shown_whole_in_a_view_of_another_form)
{
    HostScreenView wide({960, 360});
    server->paint({0, 0, 640, 4}, RED);
    server->paint({0, 476, 640, 4}, GREEN);
    ASSERT_TRUE(wide.load());
    ASSERT_TRUE(wide.wait_for_colour({250, 30, 460, 300}, BACKGROUND));
    const Image image = wide.picture();
    EXPECT_TRUE(every_pixel_in(image, {0, 0, 238, 360}, TRANSPARENT, "left of the screen"));
    EXPECT_TRUE(every_pixel_in(image, {722, 0, 238, 360}, TRANSPARENT, "right of the screen"));
    EXPECT_TRUE(is_close(image.pixel(480, 0), RED, 1)) << image.pixel(480, 0);
    EXPECT_TRUE(is_close(image.pixel(480, 359), GREEN, 1)) << image.pixel(480, 359);
}

TEST_F(Screen, is_shown_in_two_views_at_once)
{
    HostScreenView other(SIZE);
    ASSERT_TRUE(view.load());
    ASSERT_TRUE(other.load());
    EXPECT_TRUE(shows(BACKGROUND));
    EXPECT_TRUE(other.wait_for_colour(SCREEN, BACKGROUND));
}

// --- Off and on ----------------------------------------------------------------------------------

TEST_F(Screen, is_away_while_capturing_is_off)
{
    ASSERT_TRUE(view.load());
    ASSERT_TRUE(shows(BACKGROUND));
    view->set_active(false);
    view->set_active(false);
    EXPECT_TRUE(view.wait_for_notice());
    keep_picture(view.picture());
    server->paint(SCREEN, RED);
    for (int i = 0; i < 10; ++i)
        view.draw_frame();
    EXPECT_TRUE(shows_notice(view.picture()));
    view->set_active(true);
    EXPECT_TRUE(shows(RED));
    view->set_active(true);
    server->paint(SCREEN, GREEN);
    EXPECT_TRUE(shows(GREEN)) << "capturing does not continue";
}

TEST_F(Screen, is_not_shown_as_it_was_before_capturing_was_off)
{
    ASSERT_TRUE(view.load());
    ASSERT_TRUE(shows(BACKGROUND));
    view->set_active(false);
    ASSERT_TRUE(view.wait_for_notice());
    server->paint(SCREEN, RED);
    view->set_active(true);
    bool was_old = false;
    EXPECT_TRUE(view.draw_until([&] {
        const Colour colour = view.picture().pixel(320, 100);
        was_old |= is_close(colour, BACKGROUND, 1);
        return is_close(colour, RED, 1);
    }));
    EXPECT_FALSE(was_old);
}

TEST_F(Screen, is_not_shown_by_a_view_that_is_off_from_the_start)
{
    view->set_active(false);
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(shows_notice(view.picture())) << "in its first frame";
    for (int i = 0; i < 10; ++i)
        view.draw_frame();
    EXPECT_TRUE(shows_notice(view.picture()));
    view->set_active(true);
    EXPECT_TRUE(shows(BACKGROUND));
}

TEST_F(Screen, is_switched_many_times)
{
    ASSERT_TRUE(view.load());
    for (int i = 0; i < 20; ++i)
        view->set_active(i % 2 != 0);
    EXPECT_TRUE(shows(BACKGROUND));
}

// --- Coming and going ----------------------------------------------------------------------------

TEST_F(Screen, is_shown_again_after_a_reset)
{
    ASSERT_TRUE(view.load());
    ASSERT_TRUE(shows(BACKGROUND));
    const uint64_t texture = view->get_texture();
    view->reset();
    server->paint(SCREEN, RED);
    view->render();
    EXPECT_EQ(view->get_texture(), texture);
    EXPECT_TRUE(every_pixel_in(view.picture(), SCREEN, BACKGROUND, "the last picture stays"));
    view->reset();
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(shows(RED));
    ASSERT_TRUE(view.load()) << "and without one";
    EXPECT_TRUE(shows(RED));
}

TEST_F(Screen, is_captured_on_a_thread_that_ends_with_capturing)
{
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(view.load());
        ASSERT_TRUE(shows(BACKGROUND));
        EXPECT_TRUE(wait_until([] { return capturing_threads() == 1; }));
        view->set_active(false);
        EXPECT_TRUE(wait_until([] { return capturing_threads() == 0; }));
        view->set_active(true);
        EXPECT_TRUE(wait_until([] { return capturing_threads() == 1; }));
        view->reset();
        EXPECT_TRUE(wait_until([] { return capturing_threads() == 0; }));
    }
}

TEST_F(Screen, stays_off_through_a_reset)
{
    ASSERT_TRUE(view.load());
    view->set_active(false);
    view->reset();
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(shows_notice(view.picture()));
}

TEST_F(Screen, is_left_by_views_that_are_destroyed)
{
    for (int i = 0; i < 5; ++i) {
        HostScreenView other(SIZE);
        ASSERT_TRUE(other.load());
        ASSERT_TRUE(i % 2 == 0 || other.wait_for_colour(SCREEN, BACKGROUND));
    }
}

// --- The facade ----------------------------------------------------------------------------------

TEST_F(Screen, can_be_chosen_and_switched_by_a_callback)
{
    std::atomic<int> calls = 0;
    const MScreenCaptureView facade = view.facade();
    view->set_func_javascript_console_log([&, facade](int, std::string, int, std::string) {
        facade.set_physical_screen("0");
        facade.set_active(false);
        ++calls;
    });
    ASSERT_TRUE(view->load("Scenes", "ConsoleEmitter"));
    view.type('A', "a");
    EXPECT_EQ(calls, 1);
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(shows_notice(view.picture()));
}

TEST_F(Screen, can_be_chosen_from_many_threads_at_once)
{
    ASSERT_TRUE(view.load());
    std::vector<std::thread> hosts;
    std::atomic<int> left = 4;
    for (int i = 0; i < 4; ++i) {
        hosts.emplace_back([&, facade = view.facade()] {
            for (int k = 0; k < 500; ++k)
                facade.set_physical_screen(std::to_string(k));
            --left;
        });
    }
    EXPECT_TRUE(view.draw_until([&] { return left == 0; }));
    for (std::thread& host : hosts)
        host.join();
    EXPECT_TRUE(shows(BACKGROUND));
}

TEST(ScreenFacade, can_be_chosen_while_the_view_goes)
{
    start_library();
    for (int round = 0; round < 100; ++round) {
        MScreenCaptureView view;
        std::atomic<int> chosen = 0;
        std::jthread host([facade = view, &chosen](std::stop_token stop) {
            for (; !stop.stop_requested(); ++chosen)
                facade.set_physical_screen("1");
        });
        const auto chosen_once_more = [&chosen, before = chosen.load()] { return chosen > before; };
        ASSERT_TRUE(wait_until(chosen_once_more));
        view.destroy();
        const int before = chosen;
        ASSERT_TRUE(wait_until([&] { return chosen > before + 1; })) << "and after it has gone";
    }
}

TEST(ScreenFacade, does_nothing_without_a_view)
{
    start_library();
    MScreenCaptureView view;
    view.destroy();
    view.set_active(false);
    view.set_physical_screen("1");
    EXPECT_FALSE(view.load("Multimedia", "ScreenCapture"));
    view.destroy();
}

TEST(ScreenFacade, does_nothing_where_another_view_has_taken_the_place)
{
    HostView quick;
    // As a stale facade may name a view of another kind.
    const MQuickView& other = quick.facade();
    MScreenCaptureView confused;
    const MScreenCaptureView own = confused;
    static_cast<MQuickView&>(confused) = other;
    confused.set_active(false);
    confused.set_physical_screen("1");
    EXPECT_TRUE(quick.load("Quadrants"));
    MScreenCaptureView(own).destroy();
}

}  // namespace

}  // namespace marlune

// When render() draws, and when it does not.

#include "support/host_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace marlune::test {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

TEST(Render, before_loading_does_nothing)
{
    HostView view;
    view->render();
    EXPECT_EQ(view->get_texture(), 0u);
}

TEST(Render, after_reset_does_nothing)
{
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    view->reset();
    const Image before = view.picture();
    view.draw_frame();
    EXPECT_EQ(view.picture(), before);
}

TEST(Render, is_called_once_by_loading)
{
    HostView view;
    view->set_refresh_rate(1);
    ASSERT_TRUE(view.load("ContextProbe"));
    EXPECT_EQ(view.frames_rendered(), 1);
}

TEST(Render, draws_a_frame_when_the_interval_has_passed)
{
    HostView view;
    ASSERT_TRUE(view.load("ContextProbe"));
    const int before = view.frames_rendered();
    for (int i = 1; i <= 10; ++i) {
        view.draw_frame();
        EXPECT_EQ(view.frames_rendered(), before + i);
    }
}

TEST(Render, twice_in_one_interval_draws_one_frame)
{
    HostView view;
    view->set_refresh_rate(1);  // long enough for two calls, even on a slow machine
    ASSERT_TRUE(view.load("ContextProbe"));
    const int before = view.frames_rendered();
    view.draw_frame();
    view.render();
    view.render();
    EXPECT_EQ(view.frames_rendered(), before + 1);
}

TEST(Render, draws_no_more_frames_than_the_rate_allows_however_often_it_is_called)
{
    for (const auto& [rate, interval] : {std::pair(120, milliseconds(8)), {60, milliseconds(16)}}) {
        HostView view;
        view->set_refresh_rate(rate);
        ASSERT_TRUE(view.load("ContextProbe"));
        const int before = view.frames_rendered();
        const auto start = steady_clock::now();
        while (steady_clock::now() - start < milliseconds(300))
            view.render();
        const auto elapsed = steady_clock::now() - start;
        const int drawn = view.frames_rendered() - before;
        EXPECT_LE(drawn, elapsed / interval + 1) << "at " << rate << " Hz";
        EXPECT_GE(drawn, 2) << "at " << rate << " Hz";
    }
}

TEST(Render, advances_animations)
{
    HostView view;
    ASSERT_TRUE(view.load("Moving"));
    const Image first = view.picture();
    EXPECT_TRUE(view.draw_until([&] { return view.picture() != first; }));
}

TEST(Render, of_a_scene_that_does_not_change_draws_the_same_image)
{
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    const Image first = view.picture();
    for (int i = 0; i < 3; ++i)
        view.draw_frame();
    EXPECT_EQ(view.picture(), first);
}

}  // namespace

}  // namespace marlune::test

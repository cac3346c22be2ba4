// Several threads of a host at once, each with its own copy of a facade.

#include "support/host_view.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

namespace marlune::test {

namespace {

using Resolution = std::tuple<uint32_t, uint32_t>;

constexpr int THREADS = 4;

/** Runs `body` on several threads and waits for all of them. */
template <typename Body>
void on_several_threads(Body body)
{
    std::vector<std::jthread> threads;
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back(body);
}

TEST(Threads, use_one_view_together)
{
    HostView view;
    ASSERT_TRUE(view.load("Moving"));
    const uint64_t texture = view->get_texture();
    std::atomic<int> wrong = 0;
    on_several_threads([&, copy = view.facade()] {
        for (int i = 0; i < 200; ++i) {
            const std::lock_guard lock(host().queue());
            copy.render();
            wrong += copy.get_texture() != texture || copy.get_resolution() != Resolution(512, 256);
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(Threads, create_load_and_destroy_views_of_their_own)
{
    HostView starter;
    std::atomic<int> loaded = 0;
    on_several_threads([&] {
        MQuickView view;
        set_up(view, {256, 256});
        const std::lock_guard lock(host().queue());
        loaded += view.load("Scenes", "Quadrants");
        view.destroy();
    });
    EXPECT_EQ(loaded, THREADS);
}

TEST(Threads, get_the_default_or_the_value_while_the_view_is_destroyed)
{
    for (int round = 0; round < 20; ++round) {
        HostView view;
        std::atomic<bool> destroyed = false;
        std::atomic<int> running = 0, wrong = 0;
        std::vector<std::jthread> threads;
        for (int i = 0; i < THREADS; ++i) {
            threads.emplace_back([&, copy = view.facade()] {
                ++running;
                while (!destroyed) {
                    const Resolution resolution = copy.get_resolution();
                    wrong += resolution != Resolution(512, 256) && resolution != Resolution(0, 0);
                }
                wrong += copy.get_resolution() != Resolution(0, 0);
            });
        }
        EXPECT_TRUE(wait_until([&] { return running == THREADS; }));
        view->destroy();
        destroyed = true;
        threads.clear();
        EXPECT_EQ(wrong, 0);
    }
}

TEST(Threads, may_destroy_one_view_at_the_same_time)
{
    for (int round = 0; round < 20; ++round) {
        HostView view;
        on_several_threads([copy = view.facade()]() mutable { copy.destroy(); });
        EXPECT_EQ(view->get_refresh_rate(), 60);
    }
}

TEST(Threads, see_their_calls_run_in_order)
{
    HostView view;
    for (uint32_t side = 256; side < 556; ++side) {
        view->set_resolution({side, side + 1});
        ASSERT_EQ(view->get_resolution(), Resolution(side, side + 1));
    }
}

}  // namespace

}  // namespace marlune::test

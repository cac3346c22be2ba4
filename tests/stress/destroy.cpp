// One thread destroys a view, its scene or its texture while another one uses it. Each call works
// on the complete view or returns its default; none is lost.

#include "support/any_call.h"
#include "support/host_view.h"
#include "support/process/endurance.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <tuple>
#include <vector>

namespace marlune::test {

namespace {

using Resolution = std::tuple<uint32_t, uint32_t>;

constexpr Size SIZE{256, 256};

/** A thread that makes calls of each kind in turn on its own copy of a facade. */
class Caller {
public:
    Caller(const MQuickView& view, Watchdog& watchdog)
        : thread_([this, view, &watchdog](std::stop_token stop) {
              for (unsigned i = 0; !stop.stop_requested(); ++i) {
                  wrong_answers_ += !make_any_call(view, i);
                  ++calls_;
                  watchdog.step();
              }
          })
    {
    }

    /** Waits until this many more calls have returned. */
    void let_make(int more)
    {
        for (const int end = calls_ + more; calls_ < end;)
            std::this_thread::yield();
    }

    /** Ends the thread and returns how many results were neither the view's nor the default. */
    int end()
    {
        thread_.request_stop();
        thread_.join();
        return wrong_answers_;
    }

private:
    std::atomic<int> calls_ = 0;
    int wrong_answers_ = 0;
    std::jthread thread_;  // last: it uses the others
};

void expect_defaults(const MQuickView& view)
{
    EXPECT_EQ(view.get_resolution(), Resolution(0, 0));
    EXPECT_EQ(view.get_mips_count(), 1);
    EXPECT_EQ(view.get_refresh_rate(), 60);
    EXPECT_EQ(view.get_texture(), 0u);
    EXPECT_FALSE(view.load("Scenes", "Quadrants"));
}

/** The number of calls before the end. It varies, so that the end meets every kind of call. */
int calls_before(int round)
{
    return round % 23;
}

void destroy_during_calls(HostView& view, int round, Watchdog& watchdog)
{
    const MQuickView copy = view.facade();
    Caller caller(copy, watchdog);
    caller.let_make(calls_before(round));
    view->destroy();
    expect_defaults(copy);
    EXPECT_EQ(caller.end(), 0);
}

TEST(Destroy, of_an_empty_view_may_come_during_calls)
{
    Watchdog watchdog;
    for (int round = 0; round < times(500, 10'000) && !HasFailure(); ++round) {
        HostView view(SIZE);
        destroy_during_calls(view, round, watchdog);
    }
}

TEST(Destroy, of_a_loaded_view_may_come_during_calls)
{
    Watchdog watchdog;
    for (int round = 0; round < times(50, 10'000) && !HasFailure(); ++round) {
        HostView view(SIZE);
        ASSERT_TRUE(view.load("Moving"));
        destroy_during_calls(view, round, watchdog);
    }
}

TEST(Destroy, may_come_from_several_threads_during_calls)
{
    Watchdog watchdog;
    for (int round = 0; round < times(100, 10'000) && !HasFailure(); ++round) {
        HostView view(SIZE);
        const MQuickView copy = view.facade();
        Caller caller(copy, watchdog);
        {
            std::vector<std::jthread> destroyers;
            for (int i = 0; i < 3; ++i)
                destroyers.emplace_back([mine = copy]() mutable { mine.destroy(); });
        }
        expect_defaults(copy);
        EXPECT_EQ(caller.end(), 0);
    }
}

TEST(Reset, and_load_may_come_during_calls)
{
    Watchdog watchdog;
    HostView view(SIZE);
    Caller one(view.facade(), watchdog), other(view.facade(), watchdog);
    for (int round = 0; round < times(200, 10'000) && !HasFailure(); ++round) {
        ASSERT_TRUE(view.load("Moving"));
        one.let_make(calls_before(round));
        const uint64_t texture = view->get_texture();
        EXPECT_NE(texture, 0u);
        view->reset();
        other.let_make(calls_before(round));
        EXPECT_EQ(view->get_texture(), texture) << "the texture outlives its scene";
    }
    EXPECT_EQ(one.end(), 0);
    EXPECT_EQ(other.end(), 0);
}

TEST(Load, may_come_from_several_threads_at_once)
{
    Watchdog watchdog;
    HostView view(SIZE);
    std::atomic<int> failed = 0;
    {
        std::vector<std::jthread> loaders;
        for (int i = 0; i < 3; ++i) {
            loaders.emplace_back([&, copy = view.facade()] {
                for (int round = 0; round < times(50, 3'000); ++round) {
                    failed += !copy.load("Scenes", "Quadrants");
                    watchdog.step();
                }
            });
        }
    }
    EXPECT_EQ(failed, 0);
    EXPECT_TRUE(every_pixel_in(view.picture(), {0, 0, 120, 120}, RED, "the last scene stands"));
}

}  // namespace

}  // namespace marlune::test

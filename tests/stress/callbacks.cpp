// Console callbacks of a faulty host, many times: they throw, call the view, destroy their own
// view, or block the Qt thread.

#include "support/any_call.h"
#include "support/host_view.h"
#include "support/message_log.h"
#include "support/process/endurance.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

constexpr uint32_t KEY_SPACE = 0x20;

class Callbacks : public testing::Test {
protected:
    void SetUp() override { load(); }

    void load() { ASSERT_TRUE(view.load("ConsoleEmitter")); }

    /** Registers `act` for each message of the scene, except those that `act` itself causes. */
    template <typename Act>
    void on_message(Act act)
    {
        const auto acting = std::make_shared<bool>(false);
        view->set_func_javascript_console_log(
            [this, act, acting](int, std::string, int, std::string) {
                if (*acting)
                    return;
                ++called;
                *acting = true;
                act();
                *acting = false;
            });
    }

    void emit_message()
    {
        watchdog.step();
        view->key_event(KEY_SPACE, 0, "text");
    }

    Watchdog watchdog;
    HostView view{Size{256, 256}};
    std::atomic<int> called = 0;
};

TEST_F(Callbacks, that_throw_are_reported_once_each)
{
    const int rounds = times(500, 10'000);
    view->set_func_javascript_console_log([this](int, std::string, int, std::string) {
        if (++called % 2)
            throw std::runtime_error("the host's own trouble");
        throw called.load();
    });
    for (int i = 0; i < rounds; ++i) {
        expect_message_matching(i % 2 ? "unknown exception" : "the host's own trouble");
        emit_message();
    }
    EXPECT_EQ(called, rounds);
}

TEST_F(Callbacks, that_call_back_get_their_answers)
{
    int wrong = 0;
    on_message([&] {
        for (unsigned number = 0; number < 20; ++number)
            wrong += !make_any_call(view.facade(), number);
    });
    const int rounds = times(200, 10'000);
    for (int i = 0; i < rounds; ++i)
        emit_message();
    EXPECT_EQ(called, rounds);
    EXPECT_EQ(wrong, 0);
}

TEST_F(Callbacks, that_load_are_refused)
{
    const int rounds = times(200, 10'000);
    int loaded = 0;
    on_message([&] { loaded += view.load("Quadrants"); });
    for (int i = 0; i < rounds; ++i) {
        expect_message_matching("a callback cannot load");
        emit_message();
    }
    EXPECT_EQ(called, rounds);
    EXPECT_EQ(loaded, 0);
}

TEST_F(Callbacks, that_reset_their_view_leave_one_that_can_be_loaded)
{
    const int rounds = times(50, 2'000);
    on_message([&] { view->reset(); });
    for (int i = 0; i < rounds && !HasFailure(); ++i) {
        emit_message();
        emit_message();
        ASSERT_EQ(called, i + 1) << "a scene still reports after the callback has returned";
        load();
    }
    EXPECT_EQ(called, rounds);
}

TEST_F(Callbacks, that_destroy_their_view_end_it)
{
    const int rounds = times(50, 2'000);
    for (int i = 0; i < rounds && !HasFailure(); ++i) {
        HostView victim({256, 256});
        ASSERT_TRUE(victim.load("ConsoleEmitter"));
        const MQuickView stale = victim.facade();
        victim->set_func_javascript_console_log(
            [this, copy = victim.facade()](int, std::string, int, std::string) mutable {
                ++called;
                copy.destroy();
            });
        victim->key_event(KEY_SPACE, 0, "text");
        ASSERT_TRUE(wait_until([&] { return stale.get_refresh_rate() == 60; }));
        watchdog.step();
    }
    EXPECT_EQ(called, rounds);
}

TEST_F(Callbacks, that_make_and_destroy_other_views_do_so_in_place)
{
    const int rounds = times(200, 10'000);
    on_message([&] {
        MQuickView made;
        made.set_resolution({300, 300});
        made.destroy();
    });
    for (int i = 0; i < rounds; ++i)
        emit_message();
    EXPECT_EQ(called, rounds);
}

TEST_F(Callbacks, that_block_hold_other_threads_up_but_lose_no_call)
{
    const int rounds = times(5, 100);
    on_message([] { std::this_thread::sleep_for(50ms); });
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> callers;
        for (int i = 0; i < 4; ++i) {
            callers.emplace_back([&, copy = view.facade()](std::stop_token stop) {
                for (unsigned number = 0; !stop.stop_requested(); ++number)
                    wrong += !make_any_call(copy, number);
            });
        }
        for (int i = 0; i < rounds; ++i)
            emit_message();
    }
    EXPECT_GE(called, rounds) << "the callers' keys must cause messages as well";
    EXPECT_EQ(wrong, 0);
}

TEST_F(Callbacks, that_are_replaced_while_messages_come_are_let_go_of)
{
    const auto token = std::make_shared<std::atomic<int>>(0);
    {
        const std::jthread replacer([&, copy = view.facade()](std::stop_token stop) {
            while (!stop.stop_requested())
                copy.set_func_javascript_console_log(
                    [token](int, std::string, int, std::string) { ++*token; });
        });
        for (int i = 0; i < times(1'000, 50'000); ++i)
            emit_message();
    }
    EXPECT_GT(*token, 0);
    EXPECT_EQ(token.use_count(), 2) << "a replaced callback is still kept";
    view->destroy();
    EXPECT_EQ(token.use_count(), 1);
}

}  // namespace

}  // namespace marlune::test

// Where the library keeps a function of the host: which one is called, and how long it stays.

#include "runtime/callback_slot.h"
#include "support/fill_slot.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace marlune::test {

namespace {

/** Notes where it ends. */
struct Capture {
    std::thread::id& ended_on;
    bool& ended_in_callback;

    ~Capture()
    {
        ended_on = std::this_thread::get_id();
        ended_in_callback = HostCallbackScope::active();
    }
};

class CallbackSlots : public testing::Test {
protected:
    std::shared_ptr<Capture> capture()
    {
        return std::make_shared<Capture>(ended_on, ended_in_callback);
    }

    std::thread::id ended_on;
    bool ended_in_callback = false;
};

TEST_F(CallbackSlots, are_empty_for_an_empty_function)
{
    CallbackSlot<int(int)> slot;
    EXPECT_TRUE(slot.is_empty());
    EXPECT_EQ(slot.call(nullptr, 1), 0);
    fill(slot, [](int value) { return value; });
    EXPECT_FALSE(slot.is_empty());
    EXPECT_EQ(slot.call(nullptr, 2), 2);
    fill(slot, {});
    EXPECT_TRUE(slot.is_empty());
    EXPECT_EQ(slot.call(nullptr, 4), 0);
}

TEST_F(CallbackSlots, call_the_very_function_that_was_given)
{
    CallbackSlot<int()> slot;
    fill(slot, [calls = 0]() mutable { return ++calls; });
    EXPECT_EQ(slot.call(nullptr), 1);
    EXPECT_EQ(slot.call(nullptr), 2);
    EXPECT_EQ(slot.call(nullptr), 3);
}

TEST_F(CallbackSlots, report_what_a_function_throws_and_go_on)
{
    CallbackSlot<int()> slot;
    expect_message_matching("^marlune: broken");
    fill(slot, []() -> int { throw std::runtime_error("broken"); });
    EXPECT_EQ(slot.call(nullptr), 0);
    expect_message_matching("a host callback threw an unknown exception");
    fill(slot, []() -> int { throw 1; });
    EXPECT_EQ(slot.call(nullptr), 0);
}

TEST_F(CallbackSlots, keep_a_function_that_replaces_itself_until_it_has_returned)
{
    CallbackSlot<void()> slot;
    std::string order;
    fill(slot, [&, capture = capture()] {
        fill(slot, [&] { order += "new "; });
        slot.call(nullptr);
        order += ended_on == std::thread::id() ? "alive " : "gone ";
    });
    slot.call(nullptr);
    EXPECT_EQ(order, "new alive ");
    EXPECT_NE(ended_on, std::thread::id());
    EXPECT_TRUE(ended_in_callback) << "what ends with the call may take a view down";
}

TEST_F(CallbackSlots, keep_a_function_that_is_replaced_deep_in_its_own_calls)
{
    CallbackSlot<void(int)> slot;
    int ended_at = -1;
    fill(slot, [&, capture = capture()](int depth) {
        if (depth < 3)
            slot.call(nullptr, depth + 1);
        else
            fill(slot, {});
        if (ended_at < 0 && ended_on != std::thread::id())
            ended_at = depth;
    });
    slot.call(nullptr, 0);
    EXPECT_EQ(ended_at, -1) << "it ends after the outermost call";
    EXPECT_NE(ended_on, std::thread::id());
}

TEST_F(CallbackSlots, end_their_function_within_a_callback)
{
    {
        CallbackSlot<void()> slot;
        fill(slot, [capture = capture()] {});
    }
    EXPECT_TRUE(ended_in_callback) << "what goes with a slot may take a view down";
}

TEST_F(CallbackSlots, go_while_their_function_runs)
{
    auto slot = std::make_unique<CallbackSlot<void()>>();
    bool alive = false;
    fill(*slot, [&, capture = capture()] {
        slot.reset();
        alive = ended_on == std::thread::id();
    });
    slot->call(nullptr);
    EXPECT_TRUE(alive);
    EXPECT_NE(ended_on, std::thread::id());
}

TEST_F(CallbackSlots, end_a_replaced_function_on_the_thread_that_replaces_it)
{
    CallbackSlot<void()> slot;
    fill(slot, [capture = capture()] {});
    std::thread host([&] {
        fill(slot, {});
        EXPECT_EQ(ended_on, std::this_thread::get_id());
    });
    host.join();
    EXPECT_FALSE(ended_in_callback);
}

TEST_F(CallbackSlots, are_filled_by_another_thread_once_the_former_function_has_returned)
{
    for (int round = 0; round < 200; ++round) {
        CallbackSlot<void()> slot;
        std::atomic<bool> running = false, replaced = false, returned = false;
        // The outermost call alone is to wait for the replacement.
        fill(slot, [&, nested = false]() mutable {
            if (nested)
                return;
            nested = true;
            running = true;
            while (!replaced)
                slot.call(nullptr);
            for (int i = 0; i < 100; ++i)
                std::this_thread::yield();
            returned = true;
        });
        std::thread host([&] {
            while (!running)
                std::this_thread::yield();
            fill(slot, [&] { replaced = true; });
            EXPECT_TRUE(returned) << "what it has captured may be freed now";
        });
        slot.call(nullptr);
        host.join();
    }
}

TEST_F(CallbackSlots, can_be_filled_while_they_are_called)
{
    CallbackSlot<void(int)> slot;
    std::atomic<int> calls = 0;
    std::atomic<bool> done = false;
    std::thread host([&] {
        for (int i = 0; i < 5000; ++i)
            fill(slot, [&, big = std::string(100, 'x')](int) { calls += big.size() == 100; });
        done = true;
    });
    while (!done)
        slot.call(nullptr, 1);
    slot.call(nullptr, 1);
    host.join();
    EXPECT_GT(calls, 0);
}

}  // namespace

}  // namespace marlune::test

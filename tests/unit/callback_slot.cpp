// The slot that holds a callback of the host: which function it calls, and how long it keeps it.

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

/** Records on which thread, and whether in a callback, it is destroyed. */
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

TEST_F(CallbackSlots, call_the_stored_function_and_not_a_copy)
{
    CallbackSlot<int()> slot;
    fill(slot, [calls = 0]() mutable { return ++calls; });
    EXPECT_EQ(slot.call(nullptr), 1);
    EXPECT_EQ(slot.call(nullptr), 2);
    EXPECT_EQ(slot.call(nullptr), 3);
}

TEST_F(CallbackSlots, report_an_exception_of_their_function_and_continue)
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
    EXPECT_TRUE(ended_in_callback)
        << "an object that is destroyed with the call may destroy a view";
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
    EXPECT_EQ(ended_at, -1) << "it is destroyed after the outermost call";
    EXPECT_NE(ended_on, std::thread::id());
}

TEST_F(CallbackSlots, destroy_their_function_in_a_callback_scope)
{
    {
        CallbackSlot<void()> slot;
        fill(slot, [capture = capture()] {});
    }
    EXPECT_TRUE(ended_in_callback) << "an object that is destroyed with a slot may destroy a view";
}

TEST_F(CallbackSlots, may_be_destroyed_while_their_function_runs)
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

TEST_F(CallbackSlots, destroy_a_replaced_function_on_the_thread_that_replaces_it)
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
        // Only the outermost call waits for the replacement.
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
            EXPECT_TRUE(returned) << "the host may now free the captured objects";
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

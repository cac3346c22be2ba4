// A call that is posted to the Qt thread: it completes exactly once, whatever happens to it.

#include "runtime/call.h"
#include "runtime/host_callback.h"
#include "support/message_log.h"

#include "marlune/app.h"

#include <QCoreApplication>
#include <QEvent>
#include <QScopedValueRollback>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace marlune::test {

namespace {

/** A target of calls, registered like a view. */
class Target : public QObject {
    Q_OBJECT

public:
    int answer = 42;

    bool has_calls_waiting() const { return d_ptr->postedEvents > 0; }

private:
    LiveObject live_{this};
};

class OtherTarget : public QObject {
    Q_OBJECT

    LiveObject live_{this};
};

/** Catches exceptions before they leave the event loop, like the library's application object. */
class Application : public QCoreApplication {
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        try {
            return QCoreApplication::notify(receiver, event);
        } catch (const std::runtime_error&) {
            ++exceptions;
            return false;
        }
    }

    int exceptions = 0;
};

Application& application()
{
    static int argument_count = 1;
    static char name[] = "calls";
    static char* arguments[] = {name, nullptr};
    static Application instance(argument_count, arguments);
    return instance;
}

/** Runs `caller` on a thread of its own and serves this thread's events until it has ended. */
template <typename Caller>
void while_serving(Caller caller)
{
    std::atomic<bool> done = false;
    std::thread thread([&] {
        caller();
        done = true;
    });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    thread.join();
}

class Call : public testing::Test {
protected:
    void SetUp() override
    {
        application().exceptions = 0;
        target = std::make_unique<Target>();
    }

    std::unique_ptr<Target> target;
};

}  // namespace

class CallBothWays : public Call, public testing::WithParamInterface<WaitFor> {};

INSTANTIATE_TEST_SUITE_P(Deliveries, CallBothWays,
                         testing::Values(WaitFor::Cleanup, WaitFor::Result), [](const auto& info) {
                             return info.param == WaitFor::Cleanup ? "blocking" : "queued";
                         });

TEST_P(CallBothWays, runs_on_the_targets_thread_and_returns_its_result)
{
    const auto served_on = std::this_thread::get_id();
    while_serving([&] {
        const int result = call<Target>("test", target.get(), GetParam(), -1, [&](Target& target) {
            EXPECT_EQ(std::this_thread::get_id(), served_on);
            return target.answer;
        });
        EXPECT_EQ(result, 42);
    });
}

TEST_P(CallBothWays, returns_the_default_at_once_without_a_target)
{
    const int result =
        call<Target>("test", nullptr, GetParam(), -1, [](Target& target) { return target.answer; });
    EXPECT_EQ(result, -1);
}

TEST_P(CallBothWays, returns_the_default_after_its_target_is_destroyed)
{
    Target* const stale = target.get();
    target.reset();
    while_serving([&] {
        EXPECT_EQ(call<Target>("test", stale, GetParam(), -1,
                               [](Target& target) { return target.answer; }),
                  -1);
    });
}

TEST_P(CallBothWays, returns_the_default_when_its_target_is_destroyed_while_it_waits)
{
    std::atomic<int> result = 0;
    std::thread caller([&] {
        result = call<Target>("test", target.get(), GetParam(), -1,
                              [](Target& target) { return target.answer; });
    });
    while (!target->has_calls_waiting())
        std::this_thread::yield();
    target.reset();
    caller.join();
    EXPECT_EQ(result, -1);
}

TEST_P(CallBothWays, returns_the_default_when_an_object_of_another_class_is_at_the_same_address)
{
    OtherTarget other;
    while_serving([&] {
        EXPECT_EQ(call<Target>("test", &other, GetParam(), -1,
                               [](Target& target) { return target.answer; }),
                  -1);
    });
}

TEST_P(CallBothWays, returns_the_default_when_the_work_throws_and_passes_the_exception_to_the_loop)
{
    while_serving([&] {
        const int result = call<Target>("test", target.get(), GetParam(), -1,
                                        [](Target&) -> int { throw std::runtime_error("broken"); });
        EXPECT_EQ(result, -1);
    });
    EXPECT_EQ(application().exceptions, 1);
}

TEST_P(CallBothWays, returns_also_when_the_work_has_no_result)
{
    int runs = 0;
    while_serving([&] {
        call<Target>("test", target.get(), GetParam(), [&](Target&) { ++runs; });
        EXPECT_EQ(runs, 1);
        call<Target>("test", target.get(), GetParam(),
                     [](Target&) { throw std::runtime_error("broken"); });
    });
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(application().exceptions, 1);
}

TEST_P(CallBothWays, runs_in_the_order_in_which_a_thread_makes_the_calls)
{
    std::string order;
    while_serving([&] {
        for (const char letter : {'a', 'b', 'c', 'd'})
            call<Target>("test", target.get(), GetParam(),
                         [&order, letter](Target&) { order += letter; });
    });
    EXPECT_EQ(order, "abcd");
}

TEST_F(Call, returns_from_a_wait_for_cleanup_when_its_captures_are_destroyed)
{
    auto carried = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = carried;
    while_serving([&] {
        call<Target>("test", target.get(), WaitFor::Cleanup,
                     [carried = std::move(carried)](Target&) {});
        EXPECT_TRUE(watched.expired());
    });
}

TEST_F(Call, completes_for_each_of_many_threads)
{
    std::atomic<int> sum = 0;
    while_serving([&] {
        std::vector<std::thread> callers;
        for (int i = 0; i < 8; ++i) {
            callers.emplace_back([&] {
                for (int n = 0; n < 200; ++n)
                    sum += call<Target>("test", target.get(), WaitFor::Result, 0,
                                        [](Target&) { return 1; });
            });
        }
        for (std::thread& caller : callers)
            caller.join();
    });
    EXPECT_EQ(sum, 1600);
}

TEST_F(Call, that_is_posted_returns_before_it_has_run)
{
    bool ran = false;
    post<Target>("test", target.get(), [&](Target&) { ran = true; });
    EXPECT_FALSE(ran);
    QCoreApplication::processEvents();
    EXPECT_TRUE(ran);
}

TEST_F(Call, that_is_posted_runs_in_order_with_blocking_calls)
{
    std::string order;
    while_serving([&] {
        post<Target>("test", target.get(), [&](Target&) { order += 'a'; });
        call<Target>("test", target.get(), WaitFor::Result, [&](Target&) { order += 'b'; });
    });
    EXPECT_EQ(order, "ab");
}

TEST_F(Call, that_is_posted_does_not_run_after_its_target_is_destroyed)
{
    auto carried = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = carried;
    bool ran = false;
    post<Target>("test", target.get(),
                 [&ran, carried = std::move(carried)](Target&) { ran = true; });
    EXPECT_FALSE(watched.expired());
    Target* const stale = target.get();
    target.reset();
    EXPECT_TRUE(watched.expired()) << "the captures are destroyed with the target";
    post<Target>("test", stale, [&](Target&) { ran = true; });
    post<Target>("test", nullptr, [&](Target&) { ran = true; });
    OtherTarget other;
    post<Target>("test", &other, [&](Target&) { ran = true; });
    QCoreApplication::processEvents();
    EXPECT_FALSE(ran);
}

TEST_F(Call, that_is_posted_and_throws_passes_the_exception_to_the_loop)
{
    post<Target>("test", target.get(), [](Target&) { throw std::runtime_error("broken"); });
    QCoreApplication::processEvents();
    EXPECT_EQ(application().exceptions, 1);
}

// --- Calls from other threads while a callback of the host serves events -------------------------

class CallDuringACallback : public Call {
protected:
    /** Runs `callback` as a callback that serves events once the call of `caller` is pending. */
    template <typename Caller, typename Callback>
    void serve_in_a_callback(Caller caller, Callback callback)
    {
        std::atomic<bool> done = false;
        std::thread thread([&] {
            caller();
            done = true;
        });
        {
            const HostCallbackScope scope;
            while (!target->has_calls_waiting())
                std::this_thread::yield();
            QCoreApplication::processEvents();
            EXPECT_FALSE(done) << "its call returned before it was served";
            callback();
        }
        while (!done)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        thread.join();
    }

    QObject stand_in;
    const QScopedValueRollback<void*> context{MARLUNE_CTX, &stand_in};
};

TEST_F(CallDuringACallback, runs_once_the_callback_has_returned)
{
    for (const WaitFor wait : {WaitFor::Cleanup, WaitFor::Result}) {
        bool under_the_callback = true;
        int result = 0;
        serve_in_a_callback(
            [&] {
                result = call<Target>("test", target.get(), wait, -1, [&](Target& target) {
                    under_the_callback = HostCallbackScope::active();
                    return target.answer;
                });
            },
            [] {});
        EXPECT_FALSE(under_the_callback);
        EXPECT_EQ(result, 42);
    }
}

TEST_F(CallDuringACallback, returns_the_default_when_its_target_is_destroyed_before_its_turn)
{
    int result = 0;
    serve_in_a_callback(
        [&] {
            result = call<Target>("test", target.get(), WaitFor::Cleanup, -1,
                                  [](Target& target) { return target.answer; });
        },
        [&] { run_outside_callbacks(*target, [&](Target&) { target.reset(); }); });
    EXPECT_EQ(result, 42) << "it was posted before its target was destroyed";

    target = std::make_unique<Target>();
    serve_in_a_callback(
        [&] {
            result = call<Target>("test", target.get(), WaitFor::Cleanup, -1,
                                  [](Target& target) { return target.answer; });
        },
        [&] { target.reset(); });
    EXPECT_EQ(result, -1);
}

TEST_F(CallDuringACallback, runs_before_calls_that_are_posted_later)
{
    std::string order;
    const auto note = [&](char letter) { return [&order, letter](Target&) { order += letter; }; };
    serve_in_a_callback(
        [&] {
            post<Target>("test", target.get(), note('a'));
            call<Target>("test", target.get(), WaitFor::Result, note('b'));
        },
        [&] { post<Target>("test", target.get(), note('c')); });
    QCoreApplication::processEvents();
    EXPECT_EQ(order, "abc");
}

TEST_F(CallDuringACallback, is_not_lost_when_one_before_it_throws)
{
    int runs = 0;
    expect_message_matching("broken");
    expect_message_matching("unknown exception");
    serve_in_a_callback(
        [&] {
            post<Target>("test", target.get(), [](Target&) { throw std::runtime_error("broken"); });
            post<Target>("test", target.get(), [](Target&) { throw 1; });
            call<Target>("test", target.get(), WaitFor::Cleanup, [&](Target&) { ++runs; });
        },
        [] {});
    EXPECT_EQ(runs, 1);
}

TEST_F(CallDuringACallback, returns_when_the_waiting_calls_are_dropped)
{
    int result = 0;
    serve_in_a_callback(
        [&] {
            result = call<Target>("test", target.get(), WaitFor::Cleanup, -1,
                                  [](Target& target) { return target.answer; });
        },
        [] { HostCallbackScope::discard_waiting(); });
    EXPECT_EQ(result, -1);
}

TEST(LiveObjects, forget_a_destroyed_object)
{
    auto target = std::make_unique<Target>();
    Target* const address = target.get();
    EXPECT_TRUE(LiveObjects::instance().contains(address));
    target.reset();
    EXPECT_FALSE(LiveObjects::instance().contains(address));
    EXPECT_FALSE(LiveObjects::instance().post(address, [] {}));
}

}  // namespace marlune::test

#include "calls.moc"

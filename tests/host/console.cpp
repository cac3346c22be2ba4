// The console callback: its arguments, its thread, and what it may do.

#include "support/host_view.h"
#include "support/message_log.h"

#include <marlune/app.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace marlune::test {

namespace {

constexpr uint32_t KEY_SPACE = 0x20;

class Console : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(view.load("ConsoleEmitter")); }

    /** Makes the scene emit one message. */
    void emit_message(const std::string& text) { view->key_event(KEY_SPACE, 0, text); }

    /** Runs `call` in the callback of the next message. */
    template <typename Call>
    void in_the_callback(Call call)
    {
        view->set_func_javascript_console_log(
            [call](int, std::string, int, std::string) mutable { call(); });
        emit_message("now");
        view->set_func_javascript_console_log({});
    }

    HostView view;
};

TEST_F(Console, passes_all_four_values)
{
    emit_message("größer 🌊");
    const std::vector<ConsoleRecord> records = view.console().take();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].level, 2);
    EXPECT_EQ(records[0].message, "größer 🌊");
    EXPECT_EQ(records[0].line_number, 42);
    EXPECT_EQ(records[0].source_id, "größe.js");
}

TEST_F(Console, passes_long_and_empty_messages)
{
    const std::string huge(1 << 20, 'x');
    emit_message(huge);
    emit_message("");
    EXPECT_EQ(view.console().take_messages(), (std::vector<std::string>{huge, ""}));
}

TEST_F(Console, is_called_on_one_thread_that_is_not_the_hosts)
{
    emit_message("one");
    std::thread([this] { emit_message("other"); }).join();
    const std::vector<ConsoleRecord> records = view.console().take();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_NE(records[0].thread, std::this_thread::get_id());
    EXPECT_EQ(records[0].thread, records[1].thread);
}

TEST_F(Console, notifies_the_callback_of_its_own_view_only)
{
    HostView other;
    ASSERT_TRUE(other.load("ConsoleEmitter"));
    emit_message("mine");
    EXPECT_EQ(other.console().take_messages(), std::vector<std::string>());
    EXPECT_EQ(view.console().take_messages(), std::vector<std::string>{"mine"});
}

TEST_F(Console, calls_the_last_callback_that_was_set)
{
    const auto log = std::make_shared<ConsoleLog>();
    view->set_func_javascript_console_log(write_to(log));
    emit_message("text");
    EXPECT_EQ(log->take_messages(), std::vector<std::string>{"text"});
    EXPECT_EQ(view.console().take_messages(), std::vector<std::string>());
}

TEST_F(Console, calls_nothing_when_the_callback_is_empty)
{
    view->set_func_javascript_console_log({});
    emit_message("text");
    EXPECT_EQ(view.console().take_messages(), std::vector<std::string>());
}

TEST_F(Console, keeps_its_callback_when_the_scene_is_loaded_again)
{
    view->reset();
    ASSERT_TRUE(view.load("ConsoleEmitter"));
    emit_message("text");
    EXPECT_EQ(view.console().take_messages(), std::vector<std::string>{"text"});
}

TEST_F(Console, releases_the_callback_with_the_view)
{
    const auto token = std::make_shared<int>();
    view->set_func_javascript_console_log([token](int, std::string, int, std::string) {});
    EXPECT_GT(token.use_count(), 1);
    view->destroy();
    EXPECT_TRUE(wait_until([&] { return token.use_count() == 1; }));
}

TEST_F(Console, lets_a_callback_keep_its_state)
{
    int last = 0;
    view->set_func_javascript_console_log(
        [&last, calls = 0](int, std::string, int, std::string) mutable { last = ++calls; });
    emit_message("one");
    emit_message("two");
    emit_message("three");
    EXPECT_EQ(last, 3);
}

TEST_F(Console, survives_a_callback_that_destroys_its_view_when_it_is_replaced)
{
    struct Owner {
        MView view;
        ~Owner() { view.destroy(); }
    };
    view->set_func_javascript_console_log(
        [owner = std::make_shared<Owner>(view.facade())](int, std::string, int, std::string) {});
    view->set_func_javascript_console_log({});
    EXPECT_EQ(view->get_resolution(), std::tuple(0u, 0u)) << "the view is destroyed";
}

TEST_F(Console, survives_a_callback_that_throws)
{
    expect_message_matching("the host's own trouble");
    in_the_callback([] { throw std::runtime_error("the host's own trouble"); });
    emit_message("text");
}

TEST_F(Console, lets_a_callback_read_the_view_at_once)
{
    std::tuple<uint32_t, uint32_t> resolution;
    uint64_t texture = 0;
    in_the_callback([&] {
        resolution = view->get_resolution();
        texture = view->get_texture();
    });
    EXPECT_EQ(resolution, std::tuple(512u, 256u));
    EXPECT_EQ(texture, view->get_texture());
}

TEST_F(Console, lets_a_callback_replace_itself)
{
    in_the_callback([this] {
        view->set_func_javascript_console_log({});
        view->render();
        view->mouse_move(1, 1);
    });
    emit_message("text");
    EXPECT_EQ(view.console().take_messages(), std::vector<std::string>());
}

TEST_F(Console, delays_a_reset_until_the_callback_has_returned)
{
    const uint64_t texture = view->get_texture();
    in_the_callback([this] { view->reset(); });
    EXPECT_TRUE(wait_until([&] {
        emit_message("text");
        return view.console().take_messages().empty();
    })) << "the scene is destroyed";
    EXPECT_EQ(view->get_texture(), texture);
    EXPECT_TRUE(view.load("ConsoleEmitter"));
}

TEST_F(Console, delays_a_destroy_until_the_callback_has_returned)
{
    MView stale = view.facade();
    in_the_callback([this] { view->destroy(); });
    EXPECT_TRUE(wait_until([&] { return stale.get_refresh_rate() == 60; }));
    EXPECT_EQ(view->get_texture(), 0u);
}

TEST_F(Console, refuses_to_load_from_a_callback)
{
    expect_message_matching("a callback cannot load");
    bool loaded = true;
    in_the_callback([&] { loaded = view.load("Quadrants"); });
    EXPECT_FALSE(loaded);
    EXPECT_TRUE(view.load("Quadrants"));
}

/** Serves events for a while, so that the calls of other threads can arrive. */
template <typename Serve>
void serve_a_while(Serve serve)
{
    for (int i = 0; i < 200; ++i) {
        serve();
        std::this_thread::yield();
    }
}

TEST_F(Console, keeps_the_calls_of_other_threads_waiting_while_a_callback_serves_events)
{
    const std::function<void()> ways_to_serve_events[] = {
        [] { M::processEvents(); },
        [this] { view->key_event(0, 1, ""); },
    };
    for (const auto& serve : ways_to_serve_events) {
        HostView other;
        ASSERT_TRUE(other.load("Quadrants"));
        const MView stale = other.facade();
        std::thread caller;
        std::atomic<bool> calls = false, destroyed = false;
        in_the_callback([&] {
            caller = std::thread([&] {
                calls = true;
                other->destroy();
                destroyed = true;
            });
            while (!calls)
                std::this_thread::yield();
            serve_a_while(serve);
            EXPECT_FALSE(destroyed) << "the view must not be destroyed yet";
            EXPECT_NE(stale.get_texture(), 0u);
        });
        caller.join();
        EXPECT_EQ(stale.get_texture(), 0u);
    }
}

TEST_F(Console, lets_other_threads_load_while_a_callback_serves_events)
{
    HostView other;
    std::thread caller;
    std::atomic<bool> calls = false, loaded = false;
    in_the_callback([&] {
        caller = std::thread([&] {
            calls = true;
            loaded = other.load("Quadrants");
        });
        while (!calls)
            std::this_thread::yield();
        serve_a_while([] { M::processEvents(); });
    });
    caller.join();
    EXPECT_TRUE(loaded);
}

TEST_F(Console, lets_a_callback_create_and_destroy_a_view)
{
    std::tuple<uint32_t, uint32_t> resolution;
    in_the_callback([&] {
        MQuickView made;
        resolution = made.get_resolution();
        made.destroy();
    });
    EXPECT_EQ(resolution, std::tuple(1920u, 1080u));
}

}  // namespace

}  // namespace marlune::test

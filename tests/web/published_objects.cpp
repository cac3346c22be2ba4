// Objects that a host publishes on web views, used by the scene of a QML view.

#include "support/message_log.h"
#include "support/web/host_object.h"
#include "support/web/host_web_view.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace marlune::test {

using namespace db;

namespace {

constexpr auto INT = VariantTypeStd::INT;
constexpr auto STRING = VariantTypeStd::STRING;

/** What a test does in a callback of the host, on the Qt thread. */
using Work = std::function<void()>;

/** A player of a game, with a property "health", a method "heal" and a signal "hit". */
class Player : public HostObject {
public:
    explicit Player(int32_t points = 100, const std::string& name = "player")
        : HostObject(name),
          health_(property("health", INT, ValueStd(points))),
          hit_(signal("hit", {{INT, "points"}, {STRING, "weapon"}}))
    {
        const auto heal = [this](MethodInfoStd*, std::vector<ContainerStd> values, auto) {
            const std::lock_guard lock(mutex_);
            calls_.push_back(std::move(values));
            return ValueStd(7);
        };
        method("heal", {{INT, "points"}}, heal, INT);
        health_.func_valueChanged_updateGodot = [this](PropertyInfoStd*) {
            ++writes;
            if (on_write)
                on_write();
        };
    }

    int32_t health()
    {
        const ValueLock lock;
        return std::get<int32_t>(std::get<ValueStd>(health_.value));
    }
    void set_health(int32_t points)
    {
        {
            const ValueLock lock;
            health_.value = ValueStd(points);
        }
        health_.func_valueChanged_updateQt(&health_);
    }
    void be_hit() { hit_.func_emit_signal(&hit_, {ValueStd(3), ValueStd("axe")}, {INT, STRING}); }

    std::vector<std::vector<ContainerStd>> calls()
    {
        const std::lock_guard lock(mutex_);
        return calls_;
    }

    std::atomic<int> writes = 0;
    /** Set before any scene can write. */
    Work on_write;

private:
    PropertyInfoStd& health_;
    MethodInfoStd& hit_;
    std::mutex mutex_;
    std::vector<std::vector<ContainerStd>> calls_;
};

class PublishedObjects : public testing::Test {
protected:
    PublishedObjects()
    {
        // Qt writes it for each object that is published while a page is open.
        allow_messages_matching("^Registered new object after initialization");
    }

    static void publish(HostWebView& web, Player& player)
    {
        web->webchannel_registerObject(player.record().name, &player.record());
    }

    testing::AssertionResult load_scene()
    {
        return scene.load("PublishedProbe")
            ? testing::AssertionSuccess()
            : testing::AssertionFailure() << "the scene does not load";
    }

    /** Waits for a message of the scene and takes it. */
    testing::AssertionResult says(const std::string& message)
    {
        const auto is_it = [&](const ConsoleRecord& record) { return record.message == message; };
        if (scene.draw_until([&] { return scene.console().take_first(is_it).has_value(); }))
            return testing::AssertionSuccess();
        testing::AssertionResult failure = testing::AssertionFailure();
        failure << "the scene has not written \"" << message << '"';
        for (const std::string& other : scene.console().take_messages())
            failure << ", but \"" << other << '"';
        return failure;
    }

    /** The message that the scene writes at a key. */
    testing::AssertionResult says_to(const std::string& key, const std::string& message)
    {
        scene.type(static_cast<uint32_t>(key.at(0)), key);
        return says(message);
    }

    // The records of a view's objects outlive it.
    Player player;
    HostWebView web;
    HostView scene;
};

}  // namespace

TEST_F(PublishedObjects, are_found_by_a_scene_that_is_loaded_later)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("p", "now 100"));
    EXPECT_TRUE(says_to("l", "names player"));
}

TEST_F(PublishedObjects, come_to_a_scene_that_is_loaded_already)
{
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("l", "names "));
    publish(web, player);
    EXPECT_TRUE(says("player has come with 100")) << "bindings are up to date by then";
}

TEST_F(PublishedObjects, that_wait_for_their_views_loading_are_not_there_before)
{
    publish(web, player);
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("l", "names "));
    ASSERT_TRUE(web.open("about:blank"));
    EXPECT_TRUE(says("player has come with 100"));
}

TEST_F(PublishedObjects, stay_when_the_scene_of_their_view_goes)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    web->reset();
    player.set_health(60);
    EXPECT_TRUE(says("points 60"));
    ASSERT_TRUE(web.open("about:blank"));
    player.set_health(50);
    EXPECT_TRUE(says("points 50"));
}

TEST_F(PublishedObjects, serve_one_scene_after_the_other)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("p", "now 100"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("p", "now 100"));
    player.be_hit();
    EXPECT_TRUE(says("player.hit(3,axe)"));
    EXPECT_TRUE(says_to("l", "names player"));
    for (const std::string& message : scene.console().take_messages())
        EXPECT_NE(message, "player.hit(3,axe)") << "the previous scene still receives the signal";
}

TEST_F(PublishedObjects, notify_bindings_of_changes_by_the_host)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("p", "now 100"));
    player.set_health(80);
    EXPECT_TRUE(says("points 80"));
    EXPECT_EQ(player.writes, 0) << "the host is notified of its own change";
}

TEST_F(PublishedObjects, notify_the_host_and_bindings_of_writes_by_a_scene)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("d", "points 70"));
    EXPECT_TRUE(wait_until([&] { return player.writes == 1; }));
    EXPECT_EQ(player.health(), 70);
}

TEST_F(PublishedObjects, answer_calls_at_once)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("h", "healed 7"));
    EXPECT_EQ(player.calls(), (std::vector<std::vector<ContainerStd>>{{ValueStd(5.0)}}));
}

TEST_F(PublishedObjects, answer_calls_that_are_made_on_themselves)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("i", "invoked 7"));
    EXPECT_EQ(player.calls(),
              (std::vector<std::vector<ContainerStd>>{{ValueStd(R"([1,{"two":2}])")}}));
}

TEST_F(PublishedObjects, notify_scenes_of_signals_of_the_host)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    player.be_hit();
    EXPECT_TRUE(says("player.hit(3,axe)"));
}

TEST_F(PublishedObjects, that_do_not_exist_are_null)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("n", "nothing nullnullnull"));
}

TEST_F(PublishedObjects, that_do_not_exist_cannot_be_called)
{
    expect_message("cannot call method 'nobody.heal', no web view publishes the object. See "
                   "PublishedObjects.names for the published objects.");
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("u", "undefined undefined"));
}

TEST_F(PublishedObjects, become_null_when_they_are_withdrawn)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("k", "kept 100"));
    web->webchannel_deregisterObject("player");
    EXPECT_TRUE(says("player has gone with -1")) << "bindings are up to date by then";
    EXPECT_TRUE(says_to("K", "still kept undefined"));
    EXPECT_TRUE(says_to("l", "names "));
    publish(web, player);
    EXPECT_TRUE(says("player has come with 100"));
}

TEST_F(PublishedObjects, become_null_when_their_view_is_destroyed)
{
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("k", "kept 100"));
    web->destroy();
    EXPECT_TRUE(says("player has gone with -1")) << "bindings are up to date by then";
    EXPECT_TRUE(says_to("K", "still kept undefined"));
    EXPECT_TRUE(says_to("l", "names "));
}

TEST_F(PublishedObjects, may_be_withdrawn_while_a_scene_writes_to_them)
{
    player.on_write = [this] { web->webchannel_deregisterObject("player"); };
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("d", "player has gone with -1"));
    EXPECT_TRUE(says_to("l", "names "));
}

TEST_F(PublishedObjects, may_lose_their_view_while_a_scene_writes_to_them)
{
    player.on_write = [this] { web->destroy(); };
    publish(web, player);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("d", "player has gone with -1"));
    EXPECT_TRUE(says_to("l", "names "));
}

TEST_F(PublishedObjects, of_all_web_views_are_found)
{
    Player dragon(900, "dragon");
    HostWebView second;
    ASSERT_TRUE(load_scene());
    publish(web, player);
    publish(second, dragon);
    ASSERT_TRUE(second.open("about:blank"));
    ASSERT_TRUE(web.open("about:blank"));
    EXPECT_TRUE(says("dragon has come with -1"));
    EXPECT_TRUE(says("player has come with 100"));
    EXPECT_TRUE(says_to("l", "names dragon,player"));
}

TEST_F(PublishedObjects, of_one_name_are_those_of_the_view_that_was_made_first)
{
    Player other(1);
    HostWebView second;
    publish(web, player);
    publish(second, other);
    // The views load in the opposite order, which must not matter.
    ASSERT_TRUE(second.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("p", "now 1"));
    ASSERT_TRUE(web.open("about:blank"));
    EXPECT_TRUE(says("points 100"));
    EXPECT_TRUE(says_to("l", "names player"));

    other.set_health(2);
    other.be_hit();
    player.set_health(90);
    EXPECT_TRUE(says("points 90"));
    for (const std::string& message : scene.console().take_messages())
        EXPECT_NE(message, "player.hit(3,axe)")
            << "the scene has received the signal of another player";
}

TEST_F(PublishedObjects, of_one_name_take_the_place_of_one_whose_view_is_destroyed)
{
    Player other(1);
    HostWebView second;
    publish(web, player);
    publish(second, other);
    ASSERT_TRUE(web.open("about:blank"));
    ASSERT_TRUE(second.open("about:blank"));
    ASSERT_TRUE(load_scene());
    EXPECT_TRUE(says_to("p", "now 100"));
    web->destroy();
    EXPECT_TRUE(says("points 1"));
    other.be_hit();
    EXPECT_TRUE(says("player.hit(3,axe)"));
}

}  // namespace marlune::test

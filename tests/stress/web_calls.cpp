// A page and a host exchange many calls: none is lost, doubled or out of order.

#include "support/process/endurance.h"
#include "support/web/host_object.h"
#include "support/web/host_web_view.h"
#include "support/web/resource_pack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

using namespace db;

namespace {

using namespace std::chrono_literals;

constexpr auto INT = VariantTypeStd::INT;
constexpr auto MUCH_TIME = 60s;

constexpr auto PAGE = R"(<!doctype html><title>calls</title><script>
addEventListener("godot.ready", () => console.log("ready"));
const is_count = (list, from) => list.every((value, i) => value === from + i);
</script>)";

std::vector<int> count_from_0(int count)
{
    std::vector<int> result(static_cast<size_t>(count));
    std::iota(result.begin(), result.end(), 0);
    return result;
}

int number(const ContainerStd& value)
{
    const auto& single = std::get<ValueStd>(value);
    if (const auto* const whole = std::get_if<int32_t>(&single))
        return *whole;
    return static_cast<int>(std::get<double>(single));
}

/** What comes on the Qt thread, for the test's. */
class Numbers {
public:
    void add(int number)
    {
        const std::lock_guard lock(mutex_);
        numbers_.push_back(number);
    }
    std::vector<int> all()
    {
        const std::lock_guard lock(mutex_);
        return numbers_;
    }
    size_t size()
    {
        const std::lock_guard lock(mutex_);
        return numbers_.size();
    }

private:
    std::mutex mutex_;
    std::vector<int> numbers_;
};

class WebCalls : public testing::Test {
protected:
    WebCalls()
        : level(game.property("level", INT, ValueStd(-1))),
          tick(game.signal("tick", {{INT, "thread"}, {INT, "number"}}))
    {
        game.method(
            "add_one", {{INT, "number"}},
            [this](MethodInfoStd*, std::vector<ContainerStd> values, auto) {
                calls.add(number(values.at(0)));
                return ValueStd(number(values.at(0)) + 1);
            },
            INT);
        level.func_valueChanged_updateGodot = [this](PropertyInfoStd* property) {
            writes.add(number(property->value));
        };
        view->webchannel_registerObject("game", &game.record());
    }

    void SetUp() override
    {
        ASSERT_TRUE(view.open("res://pack/"));
        ASSERT_TRUE(view.wait_for_console("ready"));
    }

    testing::AssertionResult comes(const std::string& message)
    {
        watchdog.step();
        return view.wait_for_console(message);
    }

    const int count = times(2'000, 10'000);
    const std::string count_text = std::to_string(count);

    Watchdog watchdog{MUCH_TIME};
    Numbers calls, writes;
    HostObject game{"game"};
    PropertyInfoStd& level;
    MethodInfoStd& tick;
    ResourcePack pack{{"/index.html", PAGE}};
    HostWebView view;
};

}  // namespace

TEST_F(WebCalls, of_a_page_are_served_in_their_order_one_by_one)
{
    view.run("(async () => { const results = [];"
             "for (let i = 0; i < "
             + count_text
             + "; ++i)"
               "    results.push(await $g.game.add_one(i));"
               "console.log('results ' + results.length + ' ' + is_count(results, 1)); })()");
    EXPECT_TRUE(comes("results " + count_text + " true"));
    EXPECT_EQ(calls.all(), count_from_0(count));
}

TEST_F(WebCalls, of_a_page_are_served_in_their_order_all_at_once)
{
    view.run("Promise.all(Array.from({length: " + count_text
             + "}, (_, i) => $g.game.add_one(i)))"
               ".then(results => console.log("
               "    'results ' + results.length + ' ' + is_count(results, 1)))");
    EXPECT_TRUE(comes("results " + count_text + " true"));
    EXPECT_EQ(calls.all(), count_from_0(count));
}

TEST_F(WebCalls, of_signals_come_to_the_page_in_the_order_of_each_thread)
{
    constexpr int threads = 4;
    view.run("const heard = Array.from({length: 4}, () => []);"
             "$g.game.tick.connect((thread, number) => heard[thread].push(number));"
             "console.log('listening')");
    ASSERT_TRUE(comes("listening"));
    {
        std::vector<std::jthread> emitters;
        for (int thread = 0; thread < threads; ++thread) {
            emitters.emplace_back([&, thread] {
                for (int i = 0; i < count / threads; ++i)
                    tick.func_emit_signal(&tick, {ValueStd(thread), ValueStd(i)}, {INT, INT});
            });
        }
    }
    const std::string each = std::to_string(count / threads);
    EXPECT_TRUE(view.draw_until(
        [&] {
            return view.evaluate("heard.every(list => list.length === " + each + ")") == "true";
        },
        MUCH_TIME));
    EXPECT_EQ(view.evaluate("heard.every(list => is_count(list, 0))"), "true");
}

TEST_F(WebCalls, of_changes_come_to_the_page_in_order_up_to_the_last)
{
    view.run("const heard = [];"
             "$g.game.level.on('changed', value => heard.push(value));"
             "console.log('listening')");
    ASSERT_TRUE(comes("listening"));
    for (int i = 0; i < count; ++i) {
        {
            const ValueLock lock;
            level.value = ValueStd(i);
        }
        level.func_valueChanged_updateQt(&level);
    }
    // A change that the page has not been sent yet gives way to a later one of the same property.
    const std::string last = std::to_string(count - 1);
    EXPECT_TRUE(view.draw_until([&] { return view.evaluate("heard.at(-1)") == last; }, MUCH_TIME));
    EXPECT_EQ(view.evaluate("heard.every((value, i) => value >= (heard[i - 1] ?? 0))"), "true");
    EXPECT_EQ(view.evaluate("$g.game.level.value"), last);
}

TEST_F(WebCalls, of_writes_reach_the_host_each_and_in_order)
{
    view.run("for (let i = 0; i < " + count_text + "; ++i) $g.game.level.value = i");
    EXPECT_TRUE(view.draw_until([&] { return writes.size() == size_t(count); }, MUCH_TIME));
    EXPECT_EQ(writes.all(), count_from_0(count));
}

TEST_F(WebCalls, of_all_kinds_at_once_do_not_get_into_each_other_s_way)
{
    view.run("const heard = [];"
             "$g.game.tick.connect((thread, number) => heard.push(number));"
             "console.log('listening')");
    ASSERT_TRUE(comes("listening"));
    const std::jthread emitter([&] {
        for (int i = 0; i < count; ++i)
            tick.func_emit_signal(&tick, {ValueStd(0), ValueStd(i)}, {INT, INT});
    });
    view.run("(async () => { const results = [];"
             "for (let i = 0; i < "
             + count_text
             + "; ++i) {"
               "    $g.game.level.value = i;"
               "    results.push($g.game.add_one(i)); }"
               "const all = await Promise.all(results);"
               "console.log('results ' + all.length + ' ' + is_count(all, 1)); })()");
    EXPECT_TRUE(comes("results " + count_text + " true"));
    EXPECT_EQ(calls.all(), count_from_0(count));
    EXPECT_EQ(writes.all(), count_from_0(count)) << "a write goes before the call after it";
    EXPECT_TRUE(view.draw_until(
        [&] { return view.evaluate("heard.length === " + count_text) == "true"; }, MUCH_TIME));
    EXPECT_EQ(view.evaluate("is_count(heard, 0)"), "true");
}

}  // namespace marlune::test

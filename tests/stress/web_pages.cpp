// Pages and web views are created and destroyed: this process and the engine's release their
// memory.

#include "support/process/endurance.h"
#include "support/process/memory.h"
#include "support/process/processes.h"
#include "support/web/host_object.h"
#include "support/web/host_web_view.h"
#include "support/web/resource_pack.h"

#include <marlune/options.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>

namespace marlune::test {

using namespace db;

namespace {

// A screen of a game: it draws, keeps something, and talks with the game's object.
constexpr auto PAGE = R"(<!doctype html><link rel=stylesheet href=style.css>
<canvas id=canvas></canvas><img src=picture.svg><p>The quick brown fox
<script>
const kept = Array.from({length: 1000}, (_, i) => ({i}));
const canvas = document.getElementById("canvas").getContext("2d");
requestAnimationFrame(function draw(time) {
    canvas.fillRect(0, 0, time % 200, 100);
    requestAnimationFrame(draw);
});
addEventListener("godot.ready", async () => {
    $g.game.health.on("changed", () => {});
    $g.game.over.connect(() => {});
    console.log("served " + await $g.game.score(1));
});
</script>)";

/** What a game publishes to each of its pages. */
class Game : public HostObject {
public:
    Game() : HostObject("game")
    {
        property("health", VariantTypeStd::INT, ValueStd(100));
        signal("over");
        method(
            "score", {{VariantTypeStd::INT, "points"}}, [](auto...) { return ValueStd(1); },
            VariantTypeStd::INT);
    }
};

/** The memory of this process, and of all processes. */
struct Trends {
    HoldingsTrend own, all;

    void sample()
    {
        own.sample();
        all.sample(holdings_with_descendants());
    }
};

/** In KiB a step. A page that is kept costs 600 or more, and a view 18,000. */
void expect_flat(const Trends& trends, int steps_a_sample, double tolerated_kib)
{
    const double own = trends.own.growth_kib() / steps_a_sample;
    const double all = trends.all.growth_kib() / steps_a_sample;
    std::cout << "this process: " << trends.own.report() << ", " << own << " KiB a step\n"
              << "all processes: " << trends.all.report() << ", " << all << " KiB a step\n";
    testing::Test::RecordProperty("growth_kib_a_step", std::to_string(own));
    testing::Test::RecordProperty("growth_of_all_kib_a_step", std::to_string(all));
    if (!memory_is_held_back()) {
        EXPECT_LT(own, tolerated_kib);
        // A few pages show nothing about the engine's processes, which release memory at any time.
        if (is_soak()) {
            EXPECT_LT(all, tolerated_kib);
        }
    }
}

/**
 * Lets tests collect a page process's garbage: pages that are gone stay there for hundreds of MiB, in
 * any browser. The engine takes flags from the environment when the library has none for it, which is
 * so with a sandbox; that itself is left out, since it would not let tests run as root.
 */
void start_with_garbage_collection()
{
    opts::SANDBOXED = true;
    setenv("QTWEBENGINE_DISABLE_SANDBOX", "1", 1);
    setenv("QTWEBENGINE_CHROMIUM_FLAGS", "--js-flags=--expose-gc", 1);
    start_library();
}

// In KiB a step. What the engine fills once, its caches and tables, weighs more in the brief form.
double tolerated_of_a_page()
{
    return is_soak() ? 32 : 256;
}

double tolerated_of_a_view()
{
    return is_soak() ? 256 : 2048;
}

class WebPages : public testing::Test {
protected:
    static void SetUpTestSuite() { start_with_garbage_collection(); }

    WebPages()
    {
        pack_.put("/page.html", PAGE);
        pack_.put("/style.css", "body { background: url(picture.svg) }");
        pack_.put("/picture.svg",
                  "<svg xmlns='http://www.w3.org/2000/svg' width='99' height='99'></svg>");
    }

    /** A view with the game, to be loaded. */
    void publish(HostWebView& view) { view->webchannel_registerObject("game", &game_.record()); }

    Game game_;
    ResourcePack pack_;
    Watchdog watchdog_;
};

}  // namespace

TEST_F(WebPages, one_after_the_other_in_one_view_leave_memory_flat)
{
    const int steps_a_sample = times(3, 10);
    HostWebView view;
    publish(view);
    ASSERT_TRUE(view.open("res://pack/page.html"));
    Trends trends;
    size_t most_processes = 0;
    for (int i = 1; i <= times(60, 1000); ++i) {
        ASSERT_TRUE(view.wait_for_console("served 1"));
        ASSERT_TRUE(view.go_to("res://pack/page.html?" + std::to_string(i)));
        view.draw_frame();
        watchdog_.step();
        if (i % steps_a_sample)
            continue;
        view.evaluate("gc()");
        trends.sample();
        most_processes = std::max(most_processes, page_processes().size());
    }
    expect_flat(trends, steps_a_sample, tolerated_of_a_page());
    EXPECT_LE(most_processes, 2u) << "a page takes one, and the engine keeps one in reserve";
}

TEST_F(WebPages, in_views_that_come_and_go_leave_memory_flat)
{
    Trends trends;
    for (int i = 0; i < times(40, 100); ++i) {
        {
            HostWebView view;
            publish(view);
            ASSERT_TRUE(view.open("res://pack/page.html"));
            ASSERT_TRUE(view.wait_for_console("served 1"));
            view.draw_frame();
            view.evaluate("gc()");
        }
        watchdog_.step();
        trends.sample();
    }
    expect_flat(trends, 1, tolerated_of_a_view());
    // The last view's own may still be on their way out.
    EXPECT_LE(trends.own.last().files, trends.own.after_warm_up().files + 8);
    EXPECT_LE(trends.own.last().threads, trends.own.after_warm_up().threads + 4);
    EXPECT_TRUE(wait_until([] { return page_processes().size() <= 1; }))
        << page_processes().size() << " processes hold pages that have been destroyed";
}

}  // namespace marlune::test

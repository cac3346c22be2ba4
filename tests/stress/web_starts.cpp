// A game starts and shows a web page, many times, each in a process of its own. The engine's
// threads start while the host creates its device, and must not conflict with it.

#include "support/library.h"
#include "support/process/endurance.h"
#include "support/process/scenarios.h"
#include "support/vulkan/vulkan_host.h"
#include "support/web/host_web_view.h"
#include "support/web/resource_pack.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

// --- What happens in the processes -------------------------------------------------------------

constexpr auto PAGE = R"(<body style="background: #00ff00"><script>
let frames = 0;
requestAnimationFrame(function count() { ++frames; requestAnimationFrame(count); });
</script>)";

void require_page(HostWebView& view)
{
    require(view.wait_for_load(Load::SUCCEEDED), "the page loads");
    require(view.wait_for_colour(100, 100, GREEN), "the page is drawn");
}

/** Requests the page and begins to draw, but does not wait for it. */
std::unique_ptr<HostWebView> begin_view()
{
    auto view = std::make_unique<HostWebView>();
    view->facade().set_url("res://pack/");
    require(testing::AssertionResult(view->facade().load()), "the scene stands");
    return view;
}

void page_shown()
{
    {
        ResourcePack pack({{"/index.html", PAGE}});
        require_page(*begin_view());
    }
    M::destroy();
    release_host();
}

/** Draws a view all the time, as a game's own loop does. */
std::jthread draw_on(HostWebView& view)
{
    return std::jthread([&view](std::stop_token stop) {
        while (!stop.stop_requested()) {
            {
                const std::lock_guard lock(host().queue());
                view.render();
            }
            std::this_thread::sleep_for(1ms);  // for the other one to get its turn
        }
    });
}

void second_view_made_while_the_first_renders()
{
    {
        ResourcePack pack({{"/index.html", PAGE}});
        const auto first = begin_view();
        const auto second = std::make_unique<HostWebView>();
        {
            const std::jthread drawing = draw_on(*first);
            second->facade().set_url("res://pack/");
            const std::lock_guard lock(host().queue());
            require(testing::AssertionResult(second->facade().load()), "the second scene stands");
        }
        require_page(*first);
        require_page(*second);
        require(testing::AssertionResult(first->evaluate("frames > 0") == "true"),
                "the first page goes on");
    }
    M::destroy();
    release_host();
}

const Scenarios SCENARIOS = {
    {"page_shown", page_shown},
    {"second_view_made_while_the_first_renders", second_view_made_while_the_first_renders},
};

// --- What is asked of each of them -------------------------------------------------------------

const std::vector<std::regex> KNOWN_LINES = {
    // The engine finds no GPU on such a machine, and reports the features that it disables.
    std::regex("ERROR:context_group\\.cc.* WebGL1 blocklisted"),
    std::regex("ERROR:command_buffer_proxy_impl\\.cc.* ContextResult::kTransientFailure"),
};

class WebStarts : public testing::TestWithParam<std::string> {};

TEST_P(WebStarts, succeed_every_time)
{
    for (int i = 0; i < times(3, 200) && !HasFailure(); ++i) {
        SCOPED_TRACE("start " + std::to_string(i));
        EXPECT_EQ(lines_of_scenario(GetParam(), KNOWN_LINES), std::vector<std::string>());
    }
}

INSTANTIATE_TEST_SUITE_P(Process, WebStarts, testing::ValuesIn(SCENARIOS.names()),
                         [](const auto& test) { return test.param; });

}  // namespace

}  // namespace marlune::test

// Devices that cannot import the engine's frames. Each case runs in a process of its own, because
// the engine reads its flags once.

#include "support/library.h"
#include "support/message_log.h"
#include "support/process/scenarios.h"
#include "support/web/host_web_view.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace marlune::test {

namespace {

constexpr auto green_page = "<body style='background: rgb(0, 255, 0)'>";
constexpr auto refusal =
    "WebView 1: the web engine renders on the GPU, but the host's Vulkan device cannot import "
    "its frames. Create the device with VK_KHR_external_memory_fd, or set GPU_DISABLED before the "
    "start.";

// The engine treats software Vulkan as a GPU when its block list is disabled. The user sets the
// engine's flags where the library sets none.
void draw_on_hardware()
{
    setenv("QTWEBENGINE_CHROMIUM_FLAGS", "--no-sandbox --ignore-gpu-blocklist", 1);
    opts::SANDBOXED = true;
    install_message_log();
    HostWebView view;
    expect_message(refusal);
    MWebView& facade = view.facade();
    facade.set_url("data:text/html,page");
    const bool loaded = facade.load();
    const bool refused = view.draw_until(all_expected_messages_came);
    // Calls about a page that is not shown return.
    facade.load_html(green_page, "");
    facade.run_javascript("1");
    facade.reload();
    const bool answered = !facade.can_go_back();
    const bool says_so = view.draw_until([&] { return bool(shows_something(view.picture(), "")); });
    facade.destroy();
    end_scenario(loaded && refused && answered && says_so,
                 "the view says that it cannot draw the page");
}

void draw_without_hardware()
{
    opts::GPU_DISABLED = true;
    HostWebView view;
    const bool shown = view.show_html(green_page) && view.wait_for_colour(100, 100, GREEN);
    view.facade().destroy();
    end_scenario(shown, "GPU_DISABLED shows the page on any device");
}

const Scenarios SCENARIOS = {
    {"hardware", draw_on_hardware},
    {"no-hardware", draw_without_hardware},
};

}  // namespace

TEST(WebHardware, on_a_device_without_external_memory_shows_a_notice_and_does_not_crash)
{
    EXPECT_TRUE(ends_cleanly("hardware"));
}

TEST(WebHardware, can_be_switched_off)
{
    EXPECT_TRUE(ends_cleanly("no-hardware"));
}

}  // namespace marlune::test

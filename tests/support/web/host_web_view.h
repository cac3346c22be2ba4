#pragma once

#include "support/host_view.h"
#include "support/input.h"

#include <marlune/mweb_view.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

/** What a web view has said of loading, once. */
struct Load {
    enum Status { STARTED, STOPPED, SUCCEEDED, FAILED };

    int status = STARTED;
    std::string url;
    std::string error_domain;
    std::string error_string;
    int error_code = 0;
    std::thread::id thread;
};

std::ostream& operator<<(std::ostream& out, const Load& load);

/** All that a view has said of loading, in the order in which it came. For any thread. */
class LoadLog {
public:
    void add(Load load);
    std::vector<Load> all();

private:
    std::mutex mutex_;
    std::vector<Load> loads_;
};

/** A callback that writes to `log`, which it keeps alive: it may come when a test's view is gone. */
MWebView::LoadingChanged write_to(std::shared_ptr<LoadLog> log);

/**
 * A view of web pages with a zoom of 100 %, so that a px of a page is one of the texture. What waits
 * draws frames meanwhile. An AssertionResult says what was there instead of what was awaited.
 *
 * @code
 * HostWebView view;
 * ASSERT_TRUE(view.open(server.url("/")));
 * ASSERT_TRUE(view.wait_until_drawn());
 * view.click(20, 20);
 * EXPECT_TRUE(view.wait_for_console("clicked"));
 * EXPECT_EQ(view.evaluate("document.title"), "\"Page\"");
 * @endcode
 */
class HostWebView : public HostViewOf<MWebView> {
public:
    explicit HostWebView(Size resolution = {}, VulkanHost& host = test::host());

    /** Makes the scene anew, with a page, and waits until the page has been loaded. */
    testing::AssertionResult open(const std::string& url);

    /** Goes to another page in the scene that there is, and waits until it has been loaded. */
    testing::AssertionResult go_to(const std::string& url);

    /** Shows a text as a page, in the scene that there is or in a new one, and waits likewise. */
    testing::AssertionResult show_html(const std::string& html,
                                       const std::string& base_url = "res://test/");

    /**
     * Waits until the page has been drawn: the engine drops mouse and keys that come earlier. Needs a
     * page that runs scripts.
     */
    testing::AssertionResult wait_until_drawn();

    /** All that has been said of loading so far. */
    std::vector<Load> loads() { return loads_->all(); }

    /** Waits until the view has said something of this status, counted from the record `first` on. */
    testing::AssertionResult wait_for_load(Load::Status status, size_t first = 0);

    /** Runs a script in the page. */
    void run(const std::string& script) { facade().run_javascript(script); }

    /**
     * The value of an expression of the page as JSON; a promise is waited for. "undefined" for what has
     * no JSON, "threw ..." for an exception. When no answer comes, as with a page that runs no scripts,
     * the running test fails.
     */
    std::string evaluate(const std::string& expression);

    /** Waits for a message of the console and takes it: to wait once more is to wait for another one. */
    testing::AssertionResult wait_for_console(const std::string& message);

    /** The messages since the last look, but for those that something has waited for. */
    std::vector<std::string> console_messages() { return console().take_messages(); }

    /** The mouse, at a pixel of the texture. A click moves there first, as a hand does. */
    void move(uint32_t x, uint32_t y);
    void press(uint32_t x, uint32_t y, MouseButton button = LEFT_BUTTON);
    void release(uint32_t x, uint32_t y, MouseButton button = LEFT_BUTTON);
    void click(uint32_t x, uint32_t y, MouseButton button = LEFT_BUTTON);

    /** Presses and releases one key for each character of a UTF-8 text; "\n" is Enter, "\t" is Tab. */
    void type_text(const std::string& text);

    /** Waits until a pixel of the texture has a colour. */
    testing::AssertionResult wait_for_colour(uint32_t x, uint32_t y, Colour colour,
                                             int tolerance = 1);

private:
    bool load();
    std::string describe_loads();
    testing::AssertionResult wait_until_loaded(const std::string& url, size_t first);
    std::optional<std::string> wait_for_tagged(const std::string& tag);

    std::shared_ptr<LoadLog> loads_ = std::make_shared<LoadLog>();
    bool has_scene_ = false;
};

}  // namespace marlune::test

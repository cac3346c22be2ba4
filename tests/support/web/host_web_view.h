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

/** One load event of a web view. */
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

/** All load events of a view, in the order of their arrival. For any thread. */
class LoadLog {
public:
    void add(Load load);
    std::vector<Load> all();

private:
    std::mutex mutex_;
    std::vector<Load> loads_;
};

/**
 * A callback that writes to `log` and keeps it alive: the library may call it when the test's view
 * is gone.
 */
MWebView::LoadingChanged write_to(std::shared_ptr<LoadLog> log);

/**
 * A view of web pages with a zoom of 100 %, so that one px of a page is one px of the texture. The
 * members that wait draw frames meanwhile. An AssertionResult states the actual content if a wait
 * fails.
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

    /** Creates a new scene with a page, and waits until the page has been loaded. */
    testing::AssertionResult open(const std::string& url);

    /** Navigates the existing scene to another page, and waits until it has been loaded. */
    testing::AssertionResult go_to(const std::string& url);

    /**
     * Shows a text as a page, in the existing scene or in a new one, and waits until it has been
     * loaded.
     */
    testing::AssertionResult show_html(const std::string& html,
                                       const std::string& base_url = "res://test/");

    /**
     * Waits until the page has been drawn: the web engine drops mouse and key events that arrive
     * earlier. Needs a page that runs scripts.
     */
    testing::AssertionResult wait_until_drawn();

    /** All load events so far. */
    std::vector<Load> loads() { return loads_->all(); }

    /** Waits for a load event of this status among those from `first` on. */
    testing::AssertionResult wait_for_load(Load::Status status, size_t first = 0);

    /** Runs a script in the page. */
    void run(const std::string& script) { facade().run_javascript(script); }

    /**
     * The value of an expression in the page as JSON; waits for a promise. "undefined" for a value
     * without JSON, "threw ..." for an exception. Fails the running test if no answer arrives, for
     * example from a page that runs no scripts.
     */
    std::string evaluate(const std::string& expression);

    /** Waits for a console message and removes it: another call waits for another message. */
    testing::AssertionResult wait_for_console(const std::string& message);

    /** The console messages since the last call, except those that a member has waited for. */
    std::vector<std::string> console_messages() { return console().take_messages(); }

    /**
     * Move the mouse, press, release or click at a pixel of the texture. A click moves the mouse
     * there first, as a hand does.
     */
    void move(uint32_t x, uint32_t y);
    void press(uint32_t x, uint32_t y, MouseButton button = LEFT_BUTTON);
    void release(uint32_t x, uint32_t y, MouseButton button = LEFT_BUTTON);
    void click(uint32_t x, uint32_t y, MouseButton button = LEFT_BUTTON);

    /**
     * Presses and releases one key for each character of a UTF-8 text; "\n" is Enter, "\t" is Tab.
     */
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

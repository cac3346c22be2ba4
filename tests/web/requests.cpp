// A page's requests for permissions, windows and downloads, and the answers.

#include "support/message_log.h"
#include "support/web/http_server.h"
#include "support/web/overlay.h"

#include <gtest/gtest.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

// The engine accepts no clicks for a page without visible content.
constexpr auto PAGE = "<body style='background:white;margin:50px'>page";
constexpr auto LINK_PAGE = "<body style='background:white;margin:50px'>"
                           "<a target=_blank href=/new style='position:fixed;inset:40px'>link</a>";

class PageRequests : public testing::Test {
protected:
    void SetUp() override { server.serve("/", html(PAGE)); }

    void TearDown() override
    {
        EXPECT_EQ(watch_.windows(), 0) << "a view has opened a window of the window system";
    }

    /** Opens a page from this machine, which counts as a secure connection. */
    void open()
    {
        ASSERT_TRUE(view.open(server.url("/")));
        ASSERT_TRUE(view.wait_for_colour(2, 2, WHITE));
    }

    /** Clicks, because a page may use some features only after an action of the user. */
    void on_click(const std::string& script)
    {
        // Scripts and clicks reach the page by different paths, so each waits for the one before.
        ASSERT_EQ(view.evaluate("void (document.onclick = () => { " + script + " })"), "undefined");
        view.click(100, 100);
    }

private:
    WindowWatch watch_;

protected:
    HttpServer server;
    HostWebView view{{640, 480}};
};

/** The URLs that a navigation handler has received. */
class Asked {
public:
    MWebView::NavigationHandler handler(bool answer)
    {
        return [this, answer](std::string url, std::string) {
            const std::lock_guard lock(mutex_);
            urls_.push_back(std::move(url));
            return answer;
        };
    }

    std::vector<std::string> take()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(urls_, {});
    }

private:
    std::mutex mutex_;
    std::vector<std::string> urls_;
};

constexpr auto WHERE_AM_I = "new Promise(told => navigator.geolocation.getCurrentPosition("
                            "() => told('told'), error => told('code ' + error.code)))";

}  // namespace

TEST_F(PageRequests, the_location_is_refused_with_a_message)
{
    open();
    expect_message_matching(
        "^WebView \\d+: http://127\\.0\\.0\\.1:\\d+/ asked for the location; refused$");
    EXPECT_EQ(view.evaluate(WHERE_AM_I), "\"code 1\"");
}

TEST_F(PageRequests, each_request_is_refused_again)
{
    open();
    // The engine remembers no refusal, neither for the process nor on disk.
    expect_message_matching("asked for the location; refused$");
    EXPECT_EQ(view.evaluate(WHERE_AM_I), "\"code 1\"");
    EXPECT_TRUE(all_expected_messages_came());
    open();
    expect_message_matching("asked for the location; refused$");
    EXPECT_EQ(view.evaluate(WHERE_AM_I), "\"code 1\"");
}

TEST_F(PageRequests, microphone_and_camera_are_refused)
{
    open();
    allow_messages_matching("asked for the (microphone|camera)");
    EXPECT_NE(view.evaluate("navigator.mediaDevices.getUserMedia({audio: true, video: true})"
                            ".then(() => 'told', error => error.name)"),
              "\"told\"");
}

TEST_F(PageRequests, notifications_are_refused)
{
    open();
    expect_message_matching("asked for notifications; refused$");
    on_click("Notification.requestPermission().then(answer => console.log(answer))");
    EXPECT_TRUE(view.wait_for_console("denied"));
}

TEST_F(PageRequests, the_clipboard_is_refused_without_its_settings)
{
    open();
    expect_message_matching("asked for the clipboard; refused$");
    on_click("navigator.clipboard.readText()"
             ".then(() => console.log('read'), error => console.log(error.name))");
    EXPECT_TRUE(view.wait_for_console("NotAllowedError"));
}

TEST_F(PageRequests, the_clipboard_is_open_with_both_of_its_settings)
{
    view->set_javascript_can_access_clipboard(true);
    view->set_javascript_can_paste(true);
    open();
    on_click("navigator.clipboard.writeText('moon')"
             ".then(() => navigator.clipboard.readText())"
             ".then(text => console.log(text), error => console.log(error.name))");
    EXPECT_TRUE(view.wait_for_console("moon"));
}

TEST_F(PageRequests, a_link_into_a_new_window_opens_in_the_view)
{
    server.serve("/", html(LINK_PAGE));
    server.serve("/new", html("<body style='background:#00ff00'>"));
    Asked asked;
    view->set_func_navigation_handler(asked.handler(true));
    open();
    asked.take();
    view.click(100, 100);
    EXPECT_TRUE(view.wait_for_colour(2, 2, GREEN));
    EXPECT_EQ(asked.take(), std::vector<std::string>{server.url("/new")});
}

TEST_F(PageRequests, a_link_into_a_new_window_can_be_refused)
{
    server.serve("/", html(LINK_PAGE));
    Asked asked;
    open();
    view->set_func_navigation_handler(asked.handler(false));
    view.click(100, 100);
    EXPECT_TRUE(view.draw_until([&] { return !asked.take().empty(); }));
    EXPECT_EQ(view.evaluate("location.pathname"), "\"/\"");
    EXPECT_TRUE(server.requests("/new").empty())
        << "the page was requested before the handler was called";
}

TEST_F(PageRequests, windows_that_scripts_open_are_shown_in_the_view)
{
    server.serve("/new", html("<body style='background:#00ff00'>"));
    open();
    view.run("open('/new')");
    EXPECT_TRUE(view.wait_for_colour(2, 2, GREEN));
}

TEST_F(PageRequests, a_window_without_a_page_leaves_the_page_alone)
{
    open();
    view.run("open(); open('about:blank'); open('javascript:document.title=\"taken over\"')");
    EXPECT_EQ(view.evaluate("new Promise(done => setTimeout(() => done(location.pathname + "
                            "document.title), 200))"),
              "\"/\"");
}

TEST_F(PageRequests, a_page_that_opens_windows_without_end_is_stopped)
{
    HttpServer other;
    other.serve("/", html("<body style='background:#00ff00'>"));
    open();
    expect_message_matching(
        "^WebView \\d+: the page has opened 10 windows without user interaction and may not open more$");
    view.run("for (let i = 0; i < 2000; ++i) open('about:blank'); console.log('done')");
    view->set_url(other.url("/"));
    EXPECT_TRUE(view.wait_for_colour(2, 2, GREEN));
    // The next page may open windows.
    server.serve("/new", html("<body style='background:blue'>"));
    view.run("open('" + server.url("/new") + "')");
    EXPECT_TRUE(view.wait_for_colour(2, 2, BLUE));
}

TEST_F(PageRequests, a_page_cannot_fill_the_log)
{
    open();
    for (int i = 0; i < 9; ++i)
        expect_message_matching("asked for links that begin with \"web\\+\\w:\"; refused$");
    expect_message_matching("asked for links that begin with \"web\\+\\w:\"; refused "
                            "\\(no more messages of this kind for this page\\)$");
    // Different requests, because an engine may remember a refusal.
    on_click("for (const end of 'abcdefghijklmno')"
             "  navigator.registerProtocolHandler('web+' + end, '/?%s');"
             "console.log('all asked')");
    EXPECT_TRUE(view.wait_for_console("all asked"));
    EXPECT_TRUE(view.draw_until(all_expected_messages_came));
    EXPECT_EQ(view.evaluate("1 + 1"), "2");
}

TEST_F(PageRequests, a_download_is_ignored_with_a_message)
{
    server.serve("/saved", {.headers = {{"Content-Type", "application/zip"}}, .body = "zip"});
    HostWebView other({640, 480});
    ASSERT_TRUE(other.show_html("<p>another view, which has nothing to do with it"));
    open();
    expect_message_matching(
        "^WebView \\d+: \"saved(\\.zip)?\" is a download; ignored, because views "
        "save no files: http://127\\.0\\.0\\.1:\\d+/saved$");
    on_click("location = '/saved'");
    EXPECT_TRUE(view.draw_until(all_expected_messages_came));
    EXPECT_EQ(view.evaluate("location.pathname"), "\"/\"");
}

TEST_F(PageRequests, a_page_cannot_close_the_view)
{
    open();
    expect_message_matching("^WebView \\d+: the page asked to be closed; ignored");
    view.run("close()");
    EXPECT_TRUE(view.draw_until(all_expected_messages_came));
    EXPECT_EQ(view.evaluate("1 + 1"), "2");
}

TEST_F(PageRequests, nothing_is_printed)
{
    open();
    expect_message_matching("^WebView \\d+: the page asked to be printed; ignored");
    view.run("print()");
    EXPECT_TRUE(view.draw_until(all_expected_messages_came));
}

TEST_F(PageRequests, a_page_cannot_become_the_handler_of_a_scheme)
{
    open();
    expect_message_matching("asked for links that begin with \"web\\+moon:\"; refused$");
    on_click("navigator.registerProtocolHandler('web+moon', '/?%s')");
    EXPECT_TRUE(view.draw_until(all_expected_messages_came));
}

TEST_F(PageRequests, the_console_gets_the_beginning_of_a_text_without_end)
{
    open();
    view.run("console.log('x'.repeat(5e6)); setTimeout(() => { throw 'y'.repeat(5e6) })");
    const auto wait_for_start = [&](const std::string& start) {
        std::optional<ConsoleRecord> found;
        view.draw_until([&] {
            return (found = view.console().take_first([&](const ConsoleRecord& record) {
                       return record.message.starts_with(start);
                   }))
                .has_value();
        });
        return found ? found->message : "nothing";
    };
    // The last of them is an ellipsis, of three bytes.
    constexpr size_t LONGEST = 65'536 + 3;
    EXPECT_EQ(wait_for_start("xxx").size(), LONGEST);
    EXPECT_EQ(wait_for_start("Uncaught yyy").size(), LONGEST);
}

}  // namespace marlune::test

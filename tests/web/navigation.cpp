// The navigation of a web view, its handler, and the reports of loading.

#include "support/message_log.h"
#include "support/web/host_web_view.h"
#include "support/web/http_server.h"
#include "support/web/resource_pack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace marlune::test {

namespace {

/** A call of the navigation handler. */
struct Question {
    std::string type;
    std::string url;

    bool operator==(const Question&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Question& question)
{
    return out << question.type << " " << question.url;
}

/** A navigation handler that refuses one URL and records its calls. For any thread. */
class Gate {
public:
    bool ask(std::string url, std::string type)
    {
        const std::lock_guard lock(mutex_);
        const bool allowed = url != refused_;
        questions_.push_back({std::move(type), std::move(url)});
        thread_ = std::this_thread::get_id();
        return allowed;
    }

    void refuse(const std::string& url)
    {
        const std::lock_guard lock(mutex_);
        refused_ = url;
    }

    std::vector<Question> take_questions()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(questions_, {});
    }

    std::thread::id thread()
    {
        const std::lock_guard lock(mutex_);
        return thread_;
    }

private:
    std::mutex mutex_;
    std::string refused_;
    std::vector<Question> questions_;
    std::thread::id thread_;
};

MWebView::NavigationHandler asking(std::shared_ptr<Gate> gate)
{
    return [gate = std::move(gate)](std::string url, std::string type) {
        return gate->ask(std::move(url), std::move(type));
    };
}

/** A page that is one link from edge to edge. */
HttpReply link_to(const std::string& target, const std::string& attributes = {})
{
    return html("<a href='" + target + "' " + attributes
                + " style='position: fixed; inset: 0'>go</a>");
}

class Navigation : public testing::Test {
protected:
    Navigation()
    {
        server.serve("/a", link_to("/b"));
        server.serve("/b", html("<title>b</title>"));
        server.serve("/old", redirect_to("/b"));
        server.serve("/slow", {.hold = HttpReply::ALL});
    }

    std::string url(const std::string& path) { return server.url(path); }

    /** Registers `gate` as the handler of all navigations from now on. */
    void ask_the_gate() { view->set_func_navigation_handler(asking(gate)); }

    /** The first record of this status from `first` on. */
    std::optional<Load> load_of(Load::Status status, size_t first)
    {
        EXPECT_TRUE(view.wait_for_load(status, first));
        for (const auto all = view.loads(); first < all.size(); ++first) {
            if (all[first].status == status)
                return all[first];
        }
        return std::nullopt;
    }

    void expect_end(size_t first, Load::Status status, const std::string& url,
                    const std::string& error_domain, int error_code)
    {
        const std::optional<Load> end = load_of(status, first);
        ASSERT_TRUE(end);
        EXPECT_EQ(end->url, url);
        EXPECT_EQ(end->error_domain, error_domain);
        EXPECT_EQ(end->error_code, error_code);
        EXPECT_EQ(end->error_string.empty(), status != Load::FAILED) << end->error_string;
    }

    /** Navigates by an action of the page, and waits for the arrival. */
    template <typename Act>
    testing::AssertionResult arrives(const std::string& address, Act act)
    {
        const size_t first = view.loads().size();
        act();
        const auto is_there = [&] {
            const auto all = view.loads();
            return std::any_of(all.begin() + std::ptrdiff_t(first), all.end(),
                               [&](const Load& load) {
                                   return load.status == Load::SUCCEEDED && load.url == address;
                               });
        };
        if (view.draw_until(is_there))
            return testing::AssertionSuccess();
        testing::AssertionResult failure = testing::AssertionFailure();
        failure << "never arrived at " << address << "; all reports:";
        for (const Load& load : view.loads())
            failure << "\n  " << load;
        return failure;
    }

    void click_the_link()
    {
        ASSERT_TRUE(view.wait_until_drawn());
        view.click(50, 50);
    }

    std::string place() { return view.evaluate("location.href"); }
    static std::string quoted(const std::string& text) { return '"' + text + '"'; }

    HttpServer server;
    std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    HostWebView view;
};

// --- URLs --------------------------------------------------------------------------------------

TEST_F(Navigation, is_at_a_blank_page_at_first)
{
    EXPECT_EQ(view->get_url(), "about:blank");
    ASSERT_TRUE(view.open("about:blank"));
    EXPECT_EQ(place(), quoted("about:blank"));
}

TEST_F(Navigation, begins_with_the_last_url_that_was_set_before_loading)
{
    view->set_url(url("/a"));
    view->set_url("res://nobody/asks/for/this");
    ASSERT_TRUE(view.open(url("/b")));
    EXPECT_EQ(place(), quoted(url("/b")));
    EXPECT_TRUE(server.requests("/a").empty());
}

TEST_F(Navigation, goes_to_the_url_that_is_set)
{
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(view.go_to(url("/b")));
    EXPECT_EQ(place(), quoted(url("/b")));
    EXPECT_EQ(view->get_url(), url("/b"));
}

TEST_F(Navigation, loads_the_same_url_again)
{
    ASSERT_TRUE(view.open(url("/b")));
    ASSERT_TRUE(view.go_to(url("/b")));
    EXPECT_EQ(server.requests("/b").size(), 2u);
}

TEST_F(Navigation, takes_urls_in_any_script)
{
    server.serve("/%C3%A4%20%F0%9F%8C%8A", html("<title>found</title>"));
    ASSERT_TRUE(view.open(url("/ä 🌊")));
    EXPECT_EQ(view->get_url(), url("/ä 🌊"));
    EXPECT_EQ(view.evaluate("document.title"), quoted("found"));
}

TEST_F(Navigation, warns_of_a_relative_url_and_stays_where_it_is)
{
    ASSERT_TRUE(view.open(url("/b")));
    expect_message_matching("\"a\" is not an absolute URL");
    view->set_url("a");
    EXPECT_EQ(view->get_url(), "a");
    EXPECT_EQ(place(), quoted(url("/b")));
    EXPECT_EQ(view.loads().size(), 2u) << "a page has been loaded";
}

TEST_F(Navigation, does_not_change_the_url_of_the_host_when_the_page_moves_on)
{
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(arrives(url("/b"), [&] { click_the_link(); }));
    EXPECT_EQ(view->get_url(), url("/a"));
}

// --- HTML --------------------------------------------------------------------------------------

TEST_F(Navigation, shows_html_without_a_base)
{
    ASSERT_TRUE(view.show_html("<body style='background: #00ff00'>grün", ""));
    EXPECT_EQ(view.evaluate("document.body.innerText"), quoted("grün"));
    EXPECT_TRUE(view.wait_for_colour(256, 200, GREEN));
    EXPECT_EQ(view->get_url(), "about:blank") << "not the URL that the host has set";
}

TEST_F(Navigation, shows_html_that_is_given_right_after_loading)
{
    ASSERT_TRUE(view->load());
    ASSERT_TRUE(arrives("res://test/", [&] { view->load_html("<body>early", "res://test/"); }));
    EXPECT_EQ(view.evaluate("document.body.innerText"), quoted("early"));
}

TEST_F(Navigation, resolves_relative_urls_of_html_against_the_base)
{
    ASSERT_TRUE(view.show_html("<img src=picture.png>", url("/dir/page.html")));
    EXPECT_TRUE(server.wait_for_request("/dir/picture.png"));
    EXPECT_EQ(place(), quoted(url("/dir/page.html")));
    EXPECT_TRUE(server.requests("/dir/page.html").empty()) << "the base itself was requested";
}

TEST_F(Navigation, never_shows_html_that_is_set_before_loading)
{
    view->load_html("<body>too early", "");
    ASSERT_TRUE(view.open(url("/b")));
    EXPECT_EQ(place(), quoted(url("/b")));
}

TEST_F(Navigation, shows_html_of_nearly_two_megabytes)
{
    ASSERT_TRUE(view.show_html("<p>last<!--" + std::string(2'000'000, 'x') + "-->", ""));
    EXPECT_EQ(view.evaluate("document.body.innerText"), quoted("last"));
}

TEST_F(Navigation, reports_html_that_is_too_long_and_stays_where_it_is)
{
    ASSERT_TRUE(view.show_html("short", ""));
    const size_t first = view.loads().size();
    view->load_html(std::string(2'200'000, 'x'), "res://test/");
    expect_end(first, Load::FAILED, "res://test/", "internal", -3);
    EXPECT_EQ(view.evaluate("document.body.innerText"), quoted("short"));
    ASSERT_TRUE(view.show_html("short again", ""));
}

// --- History -----------------------------------------------------------------------------------

TEST_F(Navigation, has_no_history_before_and_right_after_loading)
{
    EXPECT_FALSE(view->can_go_back());
    EXPECT_FALSE(view->can_go_forward());
    ASSERT_TRUE(view.open(url("/a")));
    EXPECT_FALSE(view->can_go_back());
    EXPECT_FALSE(view->can_go_forward());
    view->back();
    view->forward();
    view->back_or_forward(-1);
    view->back_or_forward(1);
    EXPECT_EQ(place(), quoted(url("/a")));
}

TEST_F(Navigation, moves_in_the_history)
{
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(arrives(url("/b"), [&] { click_the_link(); }));
    EXPECT_TRUE(view->can_go_back());
    EXPECT_FALSE(view->can_go_forward());

    ASSERT_TRUE(arrives(url("/a"), [&] { view->back(); }));
    EXPECT_FALSE(view->can_go_back());
    EXPECT_TRUE(view->can_go_forward());

    ASSERT_TRUE(arrives(url("/b"), [&] { view->forward(); }));
    EXPECT_TRUE(view->can_go_back());
    EXPECT_FALSE(view->can_go_forward());
}

TEST_F(Navigation, moves_by_several_pages)
{
    server.serve("/c", html("c"));
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(view.go_to(url("/b")));
    ASSERT_TRUE(view.go_to(url("/c")));
    ASSERT_TRUE(arrives(url("/a"), [&] { view->back_or_forward(-2); }));
    ASSERT_TRUE(arrives(url("/c"), [&] { view->back_or_forward(2); }));
    view->back_or_forward(-3);
    view->back_or_forward(1);
    view->back_or_forward(0);
    EXPECT_EQ(place(), quoted(url("/c"))) << "the view has moved past the end of the history";
}

TEST_F(Navigation, goes_back_past_pages_that_have_redirected_themselves)
{
    server.serve("/on", html("<script>setTimeout(() => { location = '/b'; });</script>"));
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(arrives(url("/b"), [&] { view->set_url(url("/on")); }));
    ASSERT_TRUE(arrives(url("/a"), [&] { view->back(); }));
}

TEST_F(Navigation, reloads)
{
    ASSERT_TRUE(view.open(url("/b")));
    ASSERT_TRUE(arrives(url("/b"), [&] { view->reload(); }));
    ASSERT_EQ(server.requests("/b").size(), 2u);
    EXPECT_EQ(server.requests("/b")[0].header("cache-control"), "");
    EXPECT_EQ(server.requests("/b")[1].header("cache-control"), "max-age=0");
}

TEST_F(Navigation, reloads_around_the_cache)
{
    server.serve(
        "/cached.js",
        {.headers = {{"Content-Type", "text/javascript"}, {"Cache-Control", "max-age=3600"}},
         .body = "var cached;"});
    server.serve("/page", html("<script src=/cached.js></script>"));
    ASSERT_TRUE(view.open(url("/page")));
    ASSERT_TRUE(arrives(url("/page"), [&] { view->reload(); }));
    EXPECT_EQ(server.requests("/cached.js").size(), 1u);
    ASSERT_TRUE(arrives(url("/page"), [&] { view->reload_and_bypass_cache(); }));
    ASSERT_EQ(server.requests("/cached.js").size(), 2u);
    EXPECT_EQ(server.requests("/page").back().header("cache-control"), "no-cache");
    EXPECT_EQ(server.requests("/cached.js").back().header("cache-control"), "no-cache");
}

// --- Scripts of the host -----------------------------------------------------------------------

TEST_F(Navigation, runs_scripts_as_the_pages_own)
{
    server.serve("/page", html("<script>let secret = 'größer 🌊';</script>"));
    ASSERT_TRUE(view.open(url("/page")));
    view.run("console.log(secret)");
    EXPECT_TRUE(view.wait_for_console("größer 🌊"));
}

TEST_F(Navigation, runs_nothing_before_loading)
{
    view.run("console.log('early')");
    ASSERT_TRUE(view.open(url("/b")));
    view.run("console.log('late')");
    EXPECT_TRUE(view.wait_for_console("late"));
    EXPECT_EQ(view.console_messages(), std::vector<std::string>());
}

TEST_F(Navigation, reports_a_scripts_error_to_the_console)
{
    ASSERT_TRUE(view.open(url("/b")));
    const std::pair<const char*, const char*> errors[] = {
        {"throw new Error('mine')", "Uncaught Error: mine"},
        {"no_such_name", "Uncaught ReferenceError: no_such_name is not defined"},
        {"let a = ;", "Uncaught SyntaxError: Unexpected token ';'"},
        {"Promise.reject(new Error('late'))", "Uncaught (in promise) Error: late"},
    };
    for (const auto& [script, message] : errors) {
        view.run(script);
        std::optional<ConsoleRecord> record;
        ASSERT_TRUE(view.draw_until([&] {
            record = view.console().take_first([](const ConsoleRecord&) { return true; });
            return record.has_value();
        })) << script;
        EXPECT_EQ(record->message, message);
        EXPECT_EQ(record->level, 2) << script;
    }
    EXPECT_EQ(view.evaluate("'and goes on'"), quoted("and goes on"));
}

// --- The navigation handler --------------------------------------------------------------------

TEST_F(Navigation, asks_the_handler_about_urls_that_the_host_sets)
{
    ask_the_gate();
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(view.go_to(url("/b")));
    EXPECT_EQ(gate->take_questions(),
              (std::vector<Question>{{"typed", url("/a")}, {"typed", url("/b")}}));
}

TEST_F(Navigation, asks_the_handler_about_links_and_navigations_of_the_page)
{
    ASSERT_TRUE(view.open(url("/a")));
    ask_the_gate();
    ASSERT_TRUE(arrives(url("/b"), [&] { click_the_link(); }));
    ASSERT_TRUE(arrives(url("/a"), [&] { view.run("location = '/a'"); }));
    EXPECT_EQ(gate->take_questions(),
              (std::vector<Question>{{"link_clicked", url("/b")}, {"link_clicked", url("/a")}}));
}

TEST_F(Navigation, asks_the_handler_about_moves_in_the_history)
{
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(view.go_to(url("/b")));
    ask_the_gate();
    ASSERT_TRUE(arrives(url("/a"), [&] { view->back(); }));
    ASSERT_TRUE(arrives(url("/b"), [&] { view->back_or_forward(1); }));
    ASSERT_TRUE(arrives(url("/a"), [&] { view.run("history.back()"); }));
    EXPECT_EQ(gate->take_questions(),
              (std::vector<Question>{{"back_forward", url("/a")},
                                     {"back_forward", url("/b")},
                                     {"back_forward", url("/a")}}));
}

TEST_F(Navigation, asks_the_handler_about_reloading)
{
    ASSERT_TRUE(view.open(url("/b")));
    ask_the_gate();
    ASSERT_TRUE(arrives(url("/b"), [&] { view->reload(); }));
    ASSERT_TRUE(arrives(url("/b"), [&] { view->reload_and_bypass_cache(); }));
    ASSERT_TRUE(arrives(url("/b"), [&] { view.run("location.reload()"); }));
    EXPECT_EQ(gate->take_questions(),
              (std::vector<Question>{
                  {"reload", url("/b")}, {"reload", url("/b")}, {"redirect", url("/b")}}));
}

TEST_F(Navigation, asks_the_handler_about_redirects)
{
    server.serve("/older", redirect_to("/old", 301));
    server.serve("/refresh", html("<meta http-equiv=refresh content='0; url=/b'>"));
    ask_the_gate();
    ASSERT_TRUE(view.open(url("/older")));
    EXPECT_EQ(place(), quoted(url("/b")));
    EXPECT_EQ(gate->take_questions(),
              (std::vector<Question>{
                  {"typed", url("/older")}, {"redirect", url("/old")}, {"redirect", url("/b")}}));
    ASSERT_TRUE(arrives(url("/b"), [&] { view->set_url(url("/refresh")); }));
    EXPECT_EQ(gate->take_questions(),
              (std::vector<Question>{{"typed", url("/refresh")}, {"redirect", url("/b")}}));
}

TEST_F(Navigation, asks_the_handler_about_forms)
{
    server.serve("/form", html("<form action=/sent method=post><input name=word value=ä></form>"));
    server.serve("/sent", html("sent"));
    ASSERT_TRUE(view.open(url("/form")));
    ask_the_gate();
    ASSERT_TRUE(arrives(url("/sent"), [&] { view.run("document.forms[0].submit()"); }));
    EXPECT_EQ(gate->take_questions(), (std::vector<Question>{{"form_submitted", url("/sent")}}));
    ASSERT_EQ(server.requests("/sent").size(), 1u);
    EXPECT_EQ(server.requests("/sent")[0].method, "POST");
    EXPECT_EQ(server.requests("/sent")[0].body, "word=%C3%A4");
}

TEST_F(Navigation, asks_the_handler_about_frames)
{
    server.serve("/framed", html("<iframe src=/a></iframe><iframe src=/frame2></iframe>"));
    ask_the_gate();
    gate->refuse(url("/frame2"));
    ASSERT_TRUE(view.open(url("/framed")));
    EXPECT_EQ(gate->take_questions(),
              (std::vector<Question>{
                  {"typed", url("/framed")}, {"other", url("/a")}, {"other", url("/frame2")}}));
    view.run("frames[0].document.links[0].click()");
    ASSERT_TRUE(server.wait_for_request("/b"));
    EXPECT_EQ(gate->take_questions(), (std::vector<Question>{{"link_clicked", url("/b")}}));
    EXPECT_TRUE(server.requests("/frame2").empty());
    EXPECT_EQ(view.loads().size(), 2u) << "the loading of a frame was reported";
}

TEST_F(Navigation, asks_the_handler_about_html_as_a_data_url)
{
    ASSERT_TRUE(view.open(url("/b")));
    ask_the_gate();
    ASSERT_TRUE(view.show_html("<p>hi", "res://test/"));
    const std::string address = "data:text/html;charset=UTF-8,%3Cp%3Ehi";
    EXPECT_EQ(gate->take_questions(), (std::vector<Question>{{"typed", address}}));
    gate->refuse(address);
    const size_t first = view.loads().size();
    view->load_html("<p>hi", "");
    expect_end(first, Load::STOPPED, address, "internal", -3);
}

TEST_F(Navigation, does_not_ask_the_handler_about_moves_within_the_page)
{
    ASSERT_TRUE(view.open(url("/b")));
    ask_the_gate();
    view.run("location.hash = 'part'; history.pushState({}, '', '/pushed')");
    EXPECT_EQ(place(), quoted(url("/pushed")));
    EXPECT_EQ(gate->take_questions(), std::vector<Question>());
    EXPECT_EQ(view.loads().size(), 2u);
}

TEST_F(Navigation, does_not_go_where_the_handler_refuses)
{
    ASSERT_TRUE(view.open(url("/a")));
    ask_the_gate();
    gate->refuse(url("/b"));
    const size_t first = view.loads().size();
    click_the_link();
    expect_end(first, Load::STOPPED, url("/b"), "internal", -3);
    view->set_url(url("/b"));
    expect_end(first + 2, Load::STOPPED, url("/b"), "internal", -3);
    EXPECT_EQ(place(), quoted(url("/a")));
    EXPECT_TRUE(server.requests("/b").empty());
    EXPECT_FALSE(view->can_go_back()) << "a refused page is in the history";

    gate->refuse("");
    EXPECT_TRUE(view.go_to(url("/b"))) << "the same URL cannot be loaded later";
}

TEST_F(Navigation, does_not_begin_where_the_handler_refuses)
{
    ask_the_gate();
    gate->refuse(url("/b"));
    view->set_url(url("/b"));
    ASSERT_TRUE(view->load());
    expect_end(0, Load::STOPPED, url("/b"), "internal", -3);
    EXPECT_TRUE(server.requests("/b").empty());
    EXPECT_TRUE(view.go_to(url("/a")));
}

TEST_F(Navigation, does_not_follow_a_redirect_that_the_handler_refuses)
{
    ASSERT_TRUE(view.open(url("/a")));
    ask_the_gate();
    gate->refuse(url("/b"));
    const size_t first = view.loads().size();
    view->set_url(url("/old"));
    expect_end(first, Load::STOPPED, url("/b"), "internal", -3);
    EXPECT_EQ(server.requests("/old").size(), 1u);
    EXPECT_TRUE(server.requests("/b").empty());
    EXPECT_EQ(place(), quoted(url("/a")));
}

TEST_F(Navigation, does_not_move_in_the_history_when_the_handler_refuses)
{
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(view.go_to(url("/b")));
    ask_the_gate();
    gate->refuse(url("/a"));
    const size_t first = view.loads().size();
    view->back();
    expect_end(first, Load::STOPPED, url("/a"), "internal", -3);
    EXPECT_EQ(place(), quoted(url("/b")));
    EXPECT_TRUE(view->can_go_back());
}

TEST_F(Navigation, refuses_when_the_handler_throws)
{
    ASSERT_TRUE(view.open(url("/a")));
    view->set_func_navigation_handler(
        [](std::string, std::string) -> bool { throw std::runtime_error("the host's trouble"); });
    expect_message_matching("^WebView \\d+: the host's trouble");
    const size_t first = view.loads().size();
    view->set_url(url("/b"));
    expect_end(first, Load::STOPPED, url("/b"), "internal", -3);
    EXPECT_TRUE(server.requests("/b").empty());
}

TEST_F(Navigation, asks_the_last_handler_that_was_set)
{
    ask_the_gate();
    gate->refuse(url("/b"));
    view->set_func_navigation_handler([](std::string, std::string) { return true; });
    ASSERT_TRUE(view.open(url("/b")));
    ask_the_gate();
    view->set_func_navigation_handler({});
    ASSERT_TRUE(view.go_to(url("/b")));
    EXPECT_EQ(gate->take_questions(), std::vector<Question>());
}

TEST_F(Navigation, lets_the_handler_read_the_view)
{
    ASSERT_TRUE(view.open(url("/a")));
    const auto seen = std::make_shared<std::string>();
    view->set_func_navigation_handler(
        [facade = view.facade(), seen](std::string, std::string) mutable {
            *seen = facade.get_url();
            return true;
        });
    ASSERT_TRUE(view.go_to(url("/b")));
    EXPECT_EQ(*seen, url("/b"));
}

// --- Pages that ask before they are left ---------------------------------------------------------

class UnsavedPage : public Navigation {
protected:
    /** Opens a page that asks before it is left, and shows its question for a first navigation. */
    void ask_to_leave()
    {
        server.serve("/unsaved",
                     html("<body style='background: #0000ff'>"
                          "<script>onbeforeunload = e => e.preventDefault()</script>"));
        ASSERT_TRUE(view.open(url("/a")));
        ASSERT_TRUE(view.go_to(url("/unsaved")));
        ASSERT_TRUE(view.wait_for_colour(2, 2, BLUE));
        view.click(100, 100);  // only pages that have been used may ask
        ASSERT_TRUE(view.draw_until(
            [&] { return view.evaluate("navigator.userActivation.hasBeenActive") == "true"; }));
        view->set_url(url("/slow"));
        ASSERT_TRUE(is_asked());
    }

    /** The page is dimmed behind the question. */
    testing::AssertionResult is_asked()
    {
        if (view.draw_until([&] { return view.picture().pixel(2, 2) != BLUE; }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "the page does not ask";
    }

    void answer(uint32_t key) { view.type(key, key == KEY_ENTER ? "\r" : ""); }
};

TEST_F(UnsavedPage, is_left_by_the_last_order)
{
    const std::pair<std::string, std::function<void(MWebView&)>> orders[] = {
        {"/b", [&](MWebView& facade) { facade.set_url(url("/b")); }},
        {"/unsaved", [](MWebView& facade) { facade.reload(); }},
        {"/a", [](MWebView& facade) { facade.back(); }},
    };
    for (const auto& [path, give] : orders) {
        SCOPED_TRACE(path);
        ask_to_leave();
        ASSERT_TRUE(arrives(url(path), [&] {
            give(view.facade());
            // The question is shown again, and may take a while to vanish for that.
            const size_t first = view.loads().size();
            view.draw_until([&] {
                answer(KEY_ENTER);
                return view.loads().size() > first;
            });
        }));
    }
    EXPECT_TRUE(server.requests("/slow").empty());
}

TEST_F(UnsavedPage, that_the_user_does_not_leave_stops_the_loading)
{
    ask_to_leave();
    const size_t first = view.loads().size();
    answer(KEY_ESCAPE);
    expect_end(first, Load::STOPPED, url("/slow"), "internal", -3);
    EXPECT_EQ(place(), quoted(url("/unsaved")));
    EXPECT_TRUE(server.requests("/slow").empty());
}

// --- Windows -----------------------------------------------------------------------------------

TEST_F(Navigation, opens_links_into_new_windows_in_the_same_view)
{
    server.serve("/page", link_to("/b", "target=_blank"));
    ASSERT_TRUE(view.open(url("/page")));
    ask_the_gate();
    ASSERT_TRUE(arrives(url("/b"), [&] { click_the_link(); }));
    EXPECT_EQ(gate->take_questions(), (std::vector<Question>{{"new_window", url("/b")}}));
    EXPECT_TRUE(view->can_go_back());
}

TEST_F(Navigation, opens_windows_of_scripts_in_the_same_view)
{
    ASSERT_TRUE(view.open(url("/a")));
    ask_the_gate();
    ASSERT_TRUE(arrives(url("/b"), [&] { view.run("window.open('/b', '', 'width=200')"); }));
    EXPECT_EQ(gate->take_questions(), (std::vector<Question>{{"new_window", url("/b")}}));
}

TEST_F(Navigation, opens_no_window_for_content_that_a_page_has_written)
{
    ASSERT_TRUE(view.open(url("/b")));
    ask_the_gate();
    view.run("open('data:text/html,<title>taken over</title>');"
             "open(URL.createObjectURL(new Blob(['<title>taken over</title>'],"
             " {type: 'text/html'})));"
             "open('javascript:document.title = \"taken over\"'); open('about:blank')");
    // The arrival at the next page shows that this window was not opened.
    ASSERT_TRUE(arrives(url("/a"), [&] { view.run("open('/a')"); }));
    EXPECT_EQ(gate->take_questions(), (std::vector<Question>{{"new_window", url("/a")}}));
}

TEST_F(Navigation, opens_windows_as_the_page_and_not_as_the_host)
{
    server.serve("/strict", {.headers = {{"Set-Cookie", "strict=there; SameSite=Strict"}}});
    ASSERT_TRUE(view.open(url("/strict")));
    HttpServer foreign;
    foreign.serve("/", html("<title>foreign</title>"));
    ASSERT_TRUE(view.go_to(foreign.url("/", "localhost")));
    ASSERT_TRUE(arrives(url("/b"), [&] { view.run("open('" + url("/b") + "')"); }));
    EXPECT_EQ(server.requests("/b").back().header("cookie"), "");
    ASSERT_TRUE(view.go_to(url("/b")));
    EXPECT_EQ(server.requests("/b").back().header("cookie"), "strict=there")
        << "the host's own navigation does not send the cookie";
}

TEST_F(Navigation, opens_no_window_without_the_user_where_the_settings_say_so)
{
    server.serve(
        "/page",
        html(
            "<body style='position: fixed; inset: 0; background: #0000ff' onclick=\"window.open('/b')\">"));
    view->set_javascript_can_open_windows(false);
    ASSERT_TRUE(view.open(url("/page")));
    EXPECT_EQ(view.evaluate("open('/b')"), "null");
    ASSERT_TRUE(arrives(url("/b"), [&] { click_the_link(); }));
    EXPECT_EQ(server.requests("/b").size(), 1u);
}

TEST_F(Navigation, opens_no_window_where_the_handler_refuses)
{
    server.serve("/page", link_to("/b", "target=_blank"));
    ASSERT_TRUE(view.open(url("/page")));
    ask_the_gate();
    gate->refuse(url("/b"));
    size_t first = view.loads().size();
    click_the_link();
    expect_end(first, Load::STOPPED, url("/b"), "internal", -3);
    first = view.loads().size();
    view.run("window.open('/b')");
    expect_end(first, Load::STOPPED, url("/b"), "internal", -3);
    EXPECT_EQ(place(), quoted(url("/page")));
    EXPECT_TRUE(server.requests("/b").empty());
}

// --- Other programs, and the disk --------------------------------------------------------------

TEST_F(Navigation, asks_the_handler_about_urls_that_are_commands_for_the_game)
{
    server.serve("/framed", html("<iframe src='mygame://framed'></iframe>"));
    ASSERT_TRUE(view.open(url("/b")));
    ask_the_gate();
    for (const int policy : {0, 1, -1, 4, 77}) {
        view->set_unknown_url_scheme_policy(policy);
        const std::string command = "mygame://quit/" + std::to_string(policy);
        gate->refuse(command);
        view.run("location = '" + command + "'");
        std::vector<Question> asked;
        ASSERT_TRUE(view.draw_until([&] { return !(asked = gate->take_questions()).empty(); }))
            << policy;
        EXPECT_EQ(asked, (std::vector<Question>{{"link_clicked", command}}));
    }
    gate->refuse("mygame://framed");
    view.run("location = '/framed'");
    EXPECT_TRUE(view.draw_until([&] {
        const auto asked = gate->take_questions();
        return std::ranges::any_of(
            asked, [](const Question& question) { return question.url == "mygame://framed"; });
    }));
}

TEST_F(Navigation, opens_no_other_program_unless_the_policy_says_so)
{
    ask_the_gate();
    for (const int policy : {0, 1, -1, 4, 77, INT_MAX}) {
        view->set_unknown_url_scheme_policy(policy);
        ASSERT_TRUE(view.open(url("/b")));
        if (policy == 0)
            expect_message_matching("\"mygame://quit\" is for another program and is not opened");
        const size_t first = view.loads().size();
        view.run("location = 'mygame://quit'");
        expect_end(first, Load::STOPPED, "mygame://quit", "internal", -3);
    }
}

TEST_F(Navigation, logs_little_about_a_page_that_calls_programs_again_and_again)
{
    ASSERT_TRUE(view.open(url("/b")));
    ask_the_gate();
    allow_messages_matching(
        "is for another program and is not opened; see set_unknown_url_scheme_policy$");
    expect_message_matching("is for another program .*no more messages of this kind");
    view.run(
        "for (let i = 0; i < 20; ++i) setTimeout(() => { location = 'mygame://' + i; }, 10 * i)");
    EXPECT_TRUE(view.draw_until([&, asked = size_t(0)]() mutable {
        asked += gate->take_questions().size();
        return asked >= 15;
    }));
}

TEST_F(Navigation, to_the_disk_is_allowed_to_the_host_alone)
{
    ResourcePack pack({{"/index.html", "<title>pack</title>"}});
    for (const std::string& page : {std::string("res://pack/"), url("/b")}) {
        for (const std::string disk :
             {"file:///etc/passwd", "qrc:/Web/page_scripts/full_screen.js"}) {
            ASSERT_TRUE(view.open(page));
            ask_the_gate();
            allow_messages_matching("the page tried to navigate to a local file; refused");
            view.run("location = '" + disk + "'; open('" + disk + "')");
            EXPECT_EQ(
                view.evaluate("new Promise(done => setTimeout(() => done(location.href), 300))"),
                quoted(page))
                << disk;
        }
    }
    ASSERT_TRUE(view.go_to("file:///etc/passwd")) << "the host itself cannot show it";
    ASSERT_TRUE(arrives("file:///etc/hostname", [&] {
        view.run("location = 'file:///etc/hostname'");
    })) << "a page on the disk cannot navigate to another one";
}

// --- Reports of loading ------------------------------------------------------------------------

TEST_F(Navigation, reports_a_page_that_loads)
{
    ASSERT_TRUE(view.open(url("/b")));
    const std::vector<Load> all = view.loads();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].status, Load::STARTED);
    EXPECT_EQ(all[0].url, url("/b"));
    EXPECT_EQ(all[0].error_domain + all[0].error_string, "");
    EXPECT_EQ(all[0].error_code, 0);
    expect_end(0, Load::SUCCEEDED, url("/b"), "http_status", 200);
}

TEST_F(Navigation, reports_a_page_of_the_host)
{
    ResourcePack pack({{"/index.html", "<p>hi"}});
    ASSERT_TRUE(view.open("res://pack/"));
    const std::optional<Load> end = load_of(Load::SUCCEEDED, 0);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->url, "res://pack/");
    EXPECT_EQ(end->error_string, "");

    const size_t first = view.loads().size();
    view->set_url("res://pack/missing.html");
    expect_end(first, Load::FAILED, "res://pack/missing.html", "internal", -6);
}

TEST_F(Navigation, reports_a_page_that_a_server_does_not_have)
{
    server.serve("/broken", {.status = 500, .body = "broken"});
    ASSERT_TRUE(view.open(url("/b")));
    size_t first = view.loads().size();
    view->set_url(url("/nowhere"));
    expect_end(first, Load::FAILED, url("/nowhere"), "http_status", 404);
    first = view.loads().size();
    view->set_url(url("/broken"));
    expect_end(first, Load::FAILED, url("/broken"), "http_status", 500);
}

TEST_F(Navigation, reports_errors_in_plain_text)
{
    ASSERT_TRUE(view.open(url("/b")));
    view->set_url(url("/nowhere"));
    const std::optional<Load> end = load_of(Load::FAILED, 0);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->error_string, "The server responded with status 404");
}

TEST_F(Navigation, reports_a_server_that_cannot_be_reached)
{
    const std::string gone = HttpServer().url("/");
    ASSERT_TRUE(view.open(url("/b")));
    size_t first = view.loads().size();
    view->set_url(gone);
    expect_end(first, Load::FAILED, gone, "connection", -102);
    first = view.loads().size();
    view->set_url("http://nowhere.invalid/");
    expect_end(first, Load::FAILED, "http://nowhere.invalid/", "connection", -105);
}

TEST_F(Navigation, reports_a_page_that_is_stopped)
{
    server.serve("/endless", {.body = "<p>begins", .hold = HttpReply::END});
    ASSERT_TRUE(view.open(url("/b")));
    const size_t first = view.loads().size();
    view->set_url(url("/endless"));
    ASSERT_TRUE(view.wait_for_load(Load::STARTED, first));
    ASSERT_TRUE(view.draw_until([&] { return place() == quoted(url("/endless")); }));
    view.run("window.stop()");
    expect_end(first, Load::STOPPED, url("/endless"), "internal", -3);
}

TEST_F(Navigation, reports_a_reply_without_content)
{
    server.serve("/nothing", {.status = 204});
    ASSERT_TRUE(view.open(url("/b")));
    const size_t first = view.loads().size();
    view->set_url(url("/nothing"));
    expect_end(first, Load::STOPPED, url("/nothing"), "internal", -3);
    EXPECT_EQ(place(), quoted(url("/b")));
}

TEST_F(Navigation, reports_only_the_end_of_what_replaces_a_load)
{
    ASSERT_TRUE(view.open(url("/a")));
    const size_t first = view.loads().size();
    view->set_url(url("/slow"));
    ASSERT_TRUE(server.wait_for_request("/slow"));
    ASSERT_TRUE(arrives(url("/b"), [&] { view->set_url(url("/b")); }));
    const std::vector<Load> all = view.loads();
    ASSERT_EQ(all.size(), first + 2);
    EXPECT_EQ(all[first].status, Load::STARTED);
    EXPECT_EQ(all[first].url, url("/slow"));
    EXPECT_EQ(all[first + 1].url, url("/b"));
}

TEST_F(Navigation, calls_the_callback_that_was_set_last)
{
    ASSERT_TRUE(view.open(url("/a")));
    const auto other = std::make_shared<LoadLog>();
    view->set_func_loading_changed(write_to(other));
    view->set_url(url("/b"));
    ASSERT_TRUE(view.draw_until([&] { return other->all().size() == 2; }));
    EXPECT_EQ(view.loads().size(), 2u) << "the replaced callback is still called";
    view->set_func_loading_changed({});
    view->set_url(url("/a"));
    ASSERT_TRUE(view.draw_until([&] { return place() == quoted(url("/a")); }));
    EXPECT_EQ(other->all().size(), 2u) << "an unregistered callback is still called";
}

TEST_F(Navigation, calls_back_on_one_thread_that_is_not_the_hosts)
{
    ask_the_gate();
    ASSERT_TRUE(view.open(url("/a")));
    std::thread([&] { view->set_url(url("/b")); }).join();
    ASSERT_TRUE(view.draw_until([&] { return view.loads().size() == 4; }));
    for (const Load& load : view.loads())
        EXPECT_EQ(load.thread, gate->thread());
    EXPECT_NE(gate->thread(), std::this_thread::get_id());
}

// --- Views -------------------------------------------------------------------------------------

TEST_F(Navigation, starts_again_when_the_view_is_loaded_again)
{
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(view.go_to(url("/b")));
    ASSERT_TRUE(arrives(url("/b"), [&] { view->load(); }));
    EXPECT_EQ(server.requests("/b").size(), 2u);
    EXPECT_FALSE(view->can_go_back()) << "the history has outlived the scene";
}

TEST_F(Navigation, ends_with_the_scene_and_comes_back_with_the_next)
{
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(view.go_to(url("/b")));
    view->reset();
    EXPECT_FALSE(view->can_go_back());
    view.run("console.log('nobody')");
    view->reload();
    view->set_url(url("/a"));
    EXPECT_EQ(view->get_url(), url("/a"));
    ASSERT_TRUE(view.open(url("/a")));
    EXPECT_EQ(place(), quoted(url("/a")));
    EXPECT_EQ(view.console_messages(), std::vector<std::string>());
}

TEST_F(Navigation, of_two_views_is_apart)
{
    HostWebView other;
    ASSERT_TRUE(view.open(url("/a")));
    ASSERT_TRUE(other.open(url("/b")));
    ASSERT_TRUE(other.go_to(url("/a")));
    EXPECT_TRUE(other->can_go_back());
    EXPECT_FALSE(view->can_go_back());
    EXPECT_EQ(view.loads().size(), 2u);
    view.run("document.title = 'first'");
    EXPECT_EQ(other.evaluate("document.title"), quoted(""));
    EXPECT_EQ(view.evaluate("document.title"), quoted("first"));
}

TEST_F(Navigation, of_a_second_view_begins_while_the_first_one_draws)
{
    ASSERT_TRUE(view.show_html("<body style='animation: x 1s infinite'>"
                               "<style>@keyframes x { from { background: red }"
                               " to { background: blue } }</style>"));
    const std::jthread drawing([&](std::stop_token stop) {
        while (!stop.stop_requested())
            view->render();
    });
    for (int i = 0; i < 3; ++i) {
        HostWebView second;
        ASSERT_TRUE(second.open(url("/b")));
        EXPECT_EQ(second.evaluate("document.title"), quoted("b"));
    }
}

}  // namespace

}  // namespace marlune::test

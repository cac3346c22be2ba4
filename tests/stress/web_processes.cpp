// Pages whose process ends or hangs, and processes that end with pages open.

#include "support/library.h"
#include "support/message_log.h"
#include "support/process/endurance.h"
#include "support/process/processes.h"
#include "support/process/sanitizers.h"
#include "support/process/scenarios.h"
#include "support/web/host_web_view.h"
#include "support/web/http_server.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

// --- Pages that lose their process -------------------------------------------------------------

class PageProcess : public testing::Test {
protected:
    PageProcess()
    {
        server.serve("/", html("<body style='background: #00ff00'><title>one</title>"));
        server.serve("/other", html("<title>other</title>"));
    }

    /** Kills all processes that hold pages, and waits until the view knows. */
    testing::AssertionResult kill_page()
    {
        const size_t first = view.loads().size();
        const std::vector<Process> pages = page_processes();
        if (pages.empty())
            return testing::AssertionFailure() << "no page has a process";
        for (const Process& page : pages)
            kill(page.id, SIGKILL);
        return view.wait_for_load(Load::FAILED, first);
    }

    testing::AssertionResult comes_back(const std::string& title)
    {
        const std::string is = view.evaluate("document.title");
        if (is == '"' + title + '"')
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "the page's title is " << is;
    }

    /** Waits for the end of a loading that `act` starts. */
    template <typename Act>
    testing::AssertionResult loads_by(Act act)
    {
        const size_t first = view.loads().size();
        act();
        return view.wait_for_load(Load::SUCCEEDED, first);
    }

    HttpServer server;
    HostWebView view;
};

TEST_F(PageProcess, is_reported_when_it_is_killed)
{
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(kill_page());
    const Load last = view.loads().back();
    EXPECT_EQ(last.status, Load::FAILED);
    EXPECT_EQ(last.url, server.url("/"));
    EXPECT_EQ(last.error_domain, "process");
    EXPECT_EQ(last.error_code, SIGKILL);
    EXPECT_NE(last.error_string.find("reload restores the page"), std::string::npos);

    std::optional<ConsoleRecord> record;
    ASSERT_TRUE(view.draw_until([&] {
        record = view.console().take_first(
            [&](const ConsoleRecord& r) { return r.message == last.error_string; });
        return record.has_value();
    }));
    EXPECT_EQ(record->level, 2);
    EXPECT_EQ(record->source_id, server.url("/"));
}

TEST_F(PageProcess, leaves_a_view_that_answers)
{
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(kill_page());
    view.run("console.log('nobody')");
    view.click(10, 10);
    view.type_text("nobody");
    view->mouse_wheel_down(10, 10);
    view->set_javascript_enabled(true);
    view->set_zoom_factor(200);
    view->set_zoom_factor(100);
    EXPECT_FALSE(view->can_go_back());
    EXPECT_EQ(view->get_url(), server.url("/"));
    for (int i = 0; i < 3; ++i)
        view.draw_frame();
    EXPECT_EQ(view.picture().width(), 512u);
}

TEST_F(PageProcess, comes_back_by_reloading)
{
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(kill_page());
    ASSERT_TRUE(loads_by([&] { view->reload(); }));
    EXPECT_TRUE(comes_back("one"));
    EXPECT_TRUE(view.wait_for_colour(100, 100, GREEN));
    EXPECT_EQ(server.requests("/").size(), 2u);
}

TEST_F(PageProcess, comes_back_with_another_url)
{
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(kill_page());
    ASSERT_TRUE(loads_by([&] { view->set_url(server.url("/other")); }));
    EXPECT_TRUE(comes_back("other"));
}

TEST_F(PageProcess, comes_back_with_the_same_url)
{
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(kill_page());
    ASSERT_TRUE(loads_by([&] { view->set_url(server.url("/")); }));
    EXPECT_TRUE(comes_back("one"));
}

TEST_F(PageProcess, comes_back_with_html)
{
    ASSERT_TRUE(view.show_html("<title>first</title>"));
    ASSERT_TRUE(kill_page());
    ASSERT_TRUE(loads_by([&] { view->load_html("<title>second</title>", "res://test/"); }));
    EXPECT_TRUE(comes_back("second"));
}

TEST_F(PageProcess, comes_back_with_input)
{
    server.serve("/field", html("<input id=field autofocus>"));
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(kill_page());
    ASSERT_TRUE(loads_by([&] { view->set_url(server.url("/field")); }));
    ASSERT_TRUE(view.wait_until_drawn());
    view.type_text("alive");
    EXPECT_TRUE(view.draw_until([&] { return view.evaluate("field.value") == "\"alive\""; }));
}

TEST_F(PageProcess, may_be_killed_while_it_loads)
{
    server.serve("/endless", {.body = "<p>begins", .hold = HttpReply::END});
    ASSERT_TRUE(view.open(server.url("/")));
    const size_t first = view.loads().size();
    view->set_url(server.url("/endless"));
    ASSERT_TRUE(server.wait_for_request("/endless"));
    ASSERT_TRUE(view.wait_for_load(Load::STARTED, first));
    ASSERT_TRUE(kill_page());
    ASSERT_TRUE(loads_by([&] { view->set_url(server.url("/other")); }));
    EXPECT_TRUE(comes_back("other"));
}

TEST_F(PageProcess, may_be_gone_when_the_view_goes)
{
    {
        HostWebView other;
        ASSERT_TRUE(other.open(server.url("/")));
        for (const Process& page : page_processes())
            kill(page.id, SIGKILL);
    }
    {
        HostWebView other;
        ASSERT_TRUE(other.open(server.url("/")));
        for (const Process& page : page_processes())
            kill(page.id, SIGKILL);
        const size_t first = other.loads().size();
        other->set_url(server.url("/other"));
        ASSERT_TRUE(other->load());
        ASSERT_TRUE(other.wait_for_load(Load::SUCCEEDED, first));
        EXPECT_EQ(other.evaluate("document.title"), "\"other\"");
    }
}

TEST_F(PageProcess, may_be_killed_again_and_again)
{
    ASSERT_TRUE(view.open(server.url("/")));
    const int kills = times(3, 50);
    for (int i = 0; i < kills; ++i) {
        ASSERT_TRUE(kill_page()) << "kill " << i;
        ASSERT_TRUE(loads_by([&] {
            if (i % 2)
                view->reload();
            else
                view->set_url(server.url("/"));
        })) << "kill "
            << i;
        ASSERT_TRUE(comes_back("one")) << "kill " << i;
    }
}

// --- Pages that hang ---------------------------------------------------------------------------

class HangingPage : public PageProcess {
protected:
    HangingPage()
    {
        server.serve("/loop",
                     html("<body style='background: #0000ff'><script>function hang() {"
                          " console.log('hangs'); while (true); }</script>"));
    }

    void hang()
    {
        ASSERT_TRUE(view.open(server.url("/loop")));
        ASSERT_TRUE(view.wait_for_colour(100, 100, BLUE));
        view.run("hang()");
        ASSERT_TRUE(view.wait_for_console("hangs"));
    }

    /** How long `act` takes. */
    template <typename Act>
    static std::chrono::steady_clock::duration time_of(Act act)
    {
        const auto start = std::chrono::steady_clock::now();
        act();
        return std::chrono::steady_clock::now() - start;
    }
};

TEST_F(HangingPage, does_not_hold_up_the_host)
{
    hang();
    const auto input = time_of([&] {
        view.run("console.log('never')");
        view.click(100, 100);
        view.type_text("never");
        view->mouse_wheel_down(100, 100);
        view->can_go_back();
        for (int i = 0; i < 10; ++i)
            view.draw_frame();
    });
    EXPECT_LT(input, 3s);
    EXPECT_EQ(view.picture().pixel(100, 100), BLUE) << "the last frame is no longer shown";
    // From here on the engine may drop the frame, because it waits for a new one from the page.
    const auto changes = time_of([&] {
        view->set_zoom_factor(200);
        view->reload();
        view.draw_frame();
    });
    EXPECT_LT(changes, 3s);
}

TEST_F(HangingPage, does_not_hold_up_other_views)
{
    hang();
    HostWebView other;
    ASSERT_TRUE(other.open(server.url("/", "localhost")));
    EXPECT_EQ(other.evaluate("document.title"), "\"one\"");
}

TEST_F(HangingPage, is_left_by_going_elsewhere)
{
    hang();
    ASSERT_TRUE(loads_by([&] { view->set_url(server.url("/other", "localhost")); }));
    EXPECT_TRUE(comes_back("other"));
}

TEST_F(HangingPage, ends_with_its_view)
{
    hang();
    EXPECT_LT(time_of([&] { view->destroy(); }), 3s);
    EXPECT_TRUE(wait_until([] { return page_processes().empty(); }, 20s)) << "the page still loops";
}

constexpr auto ENDED = "^WebView \\d+: the page does not respond and was ended";

/** A page of the same site as the next one, which delays every navigation away from it. */
struct Holder {
    const char* name;
    const char* script;
};

std::ostream& operator<<(std::ostream& out, const Holder& holder)
{
    return out << holder.name;
}

constexpr Holder HOLDERS[] = {
    {"loop", "say(); while (true);"},
    {"alerts", "say(); for (;;) alert('x')"},
    {"unload", "onunload = () => { while (true); }; say()"},
    {"pagehide", "onpagehide = () => { while (true); }; say()"},
    {"beforeunload", "onbeforeunload = () => { while (true); }; say()"},
};

class HeldPage : public PageProcess, public testing::WithParamInterface<Holder> {
protected:
    /** The page holds when this returns; its console has said so. */
    void hold()
    {
        server.serve("/held",
                     html("<title>held</title><body style='background: #0000ff'>"
                          "<script>const say = () => console.log('holds'); function hold() {"
                          + std::string(GetParam().script) + "}</script>"));
        ASSERT_TRUE(view.open(server.url("/")));
        ASSERT_TRUE(view.go_to(server.url("/held")));
        ASSERT_TRUE(view.wait_for_colour(100, 100, BLUE));
        view.click(100, 100);
        view.run("hold()");
        ASSERT_TRUE(view.wait_for_console("holds"));
        held = view.loads().size();
    }

    testing::AssertionResult arrives(const std::string& path, const std::string& title)
    {
        const auto is_there = [&] {
            const std::vector<Load> all = view.loads();
            return all.size() > held && all.back().status == Load::SUCCEEDED
                && all.back().url == server.url(path);
        };
        return view.draw_until(is_there, 25s)
            ? comes_back(title)
            : testing::AssertionFailure() << path << " never arrived";
    }

    size_t held = 0;  // what had been said of loading before
};

TEST_P(HeldPage, is_left_by_a_url_of_its_site)
{
    hold();
    expect_message_matching(ENDED);
    view->set_url(server.url("/other"));
    ASSERT_TRUE(arrives("/other", "other"));
    ASSERT_TRUE(view.go_to(server.url("/"))) << "the view goes on";
}

INSTANTIATE_TEST_SUITE_P(Page, HeldPage, testing::ValuesIn(HOLDERS),
                         [](const auto& test) { return test.param.name; });

using LoopingPage = HeldPage;

TEST_P(LoopingPage, is_left_by_reloading)
{
    hold();
    expect_message_matching(ENDED);
    view->reload();
    EXPECT_TRUE(arrives("/held", "held"));
}

TEST_P(LoopingPage, is_left_by_html)
{
    hold();
    expect_message_matching(ENDED);
    view->load_html("<title>mine</title>", server.url("/base"));
    EXPECT_TRUE(arrives("/base", "mine"));
}

TEST_P(LoopingPage, is_left_by_going_back)
{
    hold();
    expect_message_matching(ENDED);
    view->back();
    EXPECT_TRUE(arrives("/", "one"));
    EXPECT_TRUE(view->can_go_forward());
}

TEST_P(LoopingPage, is_left_by_the_last_order)
{
    hold();
    expect_message_matching(ENDED);
    view->set_url(server.url("/held"));
    view->reload();
    view->set_url(server.url("/other"));
    EXPECT_TRUE(arrives("/other", "other"));
}

INSTANTIATE_TEST_SUITE_P(Page, LoopingPage, testing::Values(HOLDERS[0]),
                         [](const auto& test) { return test.param.name; });

// --- Reports to the host -----------------------------------------------------------------------

/** The reports of a view about its page, in order. For any thread. */
class Responses {
public:
    MWebView::PageResponding callback()
    {
        return [this](bool responding) {
            const std::lock_guard lock(mutex_);
            responses_.push_back(responding);
        };
    }

    std::vector<bool> all()
    {
        const std::lock_guard lock(mutex_);
        return responses_;
    }

private:
    std::mutex mutex_;
    std::vector<bool> responses_;
};

class ReportedPage : public HangingPage {
protected:
    ~ReportedPage() override { view->set_func_page_responding({}); }

    testing::AssertionResult says(const std::vector<bool>& expected)
    {
        if (view.draw_until([&] { return responses.all() == expected; }, 25s))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "not so after " << responses.all().size();
    }

    Responses responses;
};

TEST_F(ReportedPage, hangs_until_its_process_is_gone)
{
    view->set_func_page_responding(responses.callback());
    hang();
    ASSERT_TRUE(says({false}));
    expect_message_matching(ENDED);
    const size_t first = view.loads().size();
    view->set_url(server.url("/other"));
    ASSERT_TRUE(says({false, true}));
    ASSERT_TRUE(view.wait_for_load(Load::SUCCEEDED, first));
    EXPECT_TRUE(comes_back("other"));
    for (const Load& load : view.loads())
        EXPECT_NE(load.error_domain, "process")
            << "an end that the host requested is reported as a failure";
}

TEST_F(ReportedPage, hangs_until_it_goes_on)
{
    view->set_func_page_responding(responses.callback());
    server.serve("/wait", {.headers = {{"Content-Type", "text/plain"}}, .hold = HttpReply::ALL});
    ASSERT_TRUE(view.open(server.url("/")));
    view.run("const wait = new XMLHttpRequest(); wait.open('GET', '/wait', false); wait.send()");
    ASSERT_TRUE(says({false}));
    server.release();
    EXPECT_TRUE(says({false, true}));
}

TEST_F(ReportedPage, does_not_hang_when_it_stands_still_or_runs_no_scripts)
{
    server.serve("/sandboxed",
                 {.headers = {{"Content-Security-Policy", "sandbox"}}, .body = "<p>"});
    HostWebView without_scripts, sandboxed;
    without_scripts->set_javascript_enabled(false);
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(without_scripts.open(server.url("/other")));
    ASSERT_TRUE(sandboxed.open(server.url("/sandboxed")));
    for (MWebView* const facade : {&view.facade(), &without_scripts.facade(), &sandboxed.facade()})
        facade->set_func_page_responding(responses.callback());
    view.run("alert('and waits')");
    EXPECT_FALSE(view.draw_until([&] { return !responses.all().empty(); }, 7s));
    without_scripts->set_func_page_responding({});
    sandboxed->set_func_page_responding({});
}

// --- Processes that end with pages open --------------------------------------------------------

/** For what is never destroyed. */
template <typename Object>
Object& lasting()
{
    static auto* const object = new Object;
    return *object;
}

/** A view that nobody destroys, on a server that never ends. */
HostWebView& view_of(const std::string& path)
{
    leave_views_behind();
    auto& server = lasting<HttpServer>();
    server.serve("/",
                 html("<script>let i = 0; (function count() { ++i;"
                      " requestAnimationFrame(count); })();</script>"));
    server.serve("/slow", {.hold = HttpReply::ALL});
    server.serve("/endless", {.body = "<p>begins", .hold = HttpReply::END});
    server.serve("/loop", html("<script>console.log('hangs'); while (true);</script>"));
    auto& view = lasting<HostWebView>();
    view->set_url(server.url(path));
    require(view->load(), "the scene stands");
    if (path != "/at-once")
        require(view.draw_until([&] { return !server.requests(path).empty(); }),
                "the page is asked for");
    return view;
}

void page_being_asked_for()
{
    view_of("/slow");
    M::destroy();
}

void page_half_there()
{
    HostWebView& view = view_of("/endless");
    require(bool(view.wait_for_load(Load::STARTED)), "the page begins");
    M::destroy();
}

void scene_just_made()
{
    view_of("/at-once");
    M::destroy();
}

void page_at_work()
{
    HostWebView& view = view_of("/");
    require(bool(view.wait_for_load(Load::SUCCEEDED)), "the page loads");
    M::destroy();
}

void page_at_work_without_a_stop()
{
    HostWebView& view = view_of("/");
    require(bool(view.wait_for_load(Load::SUCCEEDED)), "the page loads");
}

void exit_in_a_navigation_handler()
{
    HostWebView& view = view_of("/");
    require(bool(view.wait_for_load(Load::SUCCEEDED)), "the page loads");
    view->set_func_navigation_handler(
        [](std::string, std::string) -> bool { std::exit(EXIT_SUCCESS); });
    view->reload();
    view.draw_until([] { return false; });
    require(false, "exit() does not return");
}

void page_in_a_loop()
{
    HostWebView& view = view_of("/loop");
    require(bool(view.wait_for_console("hangs")), "the page hangs");
    M::destroy();
}

void page_without_a_process()
{
    HostWebView& view = view_of("/");
    require(bool(view.wait_for_load(Load::SUCCEEDED)), "the page loads");
    for (const Process& page : page_processes())
        kill(page.id, SIGKILL);
    M::destroy();
}

void views_destroyed_first()
{
    HttpServer server;
    server.serve("/", html("page"));
    {
        HostWebView one, other;
        require(bool(one.open(server.url("/"))) && bool(other.open(server.url("/"))),
                "the pages load");
    }
    M::destroy();
    release_host();
}

void calls_after_the_end()
{
    HostWebView& view = view_of("/");
    require(bool(view.wait_for_load(Load::SUCCEEDED)), "the page loads");
    M::destroy();
    require(!view->load() && !view->can_go_back() && view->get_url().empty(), "there is no view");
    view->set_url("res://x/");
    view->load_html("<p>", "");
    view->reload();
    view->run_javascript("1");
    view->set_user_agent("x");
    view->set_otr(false);
    view->set_storage_path("/tmp");
    view->set_cookie("a", "/", "b", "c", false, "lax", 0);
    view->set_func_loading_changed({});
    view->destroy();
}

/** Those that the engine makes its page processes from. */
std::vector<Process> starters()
{
    std::vector<Process> result;
    for (const Process& process : engine_processes()) {
        std::ifstream file("/proc/" + std::to_string(process.id) + "/cmdline");
        const std::string arguments(std::istreambuf_iterator<char>(file), {});
        if (arguments.find("--type=zygote") != std::string::npos)
            result.push_back(process);
    }
    return result;
}

void starters_killed()
{
    HttpServer server;
    server.serve("/", html("<title>one</title>"));
    HostWebView view;
    require(view.open(server.url("/")), "the page loads");
    require(!starters().empty(), "the engine has starters");
    allow_messages_matching(".");
    for (const Process& starter : starters())
        kill(starter.id, SIGKILL);
    for (const Process& page : page_processes())
        kill(page.id, SIGKILL);
    require(view.wait_for_load(Load::FAILED), "the page is gone");
    for (int i = 0; i < 2; ++i) {
        const size_t first = view.loads().size();
        view->reload();
        const auto is_reported = [&] {
            const std::vector<Load> all = view.loads();
            return std::any_of(
                all.begin() + std::ptrdiff_t(first), all.end(), [](const Load& load) {
                    return load.status == Load::FAILED && load.error_domain == "process";
                });
        };
        require(view.draw_until(is_reported), "no page comes back, and the host learns why");
    }
    view->destroy();
    M::destroy();
    release_host();
}

const Scenarios SCENARIOS = {
    {"starters_killed", starters_killed},
    {"page_being_asked_for", page_being_asked_for},
    {"page_half_there", page_half_there},
    {"scene_just_made", scene_just_made},
    {"page_at_work", page_at_work},
    {"page_at_work_without_a_stop", page_at_work_without_a_stop},
    {"exit_in_a_navigation_handler", exit_in_a_navigation_handler},
    {"page_in_a_loop", page_in_a_loop},
    {"page_without_a_process", page_without_a_process},
    {"views_destroyed_first", views_destroyed_first},
    {"calls_after_the_end", calls_after_the_end},
};

class WebScenarios : public testing::TestWithParam<std::string> {};

TEST_P(WebScenarios, end_cleanly_and_leave_no_process_behind)
{
    const int runs = times(1, 50);
    for (int i = 0; i < runs; ++i) {
        const ProgramResult result = run_scenario(GetParam());
        ASSERT_FALSE(result.timed_out) << "run " << i << ": " << result.error;
        ASSERT_EQ(result.exit_code, 0) << "run " << i << ": " << result.error;
        ASSERT_TRUE(result.left_behind.empty())
            << "run " << i << ": " << result.left_behind.size() << " processes, the first is "
            << result.left_behind[0].name;
    }
}

INSTANTIATE_TEST_SUITE_P(Process, WebScenarios, testing::ValuesIn(SCENARIOS.names()),
                         [](const auto& test) { return test.param; });

}  // namespace

}  // namespace marlune::test

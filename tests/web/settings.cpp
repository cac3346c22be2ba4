// The settings of a web view and their effect on its pages.

#include "support/message_log.h"
#include "support/web/host_web_view.h"
#include "support/web/http_server.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace marlune::test {

namespace {

// A row's getter can be called on a const facade exactly where the row says so.
template <typename Facade, typename Value>
constexpr bool is_const(Value (Facade::*)() const)
{
    return true;
}

template <typename Facade, typename Value>
constexpr bool is_const(Value (Facade::*)())
{
    return false;
}

static_assert(!is_const(&MWebView::get_local_storage_enabled));
static_assert(!is_const(&MWebView::get_show_scroll_bars));
static_assert(is_const(&MWebView::get_javascript_enabled));
static_assert(is_const(&MWebView::get_default_text_encoding));
static_assert(is_const(&MWebView::get_unknown_url_scheme_policy));
static_assert(is_const(&MWebView::get_zoom_factor));
static_assert(std::is_same_v<decltype(MWebView().get_zoom_factor()), double>);

static_assert(
    std::is_same_v<decltype(&MWebView::set_javascript_enabled), void (MWebView::*)(bool) const>);
static_assert(std::is_same_v<decltype(&MWebView::set_unknown_url_scheme_policy),
                             void (MWebView::*)(int) const>);
static_assert(std::is_same_v<decltype(&MWebView::set_default_text_encoding),
                             void (MWebView::*)(const std::string&) const>);

std::vector<bool> other_values(bool initial)
{
    return {!initial, initial, initial};
}

std::vector<int> other_values(int)
{
    return {1, 2, 3, 4, -1, INT_MAX, INT_MIN, 0};
}

std::vector<std::string> other_values(const std::string&)
{
    return {"utf-8", "größer 🌊", std::string(1 << 20, 'x'), ""};
}

void expect_that_settings_keep_what_is_set(MWebView& view)
{
#define EXPECT_KEPT(type, name, property, initial, constness)                   \
    for (const auto& value : other_values(detail::WebSetting##type(initial))) { \
        view.set_##name(value);                                                 \
        EXPECT_EQ(view.get_##name(), value) << #name;                           \
    }
    MARLUNE_WEB_SETTINGS(EXPECT_KEPT)
#undef EXPECT_KEPT
}

void expect_default_settings(MWebView& view)
{
#define EXPECT_DEFAULT(type, name, property, initial, constness) \
    EXPECT_EQ(view.get_##name(), detail::WebSetting##type(initial)) << #name;
    MARLUNE_WEB_SETTINGS(EXPECT_DEFAULT)
#undef EXPECT_DEFAULT
}

void expect_settings_of_no_view(MWebView& view)
{
#define EXPECT_NOTHING(type, name, property, initial, constness) \
    EXPECT_EQ(view.get_##name(), detail::WebSetting##type()) << #name;
    MARLUNE_WEB_SETTINGS(EXPECT_NOTHING)
#undef EXPECT_NOTHING
}

/** A page that is red unless its script runs. */
constexpr auto GREEN_BY_SCRIPT = "<body style='background: #ff0000'><script>"
                                 "document.body.style.background = '#00ff00'</script>";

constexpr auto TALL = "<body style='height: 5000px; background: #ff0000'>";

constexpr Colour HALF_GREEN{0, 128, 0, 128};

class WebSettings : public testing::Test {
protected:
    /** Shows the page once more, by a request to the server. */
    testing::AssertionResult reload(const std::string& path)
    {
        return view.go_to(server.url(path));
    }

    testing::AssertionResult open(const std::string& path) { return view.open(server.url(path)); }

    int width_of_the_page() { return std::stoi(view.evaluate("innerWidth")); }

    HttpServer server;
    HostWebView view;
};

// --- Through the facade alone ------------------------------------------------------------------

TEST_F(WebSettings, have_their_defaults_in_a_new_view)
{
    expect_default_settings(view.facade());
    HostWebView other;
    expect_that_settings_keep_what_is_set(other.facade());
    expect_default_settings(view.facade());
}

TEST_F(WebSettings, keep_what_is_set)
{
    expect_that_settings_keep_what_is_set(view.facade());
}

TEST_F(WebSettings, keep_what_is_set_while_a_page_is_there)
{
    ASSERT_TRUE(view.open("about:blank"));
    expect_that_settings_keep_what_is_set(view.facade());
    expect_default_settings(view.facade());
    EXPECT_EQ(view.evaluate("1 + 1"), "2");
}

TEST_F(WebSettings, outlive_the_scene)
{
    view->set_javascript_enabled(false);
    ASSERT_TRUE(view->load());
    view->reset();
    EXPECT_FALSE(view->get_javascript_enabled());
}

TEST_F(WebSettings, do_nothing_without_a_view)
{
    view->destroy();
    MWebView& gone = view.facade();
    expect_settings_of_no_view(gone);
    gone.set_javascript_enabled(true);
    gone.set_default_text_encoding("utf-8");
    gone.set_unknown_url_scheme_policy(1);
    gone.set_background_color("red");
    gone.set_zoom_factor(110);
    gone.set_url("relative");
    gone.load_html("<p>", "");
    gone.set_func_navigation_handler([](std::string, std::string) { return true; });
    gone.set_func_loading_changed({});
    gone.run_javascript("1");
    gone.reload();
    gone.back_or_forward(1);
    expect_settings_of_no_view(gone);
    EXPECT_EQ(gone.get_background_color(), "");
    EXPECT_EQ(gone.get_user_agent(), "");
    EXPECT_EQ(gone.get_zoom_factor(), 0.0);
    EXPECT_EQ(gone.get_url(), "");
    EXPECT_FALSE(gone.can_go_back());
    EXPECT_FALSE(gone.can_go_forward());
    EXPECT_FALSE(gone.load());
}

TEST_F(WebSettings, take_the_option_of_the_process)
{
    EXPECT_FALSE(view->get_disable_gpu());
    view->set_disable_gpu(true);
    EXPECT_TRUE(HostWebView()->get_disable_gpu());
    view->set_disable_gpu(false);
    EXPECT_FALSE(view->get_disable_gpu());
}

// --- In pages ----------------------------------------------------------------------------------

TEST_F(WebSettings, let_pages_run_scripts_or_not)
{
    server.serve("/", html(GREEN_BY_SCRIPT));
    view->set_javascript_enabled(false);
    ASSERT_TRUE(open("/"));
    EXPECT_TRUE(view.wait_for_colour(100, 100, RED));
    view->set_javascript_enabled(true);
    ASSERT_TRUE(reload("/"));
    EXPECT_TRUE(view.wait_for_colour(100, 100, GREEN));
    view->set_javascript_enabled(false);
    ASSERT_TRUE(reload("/"));
    EXPECT_TRUE(view.wait_for_colour(100, 100, RED));
}

TEST_F(WebSettings, load_images_or_not)
{
    server.serve("/", html("<img src=picture.png>"));
    view->set_auto_load_images(false);
    ASSERT_TRUE(open("/"));
    EXPECT_TRUE(server.requests("/picture.png").empty());
    view->set_auto_load_images(true);
    EXPECT_TRUE(view.draw_until([&] { return !server.requests("/picture.png").empty(); }))
        << "the open page does not load its images";
    view->set_auto_load_images(false);
    ASSERT_TRUE(reload("/"));
    EXPECT_EQ(server.requests("/picture.png").size(), 1u);
}

TEST_F(WebSettings, load_icons_of_pages_or_not)
{
    server.serve("/", html("<link rel=icon href=mine.ico>"));
    view->set_auto_load_icons_for_page(false);
    ASSERT_TRUE(open("/"));
    view->set_auto_load_icons_for_page(true);
    EXPECT_TRUE(server.requests("/mine.ico").empty());
    ASSERT_TRUE(reload("/"));
    EXPECT_TRUE(server.wait_for_request("/mine.ico"));
}

TEST_F(WebSettings, offer_local_storage_or_not)
{
    server.serve("/", html("stored"));
    const std::string store = "localStorage.setItem('a', 'b') ?? localStorage.a";
    view->set_local_storage_enabled(false);
    ASSERT_TRUE(open("/"));
    EXPECT_TRUE(view.evaluate(store).starts_with("threw"));
    view->set_local_storage_enabled(true);
    ASSERT_TRUE(reload("/"));
    EXPECT_EQ(view.evaluate(store), "\"b\"");
}

TEST_F(WebSettings, show_scroll_bars_or_not)
{
    server.serve("/", html(TALL));
    ASSERT_TRUE(open("/"));
    const std::string width = "document.documentElement.clientWidth";
    EXPECT_EQ(view.evaluate(width), "512");
    EXPECT_TRUE(view.wait_for_colour(508, 128, RED));
    view->set_show_scroll_bars(true);
    ASSERT_TRUE(reload("/"));
    EXPECT_EQ(view.evaluate(width), "497");
    EXPECT_TRUE(view.draw_until([&] { return view.picture().pixel(508, 128) != RED; }));
}

TEST_F(WebSettings, name_the_encoding_of_pages_that_name_none)
{
    server.serve("/", {.headers = {{"Content-Type", "text/html"}}, .body = "<p>größer 🌊"});
    const std::string encoding = "document.characterSet";
    ASSERT_TRUE(open("/"));
    EXPECT_EQ(view.evaluate(encoding), "\"windows-1252\"");
    view->set_default_text_encoding("shift_jis");
    ASSERT_TRUE(reload("/"));
    EXPECT_EQ(view.evaluate(encoding), "\"Shift_JIS\"");

    HostWebView other;
    other->set_default_text_encoding("utf-8");
    ASSERT_TRUE(other.open(server.url("/")));
    EXPECT_EQ(other.evaluate("document.body.innerText"), "\"größer 🌊\"");
}

TEST_F(WebSettings, let_scripts_open_windows_or_not)
{
    server.serve("/", html("page"));
    server.serve("/window", html("window"));
    view->set_javascript_can_open_windows(false);
    ASSERT_TRUE(open("/"));
    EXPECT_EQ(view.evaluate("window.open('/window')"), "null");
    view->set_javascript_can_open_windows(true);
    EXPECT_TRUE(server.requests("/window").empty());
    view.run("window.open('/window')");
    EXPECT_TRUE(server.wait_for_request("/window"));
}

TEST_F(WebSettings, let_scripts_read_canvases_or_not)
{
    server.serve("/", html("<canvas width=1 height=1>"));
    const std::string read = "document.querySelector('canvas').getContext('2d')"
                             ".getImageData(0, 0, 1, 1).data.length";
    view->set_reading_from_canvas_enabled(false);
    ASSERT_TRUE(open("/"));
    EXPECT_TRUE(view.evaluate(read).starts_with("threw"));
    view->set_reading_from_canvas_enabled(true);
    ASSERT_TRUE(reload("/"));
    EXPECT_EQ(view.evaluate(read), "4");
}

TEST_F(WebSettings, send_the_pings_of_links_or_not)
{
    server.serve("/", html("<a href=#there ping=/ping style='position: fixed; inset: 0'>go</a>"));
    server.serve("/ping", html(""));
    ASSERT_TRUE(open("/"));
    ASSERT_TRUE(view.wait_until_drawn());
    view.click(100, 100);
    ASSERT_TRUE(view.draw_until([&] { return view.evaluate("location.hash") == "\"#there\""; }));
    view->set_hyperlink_auditing_enabled(true);
    ASSERT_TRUE(reload("/"));
    EXPECT_TRUE(server.requests("/ping").empty());
    ASSERT_TRUE(view.wait_until_drawn());
    view.click(100, 100);
    EXPECT_TRUE(view.draw_until([&] { return !server.requests("/ping").empty(); }));
}

TEST_F(WebSettings, let_tab_reach_links_or_not)
{
    server.serve("/", html("<a id=link href=/>go</a><button id=button>press</button>"));
    const auto focus_after_tab = [&] {
        EXPECT_TRUE(view.wait_until_drawn());
        view.type(KEY_TAB, "\t");
        EXPECT_TRUE(
            view.draw_until([&] { return view.evaluate("document.activeElement.id") != "\"\""; }));
        return view.evaluate("document.activeElement.id");
    };
    view->set_links_included_in_focus_chain(false);
    ASSERT_TRUE(open("/"));
    EXPECT_EQ(focus_after_tab(), "\"button\"");
    view->set_links_included_in_focus_chain(true);
    ASSERT_TRUE(reload("/"));
    EXPECT_EQ(focus_after_tab(), "\"link\"");
}

TEST_F(WebSettings, darken_pages_or_not)
{
    server.serve("/", html("<body style='background: #ffffff'>text"));
    ASSERT_TRUE(open("/"));
    EXPECT_TRUE(view.wait_for_colour(300, 200, WHITE));
    view->set_force_dark_mode(true);
    EXPECT_TRUE(view.wait_for_colour(300, 200, {18, 18, 18, 255}, 8));
    view->set_force_dark_mode(false);
    EXPECT_TRUE(view.wait_for_colour(300, 200, WHITE));

    HostWebView other;
    other->set_force_dark_mode(true);
    ASSERT_TRUE(other.open(server.url("/")));
    EXPECT_TRUE(other.wait_for_colour(300, 200, {18, 18, 18, 255}, 8));
}

TEST_F(WebSettings, show_an_error_page_or_stay_transparent)
{
    const std::string nobody = HttpServer().url("/");
    view->set_url(nobody);
    ASSERT_TRUE(view->load());
    ASSERT_TRUE(view.wait_for_load(Load::FAILED));
    const auto shows_anything = [&] { return bool(shows_something(view.picture(), "")); };
    EXPECT_FALSE(view.draw_until(shows_anything, std::chrono::milliseconds(500)));
    const Image without = view.picture();
    EXPECT_TRUE(every_pixel_in(without, without.area(), TRANSPARENT,
                               "a failed load leaves nothing to be seen"));

    view->set_error_page_enabled(true);
    const size_t first = view.loads().size();
    view->set_url(nobody);
    ASSERT_TRUE(view.wait_for_load(Load::FAILED, first));
    EXPECT_TRUE(view.draw_until(shows_anything)) << "the engine shows no error page";
}

TEST_F(WebSettings, leave_nothing_of_the_last_page_when_the_next_one_fails)
{
    HttpServer server;
    server.serve("/", html("<body style='background: rgb(0, 255, 0)'><input autofocus id=i>"));
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(view.wait_for_colour(300, 200, GREEN));
    view->set_url(HttpServer().url("/"));
    ASSERT_TRUE(view.wait_for_load(Load::FAILED));
    ASSERT_TRUE(view.wait_for_colour(300, 200, TRANSPARENT));

    ASSERT_TRUE(view.go_to(server.url("/")));
    EXPECT_TRUE(view.wait_for_colour(300, 200, GREEN));
    // The engine drops keys until the page has drawn content.
    const auto takes_keys = [&] {
        view.type_text("x");
        return view.evaluate("i.value") != "\"\"";
    };
    EXPECT_TRUE(view.draw_until(takes_keys)) << "the page does not receive keys again";
}

// --- Colours -----------------------------------------------------------------------------------

TEST_F(WebSettings, leave_pages_without_a_background_transparent)
{
    EXPECT_EQ(view->get_background_color(), "transparent");
    ASSERT_TRUE(view.show_html("<div style='position: fixed; width: 100px; height: 100px;"
                               " left: 0; top: 0; background: #0000ff'></div>"));
    ASSERT_TRUE(view.wait_for_colour(50, 50, BLUE));
    const Image picture = view.picture();
    EXPECT_TRUE(every_pixel_in(picture, {0, 0, 99, 99}, BLUE, "what is drawn is opaque"));
    EXPECT_TRUE(
        every_pixel_in(picture, {101, 0, 411, 256}, TRANSPARENT, "the rest is transparent"));
}

TEST_F(WebSettings, honour_the_pages_own_background)
{
    ASSERT_TRUE(view.show_html("<body style='background: #00ff00'>"));
    ASSERT_TRUE(view.wait_for_colour(50, 50, GREEN));
    const Image opaque = view.picture();
    EXPECT_TRUE(every_pixel_in(opaque, opaque.area(), GREEN, "the page fills the view"));

    ASSERT_TRUE(view.show_html("<body style='background: rgba(0, 255, 0, 0.5)'>"));
    EXPECT_TRUE(view.wait_for_colour(50, 50, HALF_GREEN));
    view.run("document.body.style.background = 'none'");
    EXPECT_TRUE(view.wait_for_colour(50, 50, TRANSPARENT));
}

TEST_F(WebSettings, put_a_colour_behind_pages)
{
    view->set_background_color("#0000ff");
    EXPECT_EQ(view->get_background_color(), "#0000ff");
    ASSERT_TRUE(view.show_html("<p>no background"));
    EXPECT_TRUE(view.wait_for_colour(400, 200, BLUE));
    view->set_background_color("red");
    EXPECT_TRUE(view.wait_for_colour(400, 200, RED));
    view->set_background_color("#8000ff00");
    EXPECT_TRUE(view.wait_for_colour(400, 200, HALF_GREEN));
    view->set_background_color("transparent");
    EXPECT_TRUE(view.wait_for_colour(400, 200, TRANSPARENT));
    view->set_background_color("nonsense");
    EXPECT_EQ(view->get_background_color(), "nonsense");
    view->set_background_color("red");
    view.run("document.body.style.background = '#00ff00'");
    EXPECT_TRUE(view.wait_for_colour(400, 200, GREEN));
}

// --- Zoom --------------------------------------------------------------------------------------

TEST_F(WebSettings, show_no_background_of_the_page_before)
{
    for (int turn = 0; turn < 10; ++turn) {
        ASSERT_TRUE(view.show_html("<body style='background: rgb(0, 255, 0)'>page"));
        ASSERT_TRUE(view.wait_for_colour(50, 50, GREEN));
        ASSERT_TRUE(view.show_html("<p>"));
        ASSERT_TRUE(view.wait_for_colour(50, 50, TRANSPARENT)) << turn;
    }
}

TEST_F(WebSettings, zoom_pages_to_twice_their_size_at_first)
{
    MWebView fresh;
    set_up(fresh, {512, 256});
    const auto log = std::make_shared<ConsoleLog>();
    fresh.set_func_javascript_console_log(write_to(log));
    // Written repeatedly, because a page may exist before it has its size.
    fresh.set_url("data:text/html,<script>setInterval(() => console.log(innerWidth), 50)</script>");
    ASSERT_TRUE(fresh.load());
    const auto is_told = [&] {
        fresh.render();
        return log->take_first([](const ConsoleRecord& r) { return r.message == "256"; })
            .has_value();
    };
    EXPECT_TRUE(wait_until(is_told));
    EXPECT_EQ(fresh.get_zoom_factor(), 1.0);
    fresh.destroy();
}

TEST_F(WebSettings, zoom_pages)
{
    ASSERT_TRUE(view.show_html("<p>page"));
    const std::pair<int, int> widths[] = {{100, 512}, {25, 2048}, {50, 1024}, {200, 256},
                                          {125, 410}, {500, 102}, {110, 256}, {75, 683},
                                          {0, 256},   {400, 128}, {-25, 256}};
    for (const auto& [percent, width] : widths) {
        view->set_zoom_factor(percent);
        EXPECT_TRUE(view.draw_until([&] { return std::abs(width_of_the_page() - width) <= 1; }))
            << percent << " % but the page is " << width_of_the_page() << " px wide";
        EXPECT_EQ(view->get_zoom_factor(), 1.0) << "the getter must return 1 for any zoom";
    }
}

TEST_F(WebSettings, zoom_pages_that_come_later)
{
    server.serve("/", html("<p>page"));
    view->set_zoom_factor(50);
    ASSERT_TRUE(open("/"));
    EXPECT_EQ(width_of_the_page(), 1024);
    ASSERT_TRUE(view.go_to(server.url("/", "localhost")));
    EXPECT_EQ(width_of_the_page(), 1024);
}

TEST_F(WebSettings, zoom_one_view_and_no_other)
{
    server.serve("/", html("<p>page"));
    HostWebView other;
    view->set_zoom_factor(50);
    other->set_zoom_factor(200);
    ASSERT_TRUE(open("/"));
    ASSERT_TRUE(other.open(server.url("/")));
    EXPECT_EQ(width_of_the_page(), 1024);
    EXPECT_EQ(other.evaluate("innerWidth"), "256");
    ASSERT_TRUE(reload("/"));
    EXPECT_EQ(width_of_the_page(), 1024);
}

}  // namespace

}  // namespace marlune::test

// Popups of a page: lists, calendars, the context menu, tool tips and full screen. The view draws
// all of them itself.

#include "support/message_log.h"
#include "support/process/memory.h"
#include "support/web/http_server.h"
#include "support/web/overlay.h"

#include <gtest/gtest.h>

#include <string>

namespace marlune::test {

namespace {

using namespace overlay;

/** No popup may be a window of the window system. */
class PagePopups : public testing::Test {
protected:
    void TearDown() override
    {
        EXPECT_EQ(watch_.windows(), 0) << "a view has opened a window of the window system";
    }

    void show(const std::string& body)
    {
        ASSERT_TRUE(
            view.show_html("<!doctype html><body style='background:white;margin:0'>" + body));
        ASSERT_TRUE(view.wait_for_colour(2, 2, WHITE));
    }

    testing::AssertionResult is_eventually(const std::string& expression, const std::string& value)
    {
        std::string last;
        if (view.draw_until([&] { return (last = view.evaluate(expression)) == value; }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << expression << " is " << last << ", not " << value;
    }

    bool has_tip()
    {
        view.draw_frame();
        return find_colour(view.picture(), TIP, 12).count > 100;
    }

    testing::AssertionResult shows_tip()
    {
        if (wait_until([&] { return has_tip(); }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "no tool tip; see " << keep_picture(view.picture());
    }

    // The tip is slightly transparent; this is its colour over white.
    static constexpr Colour TIP{19, 31, 50, 255};

private:
    WindowWatch watch_;

protected:
    HostWebView view{{640, 480}};
};

// Each option has a colour, by which the tests find it.
constexpr auto LIST =
    "<select id=s style='position:fixed;left:100px;top:50px;font:40px sans-serif'>"
    "<option style='background:#ff0000;color:#ff0000'>red"
    "<option style='background:#00ff00;color:#00ff00'>green"
    "<option style='background:#0000ff;color:#0000ff'>blue</select>"
    "<script>s.onchange = () => console.log('chose ' + s.value)</script>";
constexpr uint32_t LIST_X = 120, LIST_Y = 70;

}  // namespace

TEST_F(PagePopups, a_list_opens_below_its_field_and_takes_a_click)
{
    show(LIST);
    view.click(LIST_X, LIST_Y);
    ASSERT_TRUE(shows(view, GREEN));
    const Sighting green = find_colour(view.picture(), GREEN);
    EXPECT_NEAR(green.left, 100, 3);
    EXPECT_GT(green.top, 100u);
    ASSERT_TRUE(click_on(view, GREEN));
    EXPECT_TRUE(view.wait_for_console("chose green"));
    EXPECT_TRUE(shows_no(view, GREEN));

    view.click(LIST_X, LIST_Y);
    ASSERT_TRUE(click_on(view, BLUE));
    EXPECT_TRUE(view.wait_for_console("chose blue"));
}

TEST_F(PagePopups, a_list_takes_keys)
{
    show(LIST);
    view.click(LIST_X, LIST_Y);
    ASSERT_TRUE(shows(view, BLUE));
    press_key(view, KEY_DOWN);
    press_key(view, KEY_DOWN);
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("chose blue"));
}

TEST_F(PagePopups, a_list_closes_by_escape_and_by_a_click_elsewhere)
{
    show(LIST);
    view.click(LIST_X, LIST_Y);
    ASSERT_TRUE(shows(view, BLUE));
    press_key(view, KEY_ESCAPE);
    EXPECT_TRUE(shows_no(view, BLUE));

    view.click(LIST_X, LIST_Y);
    ASSERT_TRUE(shows(view, BLUE));
    view.click(600, 400);
    EXPECT_TRUE(shows_no(view, BLUE));
    EXPECT_EQ(view.evaluate("s.value"), "\"red\"");
}

TEST_F(PagePopups, a_list_that_is_longer_than_the_view_is_drawn_smaller)
{
    show(LIST);
    view.run("for (let i = 0; i < 40; ++i) s.prepend(new Option('more'));"
             "s.style.top = '420px'; s.lastElementChild.selected = true;");
    ASSERT_TRUE(is_eventually("s.getBoundingClientRect().top", "420"));
    view.click(LIST_X, 440);
    ASSERT_TRUE(shows(view, GREEN, 20));
    EXPECT_LT(find_colour(view.picture(), GREEN).bottom, 480u);
    ASSERT_TRUE(click_on(view, GREEN));
    EXPECT_TRUE(view.wait_for_console("chose green"));
}

TEST_F(PagePopups, a_list_that_is_too_wide_to_read_is_cut_with_an_ellipsis)
{
    show(LIST);
    view.run("for (const option of s) option.label = 'x'.repeat(30000);"
             "s.style.width = '200px'; s.style.fontSize = '100px'");
    ASSERT_TRUE(is_eventually("s.offsetWidth", "200"));
    const double before = holdings_with_descendants().resident_kib;
    view.click(LIST_X, LIST_Y);
    ASSERT_TRUE(shows(view, GREEN));
    const Sighting green = find_colour(view.picture(), GREEN);
    EXPECT_LT(green.left, 20u);
    EXPECT_GT(green.bottom - green.top, 15u) << "it is too small to be read";
    // The colour of the right edge, behind the ellipsis.
    const Sighting edge = find_colour(view.picture(), CARD);
    EXPECT_GT(edge.left, 560u);
    EXPECT_GT(edge.right, 620u);
    EXPECT_LT(holdings_with_descendants().resident_kib - before, 200 * 1024.0);
    ASSERT_TRUE(click_on(view, GREEN));
    EXPECT_TRUE(view.wait_for_console("chose green"));
    EXPECT_TRUE(shows_no(view, CARD));
}

TEST_F(PagePopups, a_list_that_is_cut_shows_how_its_rows_begin)
{
    show(LIST);
    // Red blocks, then the blue background alone. Twice, because the engine may colour the chosen
    // row.
    view.run("s.innerHTML = '<option>' + ('<option style=\"background:#0000ff;color:#ff0000\">'"
             "+ '\\u2588'.repeat(3) + '\\u00a0'.repeat(400)).repeat(2);"
             "s.style.width = '200px'");
    ASSERT_TRUE(is_eventually("s.offsetWidth", "200"));
    for (const bool moves : {false, true}) {
        view.click(LIST_X, LIST_Y);
        ASSERT_TRUE(shows(view, BLUE));
        if (moves)
            press_key(view, KEY_DOWN);
        EXPECT_TRUE(shows(view, RED)) << keep_picture(view.picture());
        press_key(view, KEY_ESCAPE);
        ASSERT_TRUE(shows_no(view, BLUE));
    }
}

TEST_F(PagePopups, a_list_of_any_size_stays_within_bounds)
{
    show(LIST);
    // The engine's own colour for the chosen row.
    constexpr Colour CHOSEN{0x19, 0x67, 0xd2, 255};
    const double before = holdings_with_descendants().resident_kib;
    for (const char* font : {"1000px", "10000px"}) {
        view.run(std::string("s.style.width = '200px'; s.style.height = '60px';"
                             "while (s.length < 20) s.add(s[0].cloneNode(true));"
                             "s.style.fontSize = '")
                 + font + "'");
        ASSERT_TRUE(is_eventually("getComputedStyle(s).fontSize", '"' + std::string(font) + '"'));
        view.click(LIST_X, LIST_Y);
        ASSERT_TRUE(shows(view, CHOSEN, 1000));
        EXPECT_LT(holdings_with_descendants().resident_kib - before, 200 * 1024.0);
        press_key(view, KEY_ESCAPE);
        ASSERT_TRUE(shows_no(view, CHOSEN));
    }
}

TEST_F(PagePopups, a_list_goes_with_the_view)
{
    for (const bool reset : {true, false}) {
        HostWebView other({640, 480});
        ASSERT_TRUE(other.show_html(std::string("<!doctype html>") + LIST));
        ASSERT_TRUE(other.wait_for_colour(2, 2, TRANSPARENT));
        other.click(LIST_X, LIST_Y);
        ASSERT_TRUE(shows(other, BLUE));
        if (reset)
            other->reset();
    }
    show("");
    EXPECT_EQ(view.evaluate("1 + 1"), "2");
}

TEST_F(PagePopups, a_calendar_sets_the_date)
{
    show("<input id=d type=date value=2024-05-15 style='position:fixed;left:20px;top:20px;"
         "width:200px;font:20px monospace'>");
    ASSERT_EQ(view.evaluate("void (d.onchange = () => console.log(d.value),"
                            "onclick = () => console.log('clicked ' + document.hasFocus()))"),
              "undefined");
    // The engine opens no calendar at the moment when a page gets the focus.
    view.click(400, 300);
    ASSERT_TRUE(view.wait_for_console("clicked true"));
    // Its button, at the right.
    view.click(208, 33);
    // The chosen day is marked in blue; the same day of the next week is below it.
    constexpr Colour CHOSEN{0, 0x75, 0xff, 255};
    ASSERT_TRUE(shows(view, CHOSEN, 20));
    const Sighting day = find_colour(view.picture(), CHOSEN);
    view.click(day.x(), day.y() + 28);
    EXPECT_TRUE(view.wait_for_console("2024-05-22"));
    EXPECT_TRUE(shows_no(view, CHOSEN));
}

TEST_F(PagePopups, suggestions_can_be_read_and_chosen)
{
    show("<input id=i list=l style='position:fixed;left:100px;top:50px;width:200px;height:40px'>"
         "<datalist id=l><option>WWWWWWWW<option>WWWWWWWWWWWW</datalist>");
    view.click(150, 70);
    view.type_text("W");
    const auto dark_pixels = [&] {
        view.draw_frame();
        const Image picture = view.picture();
        int count = 0;
        for (uint32_t y = 94; y < 120; ++y) {
            for (uint32_t x = 104; x < 190; ++x)
                count += picture.pixel(x, y).r < 100;
        }
        return count;
    };
    ASSERT_TRUE(wait_until([&] { return dark_pixels() > 100; })) << keep_picture(view.picture());
    view.click(140, 100);
    EXPECT_TRUE(is_eventually("i.value", "\"WWWWWWWW\""));
}

TEST_F(PagePopups, suggestions_of_any_length_stay_within_bounds)
{
    show("<input id=i list=l style='position:fixed;left:100px;top:50px;width:200px;height:40px'>"
         "<datalist id=l></datalist>");
    ASSERT_EQ(view.evaluate("void l.append(...Array.from({length: 600}, "
                            "(_, n) => new Option('x'.repeat(150000) + n)),"
                            "new Option('x'.repeat(900)))"),
              "undefined");
    const double before = holdings_with_descendants().resident_kib;
    view.click(150, 70);
    view.type_text("x");
    const auto is_shown = [&] {
        view.draw_frame();
        // Their frame, at the left.
        return !is_close(view.picture().pixel(100, 300), WHITE, 20);
    };
    EXPECT_TRUE(wait_until(is_shown)) << keep_picture(view.picture());
    EXPECT_LT(holdings_with_descendants().resident_kib - before, 300 * 1024.0);
}

TEST_F(PagePopups, the_menu_reloads_the_page)
{
    HttpServer server;
    server.serve("/", html("<body style='background:white;margin:50px'>page"));
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(view.wait_for_colour(2, 2, WHITE));
    view.click(300, 200, RIGHT_BUTTON);
    ASSERT_TRUE(shows(view, CARD, 1000));
    const Sighting menu = find_colour(view.picture(), CARD);
    EXPECT_NEAR(menu.left, 300, 8);
    EXPECT_NEAR(menu.top, 200, 8);
    // Back and Forward lead nowhere, so that the first entry for the keys is Reload.
    press_key(view, KEY_DOWN);
    ASSERT_TRUE(shows(view, CURRENT));
    view.type_text("\n");
    EXPECT_TRUE(shows_no(view, CARD));
    EXPECT_TRUE(server.wait_for_request("/", 2));
}

TEST_F(PagePopups, the_menu_goes_back)
{
    HttpServer server;
    server.serve("/a", html("<body style='background:#00ff00'>"));
    server.serve("/b", html("<body style='background:white;margin:50px'>page"));
    ASSERT_TRUE(view.open(server.url("/a")));
    ASSERT_TRUE(view.go_to(server.url("/b")));
    ASSERT_TRUE(view.wait_for_colour(2, 2, WHITE));
    view.click(300, 200, RIGHT_BUTTON);
    ASSERT_TRUE(shows(view, CARD, 1000));
    const Sighting menu = find_colour(view.picture(), CARD);
    view.move(menu.x(), menu.top + 15);
    ASSERT_TRUE(click_on(view, CURRENT));
    EXPECT_TRUE(view.wait_for_colour(2, 2, GREEN));
}

TEST_F(PagePopups, the_menu_edits_text)
{
    show("<textarea id=t style='position:fixed;left:20px;top:20px;width:300px;height:100px'>"
         "moon</textarea>");
    const auto choose = [&](int entry) {
        view.click(100, 60, RIGHT_BUTTON);
        ASSERT_TRUE(shows(view, CARD, 1000));
        for (int i = 0; i < entry; ++i)
            press_key(view, KEY_DOWN);
        view.type_text("\n");
        ASSERT_TRUE(shows_no(view, CARD));
    };
    // Without a selection, Paste may come before "Select all", which is the last entry.
    view.click(100, 60, RIGHT_BUTTON);
    ASSERT_TRUE(shows(view, CARD, 1000));
    press_key(view, KEY_UP);
    view.type_text("\n");
    ASSERT_TRUE(is_eventually("t.selectionEnd - t.selectionStart", "4"));
    choose(1);  // Cut
    ASSERT_TRUE(is_eventually("t.value", "\"\""));
    choose(1);  // Paste
    EXPECT_TRUE(is_eventually("t.value", "\"moon\""));
}

TEST_F(PagePopups, the_menu_closes_by_escape_and_by_a_press_beside_it)
{
    show("<script>let presses = 0; addEventListener('mousedown', e => presses += e.button === 0)"
         "</script>");
    // In the corner, it opens towards the middle.
    view.click(636, 476, RIGHT_BUTTON);
    ASSERT_TRUE(shows(view, CARD, 1000));
    EXPECT_GT(find_colour(view.picture(), CARD).left, 400u);
    EXPECT_LT(find_colour(view.picture(), CARD).bottom, 479u);
    press_key(view, KEY_ESCAPE);
    EXPECT_TRUE(shows_no(view, CARD));

    view.click(300, 200, RIGHT_BUTTON);
    ASSERT_TRUE(shows(view, CARD, 1000));
    view.click(100, 100);
    EXPECT_TRUE(shows_no(view, CARD));
    EXPECT_EQ(view.evaluate("presses"), "0") << "the page has received the press";
    view.click(100, 100);
    EXPECT_TRUE(is_eventually("presses", "1"));
}

TEST_F(PagePopups, a_page_with_a_menu_of_its_own_shows_no_other)
{
    show("<script>oncontextmenu = e => { e.preventDefault(); console.log('own'); }</script>");
    view.click(300, 200, RIGHT_BUTTON);
    EXPECT_TRUE(view.wait_for_console("own"));
    view.draw_frame();
    EXPECT_EQ(find_colour(view.picture(), CARD).count, 0u);
}

TEST_F(PagePopups, a_tool_tip_shows_beside_the_mouse_and_goes_when_it_leaves)
{
    show("<div title='What this is for' style='position:fixed;left:100px;top:100px;width:100px;"
         "height:100px;background:#eee'></div>");
    view.move(140, 140);
    view.draw_frame();
    view.move(150, 150);
    ASSERT_TRUE(shows_tip());
    const Sighting tip = find_colour(view.picture(), TIP, 12);
    EXPECT_NEAR(tip.left, 150, 8);
    EXPECT_NEAR(tip.top, 172, 8);
    view.move(400, 300);
    EXPECT_TRUE(wait_until([&] { return !has_tip(); })) << keep_picture(view.picture());
}

TEST_F(PagePopups, a_tool_tip_shows_the_beginning_of_a_text_without_end)
{
    show("<div id=d style='position:fixed;left:100px;top:100px;width:100px;height:100px;"
         "background:#eee'></div><script>d.title = 'x'.repeat(20e6)</script>");
    view.move(140, 140);
    view.draw_frame();
    view.move(150, 150);
    EXPECT_TRUE(shows_tip());
}

TEST_F(PagePopups, an_element_fills_the_view_until_escape)
{
    view->set_fullscreen_support_enabled(true);
    show("<div id=f style='position:fixed;left:20px;top:20px;width:100px;height:100px;"
         "background:#00ff00'></div><script>"
         "f.onclick = () => f.requestFullscreen();"
         "addEventListener('keydown', e => console.log('key ' + e.key))</script>");
    view.click(50, 50);
    EXPECT_TRUE(view.wait_for_colour(630, 470, GREEN));
    press_key(view, KEY_ESCAPE);
    EXPECT_TRUE(view.wait_for_colour(630, 470, WHITE));
    press_key(view, KEY_ESCAPE);
    EXPECT_TRUE(view.wait_for_console("key Escape"));
}

TEST_F(PagePopups, no_element_fills_the_view_without_the_setting)
{
    show("<div id=f style='position:fixed;left:20px;top:20px;width:100px;height:100px;"
         "background:#00ff00'></div><script>"
         "f.onclick = () => f.requestFullscreen().catch(() => console.log('refused'))</script>");
    view.click(50, 50);
    EXPECT_TRUE(view.wait_for_console("refused"));
    EXPECT_EQ(view.evaluate("document.fullscreenElement"), "null");
}

}  // namespace marlune::test

// Mouse, wheel and keys in pages, and pages with animations.

#include "support/web/host_web_view.h"

#include <gtest/gtest.h>

#include <cctype>
#include <chrono>
#include <initializer_list>
#include <string>
#include <utility>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

// A field that fills the upper half, and scripts that report its events.
constexpr auto FIELD = R"(<body style="margin: 0">
<textarea id=field style="position: fixed; left: 0; top: 0; width: 500px; height: 100px"></textarea>
<input id=second style="position: fixed; left: 0; top: 150px; width: 200px; height: 30px">)";

class WebInput : public testing::Test {
protected:
    /** Shows a page and waits until it accepts input. */
    void show(const std::string& page)
    {
        ASSERT_TRUE(view.show_html(page));
        ASSERT_TRUE(view.wait_until_drawn());
    }

    void show_field()
    {
        show(FIELD);
        view.click(50, 50);
        ASSERT_TRUE(becomes("document.activeElement.id", "\"field\""));
    }

    testing::AssertionResult becomes(const std::string& expression, const std::string& value)
    {
        std::string last;
        const auto has_become = [&] { return (last = view.evaluate(expression)) == value; };
        if (view.draw_until(has_become, 3s))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
            << expression << " never became " << value << " but is " << last;
    }

    testing::AssertionResult field_becomes(const std::string& value)
    {
        return becomes("field.value", '"' + value + '"');
    }

    void keys(std::initializer_list<uint32_t> keys)
    {
        for (const uint32_t key : keys)
            view.type(key);
    }

    void with_control(char letter)
    {
        view.type(uint32_t(std::toupper(letter)), std::string("Ctrl+") + letter);
    }

    /**
     * Input reaches the page by a separate path, so the test waits for what must be there first.
     */
    void forget_what_was_seen()
    {
        view.run("seen.length = 0");
        ASSERT_TRUE(becomes("seen", "[]"));
    }

    HostWebView view;
};

// --- Keys --------------------------------------------------------------------------------------

TEST_F(WebInput, reaches_the_element_that_was_clicked)
{
    show(FIELD);
    view.type_text("nobody");
    view.click(50, 50);
    view.type_text("first");
    view.click(50, 165);
    view.type_text("second");
    ASSERT_TRUE(becomes("second.value", "\"second\""));
    EXPECT_TRUE(field_becomes("first"));
    view.click(400, 240);
    view.type_text("nobody");
    EXPECT_TRUE(becomes("document.activeElement.tagName", "\"BODY\""));
    EXPECT_TRUE(becomes("second.value", "\"second\""));
}

TEST_F(WebInput, types_letters_of_any_script)
{
    show_field();
    view.type_text("Az 09 .,;:!?#'<>&");
    ASSERT_TRUE(field_becomes("Az 09 .,;:!?#'<>&"));
    view.type_text(" äÖß éñ €");
    ASSERT_TRUE(field_becomes("Az 09 .,;:!?#'<>& äÖß éñ €"));
    view.type_text(" 月🌊🎮");
    ASSERT_TRUE(field_becomes("Az 09 .,;:!?#'<>& äÖß éñ € 月🌊🎮"));
}

TEST_F(WebInput, sends_keys_to_scripts)
{
    show_field();
    view.run("const seen = []; for (const type of ['keydown', 'keypress', 'keyup'])"
             " field.addEventListener(type, e => seen.push(`${type} ${e.key} ${e.keyCode}"
             " ${e.ctrlKey || e.shiftKey || e.altKey}`))");
    ASSERT_TRUE(becomes("seen", "[]"));
    view.type('A', "a");
    ASSERT_TRUE(
        becomes("seen", R"(["keydown a 65 false","keypress a 97 false","keyup a 65 false"])"));
    forget_what_was_seen();
    view.type(KEY_LEFT);
    EXPECT_TRUE(becomes("seen", R"(["keydown ArrowLeft 37 false","keyup ArrowLeft 37 false"])"));
}

TEST_F(WebInput, edits_with_the_keys_for_it)
{
    show_field();
    view.type_text("abc\ndef");
    ASSERT_TRUE(field_becomes("abc\\ndef"));
    view.type(KEY_BACKSPACE);
    ASSERT_TRUE(field_becomes("abc\\nde"));
    keys({KEY_HOME, KEY_DELETE});
    ASSERT_TRUE(field_becomes("abc\\ne"));
    keys({KEY_UP, KEY_RIGHT});
    view.type_text("1");
    ASSERT_TRUE(field_becomes("a1bc\\ne"));
    view.type(KEY_END);
    view.type_text("2");
    ASSERT_TRUE(field_becomes("a1bc2\\ne"));
    keys({KEY_LEFT, KEY_LEFT});
    view.type_text("3");
    ASSERT_TRUE(field_becomes("a1b3c2\\ne"));
    keys({KEY_DOWN, KEY_HOME});
    view.type_text("4");
    ASSERT_TRUE(field_becomes("a1b3c2\\n4e"));
}

TEST_F(WebInput, moves_the_focus_by_tab)
{
    show_field();
    view.type_text("\t");
    ASSERT_TRUE(becomes("document.activeElement.id", "\"second\""));
    view.type_text("typed");
    ASSERT_TRUE(becomes("second.value", "\"typed\""));
    view.type(KEY_BACKTAB, "Shift+");
    EXPECT_TRUE(becomes("document.activeElement.id", "\"field\""));
}

TEST_F(WebInput, submits_forms_by_enter)
{
    show("<form onsubmit='console.log(`sent ${word.value}`); return false'><input id=word "
         "style='position: fixed; left: 0; top: 0; width: 200px; height: 30px'></form>");
    view.click(50, 15);
    view.type_text("abc\n");
    EXPECT_TRUE(view.wait_for_console("sent abc"));
}

TEST_F(WebInput, copies_cuts_and_pastes)
{
    show_field();
    view.type_text("größer 🌊");
    with_control('a');
    with_control('c');
    ASSERT_TRUE(becomes("getSelection().toString()", "\"größer 🌊\""));
    view.type(KEY_END);
    with_control('v');
    ASSERT_TRUE(field_becomes("größer 🌊größer 🌊"));
    with_control('a');
    with_control('x');
    ASSERT_TRUE(field_becomes(""));
    with_control('v');
    with_control('v');
    ASSERT_TRUE(field_becomes("größer 🌊größer 🌊größer 🌊größer 🌊"));
    with_control('z');
    EXPECT_TRUE(field_becomes("größer 🌊größer 🌊"));
}

TEST_F(WebInput, selects_with_shift)
{
    show_field();
    view.type_text("abc");
    view->key_event(KEY_SHIFT, 0, "");
    view->key_event(KEY_LEFT, 0, "");
    view->key_event(KEY_LEFT, 1, "");
    view->key_event(KEY_SHIFT, 1, "");
    EXPECT_TRUE(becomes("getSelection().toString()", "\"c\""));
}

TEST_F(WebInput, reaches_the_page_that_comes_next_without_a_click)
{
    show_field();
    show("<input id=field autofocus style='width: 300px'>");
    view.type_text("at once");
    EXPECT_TRUE(field_becomes("at once"));
}

// --- Mouse -------------------------------------------------------------------------------------

TEST_F(WebInput, sends_mouse_events_to_scripts)
{
    show("<script>const seen = []; for (const type of ['mousedown', 'mouseup', 'click', 'auxclick',"
         " 'contextmenu', 'dblclick'])"
         " document.addEventListener(type, e => { seen.push(`${type} ${e.clientX} ${e.clientY} "
         "${e.button} ${e.buttons}`); e.preventDefault(); })</script>");
    view.click(123, 45);
    ASSERT_TRUE(
        becomes("seen", R"(["mousedown 123 45 0 1","mouseup 123 45 0 0","click 123 45 0 0"])"));
    forget_what_was_seen();
    view.click(300, 200, MIDDLE_BUTTON);
    ASSERT_TRUE(becomes(
        "seen", R"(["mousedown 300 200 1 4","mouseup 300 200 1 0","auxclick 300 200 1 0"])"));
    forget_what_was_seen();
    view.click(10, 250, RIGHT_BUTTON);
    EXPECT_TRUE(becomes("seen",
                        R"(["mousedown 10 250 2 2","contextmenu 10 250 2 2",)"
                        R"("mouseup 10 250 2 0","auxclick 10 250 2 0"])"));
}

TEST_F(WebInput, double_clicks)
{
    show("<p style='position: fixed; left: 20px; top: 20px; margin: 0; font: 40px monospace'>"
         "word other</p>");
    view.click(50, 45);
    view.click(50, 45);
    EXPECT_TRUE(becomes("getSelection().toString().trim()", "\"word\""));
}

TEST_F(WebInput, hits_the_right_place_at_any_zoom)
{
    for (const int percent : {25, 50, 100, 200, 400}) {
        view->set_zoom_factor(percent);
        show("<script>document.addEventListener('click',"
             " e => console.log(`at ${e.clientX} ${e.clientY}`))</script>");
        view.click(200, 100);
        const std::string x = std::to_string(200 * 100 / percent);
        const std::string y = std::to_string(100 * 100 / percent);
        EXPECT_TRUE(view.wait_for_console("at " + x + " " + y)) << percent;
    }
}

TEST_F(WebInput, hovers)
{
    show("<style>div { position: fixed; left: 100px; top: 50px; width: 100px; height: 100px;"
         " background: #ff0000 } div:hover { background: #00ff00 }</style><div></div>");
    ASSERT_TRUE(view.wait_for_colour(150, 100, RED));
    view.move(140, 100);  // arrives as the entry of the mouse, which pages do not see
    view.move(150, 100);
    EXPECT_TRUE(view.wait_for_colour(150, 100, GREEN));
    view.move(300, 100);
    EXPECT_TRUE(view.wait_for_colour(150, 100, RED));
}

TEST_F(WebInput, scrolls_by_the_wheel)
{
    show("<body style='margin: 0; height: 5000px'>");
    const int notch = 60;  // px of the page
    view->mouse_wheel_down(100, 100);
    ASSERT_TRUE(becomes("scrollY", std::to_string(notch)));
    view->mouse_wheel_down(100, 100);
    view->mouse_wheel_down(100, 100);
    ASSERT_TRUE(becomes("scrollY", std::to_string(3 * notch)));
    for (int i = 0; i < 4; ++i)
        view->mouse_wheel_up(100, 100);
    EXPECT_TRUE(becomes("scrollY", "0"));
}

TEST_F(WebInput, scrolls_the_element_under_the_mouse)
{
    show("<body style='margin: 0; height: 5000px'><div id=box style='position: fixed; left: 0;"
         " top: 0; width: 200px; height: 200px; overflow: auto'><div style='height: 3000px'></div>"
         "</div>");
    view->mouse_wheel_down(100, 100);
    ASSERT_TRUE(becomes("box.scrollTop > 0", "true"));
    EXPECT_EQ(view.evaluate("scrollY"), "0");
    view->mouse_wheel_down(400, 100);
    EXPECT_TRUE(becomes("scrollY > 0", "true"));
}

TEST_F(WebInput, selects_text_by_dragging)
{
    show("<p style='position: fixed; left: 0; top: 20px; margin: 0; font: 40px monospace'>"
         "abcdefghij</p>");
    const int width = std::stoi(view.evaluate("document.querySelector('p').offsetWidth"));
    const auto at = [&](int letter) { return uint32_t(width * letter / 10); };
    view.move(at(2), 45);
    view.press(at(2), 45);
    view.move(at(4), 45);
    view.move(at(7), 45);
    view.release(at(7), 45);
    EXPECT_TRUE(becomes("getSelection().toString()", "\"cdefg\""));
}

TEST_F(WebInput, moves_a_slider)
{
    show("<input id=slider type=range min=0 max=100 value=0 style='position: fixed; left: 0;"
         " top: 0; margin: 0; width: 400px; height: 40px'>");
    view.move(8, 20);
    view.press(8, 20);
    view.move(200, 20);
    ASSERT_TRUE(becomes("slider.value", "\"50\""));
    view.release(200, 20);
    view.move(300, 20);
    EXPECT_TRUE(becomes("slider.value", "\"50\""))
        << "the slider is still dragged after the release";
}

// --- Animations --------------------------------------------------------------------------------

TEST_F(WebInput, draws_on_canvases)
{
    show("<body style='margin: 0'><canvas id=canvas width=512 height=256></canvas><script>"
         "const context = canvas.getContext('2d'); function fill(color) {"
         " context.fillStyle = color; context.fillRect(100, 50, 100, 100); }"
         " fill('#0000ff');</script>");
    ASSERT_TRUE(view.wait_for_colour(150, 100, BLUE));
    EXPECT_EQ(view.picture().pixel(50, 100), TRANSPARENT);
    view.run("fill('#00ff00')");
    EXPECT_TRUE(view.wait_for_colour(150, 100, GREEN));
}

TEST_F(WebInput, animates_at_the_views_rate)
{
    show("<script>let frames = 0; const count = () => { ++frames; requestAnimationFrame(count); };"
         " count();</script>");
    // The view draws a frame every 16 ms at most, and the page must make one for each.
    const int before = std::stoi(view.evaluate("frames"));
    const auto start = std::chrono::steady_clock::now();
    int drawn = 0;
    for (; drawn < 60; ++drawn)
        view.draw_frame();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const int made = std::stoi(view.evaluate("frames")) - before;
    EXPECT_GE(made, drawn / 2) << "of " << drawn << " frames in " << seconds << " s";
    EXPECT_LE(made, seconds * 70 + 20) << "more frames than a screen would show";
}

TEST_F(WebInput, animates_by_style)
{
    show("<style>@keyframes slide { from { left: 0 } to { left: 400px } }"
         " div { position: fixed; top: 0; width: 100px; height: 256px; background: #00ff00;"
         " animation: slide 400ms linear forwards }</style><div></div>");
    EXPECT_TRUE(view.wait_for_colour(450, 100, GREEN)) << "it is not drawn where it ends";
    EXPECT_TRUE(view.wait_for_colour(50, 100, TRANSPARENT)) << "it is still drawn where it began";
}

}  // namespace

}  // namespace marlune::test

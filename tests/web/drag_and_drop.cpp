// Drag and drop inside a page. None of it may reach the window system, whose drags would hold the
// Qt thread.

#include "support/web/overlay.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace marlune::test {

namespace {

constexpr auto PAGE = R"(<!doctype html><meta charset=utf-8>
<style>
    body { background: white; margin: 0; font: 20px sans-serif }
    body > * { position: fixed; margin: 0; width: 150px; height: 60px }
</style>
<div id=source draggable=true style="left:20px;top:20px;background:#ff0000"></div>
<div id=never draggable=true style="left:20px;top:100px;background:#eee" ondragstart="return false"></div>
<p id=words style="left:20px;top:200px">Selected</p>
<a id=link href="http://page.example/moon" style="left:20px;top:300px">link</a>
<div id=target style="left:300px;top:20px;background:#0000ff"></div>
<input id=field style="left:300px;top:200px;font:20px sans-serif" value="in:">
<div id=area contenteditable style="left:300px;top:300px;background:#ffd">area</div>
<script>
const heard = [];
for (const type of ["dragstart", "dragenter", "dragleave", "drop", "dragend"])
    addEventListener(type, event => heard.push(type + " " + event.target.id));
for (const type of ["mousemove", "mouseup", "click"])
    addEventListener(type, event => event.buttons || type != "mousemove" ? heard.push(type) : 0);
source.ondragstart = event => {
    event.dataTransfer.setData("text/plain", "moon");
    event.dataTransfer.setData("application/x-moon", "full");
    event.dataTransfer.effectAllowed = "copyMove";
    event.stopPropagation();
};
target.ondragover = event => {
    event.preventDefault();
    event.dataTransfer.dropEffect = "move";
};
target.ondrop = event => {
    event.preventDefault();
    const data = event.dataTransfer;
    console.log(`dropped ${data.getData("text")} ${data.getData("application/x-moon")}`
                + ` ${data.dropEffect} ${event.clientX},${event.clientY}`);
};
addEventListener("dragend", event => console.log("end " + event.dataTransfer.dropEffect));
</script>)";

struct Point {
    uint32_t x, y;
};

constexpr Point SOURCE{50, 50}, NEVER{50, 130}, WORDS{40, 212}, LINK{40, 312}, TARGET{350, 50},
    FIELD{350, 215}, AREA{320, 312}, NOWHERE{350, 450};

class DragAndDrop : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(view.show_html(PAGE));
        ASSERT_TRUE(view.wait_for_colour(2, 2, WHITE));
    }

    void TearDown() override
    {
        EXPECT_EQ(watch_.windows(), 0) << "a view has opened a window of the window system";
    }

    /** Presses at the first point and moves to the others in turn, in steps as a hand would. */
    void drag(Point from, std::initializer_list<Point> to)
    {
        view.move(from.x, from.y);
        view.press(from.x, from.y);
        view.move(from.x + 5, from.y + 2);
        view.move(from.x + 12, from.y + 3);
        for (const Point point : to) {
            view.draw_frame();
            view.move(point.x, point.y);
        }
        last_ = std::rbegin(to)[0];
        view.draw_frame();
    }

    void drop() { view.release(last_.x, last_.y); }

    testing::AssertionResult is_eventually(const std::string& expression, const std::string& value)
    {
        std::string last;
        if (view.draw_until([&] { return (last = view.evaluate(expression)) == value; }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << expression << " is " << last << ", not " << value;
    }

    /** The page's events, once it has received all input sent before. */
    std::string heard()
    {
        view.evaluate("new Promise(next => setTimeout(next, 100))");
        return view.evaluate("heard.splice(0).join()");
    }

private:
    WindowWatch watch_;
    Point last_{};

protected:
    HostWebView view{{640, 480}};
};

}  // namespace

TEST_F(DragAndDrop, carries_data_from_one_element_to_another)
{
    drag(SOURCE, {NOWHERE, TARGET});
    drop();
    EXPECT_TRUE(view.wait_for_console("dropped moon full move 350,50"));
    EXPECT_TRUE(view.wait_for_console("end move"));
    const std::string events = heard();
    EXPECT_NE(events.find("dragenter target"), std::string::npos) << events;
    EXPECT_NE(events.find("drop target,dragend source"), std::string::npos) << events;
    EXPECT_EQ(events.find("mouseup"), std::string::npos) << "a drag must send no mouse events";
    EXPECT_EQ(events.find("click"), std::string::npos) << "the end of a drag must be no click";
}

TEST_F(DragAndDrop, shows_the_dragged_element)
{
    // The page draws it, so it is in the view's image.
    drag(LINK, {NOWHERE});
    const auto ghost = [&] {
        view.draw_frame();
        return !is_close(view.picture().pixel(NOWHERE.x + 20, NOWHERE.y + 20), WHITE, 20);
    };
    EXPECT_TRUE(wait_until(ghost)) << keep_picture(view.picture());
    drop();
    EXPECT_TRUE(view.wait_for_console("end none"));
    EXPECT_TRUE(view.wait_for_colour(NOWHERE.x + 20, NOWHERE.y + 20, WHITE));
}

TEST_F(DragAndDrop, drops_nothing_where_no_element_accepts_it)
{
    drag(SOURCE, {TARGET});
    // The engine may merge moves into one, which would skip the target.
    ASSERT_TRUE(is_eventually("heard.includes('dragenter target')", "true"));
    view.move(NOWHERE.x, NOWHERE.y);
    view.release(NOWHERE.x, NOWHERE.y);
    EXPECT_TRUE(view.wait_for_console("end none"));
    const std::string events = heard();
    EXPECT_EQ(events.find("drop "), std::string::npos) << events;
    EXPECT_NE(events.find("dragleave target"), std::string::npos) << events;
}

TEST_F(DragAndDrop, obeys_the_source_about_what_is_allowed)
{
    ASSERT_EQ(view.evaluate("source.addEventListener('dragstart', "
                            "event => event.dataTransfer.effectAllowed = 'copy')"),
              "undefined");
    drag(SOURCE, {TARGET});
    drop();
    EXPECT_TRUE(view.wait_for_console("end none"))
        << "the target moves data that may only be copied";
}

TEST_F(DragAndDrop, accepts_no_unknown_value_of_what_is_allowed)
{
    ASSERT_EQ(view.evaluate("source.addEventListener('dragstart', event => {"
                            " for (const word of ['toString', '__proto__', 'valueOf',"
                            " {toString: () => this.n = this.n ? 'none' : 'all'}])"
                            "     event.dataTransfer.effectAllowed = word; })"),
              "undefined");
    drag(SOURCE, {NOWHERE, TARGET});
    drop();
    EXPECT_TRUE(view.wait_for_console("dropped moon full move 350,50"));
}

TEST_F(DragAndDrop, leaves_the_mouse_to_a_page_that_breaks_the_functions_of_drags)
{
    const auto broken = {
        "Object.defineProperty(document, 'elementFromPoint', {value: null})",
        "Element.prototype.attachShadow = null",
        "Array.prototype.includes = () => { throw 'broken' }",
        "EventTarget.prototype.dispatchEvent = function() { throw 'broken' }",
        "clearInterval = null",
    };
    for (const std::string script : broken) {
        ASSERT_TRUE(view.show_html(PAGE));
        ASSERT_TRUE(view.wait_for_colour(2, 2, WHITE));
        ASSERT_EQ(view.evaluate("void (" + script + ")"), "undefined");
        drag(SOURCE, {NOWHERE, TARGET});
        drop();
        heard();
        view.click(TARGET.x, TARGET.y);
        EXPECT_EQ(heard(), "\"mouseup,click\"") << script;
    }
}

TEST_F(DragAndDrop, ends_by_escape)
{
    drag(SOURCE, {TARGET});
    ASSERT_TRUE(is_eventually("heard.includes('dragenter target')", "true"));
    press_key(view, KEY_ESCAPE);
    EXPECT_TRUE(view.wait_for_console("end none"));
    heard();
    view.move(400, 60);
    view.release(400, 60);
    EXPECT_EQ(heard(), "\"\"") << "the rest of the gesture still has an effect";

    view.click(TARGET.x, TARGET.y);
    EXPECT_EQ(heard(), "\"mouseup,click\"");
}

TEST_F(DragAndDrop, does_not_begin_where_a_page_forbids_it)
{
    drag(NEVER, {TARGET});
    drop();
    const std::string events = heard();
    EXPECT_EQ(events.find("dragenter"), std::string::npos) << events;
    EXPECT_NE(events.find("mouseup"), std::string::npos) << events;
}

TEST_F(DragAndDrop, carries_a_link)
{
    drag(LINK, {TARGET});
    drop();
    EXPECT_TRUE(view.wait_for_console("dropped http://page.example/moon  move 350,50"));
}

TEST_F(DragAndDrop, puts_selected_text_into_a_field)
{
    ASSERT_EQ(view.evaluate("getSelection().selectAllChildren(words)"), "undefined");
    drag(WORDS, {FIELD});
    drop();
    EXPECT_TRUE(is_eventually("field.value", "\"in:Selected\""));
    EXPECT_EQ(view.evaluate("words.textContent"), "\"Selected\"");
}

TEST_F(DragAndDrop, moves_text_from_one_editable_place_to_another)
{
    ASSERT_EQ(view.evaluate("getSelection().selectAllChildren(area)"), "undefined");
    drag(AREA, {FIELD});
    drop();
    EXPECT_TRUE(is_eventually("field.value", "\"in:area\""));
    EXPECT_EQ(view.evaluate("area.textContent"), "\"\"");
}

TEST_F(DragAndDrop, never_holds_the_view_where_a_page_runs_no_scripts)
{
    HostWebView quiet({640, 480});
    quiet->set_javascript_enabled(false);
    ASSERT_TRUE(quiet.show_html("<body style='background:white;margin:0'>"
                                "<a href='#' style='position:fixed;inset:0'>link</a>"));
    ASSERT_TRUE(quiet.wait_for_colour(300, 300, WHITE));
    quiet.move(20, 10);
    quiet.press(20, 10);
    for (uint32_t x = 25; x < 300; x += 25) {
        quiet.move(x, 20);
        quiet.draw_frame();
    }
    quiet.release(300, 20);
    // A drag would create a window as soon as it begins, and the fixture would see it.
    quiet.draw_frame();
}

}  // namespace marlune::test

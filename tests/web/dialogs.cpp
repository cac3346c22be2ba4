// The dialogs of a page, which the view draws above it. The tests look at the view's image, answer
// by mouse and keys, and check what the page receives.

#include "support/message_log.h"
#include "support/process/processes.h"
#include "support/web/http_server.h"
#include "support/web/overlay.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

using namespace overlay;

// Large enough for each dialog to have all of its parts.
constexpr Size SIZE{640, 480};

/** No dialog may be a window of the window system. */
class PageDialogs : public testing::Test {
protected:
    void TearDown() override
    {
        EXPECT_EQ(watch_.windows(), 0) << "a view has opened a window of the window system";
    }

    /** Shows a page of its own. */
    void show(const std::string& body)
    {
        ASSERT_TRUE(view.show_html("<!doctype html><body style='background:white'>" + body));
        ASSERT_TRUE(view.wait_for_colour(2, 2, WHITE));
    }

    /** Runs a script after this call returns, because a script that opens a dialog blocks. */
    void start(const std::string& script) { view.run("setTimeout(() => { " + script + " })"); }

    /** The page opens dialogs, and the user ends all further ones. */
    void end_dialogs()
    {
        start("alert(1); alert(2); console.log('after')");
        ASSERT_TRUE(shows(view, ACCEPT));
        view.type_text("\n");
        ASSERT_TRUE(click_on(view, END));
        ASSERT_TRUE(view.wait_for_console("after"));
    }

private:
    WindowWatch watch_;

protected:
    HostWebView view{SIZE};
};

/** A folder with some files, which the destructor removes. */
class Folder {
public:
    Folder()
    {
        std::filesystem::create_directories(path / "inner");
        for (const char* name : {"one.txt", "two.txt", "inner/three.txt"})
            std::ofstream(path / name) << name;
    }
    ~Folder() { std::filesystem::remove_all(path); }

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / "marlune dialogs #1";
};

/** A button that covers the page's middle and opens the dialog of an input of this kind. */
std::string input(const std::string& attributes)
{
    return "<input id=i " + attributes
        + " style='position:fixed;inset:200px;width:200px;height:60px'"
          " oncancel='console.log(\"cancelled\")'>"
          "<script>i.onchange = () => console.log(i.files"
          " ? [...i.files].map(file => file.webkitRelativePath || file.name).sort().join()"
          " : i.value)</script>";
}

constexpr uint32_t INPUT_X = 220, INPUT_Y = 215;

/** Waits until a file dialog lists something: folders are read on another thread. */
testing::AssertionResult shows_entries(HostWebView& view)
{
    const auto has_text = [&] {
        view.draw_frame();
        const Image picture = view.picture();
        for (uint32_t y = 145; y < 175; ++y) {
            for (uint32_t x = 90; x < 120; ++x) {
                if (picture.pixel(x, y).g > 150)
                    return true;
            }
        }
        return false;
    };
    if (wait_until(has_text))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no entry; see " << keep_picture(view.picture());
}

}  // namespace

TEST_F(PageDialogs, show_an_alert_above_the_dimmed_page_and_end_it_by_enter)
{
    show("");
    start("alert('Well <b>done</b>'); console.log('after')");
    ASSERT_TRUE(shows(view, CARD, 5000));
    ASSERT_TRUE(shows(view, ACCEPT));
    EXPECT_LT(view.picture().pixel(2, 2).r, 120) << "the page is not dimmed";
    EXPECT_EQ(find_colour(view.picture(), REJECT).count, 0u) << "an alert has nothing to cancel";
    EXPECT_FALSE(view.console().take_first([](const auto& record) {
        return record.message == "after";
    })) << "the page has continued";

    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("after"));
    EXPECT_TRUE(view.wait_for_colour(2, 2, WHITE));
    EXPECT_TRUE(shows_no(view, CARD));
}

TEST_F(PageDialogs, answer_a_confirmation_by_its_buttons)
{
    show("");
    start("console.log('said ' + confirm('Really?'))");
    ASSERT_TRUE(click_on(view, ACCEPT));
    EXPECT_TRUE(view.wait_for_console("said true"));

    start("console.log('said ' + confirm('Really?'))");
    ASSERT_TRUE(click_on(view, REJECT));
    EXPECT_TRUE(view.wait_for_console("said false"));
}

TEST_F(PageDialogs, answer_a_confirmation_by_keys)
{
    show("");
    start("console.log('said ' + confirm('Really?'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("said true"));

    start("console.log('said ' + confirm('Really?'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    press_key(view, KEY_ESCAPE);
    EXPECT_TRUE(view.wait_for_console("said false"));

    // Tab reaches the buttons alone: from OK to the end of all dialogs, to Cancel, and round again.
    start("console.log('said ' + confirm('Really?'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    view.type_text("\t\t\t\t\t\n");
    EXPECT_TRUE(view.wait_for_console("said false"));
}

TEST_F(PageDialogs, give_the_page_the_text_of_a_prompt)
{
    show("");
    start("console.log('said ' + prompt('Name?', 'Ann'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("said Ann"));

    // The default is selected, so typing replaces it.
    start("console.log('said ' + prompt('Name?', 'Ann'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    view.type_text("B\xc3\xb6rge\n");
    EXPECT_TRUE(view.wait_for_console("said B\xc3\xb6rge"));

    start("console.log('said ' + prompt('Name?', 'Ann'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    press_key(view, KEY_ESCAPE);
    EXPECT_TRUE(view.wait_for_console("said null"));
}

TEST_F(PageDialogs, keep_mouse_and_keys_from_the_page_and_give_them_back)
{
    show("<input id=i><script>const heard = [];"
         " for (const type of ['mousedown', 'keydown', 'wheel'])"
         "     addEventListener(type, () => heard.push(type));"
         " i.focus()</script>");
    start("alert('x'); console.log('after')");
    ASSERT_TRUE(shows(view, ACCEPT));
    view.click(20, 20);
    view->mouse_wheel_down(20, 20);
    view.type_text("q");
    ASSERT_TRUE(click_on(view, ACCEPT));
    ASSERT_TRUE(view.wait_for_console("after"));
    EXPECT_EQ(view.evaluate("heard.join()"), "\"\"") << "the page has received the dialog's input";

    view.type_text("z");
    EXPECT_TRUE(view.draw_until([&] { return view.evaluate("i.value") == "\"z\""; }))
        << "the page does not receive keys again";
}

TEST_F(PageDialogs, show_a_long_text_within_the_view)
{
    show("");
    start("alert('Many words. '.repeat(2000)); console.log('after')");
    ASSERT_TRUE(shows(view, ACCEPT));
    const Sighting card = find_colour(view.picture(), CARD);
    EXPECT_GT(card.top, 2u);
    EXPECT_LT(card.bottom, SIZE.height - 3);
    ASSERT_TRUE(click_on(view, ACCEPT));
    EXPECT_TRUE(view.wait_for_console("after"));
}

TEST_F(PageDialogs, show_the_beginning_of_a_text_without_end)
{
    // The layout of a whole text without blanks would take minutes.
    show("<script>const endless = 'x'.repeat(30e6)</script>");
    for (const char* asking :
         {"alert(endless)", "alert('a\\n'.repeat(10e6))", "prompt('', endless)"}) {
        start("const answer = " + std::string(asking) + "; console.log('said ' + answer?.length)");
        ASSERT_TRUE(shows(view, ACCEPT));
        EXPECT_LT(find_colour(view.picture(), CARD).bottom, SIZE.height - 3);
        view.type_text("\n");
        const bool prompts = std::string(asking).starts_with("prompt");
        EXPECT_TRUE(view.wait_for_console(prompts ? "said 2001" : "said undefined"));
    }
}

TEST_F(PageDialogs, fit_into_the_smallest_view)
{
    HostWebView small({256, 256});
    ASSERT_TRUE(small.show_html("<body style='background:white'>"));
    small.run("setTimeout(() => console.log('said ' + prompt('Name? '.repeat(50), '')))");
    ASSERT_TRUE(shows(small, ACCEPT));
    small.type_text("x");
    ASSERT_TRUE(click_on(small, ACCEPT));
    EXPECT_TRUE(small.wait_for_console("said x"));
}

TEST_F(PageDialogs, ask_before_a_page_is_left)
{
    HttpServer server;
    server.serve("/a",
                 html("<body style='background:blue'>a"
                      "<script>onbeforeunload = e => e.preventDefault()</script>"));
    server.serve("/b", html("<body style='background:#00ff00'>b"));
    ASSERT_TRUE(view.open(server.url("/a")));
    ASSERT_TRUE(view.wait_for_colour(2, 2, BLUE));
    view.click(100, 100);  // only pages that have been used may ask
    ASSERT_TRUE(view.draw_until(
        [&] { return view.evaluate("navigator.userActivation.hasBeenActive") == "true"; }));

    view->set_url(server.url("/b"));
    ASSERT_TRUE(shows(view, ACCEPT));
    press_key(view, KEY_ESCAPE);
    ASSERT_TRUE(shows_no(view, CARD));
    EXPECT_EQ(view.evaluate("location.pathname"), "\"/a\"");
    EXPECT_TRUE(server.requests("/b").empty()) << "the page was left, although the user refused";

    view->set_url(server.url("/b"));
    ASSERT_TRUE(shows(view, ACCEPT));
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_colour(2, 2, GREEN));
}

TEST_F(PageDialogs, send_the_name_and_the_password_that_a_server_wants)
{
    HttpServer server;
    server.serve("/",
                 behind_password("ann", "s3cret", html("<body style='background:#00ff00'>in")));
    ASSERT_TRUE(view.show_html("<p>before"));
    view->set_url(server.url("/"));
    ASSERT_TRUE(shows(view, ACCEPT));
    // Enter moves the focus from the name to the password.
    view.type_text("ann\ns3cret\n");
    EXPECT_TRUE(view.wait_for_colour(2, 2, GREEN));
    EXPECT_EQ(server.requests("/").back().header("authorization"), "Basic YW5uOnMzY3JldA==");
}

TEST_F(PageDialogs, show_the_servers_page_without_a_password)
{
    HttpServer server;
    server.serve("/", behind_password("ann", "s3cret", html("in")));
    ASSERT_TRUE(view.show_html("<p>before"));
    view->set_url(server.url("/"));
    ASSERT_TRUE(shows(view, ACCEPT));
    press_key(view, KEY_ESCAPE);
    EXPECT_TRUE(shows_no(view, CARD));
    EXPECT_TRUE(view.draw_until([&] { return !view.loads().empty(); }));
    EXPECT_EQ(server.requests("/").size(), 1u);
}

TEST_F(PageDialogs, wait_for_each_other)
{
    HttpServer first;
    HttpServer second;
    first.serve("/x", behind_password("ann", "1", {.body = "first"}));
    second.serve("/x", behind_password("bob", "2", {.body = "second"}));
    HttpServer page;
    const auto fetching = [](const HttpServer& server) {
        return "<iframe src='" + server.url("/x") + "'></iframe>";
    };
    page.serve("/", html(fetching(first) + fetching(second)));
    ASSERT_TRUE(view.show_html("<p>before"));
    view->set_url(page.url("/"));
    ASSERT_TRUE(first.wait_for_request("/x") && second.wait_for_request("/x"));

    // Either may be first. The test rejects one, and the other follows.
    ASSERT_TRUE(shows(view, ACCEPT));
    press_key(view, KEY_ESCAPE);
    ASSERT_TRUE(shows(view, ACCEPT));
    view.draw_frame();
    view.type_text("bob\n2\n");
    EXPECT_TRUE(view.draw_until([&] {
        return first.requests("/x").size() + second.requests("/x").size() == 3;
    })) << "not exactly one of the two was answered";
}

TEST_F(PageDialogs, let_the_user_end_them_from_the_second_on)
{
    HttpServer server;
    server.serve("/", html("<body style='background:#00ff00'>"));
    show("");
    start("for (let i = 0; i < 30; ++i) alert(i); console.log('said ' + confirm('x'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    EXPECT_EQ(find_colour(view.picture(), END).count, 0u) << "it is the first one";
    view.type_text("\n");
    ASSERT_TRUE(click_on(view, END));
    EXPECT_TRUE(view.wait_for_console("said false"));
    EXPECT_TRUE(shows_no(view, CARD));

    // Another page may ask again.
    ASSERT_TRUE(view.go_to(server.url("/")));
    ASSERT_TRUE(view.wait_for_colour(2, 2, GREEN));
    start("console.log('said ' + confirm('x'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("said true"));
}

TEST_F(PageDialogs, are_back_when_the_host_loads_the_page_again)
{
    HttpServer server;
    server.serve("/", html("<body style='background:white'>"));
    ASSERT_TRUE(view.open(server.url("/")));
    ASSERT_TRUE(view.wait_for_colour(2, 2, WHITE));
    ASSERT_NO_FATAL_FAILURE(end_dialogs());

    // The page itself cannot allow dialogs again.
    size_t loads = view.loads().size();
    view.run("location.reload()");
    ASSERT_TRUE(view.wait_for_load(Load::SUCCEEDED, loads));
    EXPECT_EQ(view.evaluate("confirm('x')"), "false");

    loads = view.loads().size();
    view->reload();
    ASSERT_TRUE(view.wait_for_load(Load::SUCCEEDED, loads));
    start("console.log('said ' + confirm('x'))");
    ASSERT_TRUE(shows(view, ACCEPT));
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("said true"));
}

TEST_F(PageDialogs, let_the_user_leave_a_page_that_may_ask_no_more)
{
    HttpServer server;
    server.serve("/", html("<body style='background:#00ff00'>"));
    show("<script>onbeforeunload = e => e.preventDefault()</script>");
    view.click(100, 100);  // only pages that have been used may ask
    ASSERT_TRUE(view.draw_until(
        [&] { return view.evaluate("navigator.userActivation.hasBeenActive") == "true"; }));
    ASSERT_NO_FATAL_FAILURE(end_dialogs());
    view.run("location = '" + server.url("/") + "'");
    EXPECT_TRUE(view.wait_for_colour(2, 2, GREEN));
}

TEST_F(PageDialogs, end_for_passwords_too)
{
    HttpServer server;
    server.serve("/i", behind_password("ann", "s3cret", {.body = "in"}));
    server.serve("/",
                 html("<body style='background:white'><script>let left = 200;"
                      "for (let i = 0; i < 200; ++i) {"
                      "    const image = new Image;"
                      "    image.onerror = () => --left || console.log('all refused');"
                      "    image.src = '/i?' + i;"
                      "}</script>"));
    ASSERT_TRUE(view.show_html("<p>before"));
    view->set_url(server.url("/"));
    // The count begins with the page, and the engine requests its first images before the page is
    // shown: the offer may appear, vanish with the previous page, and appear again.
    const auto is_over = [](const ConsoleRecord& record) {
        return record.message == "all refused";
    };
    bool is_offered = false;
    EXPECT_TRUE(view.draw_until([&] {
        const Sighting end = find_colour(view.picture(), END);
        is_offered = is_offered || end.count > 0;
        if (end.count > 0)
            view.click(end.x(), end.y());
        else if (find_colour(view.picture(), ACCEPT).count > 0)
            press_key(view, KEY_ESCAPE);
        return view.console().take_first(is_over).has_value();
    }));
    EXPECT_TRUE(is_offered);
    EXPECT_TRUE(shows_no(view, CARD));
}

TEST_F(PageDialogs, wait_twenty_at_most)
{
    // The engine requests few images at a time from one server.
    std::vector<std::unique_ptr<HttpServer>> servers;
    std::string images;
    for (int i = 0; i < 21; ++i) {
        servers.push_back(std::make_unique<HttpServer>());
        servers.back()->serve("/i", behind_password("ann", "s3cret", {.body = "in"}));
        images += "<img src='" + servers.back()->url("/i") + "'>";
    }
    HttpServer page;
    page.serve("/", html(images));
    ASSERT_TRUE(view.show_html("<p>before"));
    expect_message_matching(
        "^WebView \\d+: more than 20 dialogs are waiting; this one is rejected$");
    view->set_url(page.url("/"));
    EXPECT_TRUE(view.draw_until(all_expected_messages_came));
}

TEST_F(PageDialogs, choose_a_colour_by_its_number)
{
    show(input("type=color value='#336699'"));
    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(shows(view, ACCEPT));
    ASSERT_TRUE(shows(view, {0x33, 0x66, 0x99, 255}))
        << "the dialog does not start with the colour";
    view.type_text("#40e0d0");
    ASSERT_TRUE(shows(view, {0x40, 0xe0, 0xd0, 255}, 500));
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("#40e0d0"));
}

TEST_F(PageDialogs, choose_a_colour_by_mouse)
{
    show(input("type=color value='#336699'"));
    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(click_on(view, {0xe5, 0x39, 0x35, 255}));
    ASSERT_TRUE(click_on(view, ACCEPT));
    EXPECT_TRUE(view.wait_for_console("#e53935"));

    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(click_on(view, {0x43, 0xa0, 0x47, 255}));
    ASSERT_TRUE(click_on(view, REJECT));
    ASSERT_TRUE(shows_no(view, CARD));
    EXPECT_EQ(view.evaluate("i.value"), "\"#e53935\"");
}

TEST_F(PageDialogs, choose_a_file_by_keys)
{
    const Folder folder;
    show(input("type=file"));
    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(shows(view, FIELD, 10000));
    // From the list of files back to the line with the folder, and to the list again.
    press_key(view, KEY_BACKTAB);
    view.type_text(folder.path.string() + "\n\t");
    ASSERT_TRUE(shows_entries(view));
    // The folder inside comes first.
    press_key(view, KEY_DOWN);
    press_key(view, KEY_DOWN);
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("one.txt"));
    EXPECT_EQ(view.evaluate("i.files[0].text()"), "\"one.txt\"");
}

TEST_F(PageDialogs, choose_several_files_and_go_into_folders)
{
    const Folder folder;
    show(input("type=file multiple"));
    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(shows(view, FIELD, 10000));
    press_key(view, KEY_BACKTAB);
    view.type_text((folder.path / "inner").string() + "\n\t");
    press_key(view, KEY_BACKSPACE);  // up again
    ASSERT_TRUE(shows_entries(view));
    for (int entry = 0; entry < 2; ++entry)
        press_key(view, KEY_DOWN);
    view.type_text(" ");
    press_key(view, KEY_DOWN);
    view.type_text(" ");
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("one.txt,two.txt"));

    // The next dialog starts in the folder where the last one ended.
    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(shows_entries(view));
    press_key(view, KEY_DOWN);
    view.type_text("\n");
    ASSERT_TRUE(shows_entries(view));
    press_key(view, KEY_DOWN);
    view.type_text("\n");
    EXPECT_TRUE(view.wait_for_console("three.txt"));
}

TEST_F(PageDialogs, choose_a_folder)
{
    const Folder folder;
    show(input("type=file webkitdirectory"));
    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(shows(view, FIELD, 10000));
    press_key(view, KEY_BACKTAB);
    view.type_text((folder.path / "inner").string() + "\n");
    ASSERT_TRUE(click_on(view, ACCEPT));
    EXPECT_TRUE(view.wait_for_console("inner/three.txt"));
}

TEST_F(PageDialogs, take_no_folder_by_enter)
{
    // The Enter that opened the dialog is held, or Enter is pressed again.
    const Folder folder;
    show(input("type=file webkitdirectory"));
    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(shows(view, FIELD, 10000));
    view.type_text("\n\n");
    press_key(view, KEY_BACKTAB);
    view.type_text(folder.path.string() + "\n\n\t");
    ASSERT_TRUE(shows_entries(view));
    press_key(view, KEY_DOWN);
    view.type_text("\n\n\n");
    ASSERT_TRUE(shows(view, ACCEPT)) << "the dialog has been answered";
    EXPECT_EQ(view.evaluate("i.files.length"), "0");

    // The button chooses the folder shown, by a key too.
    view.type_text("\t\t\n");
    EXPECT_TRUE(view.wait_for_console("inner/three.txt"));
}

TEST_F(PageDialogs, choose_no_file_when_cancelled)
{
    show(input("type=file"));
    view.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(shows(view, FIELD, 10000));
    press_key(view, KEY_ESCAPE);
    ASSERT_TRUE(shows_no(view, CARD));
    EXPECT_EQ(view.evaluate("i.files.length"), "0");
}

TEST_F(PageDialogs, go_with_the_page_that_asked)
{
    HttpServer server;
    server.serve("/b", html("<body style='background:#00ff00'>b"));
    show("");
    start("confirm('Still there?')");
    ASSERT_TRUE(shows(view, CARD, 5000));
    view->set_url(server.url("/b"));
    EXPECT_TRUE(view.wait_for_colour(2, 2, GREEN));
    EXPECT_TRUE(shows_no(view, CARD));
    EXPECT_EQ(view.evaluate("1 + 1"), "2");
}

TEST_F(PageDialogs, go_with_the_process_of_the_page)
{
    show("");
    start("confirm('Still there?')");
    ASSERT_TRUE(shows(view, CARD, 5000));
    for (const Process& process : page_processes())
        kill(process.id, SIGKILL);
    EXPECT_TRUE(shows_no(view, CARD));
    view->reload();
    EXPECT_TRUE(view.wait_for_colour(2, 2, WHITE));
}

TEST_F(PageDialogs, go_with_the_view)
{
    for (const char* asking : {"alert('x')", "prompt('x')"}) {
        HostWebView other(SIZE);
        ASSERT_TRUE(other.show_html("<body style='background:white'>"));
        other.run(std::string("setTimeout(() => ") + asking + ")");
        ASSERT_TRUE(shows(other, CARD, 5000));
    }
    HostWebView other(SIZE);
    ASSERT_TRUE(other.show_html("<!doctype html>" + input("type=color")));
    other.click(INPUT_X, INPUT_Y);
    ASSERT_TRUE(shows(other, CARD, 5000));
    other->reset();
    ASSERT_TRUE(other.open("about:blank"));
    EXPECT_EQ(other.evaluate("1 + 1"), "2") << "the view is unusable after its dialog has gone";
}

}  // namespace marlune::test

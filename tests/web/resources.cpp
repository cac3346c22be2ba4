// The host's files in real pages, by the "res" scheme: all kinds of resources and paths, and
// resource callbacks with faults.

#include "support/message_log.h"
#include "support/process/memory.h"
#include "support/web/host_web_view.h"
#include "support/web/http_server.h"
#include "support/web/resource_pack.h"

#include <marlune/mview.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

constexpr int NOT_FOUND = -6;  // the code of the engine's network stack

// Gives a page `ask(url)`, which returns the type and the text of a reply, or the status of an
// error. The engine never ends the body of a "not found" reply.
constexpr auto PAGE = R"(<!doctype html><title>resources</title><script>
async function ask(url, options) {
    try {
        const reply = await fetch(url, options);
        if (!reply.ok)
            return reply.status;
        return reply.headers.get("content-type") + " " + await reply.text();
    } catch (error) {
        return "refused";
    }
}
// The name of the event that ends the loading of an element.
function load(name, url) {
    const element = document.createElement(name);
    return new Promise(done => {
        element.onload = element.onerror = event => done(event.type);
        element.src = url;
        document.documentElement.append(element);
    });
}
</script>)";

/** A callback that serves PAGE as "/index.html" and the rest by another callback. */
ServingResources::Callback beside_the_page(ServingResources::Callback others)
{
    return [page = std::make_shared<std::string>(PAGE),
            others = std::move(others)](std::string path, bool& flag, uint64_t& size) -> uint8_t* {
        if (path != "/index.html")
            return others(std::move(path), flag, size);
        size = page->size();
        return reinterpret_cast<uint8_t*>(page->data());
    };
}

std::string quoted(const std::string& text)
{
    return '"' + text + '"';
}

class Resources : public testing::Test {
protected:
    ResourcePack pack{{"/index.html", PAGE}};
    HostWebView view;

    std::string ask(const std::string& url, const std::string& options = "{}")
    {
        return view.evaluate("ask('" + url + "', " + options + ")");
    }
};

}  // namespace

// --- Kinds of resources

TEST_F(Resources, make_a_page_with_all_that_belongs_to_it)
{
    pack.put("/page/index.html", R"(<!doctype html>
        <link rel=stylesheet href=style.css><script src=script.js></script><p id=p>text
        <img id=drawing src=drawing.svg><iframe id=frame src="inner.html"></iframe>
        <script type=module src=module.js></script>)");
    pack.put("/page/style.css", "@import 'more.css'; #p { color: rgb(1, 2, 3); }");
    pack.put("/page/more.css", "#p { margin: 7px; }");
    pack.put("/page/drawing.svg",
             "<svg xmlns='http://www.w3.org/2000/svg' width='31' height='17'></svg>");
    pack.put("/page/inner.html", "<script>parent.postMessage('inner', '*')</script>");
    pack.put("/page/script.js",
             "window.frames_heard = [];"
             "onmessage = event => frames_heard.push(event.data)");
    pack.put("/page/module.js",
             "import {twice} from './lib/twice.js'; window.four = twice(2);"
             "import('./lib/later.js').then(module => window.later = module.x)");
    pack.put("/page/lib/twice.js", "export const twice = x => 2 * x");
    pack.put("/page/lib/later.js", "export const x = 'later'");

    ASSERT_TRUE(view.open("res://pack/page/"));
    EXPECT_EQ(view.evaluate("getComputedStyle(p).color + getComputedStyle(p).marginTop"),
              quoted("rgb(1, 2, 3)7px"));
    EXPECT_EQ(view.evaluate("[drawing.naturalWidth, drawing.naturalHeight]"), "[31,17]");
    EXPECT_EQ(view.evaluate("four"), "4");
    EXPECT_EQ(view.evaluate("frames_heard"), "[\"inner\"]");
    EXPECT_TRUE(view.draw_until([&] { return view.evaluate("window.later") == "\"later\""; }));
}

TEST_F(Resources, run_in_workers)
{
    pack.put("/worker.js",
             "onmessage = async event => postMessage("
             "event.data + await (await fetch('res://pack/data.json')).text())");
    pack.put("/data.json", "{}");
    ASSERT_TRUE(view.open("res://pack/"));
    EXPECT_EQ(view.evaluate("new Promise((answer, fail) => {"
                            "const worker = new Worker('worker.js');"
                            "worker.onmessage = event => answer(event.data);"
                            "worker.onerror = event => fail('error ' + event.message);"
                            "worker.postMessage('data: '); })"),
              quoted("data: {}"));
}

TEST_F(Resources, draw)
{
    pack.put("/red.html", "<body style='background: url(red.svg)'>");
    pack.put("/red.svg",
             "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'>"
             "<rect width='9' height='9' fill='#f00'/></svg>");
    ASSERT_TRUE(view.open("res://pack/red.html"));
    EXPECT_TRUE(view.wait_for_colour(100, 100, {255, 0, 0, 255}));
}

TEST_F(Resources, have_the_types_of_their_names)
{
    pack.put("/dir/index.html", "index");
    pack.put("/Page.HTML", "page");
    pack.put("/a.html", "page");
    pack.put("/a.css", "style");
    pack.put("/PACK.SOREL", "picture");
    pack.put("/no_extension", "file");
    pack.put("/html", "file");
    ASSERT_TRUE(view.open("res://pack/"));
    const std::map<std::string, std::string> expected = {
        {"dir/", "text/html index"},
        {"dir/?x=1", "text/html index"},
        {"Page.HTML", "text/html page"},
        {"a.html", "text/html page"},
        {"a.html?x=a.css", "text/html page"},
        {"Page.HTML?x", "application/octet-stream page"},
        {"a.css", "text/css style"},
        {"a.css?v=1", "application/octet-stream style"},
        {"a.css?file=b.png", "image/png style"},  // the type depends on the whole address
        {"PACK.SOREL", "image/png picture"},
        {"no_extension", "application/octet-stream file"},
        {"html", "application/octet-stream file"},
    };
    for (const auto& [url, answer] : expected)
        EXPECT_EQ(ask(url), quoted(answer)) << url;
}

TEST_F(Resources, are_the_same_whatever_the_host_part)
{
    pack.put("/dir/a.txt", "text");
    ASSERT_TRUE(view.open("res://pack/"));
    for (const char* const url : {"res://pack/dir/a.txt", "res://other/dir/a.txt", "/dir/a.txt",
                                  "res://UPPER.case.example/dir/a.txt"}) {
        EXPECT_EQ(ask(url), quoted("text/plain text")) << url;
        EXPECT_EQ(pack.asked_for().back(), "/dir/a.txt");
    }
    ASSERT_TRUE(view.go_to("res://other"));
    EXPECT_EQ(pack.asked_for().back(), "/index.html");
}

TEST_F(Resources, are_served_whatever_the_method)
{
    pack.put("/a.txt", "text");
    ASSERT_TRUE(view.open("res://pack/"));
    for (const char* const method : {"GET", "POST", "PUT", "DELETE"}) {
        EXPECT_EQ(ask("a.txt", std::string("{method: '") + method + "'}"),
                  quoted("text/plain text"))
            << method;
    }
    EXPECT_EQ(ask("a.txt", "{method: 'POST', body: 'form=1'}"), quoted("text/plain text"));
}

// --- Paths

TEST_F(Resources, are_asked_for_by_decoded_paths)
{
    ASSERT_TRUE(view.open("res://pack/"));
    const std::map<std::string, std::string> expected = {
        // The engine resolves these, encoded or not.
        {"res://pack/a/../b.txt", "/b.txt"},
        {"res://pack/../../b.txt", "/b.txt"},
        {"res://pack/a/%2e%2e/b.txt", "/b.txt"},
        {"res://pack/a/./%2E/b.txt", "/a/b.txt"},
        // An encoded slash hides them from the engine: hosts must check.
        {"res://pack/a%2f..%2f..%2fb.txt", "/a/../../b.txt"},
        {"res://pack/..%2fb.txt", "/../b.txt"},
        {"res://pack/%252e%252e/b.txt", "/%2e%2e/b.txt"},
        {"res://pack/a b/c.txt", "/a b/c.txt"},
        {"res://pack/a%20b+c.txt", "/a b+c.txt"},
        {"res://pack/größer/猫.txt", "/größer/猫.txt"},
        {"res://pack/%F0%9F%8C%8A.txt", "/🌊.txt"},
        {"res://pack//a//b.txt", "//a//b.txt"},
        {"res://pack/a%3Fb%23c.txt?d#e", "/a?b#c.txt"},
        {"res://pack/%00.txt", std::string("/\0.txt", 6)},
        {"res://pack/a%0d%0ab.txt", "/a\r\nb.txt"},
        {"res://pack/%ff%fe.txt", "/\uFFFD\uFFFD.txt"},
    };
    for (const auto& [url, path] : expected) {
        EXPECT_EQ(ask(url), "404") << url;
        EXPECT_EQ(pack.asked_for().back(), path) << url;
    }
}

TEST_F(Resources, may_have_paths_of_64_kib)
{
    const std::string name(64 * 1024, 'x');
    pack.put("/" + name + ".txt", "found");
    ASSERT_TRUE(view.open("res://pack/"));
    const std::string url = "'x'.repeat(65536) + '.txt'";
    EXPECT_EQ(view.evaluate("ask(" + url + ")"), quoted("text/plain found"));
    EXPECT_EQ(view.evaluate("ask('y' + " + url + ")"), "404");
    EXPECT_EQ(pack.asked_for().back().size(), name.size() + 6);
}

// --- Missing resources

TEST_F(Resources, that_are_missing_fail_the_page)
{
    ASSERT_TRUE(view.open("res://pack/"));
    view->set_url("res://pack/missing.html");
    ASSERT_TRUE(view.wait_for_load(Load::FAILED));
    const Load failure = view.loads().back();
    EXPECT_EQ(failure.url, "res://pack/missing.html");
    EXPECT_EQ(failure.error_code, NOT_FOUND);
    ASSERT_TRUE(view.go_to("res://pack/")) << "the view cannot load another page";
}

TEST_F(Resources, that_are_missing_fail_parts_of_the_page)
{
    ASSERT_TRUE(view.open("res://pack/"));
    EXPECT_EQ(ask("missing.txt"), "404");
    EXPECT_EQ(view.evaluate("new Promise(done => { const request = new XMLHttpRequest();"
                            "request.onload = () => done('load');"
                            "request.onerror = () => done('error');"
                            "request.open('GET', 'missing.txt'); request.send(); })"),
              quoted("error"));
    for (const std::string element : {"img", "script"})
        EXPECT_EQ(view.evaluate("load('" + element + "', 'missing.html')"), quoted("error"));
    view.run("load('iframe', 'missing.html')");  // the engine reports nothing for it
    EXPECT_EQ(view.evaluate("1 + 1"), "2");
}

TEST(ResourceCallback, that_returns_nothing_serves_no_resource)
{
    uint8_t byte = 'x';
    const std::map<std::string, std::pair<uint8_t*, uint64_t>> answers = {
        {"/null_and_0", {nullptr, 0}},
        {"/pointer_and_0", {&byte, 0}},
        {"/null_and_a_size", {nullptr, 4096}},
        {"/null_and_a_huge_size", {nullptr, UINT64_MAX}},
        {"/one_byte", {&byte, 1}},
    };
    const ServingResources serving(
        beside_the_page([&](std::string path, bool&, uint64_t& size) -> uint8_t* {
            size = answers.at(path).second;
            return answers.at(path).first;
        }));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    for (const auto& [path, answer] : answers) {
        const bool is_something = answer.first && answer.second;
        EXPECT_EQ(view.evaluate("ask('" + path + "')"),
                  is_something ? quoted("application/octet-stream x") : "404")
            << path;
    }
}

TEST(ResourceCallback, that_returns_too_much_is_reported)
{
    uint8_t byte = 'x';
    uint64_t given = 0;
    const ServingResources serving(beside_the_page([&](std::string, bool&, uint64_t& size) {
        size = given;
        return &byte;
    }));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    for (const uint64_t impossible : {UINT64_MAX, uint64_t(1) << 63, uint64_t(INT64_MAX)}) {
        given = impossible;
        expect_message("marlune: the resource callback returned a size of "
                       + std::to_string(impossible) + " bytes, for which there is no memory");
        EXPECT_EQ(view.evaluate("ask('/file')"), "400") << impossible;
    }
}

TEST(ResourceCallback, may_end_the_request_that_it_serves)
{
    std::optional<HostWebView> view(std::in_place);
    std::atomic<int> ended = 0;
    std::function<void()> end;
    uint8_t byte = 'x';
    const ServingResources serving(beside_the_page([&](std::string, bool&, uint64_t& size) {
        end();
        ++ended;
        size = 1;
        return &byte;
    }));
    MWebView& facade = view->facade();
    const std::pair<const char*, std::function<void()>> ends[] = {
        {"set_url", [&] { facade.set_url("about:blank"); }},
        {"load_html", [&] { facade.load_html("<p>", ""); }},
        {"reload", [&] { facade.reload(); }},
        {"set_otr", [&] { facade.set_otr(true); }},
        {"reset", [&] { facade.reset(); }},
        {"destroy", [&] { facade.destroy(); }},
    };
    for (const auto& [name, act] : ends) {
        SCOPED_TRACE(name);
        end = act;
        const int before = ended;
        ASSERT_TRUE(view->open("res://pack/"));
        view->run("ask('/file')");
        EXPECT_TRUE(view->draw_until([&] { return ended > before; }));
    }
    view.emplace();
    EXPECT_TRUE(view->open("about:blank"));
}

TEST(ResourceCallback, need_not_care_for_the_flag)
{
    std::atomic<int> asked = 0;
    uint8_t byte = 'x';
    const ServingResources serving(beside_the_page([&](std::string, bool& flag, uint64_t& size) {
        EXPECT_FALSE(flag);
        flag = ++asked % 2;
        size = 1;
        return &byte;
    }));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(view.evaluate("ask('file')"), quoted("application/octet-stream x"));
}

TEST(ResourceCallback, that_throws_serves_no_resource)
{
    for (int i = 0; i < 2; ++i)
        expect_message("marlune: the pack is torn (the call was aborted and returns its default)");
    const ServingResources serving(
        beside_the_page([](std::string, bool&, uint64_t& size) -> uint8_t* {
            size = 100;
            throw std::runtime_error("the pack is torn");
        }));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    EXPECT_EQ(view.evaluate("ask('file')"), "404");
    EXPECT_EQ(view.evaluate("ask('file')"), "404") << "on the second request";
    EXPECT_EQ(view.evaluate("1 + 1"), "2");
}

// --- Large files and many requests

namespace {

/** Pseudo-random, so that no part is equal to another one. */
std::vector<uint32_t> words(size_t count)
{
    std::vector<uint32_t> result(count);
    uint32_t state = 1;
    for (uint32_t& word : result)
        word = state = state * 1664525 + 1013904223;
    return result;
}

uint32_t checksum(const std::vector<uint32_t>& words)
{
    uint32_t sum = 0;
    for (const uint32_t word : words)
        sum = sum * 31 + word;
    return sum;
}

// The same in a page.
constexpr auto CHECKSUM = R"(window.checksum = async url => {
    const bytes = await (await fetch(url)).arrayBuffer();
    let sum = 0;
    for (const word of new Uint32Array(bytes))
        sum = (Math.imul(sum, 31) + word) >>> 0;
    return [bytes.byteLength, sum];
})";

}  // namespace

TEST(ResourceCallback, may_give_64_mib)
{
    std::vector<uint32_t> content = words(16 * 1024 * 1024);
    const ServingResources serving(beside_the_page([&](std::string, bool&, uint64_t& size) {
        size = content.size() * sizeof(uint32_t);
        return reinterpret_cast<uint8_t*>(content.data());
    }));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    view.run(CHECKSUM);
    EXPECT_EQ(view.evaluate("checksum('/huge.bin')"),
              "[67108864," + std::to_string(checksum(content)) + "]");
}

TEST(ResourceCallback, may_give_a_large_file_to_many_that_do_not_read_it)
{
    // A new buffer each time, as from a host that reads its pack.
    constexpr size_t SIZE = 64 * 1024 * 1024;
    std::vector<uint8_t> buffers[2] = {std::vector<uint8_t>(SIZE, 7),
                                       std::vector<uint8_t>(SIZE, 7)};
    size_t asked = 0;
    const ServingResources serving(beside_the_page([&](std::string, bool&, uint64_t& size) {
        size = SIZE;
        return buffers[asked++ % 2].data();
    }));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    const double before = holdings().resident_kib;
    EXPECT_EQ(view.evaluate("Promise.all(Array.from({length: 10}, (_, i) => fetch('/' + i)))"
                            ".then(all => window.replies = all).then(all => all.length)"),
              "10");
    EXPECT_LT(holdings().resident_kib - before, 2.0 * SIZE / 1024)
        << "more than one copy of the file is in memory";
}

TEST(ResourceCallback, waits_while_pages_leave_half_a_gibibyte_unread)
{
    // Different contents. The engine reads them in the end, where it has room.
    constexpr size_t SIZE = 64 * 1024 * 1024;
    constexpr int FITTING = 8, ALL = 16;
    std::vector<uint8_t> buffer(SIZE);
    std::atomic<int> asked = 0;
    const ServingResources serving(beside_the_page([&](std::string, bool&, uint64_t& size) {
        std::memset(buffer.data(), ++asked, SIZE);
        size = SIZE;
        return buffer.data();
    }));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    allow_messages_matching(
        "^marlune: pages have left 512 MiB of the game's files unread, so further "
        "requests wait until pages read or cancel their responses");
    const double before = holdings().resident_kib;
    double most = before;
    view.run("for (let i = 0; i < " + std::to_string(ALL)
             + "; ++i) fetch('/' + i).then(reply => setTimeout(() => reply.body.cancel(), 1000))");
    EXPECT_TRUE(view.draw_until([&] {
        most = std::max(most, holdings().resident_kib);
        return asked == ALL;
    })) << asked;
    if (!memory_is_held_back()) {
        EXPECT_LT(most - before, (FITTING + 1.5) * SIZE / 1024);
    }
    EXPECT_TRUE(view.go_to("res://pack/")) << "unread files still hold up the view";
}

TEST(ResourceCallback, serves_a_view_also_while_the_page_of_another_one_hangs_over_all_that_fits)
{
    constexpr size_t SIZE = 128 * 1024 * 1024;
    constexpr int FITTING = 4;
    std::vector<uint8_t> buffer(SIZE);
    std::atomic<int> asked = 0;
    const ServingResources serving(beside_the_page([&](std::string, bool&, uint64_t& size) {
        std::memset(buffer.data(), ++asked, SIZE);
        size = SIZE;
        return buffer.data();
    }));
    HostWebView hanging, other;
    ASSERT_TRUE(hanging.open("res://pack/"));
    expect_message_matching("^marlune: pages have left 512 MiB of the game's files unread");
    // The requests arrived one after the other.
    allow_messages_matching(
        "^marlune: [1-4] requests for the game's files failed: pages read nothing");
    hanging.run("for (let i = 0; i < 4; ++i) fetch('/' + i).then(() => { for (;;); })");
    ASSERT_TRUE(hanging.draw_until([&] { return asked == FITTING; })) << asked;
    EXPECT_TRUE(other.open("res://pack/"));
}

TEST(ResourceCallback, may_use_its_buffer_again_at_the_next_call)
{
    constexpr size_t size_of_each = 100'000;
    std::vector<uint8_t> buffer(size_of_each);
    const ServingResources serving(beside_the_page([&](std::string path, bool&, uint64_t& size) {
        std::memset(buffer.data(), path.at(1), buffer.size());
        size = buffer.size();
        return buffer.data();
    }));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    EXPECT_EQ(
        view.evaluate("Promise.all([...'abcdefghijklmnopqrstuvwxyz'].map(async name => "
                      "await ask('/' + name) === 'application/octet-stream ' "
                      "+ name.repeat(100000))).then(all => all.every(Boolean) && all.length)"),
        "26");
}

TEST(ResourceCallback, may_be_replaced_while_pages_load)
{
    // Each callback owns its bytes, so the sanitizer finds any use after the callback's end.
    const auto callback_of = [](char letter) {
        auto content = std::make_shared<std::string>(10'000, letter);
        return beside_the_page([content](std::string, bool&, uint64_t& size) {
            size = content->size();
            return reinterpret_cast<uint8_t*>(content->data());
        });
    };
    const ServingResources serving(callback_of('a'));
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    std::atomic<int> replaced = 0;
    const std::jthread replacer([&](std::stop_token stop) {
        for (; !stop.stop_requested(); ++replaced)
            MView().set_func_resource_file(callback_of(replaced % 2 ? 'a' : 'b'));
    });
    view.run("window.heard = new Set(); window.asking = (async () => { while (!window.done) {"
             "const reply = (await ask('/file')).slice(25);"
             "heard.add(reply === reply[0].repeat(10000) ? reply[0] : 'torn: ' + reply.length);"
             "} })()");
    const int before = replaced;
    EXPECT_TRUE(view.draw_until(
        [&] { return replaced > before + 200 && view.evaluate("heard.size > 1") == "true"; }));
    EXPECT_EQ(view.evaluate("done = true, asking.then(() => [...heard].sort())"), "[\"a\",\"b\"]");
}

TEST(ResourceCallback, that_is_registered_late_serves_the_page_once_it_is_reloaded)
{
    expect_message("m_resource_file not set, returning...");
    HostWebView view;
    view->set_url("res://pack/");
    ASSERT_TRUE(view->load());
    ASSERT_TRUE(view.draw_until(all_expected_messages_came));
    const ResourcePack pack({{"/index.html", PAGE}});
    EXPECT_TRUE(view.go_to("res://pack/"));
    EXPECT_EQ(view.evaluate("document.title"), quoted("resources"));
}

// --- Ranges

TEST_F(Resources, are_sent_in_part_where_a_page_asks_for_a_part)
{
    pack.put("/a.txt", "0123456789");
    ASSERT_TRUE(view.open("res://pack/"));
    EXPECT_EQ(ask("a.txt", "{headers: {Range: 'bytes=0-3'}}"), quoted("text/plain 0123"));
    EXPECT_EQ(ask("a.txt", "{headers: {Range: 'bytes=9-'}}"), quoted("text/plain 9"));
}

TEST_F(Resources, are_sent_whole_where_a_page_asks_for_a_part_that_they_do_not_have)
{
    pack.put("/a.txt", "0123456789");
    ASSERT_TRUE(view.open("res://pack/"));
    for (const char* const range :
         {"bytes=10-", "bytes=10-20", "BYTES = 100 - ", "bytes=9223372036854775807-",
          "bytes=99999999999999999999999-", "bytes=-0", "bytes=5-4", "bytes=0-1,5-6", "bytes=x",
          "letters=10-", "bytes=10-, 20-", ""}) {
        EXPECT_EQ(ask("a.txt", std::string("{headers: {Range: '") + range + "'}}"),
                  quoted("text/plain 0123456789"))
            << range;
    }
    EXPECT_EQ(ask("a.txt", "{headers: {rANGE: 'bytes=10-'}}"), quoted("text/plain 0123456789"));
}

// --- From pages of other schemes

TEST_F(Resources, are_there_for_texts_that_the_host_shows)
{
    pack.put("/a.txt", "text");
    ASSERT_TRUE(view.show_html(PAGE, "res://pack/"));
    EXPECT_EQ(ask("a.txt"), quoted("text/plain text"));
}

TEST_F(Resources, can_be_shown_but_not_read_by_pages_of_the_web)
{
    HttpServer server;
    server.serve("/", html(PAGE));
    pack.put("/a.txt", "text");
    pack.put("/a.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='31' height='17'></svg>");
    ASSERT_TRUE(view.open(server.url("/")));
    EXPECT_EQ(ask("res://pack/a.txt"), quoted("refused"));
    EXPECT_EQ(pack.asked_for(), std::vector<std::string>()) << "the resource callback was called";
    EXPECT_EQ(view.evaluate("load('img', 'res://pack/a.svg')"), quoted("load"));
}

}  // namespace marlune::test

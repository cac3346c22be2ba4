// Files of the "res" scheme, requested by a real page in the real engine.

#include "support/host_view.h"
#include "support/message_log.h"
#include "support/web/resource_pack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

// Reports for each file its type in the engine, or that the file is missing.
constexpr auto page = R"(<!doctype html><title>pack</title><script>
function report(path) {
    return new Promise(resolve => {
        const request = new XMLHttpRequest();
        request.onload = () => {
            const type = request.getResponseHeader("content-type");
            resolve(console.log(path + " " + type + " " + request.responseText.length));
        };
        request.onerror = () => resolve(console.log(path + " refused"));
        request.open("GET", path);
        request.send();
    });
}
(async () => {
    for (const path of ["data.json", "Page.HTML", "pack.sorel", "a.css?v=1", "dir/", "missing.txt",
                        "a%20b/%C3%BC.txt"])
        await report(path);
    console.log("done");
})();
</script>)";

std::vector<std::string> messages_until(HostView& view, const std::string& last)
{
    std::vector<std::string> messages;
    view.draw_until([&] {
        std::ranges::move(view.console().take_messages(), std::back_inserter(messages));
        return std::ranges::find(messages, last) != messages.end();
    });
    return messages;
}

}  // namespace

TEST(ResScheme, serves_the_hosts_files_with_their_types)
{
    ResourcePack pack({
        {"/index.html", page},
        {"/data.json", "{}"},
        {"/Page.HTML", "<p>"},
        {"/pack.sorel", "12345"},
        {"/a.css", "p {}"},
        {"/dir/index.html", "<p>in dir"},
        {"/a b/\xc3\xbc.txt", "sp\xc3\xa4t"},
    });

    HostView view;
    ASSERT_TRUE(view.load("ResPage"));
    const auto messages = messages_until(view, "done");
    EXPECT_EQ(messages,
              (std::vector<std::string>{
                  "data.json application/json 2",
                  "Page.HTML text/html 3",
                  "pack.sorel image/png 5",
                  "a.css?v=1 application/octet-stream 4",
                  "dir/ text/html 9",
                  "missing.txt refused",
                  "a%20b/%C3%BC.txt text/plain 4",
                  "done",
              }));
    const auto asked_for = pack.asked_for();
    ASSERT_FALSE(asked_for.empty());
    EXPECT_EQ(asked_for.front(), "/index.html");
}

TEST(ResScheme, leaves_a_request_unanswered_when_nothing_serves_it)
{
    expect_message("m_resource_file not set, returning...");

    HostView view;
    ASSERT_TRUE(view.load("ResPage"));
    EXPECT_TRUE(view.draw_until(all_expected_messages_came));
}

}  // namespace marlune::test

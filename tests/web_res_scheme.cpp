// Files of the "res" scheme, asked for by a real page in the real engine.

#include "support/host_view.h"
#include "support/library.h"
#include "support/message_log.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace marlune::test {

namespace {

// Reports what the engine made of each file: its type, or that there is none.
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

/** A host's packed files. Called on the Qt thread. */
class Pack {
public:
    MView::ResourceFile server()
    {
        return [this](std::string path, bool& flag, uint64_t& size) {
            return serve(path, flag, size);
        };
    }

    std::vector<std::string> asked_for()
    {
        const std::lock_guard lock(mutex_);
        return asked_for_;
    }

    std::map<std::string, std::string> files;

private:
    uint8_t* serve(const std::string& path, bool& flag, uint64_t& size)
    {
        const std::lock_guard lock(mutex_);
        EXPECT_FALSE(flag);
        EXPECT_EQ(size, 0u);
        flag = true;  // which means nothing to the library
        asked_for_.push_back(path);
        const auto file = files.find(path);
        if (file == files.end())
            return &no_file_;  // a pointer that a size of 0 makes void
        size = file->second.size();
        return reinterpret_cast<uint8_t*>(file->second.data());
    }

    std::mutex mutex_;
    std::vector<std::string> asked_for_;
    uint8_t no_file_ = 0;
};

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
    Pack pack;
    pack.files = {
        {"/index.html", page},
        {"/data.json", "{}"},
        {"/Page.HTML", "<p>"},
        {"/pack.sorel", "12345"},
        {"/a.css", "p {}"},
        {"/dir/index.html", "<p>in dir"},
        {"/a b/\xc3\xbc.txt", "sp\xc3\xa4t"},
    };
    start_library();
    MView().set_func_resource_file(pack.server());  // for all views, from a facade without one

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
    MView().set_func_resource_file({});
}

TEST(ResScheme, leaves_a_request_unanswered_when_nothing_serves_it)
{
    start_library();
    MView().set_func_resource_file({});
    expect_message("m_resource_file not set, returning...");

    HostView view;
    ASSERT_TRUE(view.load("ResPage"));
    EXPECT_TRUE(view.draw_until(all_expected_messages_came));
}

}  // namespace marlune::test

// The kinds of sources, and sources that cannot be played.

#include "support/media/host_video_view.h"
#include "support/web/http_server.h"

#include <QTemporaryDir>
#include <QUrl>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

constexpr Size WIDE{640, 360};

class Sources : public testing::Test {
protected:
    void SetUp() override { view->set_controls(false); }

    /** Whether the source fails with this number and a text, before a scene is loaded or after. */
    testing::AssertionResult fails(const std::string& source, MediaError error)
    {
        const size_t first = view.events().size();
        view->set_source(source);
        if (auto reported =
                view.wait_for_event("media_status_changed", std::to_string(INVALID_MEDIA), first);
            !reported)
            return reported;
        const std::string text = std::to_string(error) + " " + view->get_error_string();
        if (auto reported = view.wait_for_event("error_occurred", text, first); !reported)
            return reported;
        if (view->get_error() != error || view->get_error_string().empty())
            return testing::AssertionFailure()
                << "the error is " << view->get_error() << " " << view->get_error_string();
        if (view->get_media_status() != INVALID_MEDIA)
            return testing::AssertionFailure() << "the status is " << view->get_media_status();
        if (view->get_playback_state() != STOPPED || view->get_duration() != 0)
            return testing::AssertionFailure() << "the player plays";
        return view.wait_for_event("error_changed", first);
    }

    HostVideoView view{WIDE};
};

std::string content_of(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/** Serves ranges of a file on request, as web servers do. */
HttpHandler in_parts(std::string content)
{
    return [content = std::move(content)](const HttpRequest& request) {
        HttpReply reply{.headers = {{"Content-Type", "video/mp4"}, {"Accept-Ranges", "bytes"}}};
        const std::string range = request.header("range");
        const std::string unit = "bytes=";
        if (!range.starts_with(unit)) {
            reply.body = content;
            return reply;
        }
        const size_t start = std::stoul(range.substr(unit.size()));
        const size_t dash = range.find('-');
        const bool has_end = dash + 1 < range.size();
        const size_t end = has_end ? std::stoul(range.substr(dash + 1)) : content.size() - 1;
        reply.status = 206;
        reply.headers.push_back({"Content-Range",
                                 "bytes " + std::to_string(start) + "-" + std::to_string(end) + "/"
                                     + std::to_string(content.size())});
        reply.body = content.substr(start, end - start + 1);
        return reply;
    };
}

TEST_F(Sources, can_be_files_with_any_name)
{
    const std::string name = "ein Über & 100% name.mp4";
    ASSERT_TRUE(view.open(name));
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 200; }));
    EXPECT_EQ(view->get_duration(), 4000u);
}

TEST_F(Sources, can_be_plain_paths)
{
    view->set_source(clip_path("quadrants.mp4"));
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(view.wait_for_event("duration_changed", "4000"));
    EXPECT_EQ(view->get_source(), clip_path("quadrants.mp4"));
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 200; }));
}

TEST_F(Sources, can_be_plain_paths_with_any_name)
{
    view->set_source(clip_path("ein Über & 100% name.mp4"));
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(view.wait_for_event("duration_changed", "4000"));
    EXPECT_EQ(view->get_source(),
              QUrl::fromLocalFile(QString::fromStdString(clip_path("ein Über & 100% name.mp4")))
                  .toString()
                  .toStdString());
}

TEST_F(Sources, that_are_no_files_are_refused)
{
    const QTemporaryDir folder;
    const std::string pipe = folder.filePath("pipe.mp4").toStdString();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_TRUE(view.load());
    for (const std::string& path : {pipe, std::string("/dev/zero"), std::string("/dev")}) {
        EXPECT_TRUE(fails("file://" + path, RESOURCE_ERROR)) << path;
        EXPECT_TRUE(fails(path, RESOURCE_ERROR)) << path;
    }
    EXPECT_TRUE(view.change_to("short.mp4"));
}

/** A list that makes FFmpeg block: its entry is a pipe without a writer. */
class BlockedSource {
public:
    BlockedSource()
    {
        mkfifo(pipe_.c_str(), 0600);
        std::ofstream(path()) << "ffconcat version 1.0\nfile pipe.mp4\n";
    }
    ~BlockedSource() { release(); }

    std::string path() const { return folder_.filePath("list.ffconcat").toStdString(); }

    /** Whether a reader was waiting, which then reads an empty pipe. */
    bool release()
    {
        const int end = open(pipe_.c_str(), O_WRONLY | O_NONBLOCK);
        if (end >= 0)
            close(end);
        return end >= 0;
    }

private:
    QTemporaryDir folder_;
    const std::string pipe_ = folder_.filePath("pipe.mp4").toStdString();
};

TEST_F(Sources, that_keep_whoever_opens_them_do_not_hold_the_next_one_up)
{
    std::vector<BlockedSource> blocked(2 * std::thread::hardware_concurrency() + 1);
    ASSERT_TRUE(view.load());
    for (const BlockedSource& source : blocked)
        view->set_source(source.path());
    ASSERT_TRUE(view.change_to("short.mp4")) << "blocked threads hold up the next source";
    EXPECT_EQ(view->get_duration(), 1000u);
    view->play();
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 200; }));
    for (BlockedSource& source : blocked)
        EXPECT_TRUE(wait_until([&] { return source.release(); }));
}

TEST_F(Sources, that_keep_whoever_opens_them_can_be_taken_away)
{
    BlockedSource blocked;
    ASSERT_TRUE(view.open("short.mp4"));
    view->set_source(blocked.path());
    const size_t first = view.events().size();
    view->set_source("");
    EXPECT_EQ(view->get_source(), "");
    EXPECT_EQ(view.reports(first),
              (std::vector<std::string>{"seekable_changed false", "has_audio_changed false",
                                        "has_video_changed false", "media_status_changed 0",
                                        "source_changed"}));
    EXPECT_TRUE(wait_until([&] { return blocked.release(); }));
}

TEST_F(Sources, that_keep_whoever_opens_them_do_not_keep_reset_and_destroy)
{
    BlockedSource first, second;
    ASSERT_TRUE(view.load());
    view->set_source(first.path());
    view->reset();
    EXPECT_EQ(view->get_source(), "");
    ASSERT_TRUE(view.load());
    view->set_source(second.path());
    view->destroy();
    EXPECT_TRUE(wait_until([&] { return first.release(); }));
    EXPECT_TRUE(wait_until([&] { return second.release(); }));
}

TEST_F(Sources, in_a_list_on_the_disk_do_not_reach_the_network)
{
    HttpServer server;
    server.serve("/part.ts", {.body = "none"});
    const QTemporaryDir folder;
    const std::string list = folder.filePath("list.m3u8").toStdString();
    std::ofstream(list) << "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n"
                        << server.url("/part.ts") << "\n#EXT-X-ENDLIST\n";
    ASSERT_TRUE(view.load());
    const size_t first = view.events().size();
    view->set_source(list);
    EXPECT_TRUE(view.wait_for_event("media_status_changed", std::to_string(INVALID_MEDIA), first));
    EXPECT_TRUE(server.requests("/part.ts").empty());
}

TEST_F(Sources, in_a_list_of_a_server_do_not_reach_the_disk)
{
    HttpServer server;
    server.serve("/list.m3u8",
                 {.headers = {{"Content-Type", "application/vnd.apple.mpegurl"}},
                  .body = "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + clip_url("short.mp4")
                      + "\n#EXT-X-ENDLIST\n"});
    ASSERT_TRUE(view.load());
    const size_t first = view.events().size();
    view->set_source(server.url("/list.m3u8"));
    EXPECT_TRUE(view.wait_for_event("media_status_changed", std::to_string(INVALID_MEDIA), first));
    EXPECT_FALSE(server.requests("/list.m3u8").empty());
}

TEST_F(Sources, that_do_not_exist_fail)
{
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(fails(clip_url("missing.mp4"), RESOURCE_ERROR));
    ASSERT_TRUE(view.change_to("short.mp4")) << "the next one is played";
    EXPECT_EQ(view->get_error(), NO_ERROR);
    EXPECT_EQ(view->get_error_string(), "");
    view->play();
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 200; }));
}

TEST_F(Sources, fail_before_there_is_a_scene_too)
{
    EXPECT_TRUE(fails(clip_url("missing.mp4"), RESOURCE_ERROR));
    ASSERT_TRUE(view.load());
    EXPECT_EQ(view->get_media_status(), INVALID_MEDIA);
}

TEST_F(Sources, that_are_empty_or_no_video_fail)
{
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(fails(clip_url("empty.mp4"), FORMAT_ERROR));
    EXPECT_TRUE(fails(clip_url("text.mp4"), FORMAT_ERROR));
}

TEST_F(Sources, that_end_early_are_played_to_their_end)
{
    ASSERT_TRUE(view.open("truncated.mp4"));
    EXPECT_EQ(view->get_duration(), 10000u) << "not the duration in the file's header";
    EXPECT_TRUE(view.draw_until([&] { return view.frame_number() > 30; }));
    EXPECT_EQ(view->get_error(), NO_ERROR);
}

TEST_F(Sources, with_an_unknown_scheme_fail)
{
    ASSERT_TRUE(view.load());
    const size_t first = view.events().size();
    view->set_source("nonsense://somewhere/a.mp4");
    EXPECT_TRUE(
        view.wait_for_event("error_occurred", first)
        || view.wait_for_event("media_status_changed", std::to_string(INVALID_MEDIA), first));
    EXPECT_NE(view->get_error(), NO_ERROR);
}

TEST_F(Sources, that_no_server_gives_fail)
{
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(fails("http://127.0.0.1:1/a.mp4", RESOURCE_ERROR));
    HttpServer server;
    EXPECT_TRUE(fails(server.url("/missing.mp4"), RESOURCE_ERROR));
    EXPECT_FALSE(server.requests("/missing.mp4").empty());
}

TEST_F(Sources, of_a_server_are_asked_for_in_parts)
{
    HttpServer server;
    server.serve("/long.mp4", in_parts(content_of(clip_path("long.mp4"))));
    view->set_source(server.url("/long.mp4"));
    ASSERT_TRUE(view.load());
    ASSERT_TRUE(view.wait_for_event("duration_changed", "20000"));
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 300; }));
    EXPECT_TRUE(view->get_seekable());
    const size_t requests = server.requests("/long.mp4").size();
    view->set_position(18000);
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 18200; }));
    EXPECT_GT(server.requests("/long.mp4").size(), requests)
        << "the player did not seek by a new request";
    EXPECT_TRUE(view.wait_for_event("media_status_changed", std::to_string(END_OF_MEDIA)));
}

TEST_F(Sources, of_a_server_can_be_given_up_while_it_holds_back)
{
    HttpServer server;
    server.serve("/held.mp4", {.hold = HttpReply::ALL});
    ASSERT_TRUE(view.load());
    view->set_source(server.url("/held.mp4"));
    ASSERT_TRUE(server.wait_for_request("/held.mp4"));
    EXPECT_EQ(view->get_media_status(), LOADING_MEDIA);
    ASSERT_TRUE(view.change_to("short.mp4"));
    EXPECT_EQ(view->get_duration(), 1000u);
    server.release();
}

TEST_F(Sources, are_reported_by_their_url)
{
    view->set_source(clip_url("short.mp4"));
    EXPECT_TRUE(view.wait_for_event("source_changed", clip_url("short.mp4")));
    const size_t first = view.events().size();
    view->set_source(clip_url("short.mp4"));
    view->set_source("");
    EXPECT_TRUE(view.wait_for_event("source_changed", "", first));
    const std::vector<ViewEvent> events = view.events();
    const auto is_change = [](const ViewEvent& event) { return event.name == "source_changed"; };
    EXPECT_EQ(std::count_if(events.begin(), events.end(), is_change), 2)
        << "setting the same URL again is reported as a change";
}

}  // namespace

}  // namespace marlune::test

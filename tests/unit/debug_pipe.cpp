// The debug pipe against a real server on the system's own socket.

#include "library/debug_pipe.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>

namespace marlune::test {

namespace {

/** Serves `webview.debug.sock` in a runtime directory of its own. */
class DebugPipe : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = testing::TempDir() + "marlune-pipe-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        directory_ = pattern;
        if (const char* const before = std::getenv("XDG_RUNTIME_DIR"))
            runtime_dir_before_ = before;
        ::setenv("XDG_RUNTIME_DIR", directory_.c_str(), 1);
    }

    void TearDown() override
    {
        stop_listening();
        if (runtime_dir_before_)
            ::setenv("XDG_RUNTIME_DIR", runtime_dir_before_->c_str(), 1);
        else
            ::unsetenv("XDG_RUNTIME_DIR");
        std::filesystem::remove_all(directory_);
    }

    void listen()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = directory_ / "webview.debug.sock";
        ASSERT_LT(path.size(), sizeof(address.sun_path));
        std::strcpy(address.sun_path, path.c_str());
        server_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
        ASSERT_EQ(::bind(server_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        ASSERT_EQ(::listen(server_, 1), 0);
    }

    void stop_listening()
    {
        if (server_ >= 0)
            ::close(std::exchange(server_, -1));
    }

    int accept() { return ::accept(server_, nullptr, nullptr); }

    std::filesystem::path directory_;
    std::optional<std::string> runtime_dir_before_;
    int server_ = -1;
};

std::string read_bytes(int socket, std::size_t count)
{
    std::string bytes(count, '\0');
    const ssize_t received = ::recv(socket, bytes.data(), count, MSG_WAITALL);
    bytes.resize(received < 0 ? 0 : static_cast<std::size_t>(received));
    return bytes;
}

}  // namespace

TEST_F(DebugPipe, logs_one_line_without_a_server)
{
    testing::internal::CaptureStderr();
    start_debug_pipe();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Failed to connect to named pipe. Error: " + std::to_string(ENOENT) + "\n");
}

TEST_F(DebugPipe, logs_that_its_server_ended_before_the_start)
{
    listen();
    stop_listening();
    testing::internal::CaptureStderr();
    start_debug_pipe();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Failed to connect to named pipe. Error: " + std::to_string(ECONNREFUSED) + "\n");
}

TEST_F(DebugPipe, refuses_a_directory_whose_name_is_too_long_for_a_socket)
{
    ::setenv("XDG_RUNTIME_DIR", std::string(200, 'x').c_str(), 1);
    EXPECT_EQ(platform::open_debug_pipe(), platform::no_pipe);
    EXPECT_EQ(platform::last_error(), ENAMETOOLONG);
}

TEST_F(DebugPipe, is_looked_for_in_the_temporary_directory_without_a_runtime_directory)
{
    ::unsetenv("XDG_RUNTIME_DIR");
    ::setenv("TMPDIR", directory_.c_str(), 1);
    listen();
    const auto pipe = platform::open_debug_pipe();
    ::unsetenv("TMPDIR");
    ASSERT_NE(pipe, platform::no_pipe);
    ::close(static_cast<int>(pipe));
}

TEST_F(DebugPipe, has_no_writer_thread_where_it_could_not_connect)
{
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                             std::filesystem::directory_iterator());
    };
    const auto before = threads();
    testing::internal::CaptureStderr();
    start_debug_pipe();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Failed to connect to named pipe. Error: " + std::to_string(ENOENT) + "\n");
    EXPECT_EQ(threads(), before);
}

TEST_F(DebugPipe, connects_at_the_start)
{
    listen();
    testing::internal::CaptureStderr();
    start_debug_pipe();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const int reader = accept();
    EXPECT_GE(reader, 0);
    ::close(reader);
}

TEST_F(DebugPipe, delivers_messages_whole_and_in_order)
{
    listen();
    DebugPipeWriter writer(platform::open_debug_pipe());
    const int reader = accept();
    ASSERT_GE(reader, 0);
    writer.enqueue("one ");
    writer.enqueue(std::string("t\0o ", 4));
    writer.enqueue("three");
    writer.write_pending();
    EXPECT_EQ(read_bytes(reader, 13), std::string("one t\0o three", 13));
    ::close(reader);
}

TEST_F(DebugPipe, writes_nothing_twice)
{
    listen();
    DebugPipeWriter writer(platform::open_debug_pipe());
    const int reader = accept();
    writer.enqueue("first ");
    writer.write_pending();
    writer.write_pending();
    writer.enqueue("second");
    writer.write_pending();
    EXPECT_EQ(read_bytes(reader, 12), "first second");
    ::close(reader);
}

TEST_F(DebugPipe, reports_each_message_after_its_reader_has_ended_and_continues)
{
    listen();
    DebugPipeWriter writer(platform::open_debug_pipe());
    ::close(accept());
    writer.enqueue("one");
    writer.enqueue("two");
    testing::internal::CaptureStderr();
    writer.write_pending();
    const std::string line = "Write failed. Error: " + std::to_string(EPIPE) + "\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line);
}

TEST_F(DebugPipe, reports_each_message_when_it_was_never_connected)
{
    DebugPipeWriter writer(platform::no_pipe);
    writer.enqueue("one");
    writer.enqueue("two");
    testing::internal::CaptureStderr();
    writer.write_pending();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Pipe not connected.\nPipe not connected.\n");
}

}  // namespace marlune::test

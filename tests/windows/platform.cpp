// The Windows side of the platform code, on Windows itself: the debug pipe with a real named pipe,
// and the directory in which the system looks for libraries.

#include "runtime/platform.h"
#include "library/debug_pipe.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>
#include <future>
#include <string>
#include <thread>
#include <utility>

namespace marlune::test {

namespace {

constexpr DWORD pipe_size = 4096;
constexpr DWORD reader_limit_ms = 20'000;

/** Serves the debug pipe as a developer's reader does. */
class Reader {
public:
    Reader()
        : pipe_(CreateNamedPipeA(R"(\\.\pipe\webview.debug.sock)", PIPE_ACCESS_INBOUND,
                                 PIPE_TYPE_BYTE | PIPE_WAIT, PIPE_UNLIMITED_INSTANCES, pipe_size,
                                 pipe_size, reader_limit_ms, nullptr))
    {
        EXPECT_NE(pipe_, INVALID_HANDLE_VALUE) << GetLastError();
    }
    ~Reader() { leave(); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /** Whether a writer has connected; it can connect at once, because no accept is needed. */
    bool is_connected()
    {
        return ConnectNamedPipe(pipe_, nullptr) || GetLastError() == ERROR_PIPE_CONNECTED;
    }

    std::string read(std::size_t count)
    {
        std::string bytes(count, '\0');
        std::size_t received = 0;
        DWORD part = 0;
        while (received < count
               && ReadFile(pipe_, bytes.data() + received, static_cast<DWORD>(count - received),
                           &part, nullptr))
            received += part;
        bytes.resize(received);
        return bytes;
    }

    bool has_more()
    {
        DWORD available = 0;
        PeekNamedPipe(pipe_, nullptr, 0, nullptr, &available, nullptr);
        return available > 0;
    }

    void disconnect() { DisconnectNamedPipe(pipe_); }

    void leave()
    {
        if (pipe_ != INVALID_HANDLE_VALUE)
            CloseHandle(std::exchange(pipe_, INVALID_HANDLE_VALUE));
    }

private:
    HANDLE pipe_;
};

/** A connection to the debug pipe, closed at the end. */
class Connection {
public:
    ~Connection() { CloseHandle(reinterpret_cast<HANDLE>(handle)); }

    const platform::PipeHandle handle = platform::open_debug_pipe();
};

std::string printed_by(auto&& action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

std::string library_directory()
{
    std::string path(32'768, '\0');
    path.resize(GetDllDirectoryA(static_cast<DWORD>(path.size()), path.data()));
    return path;
}

/** Empty where the code page has no such letters. */
std::string in_local_code_page(const std::wstring& wide)
{
    std::string narrow(4 * wide.size(), '\0');
    BOOL lossy = FALSE;
    const int size = WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()),
                                         narrow.data(), static_cast<int>(narrow.size()), nullptr,
                                         GetACP() == CP_UTF8 ? nullptr : &lossy);
    narrow.resize(lossy ? 0 : static_cast<std::size_t>(size));
    return narrow;
}

bool finds_wanted_library()
{
    const HMODULE library = LoadLibraryA("marlune_wanted_library.dll");
    return library && FreeLibrary(library);
}

/** Sets the directory for libraries back to none at the end. */
class LibraryDirectory : public testing::Test {
protected:
    void TearDown() override { SetDllDirectoryA(nullptr); }
};

}  // namespace

TEST(DebugPipe, logs_one_line_without_a_server)
{
    EXPECT_EQ(printed_by(start_debug_pipe), "Failed to connect to named pipe. Error: 2\n");
}

TEST(DebugPipe, logs_that_its_reader_has_another_writer)
{
    Reader reader;
    const Connection other;
    ASSERT_NE(other.handle, platform::no_pipe);
    EXPECT_EQ(printed_by(start_debug_pipe), "Failed to connect to named pipe. Error: 231\n");
}

TEST(DebugPipe, logs_that_its_reader_has_left_before_the_start)
{
    Reader().leave();
    EXPECT_EQ(printed_by(start_debug_pipe), "Failed to connect to named pipe. Error: 2\n");
}

TEST(DebugPipe, connects_at_the_start_and_logs_nothing)
{
    Reader reader;
    EXPECT_EQ(printed_by(start_debug_pipe), "");
    EXPECT_TRUE(reader.is_connected());
}

TEST(DebugPipe, is_opened_for_writing_only)
{
    Reader reader;
    const Connection connection;
    char byte = 0;
    DWORD received = 0;
    EXPECT_FALSE(
        ReadFile(reinterpret_cast<HANDLE>(connection.handle), &byte, 1, &received, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
}

TEST(DebugPipe, delivers_messages_whole_and_in_order)
{
    Reader reader;
    const Connection connection;
    DebugPipeWriter writer(connection.handle);
    writer.enqueue("one ");
    writer.enqueue(std::string("t\0o ", 4));
    writer.enqueue("three");
    writer.write_pending();
    EXPECT_EQ(reader.read(13), std::string("one t\0o three", 13));
    EXPECT_FALSE(reader.has_more());
}

TEST(DebugPipe, writes_nothing_twice)
{
    Reader reader;
    const Connection connection;
    DebugPipeWriter writer(connection.handle);
    writer.enqueue("first ");
    writer.write_pending();
    writer.write_pending();
    writer.enqueue("second");
    writer.write_pending();
    EXPECT_EQ(reader.read(12), "first second");
    EXPECT_FALSE(reader.has_more());
}

TEST(DebugPipe, delivers_a_message_that_is_larger_than_the_pipe)
{
    Reader reader;
    const Connection connection;
    DebugPipeWriter writer(connection.handle);
    std::string message;
    while (message.size() < 100 * pipe_size)
        message += std::to_string(message.size()) + ' ';
    writer.enqueue(message);
    writer.enqueue("end");
    auto written = std::async(std::launch::async, [&writer] { writer.write_pending(); });
    EXPECT_EQ(reader.read(message.size() + 3), message + "end");
    written.get();
}

TEST(DebugPipe, reports_each_message_when_its_reader_has_left_and_goes_on)
{
    Reader reader;
    const Connection connection;
    DebugPipeWriter writer(connection.handle);
    writer.enqueue("read ");
    writer.write_pending();
    EXPECT_EQ(reader.read(5), "read ");
    reader.leave();
    writer.enqueue("one");
    writer.enqueue("two");
    const std::string line = "Write failed. Error: " + std::to_string(ERROR_NO_DATA) + "\n";
    EXPECT_EQ(printed_by([&writer] { writer.write_pending(); }), line + line);
    EXPECT_EQ(printed_by([&writer] { writer.write_pending(); }), "");
}

TEST(DebugPipe, reports_each_message_when_its_reader_has_hung_up)
{
    Reader reader;
    const Connection connection;
    DebugPipeWriter writer(connection.handle);
    reader.disconnect();
    writer.enqueue("one");
    EXPECT_EQ(printed_by([&writer] { writer.write_pending(); }),
              "Write failed. Error: " + std::to_string(ERROR_PIPE_NOT_CONNECTED) + "\n");
}

TEST(DebugPipe, reports_each_message_when_it_was_never_connected)
{
    DebugPipeWriter writer(platform::no_pipe);
    writer.enqueue("one");
    writer.enqueue("two");
    EXPECT_EQ(printed_by([&writer] { writer.write_pending(); }),
              "Pipe not connected.\nPipe not connected.\n");
}

TEST(DebugPipe, writes_from_a_thread_of_its_own)
{
    Reader reader;
    const Connection connection;
    // Never destroyed, as at the start of the library: its thread runs until the process ends.
    auto* const writer = new DebugPipeWriter(connection.handle);
    std::thread([writer] { writer->run(); }).detach();
    writer->enqueue("one ");
    writer->enqueue("two");
    EXPECT_EQ(reader.read(7), "one two");
}

TEST_F(LibraryDirectory, is_set_without_changes)
{
    platform::set_library_directory("C:/game/addons/webview/");
    EXPECT_EQ(library_directory(), "C:/game/addons/webview/");
}

TEST_F(LibraryDirectory, replaces_the_one_before)
{
    platform::set_library_directory("C:/first/");
    platform::set_library_directory("/addons/webview/");
    EXPECT_EQ(library_directory(), "/addons/webview/");
}

TEST_F(LibraryDirectory, is_where_libraries_are_found)
{
    EXPECT_FALSE(finds_wanted_library());
    const auto folder = std::filesystem::path(WANTED_LIBRARY).parent_path();
    platform::set_library_directory(folder.generic_string() + "/");
    EXPECT_TRUE(finds_wanted_library());
}

TEST_F(LibraryDirectory, is_read_in_the_local_code_page)
{
    const auto root = std::filesystem::temp_directory_path() / L"marlune jeu \u00e9t\u00e9";
    const std::string narrow = in_local_code_page(root.native());
    if (narrow.empty())
        GTEST_SKIP() << "code page " << GetACP() << " has no such letters";
    const auto folder = root / "addons" / "webview";
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(WANTED_LIBRARY, folder / "marlune_wanted_library.dll",
                               std::filesystem::copy_options::overwrite_existing);
    platform::set_library_directory(narrow + "/addons/webview/");
    EXPECT_TRUE(finds_wanted_library());
    std::filesystem::remove_all(root);
}

}  // namespace marlune::test

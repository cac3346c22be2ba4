#include "runtime/platform.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace marlune::platform {

namespace {

std::string debug_socket_path()
{
    std::error_code ignored;
    const char* runtime_dir = std::getenv("XDG_RUNTIME_DIR");
    const std::filesystem::path directory =
        runtime_dir && *runtime_dir ? runtime_dir : std::filesystem::temp_directory_path(ignored);
    return directory / "webview.debug.sock";
}

}  // namespace

void set_library_directory(const std::string&)
{
    // The libraries beside this one are found by their run path.
}

PipeHandle open_debug_pipe()
{
    const std::string path = debug_socket_path();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        errno = ENAMETOOLONG;
        return no_pipe;
    }
    std::ranges::copy(path, address.sun_path);

    const int pipe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (pipe < 0)
        return no_pipe;
    if (::connect(pipe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        const int error = errno;
        ::close(pipe);
        errno = error;
        return no_pipe;
    }
    return pipe;
}

bool write_debug_pipe(PipeHandle pipe, std::string_view bytes)
{
    while (!bytes.empty()) {
        // Without a signal: a reader that has gone away must not end the game.
        const ssize_t sent =
            ::send(static_cast<int>(pipe), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

const MemorySharing memory_sharing{"VK_KHR_external_memory_fd", "vkGetMemoryFdPropertiesKHR"};

void end_process(std::int64_t id)
{
    ::kill(static_cast<pid_t>(id), SIGKILL);
}

long last_error()
{
    return errno;
}

}  // namespace marlune::platform

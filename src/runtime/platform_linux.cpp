#include "runtime/platform.h"

#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

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

/** The parent's process ID; -1 when the process has ended. */
pid_t parent_of(const std::filesystem::path& process)
{
    std::ifstream status(process / "status");
    for (std::string word; status >> word;) {
        pid_t parent = -1;
        if (word == "PPid:" && status >> parent)
            return parent;
    }
    return -1;
}

/** The engine starts its processes from zygotes, which it does not end. */
bool is_engine_zygote(const std::filesystem::path& process)
{
    std::ifstream file(process / "cmdline");
    const std::string command_line(std::istreambuf_iterator<char>(file), {});
    return command_line.find("QtWebEngineProcess") != std::string::npos
        && command_line.find("--type=zygote") != std::string::npos;
}

std::vector<pid_t> engine_children()
{
    std::vector<pid_t> children;
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc", error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const pid_t process = std::atoi(entry->path().filename().c_str());
        if (process > 0 && parent_of(entry->path()) == ::getpid()
            && is_engine_zygote(entry->path()))
            children.push_back(process);
    }
    return children;
}

/** exit() destroys the main thread's thread_local objects before it runs any registered handler. */
struct MainThreadEnd {
    void (*leave)();
    ~MainThreadEnd() { leave(); }
};

}  // namespace

void set_library_directory(const std::string&)
{
    // The libraries beside this one are found by their run path.
}

void stay_loaded()
{
    // The library is linked with "nodelete".
}

void run_at_exit(void (*leave)(), void (*end)(int exit_code))
{
    if (::gettid() == ::getpid()) {
        static thread_local const MainThreadEnd main_thread_end{leave};
    }
    // For exit() on any other thread, which runs handlers in the reverse order of registration.
    ::on_exit(
        [](int exit_code, void* function) { reinterpret_cast<void (*)(int)>(function)(exit_code); },
        reinterpret_cast<void*>(end));
}

void end_this_process(int exit_code)
{
    std::fflush(nullptr);
    ::_exit(exit_code);
}

void run_in_forked_child(void (*leave)())
{
    ::pthread_atfork(nullptr, nullptr, leave);
}

void end_engine_processes()
{
    for (const pid_t child : engine_children()) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
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
        // Without SIGPIPE: a reader that has closed its end must not end the game.
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

const ExternalMemory external_memory{"VK_KHR_external_memory_fd", "vkGetMemoryFdPropertiesKHR"};

void end_process(std::int64_t id)
{
    ::kill(static_cast<pid_t>(id), SIGKILL);
}

long last_error()
{
    return errno;
}

}  // namespace marlune::platform

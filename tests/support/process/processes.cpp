#include "support/process/processes.h"

#include "support/wait.h"

#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

// A process of the web engine notices the end of its browser process by a closed channel: soon, not
// at once.
constexpr auto PARTING_TIME = 10s;
constexpr auto PROGRAM_TIME = 60s;

int exit_code_of(int status)
{
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

/** Makes orphans children of this process; see PR_SET_CHILD_SUBREAPER. */
void adopt_orphans()
{
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

/** Waits until this process has no descendants but `before`; kills and returns any others. */
std::vector<Process> end_all_but(const std::vector<Process>& before)
{
    std::vector<Process> rest;
    const auto all_are_gone = [&] {
        rest = descendants();
        std::erase_if(rest, [&](const Process& process) {
            return std::any_of(before.begin(), before.end(),
                               [&](const Process& old) { return old.id == process.id; });
        });
        return rest.empty();
    };
    if (wait_until(all_are_gone, PARTING_TIME))
        return {};
    for (const Process& process : rest)
        kill(process.id, SIGKILL);
    return rest;
}

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string path = std::filesystem::temp_directory_path() / "marlune-test-XXXXXX";
        if (!mkdtemp(path.data()))
            throw std::runtime_error("cannot make a temporary folder");
        path_ = path;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

std::string content(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

pid_t start(const std::vector<std::string>& arguments, const std::filesystem::path& out,
            const std::filesystem::path& error)
{
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, error.c_str(), flags, 0600);
    pid_t child = 0;
    const int failure = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure)
        throw std::runtime_error("cannot run " + arguments[0]);
    return child;
}

}  // namespace

std::vector<Process> engine_processes()
{
    std::vector<Process> result = descendants();
    std::erase_if(result,
                  [](const Process& process) { return !process.name.starts_with("QtWebEngine"); });
    return result;
}

std::vector<Process> page_processes()
{
    // Processes for pages are forked with the command line of the process that forks them, so it
    // does not distinguish them. Only they have a thread of this name.
    std::vector<Process> result = engine_processes();
    std::erase_if(result, [](const Process& process) {
        return count_threads(process.id, "Compositor") == 0;
    });
    return result;
}

ProgramResult run_program(const std::vector<std::string>& arguments)
{
    adopt_orphans();
    const TemporaryFolder folder;
    const auto out = folder.path() / "out", error = folder.path() / "error";
    const std::vector<Process> before = descendants();

    const pid_t child = start(arguments, out, error);
    ProgramResult result;
    int status = 0;
    const auto has_ended = [&] { return waitpid(child, &status, WNOHANG) == child; };
    result.timed_out = !wait_until(has_ended, PROGRAM_TIME);
    if (result.timed_out) {
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
    }
    result.exit_code = exit_code_of(status);
    result.left_behind = end_all_but(before);
    result.out = content(out);
    result.error = content(error);
    return result;
}

pid_t start_program(const std::vector<std::string>& arguments, int out)
{
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    const pid_t id = fork();
    if (id == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        dup2(out == -1 ? null : out, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
        execvp(pointers[0], pointers.data());
        _exit(127);
    }
    close(null);
    if (id < 0)
        throw std::runtime_error("cannot start " + arguments[0]);
    return id;
}

void end_program(pid_t id)
{
    if (id <= 0)
        return;
    kill(id, SIGTERM);
    waitpid(id, nullptr, 0);
}

std::string own_path()
{
    return std::filesystem::read_symlink("/proc/self/exe");
}

int supervise(const std::function<int()>& body)
{
    adopt_orphans();
    const TemporaryFolder folder;
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // the tests end with the supervisor
        setenv("TMPDIR", folder.path().c_str(), 1);
        std::exit(body());
    }

    int status = 0;
    waitpid(child, &status, 0);
    const int exit_code = exit_code_of(status);
    if (exit_code > 128)
        std::fprintf(stderr, "the tests were ended by signal %d\n", exit_code - 128);
    const std::vector<Process> left_behind = end_all_but({});
    for (const Process& process : left_behind)
        std::fprintf(stderr, "left behind: %s (%d)\n", process.name.c_str(), int(process.id));
    return exit_code == 0 && !left_behind.empty() ? EXIT_FAILURE : exit_code;
}

}  // namespace marlune::test

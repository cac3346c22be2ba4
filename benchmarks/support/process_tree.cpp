#include "support/process_tree.h"

#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace marlune::bench {

namespace {

struct Process {
    pid_t id = 0;
    pid_t parent = 0;
    double clock_ticks = 0;
};

/** Reads "pid (name) state parent ... utime stime ..."; nothing of a process that has just ended. */
std::optional<Process> read_process(const std::filesystem::path& folder)
{
    constexpr int fields_between = 9;
    std::ifstream file(folder / "stat");
    std::string line;
    if (!std::getline(file, line))
        return std::nullopt;

    // The name may hold blanks and parentheses.
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    Process process{.id = std::stoi(line)};
    std::string skipped;
    double user = 0, system = 0;
    fields >> skipped >> process.parent;
    for (int i = 0; i < fields_between; ++i)
        fields >> skipped;
    if (!(fields >> user >> system))
        throw std::runtime_error("cannot read " + (folder / "stat").string());
    process.clock_ticks = user + system;
    return process;
}

std::multimap<pid_t, Process> processes_by_parent()
{
    std::multimap<pid_t, Process> result;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos)
            continue;
        if (const auto process = read_process(entry.path()))
            result.emplace(process->parent, *process);
    }
    return result;
}

void collect_below(const Process& process, const std::multimap<pid_t, Process>& by_parent,
                   std::vector<Process>& tree)
{
    tree.push_back(process);
    const auto [first, last] = by_parent.equal_range(process.id);
    for (auto child = first; child != last; ++child)
        collect_below(child->second, by_parent, tree);
}

std::vector<Process> process_tree()
{
    const auto self = read_process("/proc/self");
    if (!self)
        throw std::runtime_error("cannot read /proc/self/stat");
    std::vector<Process> tree;
    collect_below(*self, processes_by_parent(), tree);
    return tree;
}

/** In KiB; nothing of a process that has ended. */
double proportional_memory(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
    std::string field;
    while (file >> field) {
        double memory = 0;
        if (field == "Pss:" && file >> memory)
            return memory;
    }
    return 0;
}

}  // namespace

double processor_time_of_tree()
{
    double ticks = 0;
    for (const Process& process : process_tree())
        ticks += process.clock_ticks;
    return 1000 * ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double memory_of_tree()
{
    double memory = 0;
    for (const Process& process : process_tree())
        memory += proportional_memory(process.id);
    if (memory <= 0)
        throw std::runtime_error("cannot read the memory of this process");
    return memory / 1024;
}

double processor_time_of_process()
{
    timespec time{};
    if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) != 0)
        throw std::runtime_error("cannot read the processor time of this process");
    return 1000.0 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e6;
}

}  // namespace marlune::bench

#include "support/process/tree.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace marlune::test {

namespace {

using ProcessesByParent = std::multimap<pid_t, Process>;

/** Reads "pid (name) state parent ... utime stime"; empty for a process that has ended. */
std::optional<Process> read_process(const std::filesystem::path& folder)
{
    constexpr int fields_between = 9;
    std::ifstream file(folder / "stat");
    std::string line;
    if (!std::getline(file, line))
        return std::nullopt;
    // The name may contain spaces and parentheses.
    const size_t open = line.find('('), close = line.rfind(')');
    if (open == std::string::npos || close == std::string::npos)
        return std::nullopt;
    Process process{.id = std::stoi(line), .name = line.substr(open + 1, close - open - 1)};
    std::istringstream fields(line.substr(close + 1));
    std::string state, skipped;
    fields >> state >> process.parent;
    for (int i = 0; i < fields_between; ++i)
        fields >> skipped;
    double user = 0, system = 0;
    if (!(fields >> user >> system))
        throw std::runtime_error("cannot read " + (folder / "stat").string());
    process.clock_ticks = user + system;
    return state == "Z" ? std::nullopt : std::optional(process);
}

ProcessesByParent living_processes()
{
    ProcessesByParent result;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos)
            continue;
        if (const auto process = read_process(entry.path()))
            result.emplace(process->parent, *process);
    }
    return result;
}

void collect_below(pid_t parent, const ProcessesByParent& by_parent, std::vector<Process>& result)
{
    const auto [first, last] = by_parent.equal_range(parent);
    for (auto child = first; child != last; ++child) {
        result.push_back(child->second);
        collect_below(child->second.id, by_parent, result);
    }
}

}  // namespace

std::vector<Process> descendants()
{
    std::vector<Process> result;
    collect_below(getpid(), living_processes(), result);
    return result;
}

Process own_process()
{
    return read_process("/proc/self").value();
}

int count_threads(pid_t process, const std::string& pattern)
{
    const std::regex wanted(pattern);
    const auto threads = std::filesystem::path("/proc") / std::to_string(process) / "task";
    std::error_code process_has_ended;
    int count = 0;
    std::filesystem::directory_iterator thread(threads, process_has_ended), end;
    for (; thread != end; thread.increment(process_has_ended)) {
        std::string name;
        std::getline(std::ifstream(thread->path() / "comm"), name);
        count += std::regex_match(name, wanted);
    }
    return count;
}

double memory_kib(pid_t process, const std::vector<std::string>& fields)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
    double sum = 0;
    for (std::string word; file >> word;) {
        double kib = 0;
        if (std::ranges::find(fields, word) != fields.end() && file >> kib)
            sum += kib;
    }
    return sum;
}

}  // namespace marlune::test

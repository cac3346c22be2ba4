#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/** The processes of this machine as Linux lists them in /proc, for the tests and the benchmarks. */
namespace marlune::test {

struct Process {
    pid_t id = 0;
    std::string name;  // Linux keeps its first 15 characters
    pid_t parent = 0;
    double clock_ticks = 0;  // the CPU time that it has used
};

/** All living descendants of this process: its children, their children, and so on. */
std::vector<Process> descendants();

/** This process. */
Process own_process();

/**
 * The number of threads of a process whose names match a pattern. Linux keeps the first 15
 * characters of a name.
 */
int count_threads(pid_t process, const std::string& pattern);

/** The sum of these fields of a process's memory in KiB; 0 if the process has ended. */
double memory_kib(pid_t process, const std::vector<std::string>& fields);

}  // namespace marlune::test

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/** The processes of this machine as Linux shows them in /proc: for the tests and for the benchmarks. */
namespace marlune::test {

struct Process {
    pid_t id = 0;
    std::string name;  // Linux keeps 15 characters of it
    pid_t parent = 0;
    double clock_ticks = 0;  // the CPU time that it has used
};

/** All living processes below this one: its children, their children, and so on. */
std::vector<Process> descendants();

/** This process. */
Process own_process();

/** How many threads of a process have a name of this pattern, of which Linux keeps 15 characters. */
int count_threads(pid_t process, const std::string& pattern);

/** The sum of those fields of a process's memory in KiB; 0 when it has ended meanwhile. */
double memory_kib(pid_t process, const std::vector<std::string>& fields);

}  // namespace marlune::test

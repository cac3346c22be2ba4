#include "support/process_tree.h"

#include "support/process/tree.h"

#include <time.h>
#include <unistd.h>

#include <stdexcept>

namespace marlune::bench {

namespace {

std::vector<test::Process> process_tree()
{
    std::vector<test::Process> tree = test::descendants();
    tree.push_back(test::own_process());
    return tree;
}

}  // namespace

double processor_time_of_tree()
{
    double ticks = 0;
    for (const test::Process& process : process_tree())
        ticks += process.clock_ticks;
    return 1000 * ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double memory_of_tree()
{
    double memory = 0;
    for (const test::Process& process : process_tree())
        memory += test::memory_kib(process.id, {"Pss:"});
    if (memory <= 0)
        throw std::runtime_error("cannot read the memory of this process");
    return memory / 1024;
}

double processor_time_of_process()
{
    timespec time{};
    if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) != 0)
        throw std::runtime_error("cannot read the CPU time of this process");
    return 1000.0 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e6;
}

}  // namespace marlune::bench

#pragma once

#include "support/process/tree.h"

#include <functional>
#include <string>
#include <vector>

namespace marlune::test {

/** The processes among descendants() that belong to the web engine. */
std::vector<Process> engine_processes();

/**
 * The web engine's processes for pages, for a test to kill or to look at in /proc. The web engine
 * may keep one in reserve, which has no page yet.
 */
std::vector<Process> page_processes();

struct ProgramResult {
    int exit_code = -1;  // 128 plus the signal's number if a signal ended the program
    bool timed_out = false;
    std::string out;
    std::string error;
    std::vector<Process> left_behind;  // still running some time after the program has ended
};

/**
 * Runs a program until it ends; `arguments[0]` is its path. Kills the processes that it leaves
 * behind.
 */
ProgramResult run_program(const std::vector<std::string>& arguments);

/**
 * Starts a program by its name, to run beside the tests. It ends with the calling thread at the
 * latest. `out` is its standard output, -1 for none.
 */
pid_t start_program(const std::vector<std::string>& arguments, int out = -1);

/** Asks such a program to end, and waits until it has ended. Does nothing for an invalid id. */
void end_program(pid_t id);

/** The path of the running program. */
std::string own_path();

/**
 * Runs `body` in a child process with a temporary folder of its own and returns its exit code, or a
 * failure code if a process of the child has outlived it.
 */
int supervise(const std::function<int()>& body);

}  // namespace marlune::test

#pragma once

#include "support/process/tree.h"

#include <functional>
#include <string>
#include <vector>

namespace marlune::test {

/** Those of descendants() that belong to the web engine. */
std::vector<Process> engine_processes();

/**
 * Those of the engine's that hold pages, to be killed or to be looked at in /proc. The engine may keep
 * one in reserve, which holds no page yet.
 */
std::vector<Process> page_processes();

struct ProgramResult {
    int exit_code = -1;  // 128 and the signal's number for a program that a signal ended
    bool timed_out = false;
    std::string out;
    std::string error;
    std::vector<Process> left_behind;  // still there a while after the program had ended
};

/** Runs a program to its end; `arguments[0]` is its path. What it leaves behind is killed. */
ProgramResult run_program(const std::vector<std::string>& arguments);

/**
 * Starts a program by its name, to run beside the tests. It ends with the calling thread at the latest.
 * `out` is its standard output, -1 for none.
 */
pid_t start_program(const std::vector<std::string>& arguments, int out = -1);

/** Asks such a program to end, and waits until it has. Does nothing for an id that is none. */
void end_program(pid_t id);

/** The path of the program that is running. */
std::string own_path();

/**
 * Runs `body` in a child process with a temporary folder of its own and returns its exit code, or
 * another one when a process of the child has outlived it.
 */
int supervise(const std::function<int()>& body);

}  // namespace marlune::test

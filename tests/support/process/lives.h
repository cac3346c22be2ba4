#pragma once

#include "support/process/processes.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace marlune::test {

/**
 * Whole lives of the library by their names, from its start to the end of its process. The library
 * starts once in a process, so a test runs each in one of its own.
 */
using Lives = std::map<std::string, void (*)()>;

std::vector<std::string> names_of(const Lives& lives);

/** Runs one of this program's lives to its end, in a process of its own. */
ProgramResult run_life(const std::string& name);

/** Whether it then ends by itself, without a failure, and leaves no process behind. */
testing::AssertionResult ends_cleanly(const std::string& name);

/** In a life: ends its process as a failure, with the rule that was broken, unless it holds. */
void require(bool holds, const std::string& rule);
void require(const testing::AssertionResult& outcome, const std::string& rule);

/** In a life: stops the library in order and ends the process, as a failure unless the rule holds. */
[[noreturn]] void end_life(bool holds, const std::string& rule);

/** For main(), of a program that has lives: runs the one that run_life() asks for, else the tests. */
int run_life_or_tests(int argc, char** argv, const Lives& lives);

}  // namespace marlune::test

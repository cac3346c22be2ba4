#pragma once

#include "support/process/processes.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <string>
#include <vector>

namespace marlune::test {

/**
 * Named runs of the library, from its start to the end of its process. The library starts only once
 * in a process, so a test runs each scenario in a process of its own. A program has one such
 * object, as a constant of its file.
 */
class Scenarios {
public:
    using Run = void (*)();

    Scenarios(std::initializer_list<std::pair<const std::string, Run>> scenarios);
    Scenarios(const Scenarios&) = delete;
    Scenarios& operator=(const Scenarios&) = delete;

    /** The names of all scenarios, or of all except one. */
    std::vector<std::string> names(const std::string& but = {}) const;

    Run find(const std::string& name) const { return scenarios_.at(name); }

private:
    std::map<std::string, Run> scenarios_;
};

/** Runs a scenario of this program in a process of its own. */
ProgramResult run_scenario(const std::string& name);

/** Whether the scenario ends on its own, without a failure, and leaves no process behind. */
testing::AssertionResult ends_cleanly(const std::string& name);

/**
 * The lines that the scenario writes to its error stream, except those that every run may write and
 * those that match one of `known`. Fails the running test if the scenario does not end cleanly.
 */
std::vector<std::string> lines_of_scenario(const std::string& name,
                                           const std::vector<std::regex>& known = {});

/**
 * In a scenario: ends the process as a failure, with the broken rule, unless the condition holds.
 */
void require(bool holds, const std::string& rule);
void require(const testing::AssertionResult& outcome, const std::string& rule);

/**
 * In a scenario: stops the library in order and ends the process, as a failure unless the condition
 * holds.
 */
[[noreturn]] void end_scenario(bool holds, const std::string& rule);

/** For main(): runs the scenario that run_scenario() has selected, otherwise the tests. */
int run_scenario_or_tests(int argc, char** argv);

}  // namespace marlune::test

#include "support/process/scenarios.h"

#include "support/library.h"
#include "support/message_log.h"
#include "support/vulkan/vulkan_host.h"

#include <marlune/app.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>

namespace marlune::test {

namespace {

constexpr char scenario_option[] = "--scenario";

const Scenarios* the_scenarios = nullptr;

void report_broken(const std::string& rule)
{
    std::cerr << "broken rule: " << rule << std::endl;
}

}  // namespace

Scenarios::Scenarios(std::initializer_list<std::pair<const std::string, Run>> scenarios)
    : scenarios_(scenarios)
{
    the_scenarios = this;
}

std::vector<std::string> Scenarios::names(const std::string& but) const
{
    std::vector<std::string> names;
    for (const auto& [name, run] : scenarios_) {
        if (name != but)
            names.push_back(name);
    }
    return names;
}

ProgramResult run_scenario(const std::string& name)
{
    return run_program({own_path(), scenario_option, name});
}

testing::AssertionResult ends_cleanly(const std::string& name)
{
    const ProgramResult result = run_scenario(name);
    if (result.exit_code == 0 && !result.timed_out && result.left_behind.empty())
        return testing::AssertionSuccess();
    auto failure = testing::AssertionFailure();
    failure << name << (result.timed_out ? " does not end" : " ends") << " with exit code "
            << result.exit_code;
    for (const Process& process : result.left_behind)
        failure << ", leaves behind " << process.name;
    return failure << '\n' << result.error << result.out;
}

std::vector<std::string> lines_of_scenario(const std::string& name,
                                           const std::vector<std::regex>& known)
{
    const ProgramResult result = run_scenario(name);
    EXPECT_FALSE(result.timed_out) << result.error;
    EXPECT_EQ(result.exit_code, 0) << result.error;
    for (const Process& process : result.left_behind)
        ADD_FAILURE() << "left behind: " << process.name;

    std::vector<std::string> lines;
    std::istringstream stream(result.error);
    for (std::string line; std::getline(stream, line);) {
        const auto matches = [&](const std::regex& pattern) {
            return std::regex_search(line, pattern);
        };
        if (!is_known_message(line) && std::ranges::none_of(known, matches))
            lines.push_back(line);
    }
    return lines;
}

void require(bool holds, const std::string& rule)
{
    if (holds)
        return;
    report_broken(rule);
    std::_Exit(EXIT_FAILURE);
}

void require(const testing::AssertionResult& outcome, const std::string& rule)
{
    require(bool(outcome), rule + "; " + outcome.message());
}

void end_scenario(bool holds, const std::string& rule)
{
    if (!holds)
        report_broken(rule);
    M::destroy();
    release_host();
    std::_Exit(holds ? EXIT_SUCCESS : EXIT_FAILURE);
}

int run_scenario_or_tests(int argc, char** argv)
{
    if (argc != 3 || std::string(argv[1]) != scenario_option)
        return run_tests(argc, argv);
    the_scenarios->find(argv[2])();
    return EXIT_SUCCESS;
}

}  // namespace marlune::test

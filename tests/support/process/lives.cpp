#include "support/process/lives.h"

#include "support/library.h"
#include "support/vulkan/vulkan_host.h"

#include <marlune/app.h>

#include <cstdlib>
#include <iostream>

namespace marlune::test {

namespace {

constexpr char life_option[] = "--life";

void report_broken(const std::string& rule)
{
    std::cerr << "broken rule: " << rule << std::endl;
}

}  // namespace

std::vector<std::string> names_of(const Lives& lives)
{
    std::vector<std::string> names;
    for (const auto& [name, life] : lives)
        names.push_back(name);
    return names;
}

ProgramResult run_life(const std::string& name)
{
    return run_program({own_path(), life_option, name});
}

testing::AssertionResult ends_cleanly(const std::string& name)
{
    const ProgramResult result = run_life(name);
    if (result.exit_code == 0 && !result.timed_out && result.left_behind.empty())
        return testing::AssertionSuccess();
    auto failure = testing::AssertionFailure();
    failure << name << (result.timed_out ? " does not end" : " ends") << " with exit code "
            << result.exit_code;
    for (const Process& process : result.left_behind)
        failure << ", leaves behind " << process.name;
    return failure << '\n' << result.error << result.out;
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

void end_life(bool holds, const std::string& rule)
{
    if (!holds)
        report_broken(rule);
    M::destroy();
    release_host();
    std::_Exit(holds ? EXIT_SUCCESS : EXIT_FAILURE);
}

int run_life_or_tests(int argc, char** argv, const Lives& lives)
{
    if (argc != 3 || std::string(argv[1]) != life_option)
        return run_tests(argc, argv);
    lives.at(argv[2])();
    return EXIT_SUCCESS;
}

}  // namespace marlune::test

#include "support/lives.h"

#include "support/library.h"

#include <cstdlib>

namespace marlune::test {

namespace {

constexpr char life_option[] = "--life";

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

int run_life_or_tests(int argc, char** argv, const Lives& lives)
{
    if (argc != 3 || std::string(argv[1]) != life_option)
        return run_tests(argc, argv);
    lives.at(argv[2])();
    return EXIT_SUCCESS;
}

}  // namespace marlune::test

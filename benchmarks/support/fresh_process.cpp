#include "support/fresh_process.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace marlune::bench {

namespace {

struct Sample {
    std::string_view name;
    Numbers (*take)();
};

constexpr Sample samples[] = {
    {"start-library", start_of_library},
    {"start-raw", start_of_raw_qt},
    {"memory-library", memory_of_library},
    {"memory-raw", memory_of_raw_qt},
    {"page-start-library", page_start_of_library},
    {"page-start-raw", page_start_of_raw_qt},
    {"page-memory-library", page_memory_of_library},
    {"page-memory-raw", page_memory_of_raw_qt},
};

/** The numbers that the process prints. */
Numbers sample_in_fresh_process(const std::string& name)
{
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string command = '\'' + program + "' --sample " + name;
    std::FILE* const output = popen(command.c_str(), "r");
    if (!output)
        throw std::runtime_error("cannot run " + command);
    Numbers numbers;
    for (double number = 0; std::fscanf(output, "%lf", &number) == 1;)
        numbers.push_back(number);
    if (pclose(output) != 0 || numbers.empty())
        throw std::runtime_error(command + " has failed (with --verbose it shows why)");
    return numbers;
}

}  // namespace

bool print_sample(const char* name)
{
    const auto* const sample = std::ranges::find(samples, std::string_view(name), &Sample::name);
    if (sample == std::end(samples))
        return false;
    for (const double number : sample->take())
        std::printf("%.6f\n", number);
    return true;
}

std::vector<Comparison> compare_in_fresh_processes(Schedule schedule, const std::string& measure)
{
    std::vector<Comparison> comparisons;
    const auto sampled = [&](Samples Comparison::*side, const std::string& name) {
        return [&comparisons, side, name](bool counts) {
            const Numbers numbers = sample_in_fresh_process(name);
            comparisons.resize(numbers.size());
            for (std::size_t i = 0; counts && i < numbers.size(); ++i)
                (comparisons[i].*side).add(numbers[i]);
        };
    };
    alternate(schedule, sampled(&Comparison::library, measure + "-library"),
              sampled(&Comparison::raw, measure + "-raw"), [] {});
    return comparisons;
}

}  // namespace marlune::bench

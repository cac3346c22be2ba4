#include "support/process/memory.h"

#include "support/process/tree.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <format>
#include <fstream>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <string>

namespace marlune::test {

namespace {

double resident_kib()
{
    long total_pages = 0, resident_pages = 0;
    std::ifstream("/proc/self/statm") >> total_pages >> resident_pages;
    return static_cast<double>(resident_pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024;
}

/** The process's share of the memory that is not mapped from files. */
double anonymous_kib(pid_t process)
{
    return memory_kib(process, {"Pss_Anon:", "Pss_Shmem:"});
}

int entries_of(const char* folder)
{
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

}  // namespace

Holdings holdings()
{
    // Memory that is already free is no leak, wherever the allocator keeps it.
    malloc_trim(0);
    return {resident_kib(), entries_of("/proc/self/task"), entries_of("/proc/self/fd")};
}

Holdings holdings_with_descendants()
{
    Holdings all = holdings();
    all.resident_kib = anonymous_kib(getpid());
    for (const Process& process : descendants())
        all.resident_kib += anonymous_kib(process.id);
    return all;
}

double slope(const std::vector<double>& values)
{
    if (values.size() < 2)
        throw std::invalid_argument("a line needs two points");
    const auto count = static_cast<double>(values.size());
    const double mean_x = (count - 1) / 2;
    const double mean_y = std::reduce(values.begin(), values.end()) / count;
    double covariance = 0, variance = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        const double dx = static_cast<double>(i) - mean_x;
        covariance += dx * (values[i] - mean_y);
        variance += dx * dx;
    }
    return covariance / variance;
}

std::vector<double> HoldingsTrend::lowest_resident_kib() const
{
    const auto length = static_cast<ptrdiff_t>(samples_a_stretch());
    auto begin = samples_.end() - length * static_cast<ptrdiff_t>(STRETCHES);
    std::vector<double> lowest;
    for (; begin != samples_.end(); begin += length) {
        const auto low = std::min_element(begin, begin + length, [](auto& left, auto& right) {
            return left.resident_kib < right.resident_kib;
        });
        lowest.push_back(low->resident_kib);
    }
    return lowest;
}

double HoldingsTrend::growth_kib() const
{
    return slope(lowest_resident_kib()) / static_cast<double>(samples_a_stretch());
}

std::string HoldingsTrend::report() const
{
    const Holdings &first = after_warm_up(), &end = last();
    return std::format("{} samples: {:.1f} to {:.1f} MiB, {} to {} threads, {} to {} files",
                       samples_.size(), first.resident_kib / 1024, end.resident_kib / 1024,
                       first.threads, end.threads, first.files, end.files);
}

}  // namespace marlune::test

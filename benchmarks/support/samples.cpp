#include "support/samples.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace marlune::bench {

namespace {

// Consecutive samples are correlated, so the bootstrap draws blocks and not single samples.
constexpr std::size_t most_stretches = 50;

/** Returns one of several blocks of equal length; the remainder at the end is not used. */
std::span<const double> stretch(const Samples& samples, std::size_t index, std::size_t count)
{
    const std::size_t length = samples.values().size() / count;
    return samples.values().subspan(index * length, length);
}

}  // namespace

void Samples::add(std::span<const double> values)
{
    values_.insert(values_.end(), values.begin(), values.end());
}

double Samples::quantile(double share) const
{
    if (values_.empty())
        return std::numeric_limits<double>::quiet_NaN();
    std::vector<double> sorted = values_;
    std::ranges::sort(sorted);
    const double place = share * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<std::size_t>(place);
    const std::size_t above = std::min(below + 1, sorted.size() - 1);
    return std::lerp(sorted[below], sorted[above], place - std::floor(place));
}

/**
 * A bootstrap: the spread of the ratio over many draws, with replacement, from the measured
 * samples.
 */
double Comparison::uncertainty() const
{
    constexpr int draws = 200;
    const std::size_t count =
        std::min({most_stretches, library.values().size(), raw.values().size()});
    std::mt19937 random;  // unseeded: the same samples must produce the same table
    std::uniform_int_distribution<std::size_t> any(0, count - 1);

    Samples ratios;
    for (int draw = 0; draw < draws; ++draw) {
        Comparison drawn{.kind = kind};
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t index = any(random);
            drawn.library.add(stretch(library, index, count));
            drawn.raw.add(stretch(raw, index, count));
        }
        ratios.add(drawn.ratio());
    }
    return (ratios.quantile(0.975) - ratios.quantile(0.025)) / 2;
}

}  // namespace marlune::bench

#pragma once

#include <chrono>
#include <span>
#include <vector>

namespace marlune::bench {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;
using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;

/** The samples of one measurement, in the unit of its row of the table. */
class Samples {
public:
    void add(double value) { values_.push_back(value); }
    void add(std::span<const double> values);

    double median() const { return quantile(0.5); }

    /** Returns the value below which the given fraction of the samples lies, from 0 to 1. */
    double quantile(double share) const;

    std::span<const double> values() const { return values_; }

private:
    std::vector<double> values_;
};

/** The kind of the samples: a cost, or a rate. */
enum class Kind { Cost, Rate };

/** The samples of the library, and of raw Qt that does the same. */
struct Comparison {
    Samples library;
    Samples raw;
    Kind kind = Kind::Cost;

    /** Above 1 if the library is worse, for costs and for rates. */
    double ratio() const
    {
        const double library_to_raw = library.median() / raw.median();
        return kind == Kind::Cost ? library_to_raw : 1 / library_to_raw;
    }

    /** The possible error of the ratio, up or down, with a confidence of 95 %. */
    double uncertainty() const;
};

/** How the samples of one row are taken. */
struct Schedule {
    int rounds;
    /** The time limit of the row. A slow machine takes fewer rounds. */
    std::chrono::seconds limit;
    /**
     * The number of calls per side in a round. Short calls run in series, because a thread that one
     * side's call has just kept awake would serve the other side's call sooner.
     */
    int run = 1;
};

/**
 * Calls both sides in turn, so that other load affects both, and in alternating order, so that
 * neither is always the one with cold caches. The first tenth of the rounds does not count.
 */
template <typename Library, typename Raw, typename AfterRound>
void alternate(Schedule schedule, Library library, Raw raw, AfterRound after_round)
{
    constexpr int fewest_rounds = 3;
    const int warm_up = 1 + schedule.rounds / 10;
    const auto end = Clock::now() + schedule.limit;
    for (int round = -warm_up; round < schedule.rounds; ++round) {
        if (round >= fewest_rounds && Clock::now() > end)
            break;
        const bool counts = round >= 0;
        if (round % 2 == 0) {
            library(counts);
            raw(counts);
        } else {
            raw(counts);
            library(counts);
        }
        after_round();
    }
}

/** Times both sides' calls in the given unit. `after_round` is not timed. */
template <typename Unit, typename Library, typename Raw, typename AfterRound>
Comparison compare_times(Schedule schedule, Library library, Raw raw, AfterRound after_round)
{
    const auto timed = [run = schedule.run](Samples& samples, auto& call) {
        return [run, &samples, &call](bool counts) {
            for (int i = 0; i < run; ++i) {
                const auto start = Clock::now();
                call();
                const Unit time = Clock::now() - start;
                if (counts)
                    samples.add(time.count());
            }
        };
    };
    Comparison times;
    alternate(schedule, timed(times.library, library), timed(times.raw, raw), after_round);
    return times;
}

}  // namespace marlune::bench

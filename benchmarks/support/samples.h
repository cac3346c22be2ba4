#pragma once

#include <chrono>
#include <span>
#include <vector>

namespace marlune::bench {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;
using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;

/** What was measured of one thing, in the unit of its row of the table. */
class Samples {
public:
    void add(double value) { values_.push_back(value); }
    void add(std::span<const double> values);

    double median() const { return quantile(0.5); }

    /** The value below which the given share of the samples lies, from 0 to 1. */
    double quantile(double share) const;

    std::span<const double> values() const { return values_; }

private:
    std::vector<double> values_;
};

/** What the samples are of: what is spent, or what is done in a time. */
enum class Kind { Cost, Rate };

/** The library, and raw Qt doing the same. */
struct Comparison {
    Samples library;
    Samples raw;
    Kind kind = Kind::Cost;

    /** Above 1 where the library is worse, whichever way that is. */
    double ratio() const
    {
        const double library_to_raw = library.median() / raw.median();
        return kind == Kind::Cost ? library_to_raw : 1 / library_to_raw;
    }

    /** By how much the ratio may be off, up or down, with a confidence of 95 %. */
    double uncertainty() const;
};

/** How the samples of one row are taken. */
struct Schedule {
    int rounds;
    /** The most that the row may take. A slow machine gets by with fewer rounds. */
    std::chrono::seconds limit;
    /** How often each side comes in a round. Short calls come in runs, since a thread that one side's
        call has just kept awake serves the other side's call sooner. */
    int run = 1;
};

/**
 * Calls both sides in turn, so that a noisy neighbour hits both, and in alternating order, so that
 * neither is always the one to find cold caches. A first tenth of the rounds is not counted.
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

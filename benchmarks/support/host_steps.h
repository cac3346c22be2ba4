#pragma once

#include "support/process_tree.h"
#include "support/samples.h"

#include <chrono>
#include <cmath>
#include <thread>

namespace marlune::bench {

/** The steps of a host that draws sixty frames a second, from a point of its clock's own on. */
class HostSteps {
public:
    static constexpr std::chrono::nanoseconds length{1'000'000'000 / 60};

    /** `phase` is from 0 to 1: by what share of a step they come after those of the clock's beginning. */
    explicit HostSteps(double phase)
    {
        const auto whole_steps = Clock::now().time_since_epoch() / length + 1;
        next_ += whole_steps * length + std::chrono::duration_cast<Clock::duration>(phase * length);
    }

    /** One that comes too late shortens the waits for those that follow. */
    void wait_for_next()
    {
        next_ += length;
        std::this_thread::sleep_until(next_);
    }

private:
    Clock::time_point next_{};
};

/**
 * Chance decides how a host's steps and other clocks meet for all of a turn. Each round has another phase,
 * the same for both sides, and all phases come evenly.
 */
inline double even_phase(int round)
{
    constexpr double golden_section = 0.6180339887;
    return std::fmod(round * golden_section, 1);
}

/** From its making on: the time, and how much processor time of this process goes into it. */
class Meter {
public:
    double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
    /** In ms. */
    double processor_time_a_second() const
    {
        return (processor_time_of_process() - processor_time_) / seconds();
    }

private:
    double processor_time_ = processor_time_of_process();
    Clock::time_point start_ = Clock::now();
};

}  // namespace marlune::bench

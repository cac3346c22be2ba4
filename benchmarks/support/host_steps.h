#pragma once

#include "support/process_tree.h"
#include "support/samples.h"

#include <chrono>
#include <cmath>
#include <thread>

namespace marlune::bench {

/** The steps of a host that draws sixty frames a second, aligned to a point of the clock. */
class HostSteps {
public:
    static constexpr std::chrono::nanoseconds length{1'000'000'000 / 60};

    /**
     * `phase`, from 0 to 1, is the offset of the steps to those of the clock's start, as a fraction
     * of a step.
     */
    explicit HostSteps(double phase)
    {
        const auto whole_steps = Clock::now().time_since_epoch() / length + 1;
        next_ += whole_steps * length + std::chrono::duration_cast<Clock::duration>(phase * length);
    }

    /** A step that comes too late shortens the waits for the following steps. */
    void wait_for_next()
    {
        next_ += length;
        std::this_thread::sleep_until(next_);
    }

private:
    Clock::time_point next_{};
};

/**
 * Within a turn, the alignment of a host's steps and other clocks is random. Each round therefore
 * has another phase, the same for both sides, and all phases are distributed evenly.
 */
inline double even_phase(int round)
{
    constexpr double golden_section = 0.6180339887;
    return std::fmod(round * golden_section, 1);
}

/** Measures the time since its construction, and the CPU time of this process. */
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

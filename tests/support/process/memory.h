#pragma once

#include <string>
#include <vector>

namespace marlune::test {

/** What a process holds of the system. */
struct Holdings {
    double resident_kib = 0;
    int threads = 0;
    int files = 0;
};

Holdings holdings();

/**
 * The same with the memory of this process and of all below it, but without files that are mapped, such
 * as libraries: who else uses those is not up to a test. What several processes share counts once.
 */
Holdings holdings_with_descendants();

/** Slope of the straight line that fits the values best (least squares), per step from one to the next. */
double slope(const std::vector<double>& values);

/**
 * Follows what the process holds over the cycles of a test. The first third counts as warm-up: caches
 * fill, lazily made things are made. The rest is seen in ten stretches, each by its lowest value: what
 * happens to be under way in one cycle or another is no growth.
 */
class HoldingsTrend {
public:
    void sample(const Holdings& held = holdings()) { samples_.push_back(held); }

    /** Growth of the resident memory in KiB from one sample to the next; takes 15 samples or more. */
    double growth_kib() const;

    const Holdings& after_warm_up() const { return samples_.at(first_counted()); }
    const Holdings& last() const { return samples_.back(); }

    std::string report() const;

private:
    static constexpr size_t STRETCHES = 10;

    size_t first_counted() const { return samples_.size() / 3; }
    size_t samples_a_stretch() const { return (samples_.size() - first_counted()) / STRETCHES; }
    std::vector<double> lowest_resident_kib() const;

    std::vector<Holdings> samples_;
};

/** True when freed memory is held back to find uses of it, so that memory grows without any leak. */
constexpr bool memory_is_held_back()
{
#if defined(__SANITIZE_ADDRESS__)
    return true;
#else
    return false;
#endif
}

}  // namespace marlune::test

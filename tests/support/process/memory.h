#pragma once

#include <string>
#include <vector>

namespace marlune::test {

/** The resources that a process uses. */
struct Holdings {
    double resident_kib = 0;
    int threads = 0;
    int files = 0;
};

Holdings holdings();

/**
 * The same with the memory of this process and of all its descendants, but without mapped files
 * such as libraries, whose other users a test cannot control. Memory that several processes share
 * counts once.
 */
Holdings holdings_with_descendants();

/** Slope of the straight line that fits the values best (least squares), per value. */
double slope(const std::vector<double>& values);

/**
 * Follows the resources that the process uses over the cycles of a test. The first third counts as
 * warm-up, in which caches are filled and lazily created objects are created. The rest is split
 * into ten stretches, and the lowest value of each counts, so that activity which happens to run in
 * a single cycle is not taken for growth.
 */
class HoldingsTrend {
public:
    void sample(const Holdings& held = holdings()) { samples_.push_back(held); }

    /**
     * Growth of the resident memory in KiB from one sample to the next; needs 15 samples or more.
     */
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

/**
 * True if the allocator holds freed memory back to find uses of it, so that memory grows without a
 * leak.
 */
constexpr bool memory_is_held_back()
{
#if defined(__SANITIZE_ADDRESS__)
    return true;
#else
    return false;
#endif
}

}  // namespace marlune::test

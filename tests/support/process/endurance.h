#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <stop_token>
#include <thread>

/** Shared by the endurance tests. Each has a brief form, for every run, and a full one. */
namespace marlune::test {

/** True in the full form, which MARLUNE_SOAK=1 in the environment selects. */
bool is_soak();

/**
 * The number of repetitions in the running form: `brief` or `full`, and a fifth of `full` under
 * sanitizers.
 */
int times(int brief, int full);

/**
 * Ends the process if the test makes no step for `patience`, after at most twice that time. A hang
 * then fails one program within a minute instead of delaying all of them.
 */
class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds patience = std::chrono::seconds(30));

    /** For any thread. */
    void step() { ++steps_; }

private:
    void watch(std::stop_token stop);

    const std::chrono::seconds patience_;
    std::atomic<uint64_t> steps_ = 0;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    std::jthread thread_;  // last: it uses the others
};

}  // namespace marlune::test

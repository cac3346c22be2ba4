#pragma once

#include "support/process/endurance.h"

#include <QString>
#include <QtLogging>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <optional>
#include <random>
#include <string>

/**
 * Random input for a set time. Each run prints its seed, with which it can be repeated:
 * MARLUNE_FUZZ_SEED=... MARLUNE_FUZZ_SECONDS=... test-...
 */
namespace marlune::test {

inline std::optional<uint64_t> number_in_environment(const char* name)
{
    const char* const text = std::getenv(name);
    return text ? std::optional(std::strtoull(text, nullptr, 10)) : std::nullopt;
}

/** Random decisions, the same ones for the same seed. */
class Dice {
public:
    explicit Dice(uint64_t seed) : random_(seed) {}

    uint64_t any() { return random_(); }
    uint64_t below(uint64_t limit) { return random_() % limit; }
    bool one_in(uint64_t count) { return below(count) == 0; }

    template <typename Values>
    const auto& one_of(const Values& values)
    {
        return values[below(std::size(values))];
    }

private:
    std::mt19937_64 random_;
};

class Fuzz : public testing::Test {
protected:
    Fuzz() : dice(seed()) {}

    /** Repeats `step` for duration(). A failure ends the loop, and the message names the step. */
    template <typename Step>
    void repeat(Step step, uint64_t least_steps = 0)
    {
        const auto end = std::chrono::steady_clock::now() + duration();
        uint64_t steps = 0;
        while ((std::chrono::steady_clock::now() < end || steps < least_steps) && !HasFailure()) {
            SCOPED_TRACE("step " + std::to_string(steps));
            step();
            ++steps;
            watchdog.step();
        }
        std::cout << steps << " steps" << std::endl;
    }

    Watchdog watchdog;
    Dice dice;
    uint64_t soak_seconds = 1200;

private:
    static uint64_t seed()
    {
        // The brief form always uses the same seed: a change is judged by its effect, not by luck.
        const uint64_t seed = number_in_environment("MARLUNE_FUZZ_SEED")
                                  .value_or(is_soak() ? std::random_device()() : 39917217);
        std::cout << "MARLUNE_FUZZ_SEED=" << seed << std::endl;
        return seed;
    }

    std::chrono::seconds duration() const
    {
        const uint64_t seconds = is_soak() ? soak_seconds : 2;
        return std::chrono::seconds(
            number_in_environment("MARLUNE_FUZZ_SECONDS").value_or(seconds));
    }
};

/** Counts Qt's messages instead of showing them: these tests cause thousands. */
class MessageCounter {
public:
    MessageCounter() : before_(qInstallMessageHandler(count)) { counted = 0; }
    ~MessageCounter() { qInstallMessageHandler(before_); }
    MessageCounter(const MessageCounter&) = delete;
    MessageCounter& operator=(const MessageCounter&) = delete;

    static int take() { return counted.exchange(0); }

private:
    static void count(QtMsgType, const QMessageLogContext&, const QString&) { ++counted; }

    static inline std::atomic<int> counted = 0;
    QtMessageHandler before_;
};

}  // namespace marlune::test

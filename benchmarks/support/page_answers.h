#pragma once

#include "support/samples.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace marlune::bench {

/**
 * The calls of a page to the published object's method, and its console messages. They arrive on
 * the Qt thread; the host's thread waits for them. Waiting throws an exception if nothing arrives,
 * or if the page has reported an error.
 */
class PageAnswers {
public:
    void add_call();
    void add_message(int level, std::string message);

    /**
     * Returns the times of the calls, once that many have arrived since the last call of this
     * function.
     */
    std::vector<Clock::time_point> wait_for_calls(std::size_t count);

    /** Removes and returns the oldest message. */
    std::string wait_for_message();

private:
    template <typename Condition>
    void wait(std::unique_lock<std::mutex>& lock, const char* what, Condition condition);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t calls_wanted_ = 0;
    std::vector<Clock::time_point> calls_;
    std::vector<std::string> messages_;
    std::string error_;
};

}  // namespace marlune::bench

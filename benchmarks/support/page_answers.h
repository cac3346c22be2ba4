#pragma once

#include "support/samples.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace marlune::bench {

/**
 * What a page tells its host: the calls of the published object's method, and messages on its console.
 * They come on the Qt thread and are waited for on the host's. Waiting ends with an exception when
 * nothing comes, and when the page has reported an error.
 */
class PageAnswers {
public:
    void add_call();
    void add_message(int level, std::string message);

    /** When the calls came, once there are that many since the last look. */
    std::vector<Clock::time_point> wait_for_calls(std::size_t count);

    /** The oldest message, taken out. */
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

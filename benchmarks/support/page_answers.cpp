#include "support/page_answers.h"

#include <stdexcept>
#include <utility>

namespace marlune::bench {

namespace {

constexpr auto patience = 30s;
constexpr int error_level = 2;

}  // namespace

void PageAnswers::add_call()
{
    const auto now = Clock::now();
    const std::lock_guard lock(mutex_);
    calls_.push_back(now);
    // Not for each call: waking up the host would change the measured time.
    if (calls_.size() == calls_wanted_)
        changed_.notify_all();
}

void PageAnswers::add_message(int level, std::string message)
{
    const std::lock_guard lock(mutex_);
    if (level >= error_level)
        error_ = std::move(message);
    else
        messages_.push_back(std::move(message));
    changed_.notify_all();
}

template <typename Condition>
void PageAnswers::wait(std::unique_lock<std::mutex>& lock, const char* what, Condition condition)
{
    const bool came =
        changed_.wait_for(lock, patience, [&] { return !error_.empty() || condition(); });
    if (!error_.empty())
        throw std::runtime_error("a page has failed: " + error_);
    if (!came)
        throw std::runtime_error(std::string("a page has not sent ") + what);
}

std::vector<Clock::time_point> PageAnswers::wait_for_calls(std::size_t count)
{
    std::unique_lock lock(mutex_);
    calls_wanted_ = count;
    wait(lock, "its calls", [&] { return calls_.size() >= count; });
    return std::exchange(calls_, {});
}

std::string PageAnswers::wait_for_message()
{
    std::unique_lock lock(mutex_);
    wait(lock, "a message", [&] { return !messages_.empty(); });
    std::string message = std::move(messages_.front());
    messages_.erase(messages_.begin());
    return message;
}

}  // namespace marlune::bench

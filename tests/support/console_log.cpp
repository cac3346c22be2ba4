#include "support/console_log.h"

#include <algorithm>
#include <utility>

namespace marlune::test {

void ConsoleLog::add(ConsoleRecord record)
{
    const std::lock_guard lock(mutex_);
    records_.push_back(std::move(record));
}

std::vector<ConsoleRecord> ConsoleLog::take()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(records_, {});
}

std::vector<std::string> ConsoleLog::take_messages()
{
    std::vector<std::string> messages;
    for (ConsoleRecord& record : take())
        messages.push_back(std::move(record.message));
    return messages;
}

std::optional<ConsoleRecord>
ConsoleLog::take_first(const std::function<bool(const ConsoleRecord&)>& matches)
{
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find_if(records_, matches);
    if (found == records_.end())
        return std::nullopt;
    ConsoleRecord record = std::move(*found);
    records_.erase(found);
    return record;
}

}  // namespace marlune::test

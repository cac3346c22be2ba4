#include "support/media/followed_view.h"

namespace marlune::test {

namespace {

std::string to_text(const ViewEvent& event)
{
    return event.name + (event.value.empty() ? "" : " ") + event.value;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const ViewEvent& event)
{
    return out << to_text(event);
}

std::vector<ViewEvent> EventLog::all() const
{
    const std::lock_guard lock(mutex_);
    return events_;
}

std::vector<std::string> EventLog::texts(size_t first) const
{
    const std::lock_guard lock(mutex_);
    std::vector<std::string> texts;
    for (size_t i = first; i < events_.size(); ++i)
        texts.push_back(to_text(events_[i]));
    return texts;
}

std::string EventLog::describe(size_t first) const
{
    std::string text;
    for (const std::string& event : texts(first))
        text += (text.empty() ? "" : ", ") + event;
    return "[" + text + "]";
}

bool EventLog::has(const std::string& name, size_t first) const
{
    const std::lock_guard lock(mutex_);
    return std::any_of(events_.begin() + std::min(first, events_.size()), events_.end(),
                       [&](const ViewEvent& event) { return event.name == name; });
}

bool EventLog::has(const std::string& name, const std::string& value, size_t first) const
{
    const std::lock_guard lock(mutex_);
    return std::any_of(
        events_.begin() + std::min(first, events_.size()), events_.end(),
        [&](const ViewEvent& event) { return event.name == name && event.value == value; });
}

}  // namespace marlune::test

#include "binding/backlog.h"

#include <QDebug>

#include <atomic>

namespace marlune::db {

struct Backlog::Count {
    std::atomic<int> waiting = 0;
    std::atomic<bool> has_dropped = false;

    void leave()
    {
        if (--waiting == 0)
            has_dropped = false;
    }
};

Backlog::Backlog() : count_(std::make_shared<Count>()) {}

Backlog::Place Backlog::take_place() const
{
    if (++count_->waiting > most_waiting) {
        --count_->waiting;
        return {};
    }
    return {count_.get(), [count = count_](Count*) { count->leave(); }};
}

void Backlog::report_dropped(const QString& signal) const
{
    if (count_->has_dropped.exchange(true))
        return;
    qWarning().noquote().nospace()
        << "signal '" << signal << "' is dropped because " << most_waiting
        << " of its emissions are waiting. Emit it less often, and keep callbacks short.";
}

}  // namespace marlune::db

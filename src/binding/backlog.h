#pragma once

#include <QString>

#include <memory>

namespace marlune::db {

/**
 * Limits the notifications of one member that wait for the Qt thread. A callback may block the Qt
 * thread for long, and host threads that keep sending notifications meanwhile would fill the
 * memory. Callable on any thread; copies share one count.
 */
class Backlog {
    struct Count;

public:
    static constexpr int most_waiting = 20'000;

    Backlog();

    /** Held by a waiting notification. */
    using Place = std::shared_ptr<Count>;

    /** Null if the limit is reached. */
    Place take_place() const;

    /** Warns that the signal is dropped; once, until nothing waits any more. */
    void report_dropped(const QString& signal) const;

private:
    std::shared_ptr<Count> count_;
};

}  // namespace marlune::db

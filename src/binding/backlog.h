#pragma once

#include <QString>

#include <memory>

namespace marlune::db {

/**
 * The announcements of one member that wait for the Qt thread, which a callback may keep busy for long.
 * Host threads that announce meanwhile without a pause would fill the memory. For any thread; copies
 * are one.
 */
class Backlog {
    struct Count;

public:
    static constexpr int most_waiting = 20'000;

    Backlog();

    /** Held by what waits, for as long as it does. */
    using Place = std::shared_ptr<Count>;

    /** Null where there is none left. */
    Place take_place() const;

    /** Warns that the signal is not emitted, once until nothing waits any more. */
    void report_dropped(const QString& signal) const;

private:
    std::shared_ptr<Count> count_;
};

}  // namespace marlune::db

#include "runtime/exit_handlers.h"

#include "runtime/platform.h"

#include <atomic>

namespace marlune {

namespace {

ExitHandlers handlers{};

}  // namespace

void set_exit_handlers(ExitHandlers all)
{
    handlers = all;
}

void register_exit_handlers()
{
    // Enough for the first scenes of each kind; a game may go on loading scenes without end.
    constexpr int limit = 64;
    static std::atomic<int> count = 0;
    if (handlers.end && count.fetch_add(1, std::memory_order_relaxed) < limit)
        platform::run_at_exit(handlers.leave, handlers.end);
}

}  // namespace marlune

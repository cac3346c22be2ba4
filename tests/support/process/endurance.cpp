#include "support/process/endurance.h"

#include "support/process/memory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace marlune::test {

bool is_soak()
{
    const char* const value = std::getenv("MARLUNE_SOAK");
    return value && std::string_view(value) == "1";
}

int times(int brief, int full)
{
    // Many repetitions show how memory grows. The sanitizers' own use of memory hides such growth,
    // and they slow everything down several times.
    const int fifth_of_full = std::max(brief, full / 5);
    return !is_soak() ? brief : memory_is_held_back() ? fifth_of_full : full;
}

Watchdog::Watchdog(std::chrono::seconds patience)
    : patience_(patience), thread_([this](std::stop_token stop) { watch(stop); })
{
}

void Watchdog::watch(std::stop_token stop)
{
    std::unique_lock lock(mutex_);
    while (true) {
        const uint64_t before = steps_;
        changed_.wait_for(lock, stop, patience_, [] { return false; });
        if (stop.stop_requested())
            return;
        if (steps_ != before)
            continue;
        std::fprintf(stderr, "a hang: no step for %d s after %llu steps\n", int(patience_.count()),
                     static_cast<unsigned long long>(before));
        std::abort();
    }
}

}  // namespace marlune::test

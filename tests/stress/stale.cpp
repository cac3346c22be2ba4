// Many threads use stale facades while others create new views. A stale facade may come to refer to
// a new view, and a call on it then acts on that view. This is an error of the host, and must cause
// neither a crash nor a hang.

#include "support/any_call.h"
#include "support/host_view.h"
#include "support/message_log.h"
#include "support/process/endurance.h"
#include "support/process/memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <mutex>
#include <optional>
#include <random>
#include <thread>
#include <tuple>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

/** Stale copies, shared by all threads. */
class Pool {
public:
    void add(const MQuickView& copy)
    {
        const std::lock_guard lock(mutex_);
        copies_.push_back(copy);
    }

    std::optional<MQuickView> pick(std::mt19937& random)
    {
        const std::lock_guard lock(mutex_);
        if (copies_.empty())
            return std::nullopt;
        return copies_[random() % copies_.size()];
    }

private:
    std::mutex mutex_;
    std::vector<MQuickView> copies_;
};

struct Tally {
    std::atomic<int> wrong = 0;    // answers that neither a view nor none could give
    std::atomic<int> reached = 0;  // calls that reached a view made later
};

/** Mostly harmless calls, with a load, a reset or a destroy now and then. */
void use(MQuickView copy, unsigned number, Tally& tally)
{
    switch (number % 64) {
    case 0:
        copy.load("Scenes", "Quadrants");
        break;
    case 1:
        copy.reset();
        break;
    case 2:
        copy.destroy();
        break;
    case 3:
        tally.reached += copy.get_resolution() != std::tuple(0u, 0u);
        break;
    default:
        tally.wrong += !make_any_call(copy, number);
    }
}

TEST(StaleCopies, are_harmless_while_views_are_made)
{
    // A stale copy can load a new view that its maker has not given a device yet.
    allow_messages_matching("no Vulkan device; call set_view_monitor");
    allow_messages_matching("QQuickRenderControl::initialize\\(\\) failed");
    Watchdog watchdog;
    Pool pool;
    Tally tally;
    std::vector<std::jthread> users;
    for (unsigned seed = 0; seed < 8; ++seed) {
        users.emplace_back([&, random = std::mt19937(seed)](std::stop_token stop) mutable {
            while (!stop.stop_requested()) {
                if (const auto copy = pool.pick(random))
                    use(*copy, static_cast<unsigned>(random()), tally);
                watchdog.step();
                std::this_thread::sleep_for(50us);  // or nobody would get to make a view
            }
        });
    }

    for (int i = 0; i < times(300, 20'000); ++i) {
        HostView view({256, 256});
        if (i % 8 == 0)
            view.load("Moving");
        pool.add(view.facade());
    }
    users.clear();

    std::cout << tally.reached << " looks of a stale copy reached a new view" << std::endl;
    EXPECT_EQ(tally.wrong, 0);
    if (!memory_is_held_back()) {
        EXPECT_GT(tally.reached, 0)
            << "no new view has replaced an old one, so this run has tested nothing";
    }
}

}  // namespace

}  // namespace marlune::test

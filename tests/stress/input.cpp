// The library's own components with random input that no user would give, while they are rendered.

#include "support/host_view.h"
#include "support/process/endurance.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <thread>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

constexpr Size SIZE{640, 360};

struct Component {
    const char* module;
    const char* name;
};

const std::array<std::string, 16> TEXTS = {
    "",
    "a",
    "+",
    "Ctrl+c",
    "Shift+A",
    "Alt+",
    "Meta+x",
    "Ctrl+Shift+A",
    "größer",
    "🌊",
    "e\u0301",
    "مرحبا",
    std::string("\0", 1),
    "\xff\xfe\x80",
    "\t\r\n\x1b",
    std::string(10'000, 'x'),
};

// The keys that components handle: Escape, Tab, Return, Space, the arrows and their neighbours, F1.
constexpr std::array<uint32_t, 13> KEYS = {
    0x01000000, 0x01000001, 0x01000004, 0x20,       0x01000010, 0x01000011, 0x01000012,
    0x01000013, 0x01000014, 0x01000015, 0x01000016, 0x01000017, 0x01000030,
};

class RandomInput {
public:
    explicit RandomInput(unsigned seed) : random_(seed) {}

    void give(const MView& view)
    {
        switch (below(8)) {
        case 0:
            view.mouse_wheel_up(x(), y());
            break;
        case 1:
            view.mouse_wheel_down(x(), y());
            break;
        case 2:
        case 3:
            view.mouse_click(button(), action(), x(), y());
            break;
        case 4:
        case 5:
            view.key_event(key(), action(), one_of(TEXTS));
            break;
        default:
            view.mouse_move(x(), y());
        }
    }

private:
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }
    bool rarely() { return below(16) == 0; }

    template <typename Values>
    const typename Values::value_type& one_of(const Values& values)
    {
        return values[below(static_cast<uint32_t>(values.size()))];
    }

    /**
     * As a rule in the scene, or a little outside; sometimes anywhere; sometimes at the very end.
     */
    uint32_t coordinate(uint32_t side)
    {
        if (rarely())
            return std::numeric_limits<uint32_t>::max();
        return rarely() ? static_cast<uint32_t>(random_()) : below(side + 16);
    }
    uint32_t x() { return coordinate(SIZE.width); }
    uint32_t y() { return coordinate(SIZE.height); }

    uint16_t button() { return static_cast<uint16_t>(rarely() ? random_() : below(6)); }
    uint16_t action() { return static_cast<uint16_t>(rarely() ? random_() : below(2)); }
    uint32_t key() { return rarely() ? static_cast<uint32_t>(random_()) : one_of(KEYS); }

    std::mt19937 random_;
};

class RandomInputs : public testing::TestWithParam<Component> {};

TEST_P(RandomInputs, leave_a_component_well)
{
    Watchdog watchdog;
    HostView view(SIZE);
    ASSERT_TRUE(view->load(GetParam().module, GetParam().name));
    {
        const std::jthread renderer([&](std::stop_token stop) {
            for (; !stop.stop_requested(); std::this_thread::sleep_for(4ms))
                view->render();
        });
        RandomInput input(42);
        for (int i = 0; i < times(1'000, 10'000); ++i) {
            input.give(view.facade());
            watchdog.step();
        }
    }
    EXPECT_TRUE(shows_something(view.picture(), "the component is still there"));
}

INSTANTIATE_TEST_SUITE_P(Library, RandomInputs,
                         testing::Values(Component{"Splash", "Splash"},
                                         Component{"Splash", "StackViewFancy"},
                                         Component{"Debug", "Debug"},
                                         Component{"Debug", "DebugMouse"},
                                         Component{"Debug", "DebugVideo"}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace

}  // namespace marlune::test

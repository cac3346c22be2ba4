#include "support/any_call.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <tuple>

namespace marlune::test {

namespace {

using Resolution = std::tuple<uint32_t, uint32_t>;
using Call = bool (*)(const MQuickView& view, VulkanHost& host);

/** A call without a result, for the table below. */
template <auto act>
bool no_answer(const MQuickView& view, VulkanHost& host)
{
    act(view, host);
    return true;
}

template <typename Value>
bool is_one_of(const Value& value, std::initializer_list<Value> values)
{
    return std::find(values.begin(), values.end(), value) != values.end();
}

constexpr Call CALLS[] = {
    [](const MQuickView& view, VulkanHost&) {
        // 1920 x 1080 is the resolution before the host sets its own.
        return is_one_of(view.get_resolution(),
                         {Resolution(256, 256), Resolution(1920, 1080), Resolution(0, 0)});
    },
    [](const MQuickView& view, VulkanHost&) {
        return is_one_of(view.get_mips_count(), {9, 11, 1});
    },
    [](const MQuickView& view, VulkanHost&) {
        return is_one_of(view.get_refresh_rate(), {63, 60});
    },
    no_answer<[](auto& view, auto&) { view.get_texture(); }>,
    no_answer<[](auto& view, auto&) { view.render(); }>,
    no_answer<[](auto& view, auto&) { view.mouse_move(100, 100); }>,
    no_answer<[](auto& view, auto&) { view.mouse_move(10, 200); }>,
    no_answer<[](auto& view, auto&) { view.mouse_click(0, 0, 10, 200); }>,
    no_answer<[](auto& view, auto&) { view.mouse_click(0, 1, 10, 200); }>,
    no_answer<[](auto& view, auto&) { view.mouse_wheel_up(10, 200); }>,
    no_answer<[](auto& view, auto&) { view.mouse_wheel_down(10, 200); }>,
    no_answer<[](auto& view, auto&) { view.key_event(0x41, 0, "a"); }>,
    no_answer<[](auto& view, auto&) { view.key_event(0x41, 1, "a"); }>,
    no_answer<[](auto& view, auto&) {
        view.set_resolution({256, 256});
    }>,
    no_answer<[](auto& view, auto&) { view.set_refresh_rate(60); }>,
    no_answer<[](auto& view, auto&) { view.set_mipmaps_enabled(true); }>,
    no_answer<[](auto& view, auto& host) { view.set_view_monitor(host.instance()); }>,
    no_answer<[](auto& view, auto& host) {
        view.set_statistics_monitor(host.physical_device(), host.device());
    }>,
};

}  // namespace

bool make_any_call(const MQuickView& view, unsigned number, VulkanHost& host)
{
    return CALLS[number % std::size(CALLS)](view, host);
}

}  // namespace marlune::test

#pragma once

#include "runtime/callback_slot.h"
#include "runtime/facade_call.h"

#include <functional>
#include <type_traits>
#include <utility>

/**
 * Sets a callback of the host. When the setter has returned, the former function is no longer
 * called; a setter inside a callback does not wait for that callback to return. The former
 * function's captures are destroyed on the setter's thread.
 */
namespace marlune {

namespace detail {

template <typename Target, typename SlotOf>
using SlotType = std::remove_reference_t<std::invoke_result_t<SlotOf, Target&>>;

/** `reach` passes the slot to its argument, or does nothing when there is no slot. */
template <typename Slot, typename Reach>
void replace_callback(typename Slot::Function callback, Reach reach)
{
    auto stored = Slot::store(std::move(callback));
    HostFunction::Owner former;
    reach([&](Slot& slot) { former = slot.exchange(std::move(stored)); });
    HostFunction::let_go(std::move(former));
}

}  // namespace detail

/** Sets the function on the Qt thread, in order with other calls. */
template <detail::IsWork SlotOf, typename Function>
void set_callback(Caller caller, WaitFor wait, SlotOf slot_of, Function callback)
{
    using Target = detail::TargetOf<SlotOf>;
    using Slot = detail::SlotType<Target, SlotOf>;
    detail::replace_callback<Slot>(std::move(callback), [&](const auto& replace) {
        call<Target>(caller.member, caller.target, wait,
                     [&](Target& live) { replace(std::invoke(slot_of, live)); });
    });
}

/** Sets the function on the caller's thread. */
template <detail::IsWork SlotOf, typename Function>
void set_callback_in_place(Caller caller, SlotOf slot_of, Function callback)
{
    using Target = detail::TargetOf<SlotOf>;
    using Slot = detail::SlotType<Target, SlotOf>;
    detail::replace_callback<Slot>(std::move(callback), [&](const auto& replace) {
        marlune::with_live_object<Target>(caller.member, caller.target, [&](Target& live) {
            replace(std::invoke(slot_of, live));
        });
    });
}

}  // namespace marlune

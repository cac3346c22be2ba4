#pragma once

#include "runtime/callback_slot.h"
#include "runtime/facade_call.h"

#include <functional>
#include <type_traits>
#include <utility>

/**
 * What each setter of a host's function does. Once it has returned, the function that was there before
 * is not called any more; a setter in a callback does not wait for that callback to return. What the
 * former function has captured ends on the setter's thread.
 */
namespace marlune {

namespace detail {

template <typename Target, typename SlotOf>
using SlotType = std::remove_reference_t<std::invoke_result_t<SlotOf, Target&>>;

/** `reach` hands what it is given the slot, or nothing where there is none. */
template <typename Slot, typename Reach>
void replace_callback(typename Slot::Function callback, Reach reach)
{
    auto stored = Slot::store(std::move(callback));
    HostFunction::Owner former;
    reach([&](Slot& slot) { former = slot.exchange(std::move(stored)); });
    HostFunction::let_go(std::move(former));
}

}  // namespace detail

/** Carries the function to its slot, in turn with the other calls. */
template <detail::IsWork SlotOf, typename Function>
void set_callback(Caller caller, Delivery delivery, SlotOf slot_of, Function callback)
{
    using Target = detail::TargetOf<SlotOf>;
    using Slot = detail::SlotType<Target, SlotOf>;
    detail::replace_callback<Slot>(std::move(callback), [&](const auto& replace) {
        call<Target>(caller.member, caller.target, delivery,
                     [&](Target& live) { replace(std::invoke(slot_of, live)); });
    });
}

/** Puts the function into its slot from the caller's thread. */
template <detail::IsWork SlotOf, typename Function>
void set_callback_in_place(Caller caller, SlotOf slot_of, Function callback)
{
    using Target = detail::TargetOf<SlotOf>;
    using Slot = detail::SlotType<Target, SlotOf>;
    detail::replace_callback<Slot>(std::move(callback), [&](const auto& replace) {
        marlune::visit<Target>(caller.member, caller.target,
                               [&](Target& live) { replace(std::invoke(slot_of, live)); });
    });
}

}  // namespace marlune

#pragma once

#include "runtime/callback_slot.h"

#include <utility>

namespace marlune::test {

/** Stores a function in a callback slot of a view. */
template <typename Slot>
void fill(Slot& slot, typename Slot::Function function)
{
    HostFunction::let_go(slot.exchange(Slot::store(std::move(function))));
}

}  // namespace marlune::test

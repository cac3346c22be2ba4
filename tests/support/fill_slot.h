#pragma once

#include "runtime/callback_slot.h"

#include <utility>

namespace marlune::test {

/** Puts a function where a view keeps one of the host's. */
template <typename Slot>
void fill(Slot& slot, typename Slot::Function function)
{
    HostFunction::let_go(slot.exchange(Slot::store(std::move(function))));
}

}  // namespace marlune::test

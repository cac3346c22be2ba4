#pragma once

#include "runtime/call.h"
#include "views/view.h"

#include <utility>

namespace marlune {

/**
 * What each setter of a host's function does, straight from the caller's thread. `Callbacks` are those
 * that the view's callbacks() gives.
 */
template <typename ViewKind, typename Callbacks, typename Slot>
void set_callback(const char* name, View* view, Slot Callbacks::*slot,
                  typename Slot::Function callback)
{
    auto stored = Slot::store(std::move(callback));
    visit<ViewKind>(name, view, [&](ViewKind& live) {
        stored = (live.callbacks().*slot).exchange(std::move(stored));
    });
    // What was there goes here, where nothing is locked: it may be code of the host.
}

}  // namespace marlune

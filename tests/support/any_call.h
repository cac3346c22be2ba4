#pragma once

#include "support/vulkan/vulkan_host.h"

#include <marlune/mquick_view.h>

namespace marlune::test {

/**
 * Makes one call on the view: a count of `number` goes round through all members that neither load a
 * scene nor take anything away. False when the answer is neither the default nor that of a view which
 * has been given 256 x 256 px on this host.
 */
bool make_any_call(const MQuickView& view, unsigned number, VulkanHost& host = test::host());

}  // namespace marlune::test

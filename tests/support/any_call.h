#pragma once

#include "support/vulkan/vulkan_host.h"

#include <marlune/mquick_view.h>

namespace marlune::test {

/**
 * Makes one call on the view: a rising `number` goes round through all members that neither load a
 * scene nor reset or destroy one. Returns false if the result is neither the default nor the value
 * of a view with a resolution of 256 x 256 px on this host.
 */
bool make_any_call(const MQuickView& view, unsigned number, VulkanHost& host = test::host());

}  // namespace marlune::test

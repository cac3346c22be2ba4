#pragma once

#include <functional>

class QVulkanInstance;

namespace marlune {

/**
 * Runs the work while Vulkan's loader keeps other threads from loading or unloading drivers. Any
 * instance will do, and it is not changed. The work may look functions up, and must make no other
 * Vulkan call.
 */
void with_loader_locked(QVulkanInstance& instance, const std::function<void()>& work);

}  // namespace marlune

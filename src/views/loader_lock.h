#pragma once

#include <functional>

class QVulkanInstance;

namespace marlune {

/**
 * Does the work while Vulkan's loader lets no other thread load or unload drivers. The instance is any,
 * and stays as it is; the work may look functions up, and must make no other call of Vulkan.
 */
void with_loader_locked(QVulkanInstance& instance, const std::function<void()>& work);

}  // namespace marlune

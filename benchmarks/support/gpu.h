#pragma once

#include <vulkan/vulkan.h>

namespace marlune::bench {

/** The host's instance and device, which the library and raw Qt both use. */
class Gpu {
public:
    Gpu();
    ~Gpu();
    Gpu(const Gpu&) = delete;
    Gpu& operator=(const Gpu&) = delete;

    VkInstance instance = VK_NULL_HANDLE;
    VkPhysicalDevice physical_device = VK_NULL_HANDLE;
    VkDevice device = VK_NULL_HANDLE;
};

}  // namespace marlune::bench

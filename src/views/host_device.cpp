#include "views/host_device.h"

#include "runtime/platform.h"
#include "views/loader_lock.h"

#include <QVulkanFunctions>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace marlune {

bool HostDevice::is_other_instance(VkInstance instance) const
{
    return !instance_.isValid() || instance_.vkInstance() != instance;
}

void HostDevice::set_instance(VkInstance instance)
{
    instance_.destroy();
    instance_.setVkInstance(instance);
    // Given none, Qt would create its own.
    if (!instance || !instance_.create())
        throw std::runtime_error("Failed to create VkInstance");
}

void HostDevice::set_device(VkPhysicalDevice physical_device, VkDevice device)
{
    physical_device_ = physical_device;
    device_ = device;
    quick_device_ = physical_device && device
        ? QQuickGraphicsDevice::fromDeviceObjects(physical_device, device, 0, 0)
        : QQuickGraphicsDevice();
}

bool HostDevice::is_complete() const
{
    return instance_.isValid() && !quick_device_.isNull();
}

int HostDevice::largest_side()
{
    if (!instance_.isValid() || !physical_device_)
        return std::numeric_limits<int>::max() / 2;
    VkPhysicalDeviceProperties properties;
    instance_.functions()->vkGetPhysicalDeviceProperties(physical_device_, &properties);
    const VkPhysicalDeviceLimits& limits = properties.limits;
    const uint32_t largest = std::min({limits.maxImageDimension2D, limits.maxFramebufferWidth,
                                       limits.maxFramebufferHeight, limits.maxViewportDimensions[0],
                                       limits.maxViewportDimensions[1]});
    return static_cast<int>(largest);
}

/**
 * Vulkan's loader (seen with 1.4.309) looks one of the functions up, vkGetDeviceQueue2, by walking
 * through the drivers of all instances, and takes no lock. Another thread that unloads a driver
 * meanwhile, in vkEnumeratePhysicalDevices, makes that crash; the web engine's does so a moment
 * after the start.
 */
void HostDevice::look_up_functions()
{
    with_loader_locked(instance_, [this] { instance_.deviceFunctions(device_); });
}

bool HostDevice::imports_memory()
{
    if (!instance_.isValid() || !device_)
        return false;
    look_up_functions();
    const auto function_of_device = reinterpret_cast<PFN_vkGetDeviceProcAddr>(
        instance_.getInstanceProcAddr("vkGetDeviceProcAddr"));
    return function_of_device(device_, platform::external_memory.function) != nullptr;
}

bool HostDevice::wait_for(VkQueue queue)
{
    return instance_.deviceFunctions(device_)->vkQueueWaitIdle(queue) == VK_SUCCESS;
}

}  // namespace marlune

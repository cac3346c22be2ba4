#include "gpu.h"

#include <stdexcept>
#include <string>

namespace marlune::bench {

namespace {

void check(VkResult result, const char* call)
{
    if (result != VK_SUCCESS)
        throw std::runtime_error(std::string(call) + " failed: VkResult " + std::to_string(result));
}

}  // namespace

Gpu::Gpu()
{
    const VkApplicationInfo application{.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO,
                                        .pApplicationName = "marlune-bench",
                                        .apiVersion = VK_API_VERSION_1_1};
    const VkInstanceCreateInfo instance_info{.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO,
                                             .pApplicationInfo = &application};
    check(vkCreateInstance(&instance_info, nullptr, &instance), "vkCreateInstance");

    uint32_t count = 1;
    vkEnumeratePhysicalDevices(instance, &count, &physical_device);
    if (count == 0)
        throw std::runtime_error("this machine has no Vulkan device");

    const float priority = 1;
    const VkDeviceQueueCreateInfo queue_info{.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO,
                                             .queueFamilyIndex = 0,
                                             .queueCount = 1,
                                             .pQueuePriorities = &priority};
    const VkDeviceCreateInfo device_info{.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO,
                                         .queueCreateInfoCount = 1,
                                         .pQueueCreateInfos = &queue_info};
    check(vkCreateDevice(physical_device, &device_info, nullptr, &device), "vkCreateDevice");
}

Gpu::~Gpu()
{
    vkDestroyDevice(device, nullptr);
    vkDestroyInstance(instance, nullptr);
}

}  // namespace marlune::bench

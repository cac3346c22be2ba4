#include "support/gpu.h"

#include "support/vulkan_result.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace marlune::bench {

namespace {

/** What lets the device take the pictures of web pages, where the web engine draws on hardware. */
constexpr const char* memory_sharing = "VK_KHR_external_memory_fd";

bool has_extension(VkPhysicalDevice device, std::string_view name)
{
    uint32_t count = 0;
    check(vkEnumerateDeviceExtensionProperties(device, nullptr, &count, nullptr),
          "vkEnumerateDeviceExtensionProperties");
    std::vector<VkExtensionProperties> extensions(count);
    check(vkEnumerateDeviceExtensionProperties(device, nullptr, &count, extensions.data()),
          "vkEnumerateDeviceExtensionProperties");
    return std::ranges::any_of(
        extensions, [name](const auto& extension) { return extension.extensionName == name; });
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
    const VkDeviceCreateInfo device_info{
        .sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO,
        .queueCreateInfoCount = 1,
        .pQueueCreateInfos = &queue_info,
        .enabledExtensionCount = has_extension(physical_device, memory_sharing) ? 1u : 0u,
        .ppEnabledExtensionNames = &memory_sharing};
    check(vkCreateDevice(physical_device, &device_info, nullptr, &device), "vkCreateDevice");
}

Gpu::~Gpu()
{
    vkDestroyDevice(device, nullptr);
    vkDestroyInstance(instance, nullptr);
}

}  // namespace marlune::bench

#include "support/gpu.h"

#include "support/vulkan/kit.h"

namespace marlune::bench {

Gpu::Gpu()
{
    const VkApplicationInfo application{.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO,
                                        .pApplicationName = "marlune-bench",
                                        .apiVersion = VK_API_VERSION_1_1};
    const VkInstanceCreateInfo info{.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO,
                                    .pApplicationInfo = &application};
    vulkan::check(vkCreateInstance(&info, nullptr, &instance), "vkCreateInstance");
    physical_device = vulkan::first_physical_device(instance);
    // The extension lets the device import frames of web pages that the engine renders on a GPU.
    device = vulkan::create_device(physical_device, {"VK_KHR_external_memory_fd"});
}

Gpu::~Gpu()
{
    vkDestroyDevice(device, nullptr);
    vkDestroyInstance(instance, nullptr);
}

}  // namespace marlune::bench

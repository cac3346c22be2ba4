// The minimal host: one view, shown for a second.
#include <marlune/marlune.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

int main()
{
    // The game's own device; the library uses queue 0 of queue family 0.
    VkInstance instance = VK_NULL_HANDLE;
    VkPhysicalDevice gpu = VK_NULL_HANDLE;
    VkDevice device = VK_NULL_HANDLE;
    const VkInstanceCreateInfo instance_info{.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO};
    vkCreateInstance(&instance_info, nullptr, &instance);
    uint32_t count = 1;
    if (instance)
        vkEnumeratePhysicalDevices(instance, &count, &gpu);
    const float priority = 1;
    const VkDeviceQueueCreateInfo queue{.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO,
                                        .queueCount = 1,
                                        .pQueuePriorities = &priority};
    const VkDeviceCreateInfo device_info{.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO,
                                         .queueCreateInfoCount = 1,
                                         .pQueueCreateInfos = &queue};
    const char* root = std::getenv("MARLUNE_PROJECT_ROOT");
    if (!root || !gpu || vkCreateDevice(gpu, &device_info, nullptr, &device) != VK_SUCCESS)
        return EXIT_FAILURE;

    marlune::opts::PATH_PROJECT_ROOT = root;
    marlune::M::create_app();
    marlune::MQuickView view;
    view.set_view_monitor(instance);
    view.set_statistics_monitor(gpu, device);
    view.set_resolution({1280, 720});
    const bool loaded = view.load("Splash", "Splash");
    for (int frame = 0; loaded && frame < 60; ++frame) {
        view.render();  // then the game draws with reinterpret_cast<VkImage>(view.get_texture())
        std::this_thread::sleep_for(std::chrono::milliseconds(16));
    }
    std::printf("the view's VkImage is 0x%llx\n", (unsigned long long)view.get_texture());

    view.destroy();
    marlune::M::destroy();
    vkDestroyDevice(device, nullptr);
    vkDestroyInstance(instance, nullptr);
    return loaded ? EXIT_SUCCESS : EXIT_FAILURE;
}

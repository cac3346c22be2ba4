#pragma once

#include "support/image.h"
#include "support/vulkan/kit.h"

#include <vulkan/vulkan.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace marlune::test {

/**
 * The Vulkan instance and device of a game, here with the validation layer and synchronization
 * validation. Throws std::runtime_error if there is no Vulkan driver or no validation layer:
 * without it, tests would prove less than they claim.
 */
class VulkanHost {
public:
    static constexpr const char* VALIDATION_LAYER = "VK_LAYER_KHRONOS_validation";

    VulkanHost() : VulkanHost({VALIDATION_LAYER}, 1) {}

    /**
     * Uses `layers` instead of the validation layer alone, the one nearest to the host first, and
     * `queues` queues of family 0.
     */
    VulkanHost(const std::vector<const char*>& layers, uint32_t queues);
    ~VulkanHost();
    VulkanHost(const VulkanHost&) = delete;
    VulkanHost& operator=(const VulkanHost&) = delete;

    VkInstance& instance() { return instance_; }
    VkPhysicalDevice& physical_device() { return physical_device_; }
    VkDevice& device() { return device_; }

    /**
     * Hold this around load(), render(), reset() and destroy() if several threads use the device.
     */
    std::mutex& queue() { return queue_mutex_; }

    /**
     * Copies one mip level of a view's texture. `width` and `height` are those of level 0. The
     * level must be in VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL, and stays in it.
     */
    Image read_back(uint64_t texture, uint32_t width, uint32_t height, uint32_t level = 0);

private:
    void create_instance(const std::vector<const char*>& layers);

    VkInstance instance_ = VK_NULL_HANDLE;
    VkDebugUtilsMessengerEXT messenger_ = VK_NULL_HANDLE;
    VkPhysicalDevice physical_device_ = VK_NULL_HANDLE;
    VkDevice device_ = VK_NULL_HANDLE;
    std::optional<vulkan::TextureReader> reader_;
    std::mutex queue_mutex_;
};

/** The host that the tests of a process share. The first call creates it. */
VulkanHost& host();

/** Destroys the shared host, so that the layer can report objects that were never destroyed. */
void release_host();

/** Fails the running test for each message of the validation layer since the last check. */
void check_validation();

}  // namespace marlune::test

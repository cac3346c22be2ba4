#pragma once

#include <QQuickGraphicsDevice>
#include <QVulkanInstance>

namespace marlune {

/** The host's Vulkan instance and device, as Qt uses them. Both stay the host's. */
class HostDevice {
public:
    /** False where the instance is this one already. */
    bool is_other_instance(VkInstance instance) const;
    /** Nothing that uses the former instance may be left. @throws std::runtime_error */
    void set_instance(VkInstance instance);

    void set_device(VkPhysicalDevice physical_device, VkDevice device);

    /** True when a scene can be drawn with what the host has set. */
    bool is_complete() const;

    QVulkanInstance& instance() { return instance_; }
    const QQuickGraphicsDevice& quick_device() const { return quick_device_; }

    /** The side of the largest texture that can be drawn to, in px; with no device, that Qt can
     * count. */
    int largest_side();

    /** Has Qt look the device's functions up, and keep them. Before anything else does. */
    void look_up_functions();

    /** True when the device can import memory of another one. */
    bool imports_memory();

    /** Waits until the GPU has done all work of the queue. False when that has failed. */
    bool wait_for(VkQueue queue);

private:
    QVulkanInstance instance_;
    VkPhysicalDevice physical_device_ = VK_NULL_HANDLE;
    VkDevice device_ = VK_NULL_HANDLE;
    QQuickGraphicsDevice quick_device_;
};

}  // namespace marlune

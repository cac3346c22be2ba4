#pragma once

// The part of a game that the examples need: a Vulkan device, and a way to read a texture back.

#include <marlune/marlune.h>

#include <stb_image_write.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace example {

inline void check(VkResult result, const char* call)
{
    if (result != VK_SUCCESS)
        throw std::runtime_error(std::string(call) + " failed: VkResult " + std::to_string(result));
}

// --- The game's device -------------------------------------------------------------------------

// The library submits its work to queue 0 of queue family 0 of the device.
class Gpu {
public:
    Gpu()
    {
        // A game shows windows, and Qt looks for the extensions that they need.
        const std::vector<std::string> names = window_extensions();
        const std::vector<const char*> extensions = c_strings(names);
        const VkApplicationInfo application{.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO,
                                            .pApplicationName = "marlune-demo",
                                            .apiVersion = VK_API_VERSION_1_1};
        const VkInstanceCreateInfo instance_info{.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO,
                                                 .pApplicationInfo = &application,
                                                 .enabledExtensionCount =
                                                     uint32_t(extensions.size()),
                                                 .ppEnabledExtensionNames = extensions.data()};
        check(vkCreateInstance(&instance_info, nullptr, &instance), "vkCreateInstance");

        uint32_t count = 1;
        vkEnumeratePhysicalDevices(instance, &count, &physical_device);
        if (count == 0)
            throw std::runtime_error("this machine has no Vulkan device");

        const float priority = 1;
        const VkDeviceQueueCreateInfo queue_info{.sType =
                                                     VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO,
                                                 .queueFamilyIndex = 0,
                                                 .queueCount = 1,
                                                 .pQueuePriorities = &priority};
        const std::vector<std::string> device_names = sharing_extensions(physical_device);
        const std::vector<const char*> device_extensions = c_strings(device_names);
        const VkDeviceCreateInfo device_info{.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO,
                                             .queueCreateInfoCount = 1,
                                             .pQueueCreateInfos = &queue_info,
                                             .enabledExtensionCount =
                                                 uint32_t(device_extensions.size()),
                                             .ppEnabledExtensionNames = device_extensions.data()};
        check(vkCreateDevice(physical_device, &device_info, nullptr, &device), "vkCreateDevice");
        vkGetDeviceQueue(device, 0, 0, &queue);
    }
    ~Gpu()
    {
        vkDestroyDevice(device, nullptr);
        vkDestroyInstance(instance, nullptr);
    }
    Gpu(const Gpu&) = delete;
    Gpu& operator=(const Gpu&) = delete;

    VkInstance instance = VK_NULL_HANDLE;
    VkPhysicalDevice physical_device = VK_NULL_HANDLE;
    VkDevice device = VK_NULL_HANDLE;
    VkQueue queue = VK_NULL_HANDLE;

private:
    static std::vector<const char*> c_strings(const std::vector<std::string>& names)
    {
        std::vector<const char*> result;
        for (const std::string& name : names)
            result.push_back(name.c_str());
        return result;
    }

    static std::vector<std::string> window_extensions()
    {
        uint32_t count = 0;
        check(vkEnumerateInstanceExtensionProperties(nullptr, &count, nullptr),
              "listing extensions");
        std::vector<VkExtensionProperties> all(count);
        check(vkEnumerateInstanceExtensionProperties(nullptr, &count, all.data()),
              "listing extensions");
        std::vector<std::string> result;
        for (const VkExtensionProperties& extension : all) {
            if (std::string_view(extension.extensionName).ends_with("_surface"))
                result.emplace_back(extension.extensionName);
        }
        return result;
    }

    // These extensions let the device import frames that the web engine renders on a device of its
    // own.
    static std::vector<std::string> sharing_extensions(VkPhysicalDevice physical_device)
    {
        constexpr std::array<std::string_view, 5> wanted = {
            "VK_KHR_external_memory_win32",     "VK_KHR_external_memory_fd",
            "VK_EXT_external_memory_dma_buf",   "VK_KHR_image_format_list",
            "VK_EXT_image_drm_format_modifier",
        };
        uint32_t count = 0;
        check(vkEnumerateDeviceExtensionProperties(physical_device, nullptr, &count, nullptr),
              "listing extensions of the device");
        std::vector<VkExtensionProperties> all(count);
        check(vkEnumerateDeviceExtensionProperties(physical_device, nullptr, &count, all.data()),
              "listing extensions of the device");
        std::vector<std::string> result;
        for (const VkExtensionProperties& extension : all) {
            if (std::ranges::find(wanted, extension.extensionName) != wanted.end())
                result.emplace_back(extension.extensionName);
        }
        return result;
    }
};

// --- Reading a texture back --------------------------------------------------------------------
// A game samples the texture directly. The examples write it to files, so they copy it to a buffer.

class ReadbackBuffer {
public:
    ReadbackBuffer(const Gpu& gpu, VkDeviceSize size) : device_(gpu.device), size_(size)
    {
        const VkBufferCreateInfo info{.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO,
                                      .size = size,
                                      .usage = VK_BUFFER_USAGE_TRANSFER_DST_BIT};
        check(vkCreateBuffer(device_, &info, nullptr, &buffer), "vkCreateBuffer");

        VkMemoryRequirements needs;
        vkGetBufferMemoryRequirements(device_, buffer, &needs);
        const VkMemoryAllocateInfo allocation{
            .sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO,
            .allocationSize = needs.size,
            .memoryTypeIndex = memory_type(gpu.physical_device, needs.memoryTypeBits)};
        check(vkAllocateMemory(device_, &allocation, nullptr, &memory_), "vkAllocateMemory");
        check(vkBindBufferMemory(device_, buffer, memory_, 0), "vkBindBufferMemory");
    }
    ~ReadbackBuffer()
    {
        vkDestroyBuffer(device_, buffer, nullptr);
        vkFreeMemory(device_, memory_, nullptr);
    }
    ReadbackBuffer(const ReadbackBuffer&) = delete;
    ReadbackBuffer& operator=(const ReadbackBuffer&) = delete;

    std::vector<uint8_t> bytes() const
    {
        void* mapped = nullptr;
        check(vkMapMemory(device_, memory_, 0, size_, 0, &mapped), "vkMapMemory");
        std::vector<uint8_t> result(size_);
        std::memcpy(result.data(), mapped, size_);
        vkUnmapMemory(device_, memory_);
        return result;
    }

    VkBuffer buffer = VK_NULL_HANDLE;

private:
    static uint32_t memory_type(VkPhysicalDevice physical_device, uint32_t allowed)
    {
        constexpr VkMemoryPropertyFlags wanted =
            VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
        VkPhysicalDeviceMemoryProperties memory;
        vkGetPhysicalDeviceMemoryProperties(physical_device, &memory);
        for (uint32_t i = 0; i < memory.memoryTypeCount; ++i) {
            if ((allowed & 1u << i) && (memory.memoryTypes[i].propertyFlags & wanted) == wanted)
                return i;
        }
        throw std::runtime_error("the device has no memory that the CPU can read");
    }

    VkDevice device_;
    VkDeviceSize size_;
    VkDeviceMemory memory_ = VK_NULL_HANDLE;
};

inline VkImageMemoryBarrier barrier(VkImage image, uint32_t level, VkImageLayout from,
                                    VkImageLayout to, VkAccessFlags before, VkAccessFlags after)
{
    return {.sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER,
            .srcAccessMask = before,
            .dstAccessMask = after,
            .oldLayout = from,
            .newLayout = to,
            .srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
            .dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
            .image = image,
            .subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, level, 1, 0, 1}};
}

// The library leaves the texture in the layout of a colour attachment and expects it in the same
// layout.
inline void record_copy(VkCommandBuffer commands, VkImage image, uint32_t level, VkExtent3D extent,
                        VkBuffer buffer)
{
    constexpr auto resting = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    constexpr auto copying = VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
    constexpr auto drawing = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
    constexpr auto transfer = VK_PIPELINE_STAGE_TRANSFER_BIT;

    const auto there = barrier(image, level, resting, copying, VK_ACCESS_MEMORY_WRITE_BIT,
                               VK_ACCESS_TRANSFER_READ_BIT);
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, transfer, 0, 0, nullptr, 0,
                         nullptr, 1, &there);
    const VkBufferImageCopy region{.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, level, 0, 1},
                                   .imageExtent = extent};
    vkCmdCopyImageToBuffer(commands, image, copying, buffer, 1, &region);

    const auto back =
        barrier(image, level, copying, resting, 0, VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT);
    const VkMemoryBarrier to_cpu{.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER,
                                 .srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT,
                                 .dstAccessMask = VK_ACCESS_HOST_READ_BIT};
    vkCmdPipelineBarrier(commands, transfer, drawing | VK_PIPELINE_STAGE_HOST_BIT, 0, 1, &to_cpu, 0,
                         nullptr, 1, &back);
}

inline void run_copy(const Gpu& gpu, VkImage image, uint32_t level, VkExtent3D extent,
                     VkBuffer buffer)
{
    const VkCommandPoolCreateInfo pool_info{.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO};
    VkCommandPool pool = VK_NULL_HANDLE;
    check(vkCreateCommandPool(gpu.device, &pool_info, nullptr, &pool), "vkCreateCommandPool");
    const VkCommandBufferAllocateInfo allocation{.sType =
                                                     VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO,
                                                 .commandPool = pool,
                                                 .level = VK_COMMAND_BUFFER_LEVEL_PRIMARY,
                                                 .commandBufferCount = 1};
    VkCommandBuffer commands = VK_NULL_HANDLE;
    check(vkAllocateCommandBuffers(gpu.device, &allocation, &commands), "vkAllocateCommandBuffers");

    const VkCommandBufferBeginInfo begin{.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO,
                                         .flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT};
    check(vkBeginCommandBuffer(commands, &begin), "vkBeginCommandBuffer");
    record_copy(commands, image, level, extent, buffer);
    check(vkEndCommandBuffer(commands), "vkEndCommandBuffer");
    const VkSubmitInfo submit{.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO,
                              .commandBufferCount = 1,
                              .pCommandBuffers = &commands};
    check(vkQueueSubmit(gpu.queue, 1, &submit, VK_NULL_HANDLE), "vkQueueSubmit");
    check(vkQueueWaitIdle(gpu.queue), "vkQueueWaitIdle");
    vkDestroyCommandPool(gpu.device, pool, nullptr);
}

struct Picture {
    uint32_t width = 0, height = 0;
    std::vector<uint8_t> rgba;
};

// Reads one level of a texture; its alpha is premultiplied. `width` and `height` are those of level
// 0.
inline Picture read_back(const Gpu& gpu, uint64_t texture, uint32_t width, uint32_t height,
                         uint32_t level = 0)
{
    const VkExtent3D extent{std::max(1u, width >> level), std::max(1u, height >> level), 1};
    const ReadbackBuffer target(gpu, VkDeviceSize(extent.width) * extent.height * 4);
    run_copy(gpu, reinterpret_cast<VkImage>(texture), level, extent, target.buffer);
    return {extent.width, extent.height, target.bytes()};
}

// PNG requires alpha that is not premultiplied.
inline void unpremultiply(std::span<uint8_t> rgba)
{
    for (size_t i = 0; i < rgba.size(); i += 4) {
        const int alpha = rgba[i + 3];
        for (size_t channel = i; alpha > 0 && channel < i + 3; ++channel)
            rgba[channel] = uint8_t(std::min(255, (rgba[channel] * 255 + alpha / 2) / alpha));
    }
}

inline void save_png(Picture picture, const std::filesystem::path& file)
{
    unpremultiply(picture.rgba);
    if (!stbi_write_png(file.string().c_str(), int(picture.width), int(picture.height), 4,
                        picture.rgba.data(), int(picture.width) * 4))
        throw std::runtime_error("cannot write " + file.string());
}

// --- The library -------------------------------------------------------------------------------

// Starts the library, once per process. Destroy all views before this object, and this object
// before the device.
struct Library {
    Library()
    {
        const char* root = std::getenv("MARLUNE_PROJECT_ROOT");
        if (!root)
            throw std::runtime_error("set MARLUNE_PROJECT_ROOT to the project's root directory");
        marlune::opts::PATH_PROJECT_ROOT = root;
        marlune::M::create_app();
    }
    ~Library() { marlune::M::destroy(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

}  // namespace example

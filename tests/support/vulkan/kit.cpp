#include "support/vulkan/kit.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace marlune::vulkan {

namespace {

using ExtensionQuery = std::function<VkResult(uint32_t*, VkExtensionProperties*)>;

Names available(const Names& wanted, const ExtensionQuery& query)
{
    uint32_t count = 0;
    check(query(&count, nullptr), "enumerating extensions");
    std::vector<VkExtensionProperties> extensions(count);
    check(query(&count, extensions.data()), "enumerating extensions");

    Names names;
    std::ranges::copy_if(wanted, std::back_inserter(names), [&](std::string_view name) {
        return std::ranges::any_of(
            extensions, [name](const auto& extension) { return extension.extensionName == name; });
    });
    return names;
}

uint32_t readable_memory_type(VkPhysicalDevice physical_device, uint32_t allowed)
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

VkImageMemoryBarrier barrier(VkImage image, uint32_t level, VkImageLayout from, VkImageLayout to,
                             VkAccessFlags written, VkAccessFlags read)
{
    return {
        .sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER,
        .srcAccessMask = written,
        .dstAccessMask = read,
        .oldLayout = from,
        .newLayout = to,
        .srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
        .dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
        .image = image,
        .subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, level, 1, 0, 1},
    };
}

}  // namespace

void check(VkResult result, const char* call)
{
    if (result != VK_SUCCESS)
        throw std::runtime_error(std::string(call) + " failed: VkResult " + std::to_string(result));
}

Names instance_extensions(const Names& wanted)
{
    return available(wanted, [](auto* count, auto* extensions) {
        return vkEnumerateInstanceExtensionProperties(nullptr, count, extensions);
    });
}

VkPhysicalDevice first_physical_device(VkInstance instance)
{
    VkPhysicalDevice device = VK_NULL_HANDLE;
    uint32_t count = 1;
    const VkResult result = vkEnumeratePhysicalDevices(instance, &count, &device);
    if (count == 0 || (result != VK_SUCCESS && result != VK_INCOMPLETE))
        throw std::runtime_error("no Vulkan device: install a driver, lavapipe is enough");
    return device;
}

VkDevice create_device(VkPhysicalDevice physical_device, const Names& extensions, uint32_t queues)
{
    const std::vector<float> priorities(queues, 1);
    const VkDeviceQueueCreateInfo queue{.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO,
                                        .queueFamilyIndex = 0,
                                        .queueCount = queues,
                                        .pQueuePriorities = priorities.data()};
    const Names enabled = available(extensions, [physical_device](auto* count, auto* properties) {
        return vkEnumerateDeviceExtensionProperties(physical_device, nullptr, count, properties);
    });
    const VkDeviceCreateInfo info{.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO,
                                  .queueCreateInfoCount = 1,
                                  .pQueueCreateInfos = &queue,
                                  .enabledExtensionCount = uint32_t(enabled.size()),
                                  .ppEnabledExtensionNames = enabled.data()};
    VkDevice device = VK_NULL_HANDLE;
    check(vkCreateDevice(physical_device, &info, nullptr, &device), "vkCreateDevice");
    return device;
}

// --- Reading ----------------------------------------------------------------------------------------

ReadableBuffer::ReadableBuffer(VkPhysicalDevice physical_device, VkDevice device, VkDeviceSize size)
    : device_(device), size_(size)
{
    const VkBufferCreateInfo info{.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO,
                                  .size = size,
                                  .usage = VK_BUFFER_USAGE_TRANSFER_DST_BIT};
    check(vkCreateBuffer(device, &info, nullptr, &buffer_), "vkCreateBuffer");
    VkMemoryRequirements needs;
    vkGetBufferMemoryRequirements(device, buffer_, &needs);
    const VkMemoryAllocateInfo memory{
        .sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO,
        .allocationSize = needs.size,
        .memoryTypeIndex = readable_memory_type(physical_device, needs.memoryTypeBits)};
    check(vkAllocateMemory(device, &memory, nullptr, &memory_), "vkAllocateMemory");
    check(vkBindBufferMemory(device, buffer_, memory_, 0), "vkBindBufferMemory");
    void* mapped = nullptr;
    check(vkMapMemory(device, memory_, 0, VK_WHOLE_SIZE, 0, &mapped), "vkMapMemory");
    bytes_ = static_cast<const uint8_t*>(mapped);
}

ReadableBuffer::~ReadableBuffer()
{
    vkDestroyBuffer(device_, buffer_, nullptr);
    vkFreeMemory(device_, memory_, nullptr);
}

TextureReader::TextureReader(VkDevice device) : device_(device)
{
    vkGetDeviceQueue(device, 0, 0, &queue_);
    const VkCommandPoolCreateInfo pool{.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO,
                                       .flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT};
    check(vkCreateCommandPool(device, &pool, nullptr, &pool_), "vkCreateCommandPool");
    const VkCommandBufferAllocateInfo commands{.sType =
                                                   VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO,
                                               .commandPool = pool_,
                                               .level = VK_COMMAND_BUFFER_LEVEL_PRIMARY,
                                               .commandBufferCount = 1};
    check(vkAllocateCommandBuffers(device, &commands, &commands_), "vkAllocateCommandBuffers");
}

TextureReader::~TextureReader()
{
    vkDestroyCommandPool(device_, pool_, nullptr);
}

void TextureReader::copy(uint64_t texture, std::span<const VkBufferImageCopy> regions,
                         VkBuffer target)
{
    if (texture == 0)
        throw std::runtime_error("there is no texture to read");
    const VkCommandBufferBeginInfo begin{.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO,
                                         .flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT};
    check(vkBeginCommandBuffer(commands_, &begin), "vkBeginCommandBuffer");
    record(reinterpret_cast<VkImage>(texture), regions, target);
    check(vkEndCommandBuffer(commands_), "vkEndCommandBuffer");

    const VkSubmitInfo submit{.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO,
                              .commandBufferCount = 1,
                              .pCommandBuffers = &commands_};
    check(vkQueueSubmit(queue_, 1, &submit, VK_NULL_HANDLE), "vkQueueSubmit");
    check(vkQueueWaitIdle(queue_), "vkQueueWaitIdle");
}

void TextureReader::record(VkImage image, std::span<const VkBufferImageCopy> regions,
                           VkBuffer target)
{
    constexpr VkImageLayout resting = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    constexpr VkImageLayout copying = VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
    constexpr VkAccessFlags drawing =
        VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
    const uint32_t level = regions.front().imageSubresource.mipLevel;

    const auto there = barrier(image, level, resting, copying, VK_ACCESS_MEMORY_WRITE_BIT,
                               VK_ACCESS_TRANSFER_READ_BIT);
    vkCmdPipelineBarrier(commands_, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                         VK_PIPELINE_STAGE_TRANSFER_BIT, 0, 0, nullptr, 0, nullptr, 1, &there);
    vkCmdCopyImageToBuffer(commands_, image, copying, target, uint32_t(regions.size()),
                           regions.data());
    const auto back = barrier(image, level, copying, resting, 0, drawing);
    const VkBufferMemoryBarrier to_host{
        .sType = VK_STRUCTURE_TYPE_BUFFER_MEMORY_BARRIER,
        .srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT,
        .dstAccessMask = VK_ACCESS_HOST_READ_BIT,
        .srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
        .dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
        .buffer = target,
        .size = VK_WHOLE_SIZE,
    };
    vkCmdPipelineBarrier(commands_, VK_PIPELINE_STAGE_TRANSFER_BIT,
                         VK_PIPELINE_STAGE_HOST_BIT | VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0,
                         nullptr, 1, &to_host, 1, &back);
}

}  // namespace marlune::vulkan

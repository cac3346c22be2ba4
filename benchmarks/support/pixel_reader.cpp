#include "support/pixel_reader.h"

#include "support/vulkan_result.h"

#include <stdexcept>
#include <vector>

namespace marlune::bench {

namespace {

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
    throw std::runtime_error("the device has no memory that the processor can read");
}

void move_layout(VkCommandBuffer commands, VkImage image, VkImageLayout from, VkImageLayout to)
{
    const VkImageMemoryBarrier barrier{
        .sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER,
        .srcAccessMask = VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT,
        .dstAccessMask = VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT,
        .oldLayout = from,
        .newLayout = to,
        .srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
        .dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED,
        .image = image,
        .subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1},
    };
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                         VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0, nullptr, 0, nullptr, 1,
                         &barrier);
}

}  // namespace

PixelReader::PixelReader(const Gpu& gpu) : device_(gpu.device)
{
    vkGetDeviceQueue(device_, 0, 0, &queue_);
    create_buffer(gpu.physical_device);
    create_commands();
}

PixelReader::~PixelReader()
{
    vkDestroyCommandPool(device_, pool_, nullptr);
    vkDestroyBuffer(device_, buffer_, nullptr);
    vkFreeMemory(device_, memory_, nullptr);
}

void PixelReader::create_buffer(VkPhysicalDevice physical_device)
{
    const VkBufferCreateInfo info{.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO,
                                  .size = most_pixels * sizeof(Colour),
                                  .usage = VK_BUFFER_USAGE_TRANSFER_DST_BIT};
    check(vkCreateBuffer(device_, &info, nullptr, &buffer_), "vkCreateBuffer");
    VkMemoryRequirements needs;
    vkGetBufferMemoryRequirements(device_, buffer_, &needs);
    const VkMemoryAllocateInfo allocation{
        .sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO,
        .allocationSize = needs.size,
        .memoryTypeIndex = readable_memory_type(physical_device, needs.memoryTypeBits)};
    check(vkAllocateMemory(device_, &allocation, nullptr, &memory_), "vkAllocateMemory");
    check(vkBindBufferMemory(device_, buffer_, memory_, 0), "vkBindBufferMemory");
    void* mapped = nullptr;
    check(vkMapMemory(device_, memory_, 0, VK_WHOLE_SIZE, 0, &mapped), "vkMapMemory");
    pixels_ = static_cast<const Colour*>(mapped);
}

void PixelReader::create_commands()
{
    const VkCommandPoolCreateInfo pool{.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO,
                                       .flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT};
    check(vkCreateCommandPool(device_, &pool, nullptr, &pool_), "vkCreateCommandPool");
    const VkCommandBufferAllocateInfo commands{.sType =
                                                   VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO,
                                               .commandPool = pool_,
                                               .level = VK_COMMAND_BUFFER_LEVEL_PRIMARY,
                                               .commandBufferCount = 1};
    check(vkAllocateCommandBuffers(device_, &commands, &commands_), "vkAllocateCommandBuffers");
}

void PixelReader::record_copy(VkImage image, std::span<const VkOffset3D> places)
{
    constexpr VkImageLayout resting = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    constexpr VkImageLayout copying = VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
    std::vector<VkBufferImageCopy> regions;
    for (const VkOffset3D place : places)
        regions.push_back({.bufferOffset = regions.size() * sizeof(Colour),
                           .imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1},
                           .imageOffset = place,
                           .imageExtent = {1, 1, 1}});

    const VkCommandBufferBeginInfo begin{.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO,
                                         .flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT};
    check(vkBeginCommandBuffer(commands_, &begin), "vkBeginCommandBuffer");
    move_layout(commands_, image, resting, copying);
    vkCmdCopyImageToBuffer(commands_, image, copying, buffer_,
                           static_cast<uint32_t>(regions.size()), regions.data());
    move_layout(commands_, image, copying, resting);
    check(vkEndCommandBuffer(commands_), "vkEndCommandBuffer");
}

std::span<const Colour> PixelReader::read(uint64_t texture, std::span<const VkOffset3D> places)
{
    if (texture == 0)
        throw std::runtime_error("there is no texture to read pixels of");
    if (places.size() > most_pixels)
        throw std::runtime_error("too many pixels to read at once");
    record_copy(reinterpret_cast<VkImage>(texture), places);
    const VkSubmitInfo submit{.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO,
                              .commandBufferCount = 1,
                              .pCommandBuffers = &commands_};
    check(vkQueueSubmit(queue_, 1, &submit, VK_NULL_HANDLE), "vkQueueSubmit");
    check(vkQueueWaitIdle(queue_), "vkQueueWaitIdle");
    return {pixels_, places.size()};
}

Colour PixelReader::read(uint64_t texture, int32_t x, int32_t y)
{
    const VkOffset3D place{x, y, 0};
    return read(texture, {&place, 1}).front();
}

}  // namespace marlune::bench

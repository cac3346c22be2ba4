#pragma once

#include <vulkan/vulkan.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/**
 * The Vulkan code that all hosts of the tests and the benchmarks share. Throws std::runtime_error
 * on failure.
 */
namespace marlune::vulkan {

using Names = std::vector<const char*>;

/** Throws unless the call of that name has succeeded. */
void check(VkResult result, const char* call);

/** The extensions among `wanted` that an instance without layers supports. */
Names instance_extensions(const Names& wanted);

VkPhysicalDevice first_physical_device(VkInstance instance);

/**
 * Creates a device with `queues` queues of family 0, and with those `extensions` that it supports.
 */
VkDevice create_device(VkPhysicalDevice physical_device, const Names& extensions,
                       uint32_t queues = 1);

/** A buffer that the GPU writes and the CPU reads. */
class ReadableBuffer {
public:
    ReadableBuffer(VkPhysicalDevice physical_device, VkDevice device, VkDeviceSize size);
    ~ReadableBuffer();
    ReadableBuffer(const ReadableBuffer&) = delete;
    ReadableBuffer& operator=(const ReadableBuffer&) = delete;

    operator VkBuffer() const { return buffer_; }

    /** The content that the last copy has written. */
    std::span<const uint8_t> bytes() const { return {bytes_, size_}; }

private:
    VkDevice device_;
    size_t size_;
    VkBuffer buffer_ = VK_NULL_HANDLE;
    VkDeviceMemory memory_ = VK_NULL_HANDLE;
    const uint8_t* bytes_ = nullptr;
};

/**
 * Copies the content of textures. Uses the device's first queue: do not call it while a view draws.
 */
class TextureReader {
public:
    explicit TextureReader(VkDevice device);
    ~TextureReader();
    TextureReader(const TextureReader&) = delete;
    TextureReader& operator=(const TextureReader&) = delete;

    /**
     * Copies regions of one mip level to `target`, and waits for the copy. The level must be in
     * VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL, and stays in it.
     */
    void copy(uint64_t texture, std::span<const VkBufferImageCopy> regions, VkBuffer target);

private:
    void record(VkImage image, std::span<const VkBufferImageCopy> regions, VkBuffer target);

    VkDevice device_;
    VkQueue queue_ = VK_NULL_HANDLE;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    VkCommandBuffer commands_ = VK_NULL_HANDLE;
};

}  // namespace marlune::vulkan

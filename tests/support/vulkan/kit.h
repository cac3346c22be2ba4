#pragma once

#include <vulkan/vulkan.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/** What every Vulkan host of the tests and the benchmarks does. Throws std::runtime_error on failure. */
namespace marlune::vulkan {

using Names = std::vector<const char*>;

/** Throws unless the call of that name has succeeded. */
void check(VkResult result, const char* call);

/** Those of `wanted` that an instance without layers can have. */
Names instance_extensions(const Names& wanted);

VkPhysicalDevice first_physical_device(VkInstance instance);

/** A device with `queues` of family 0, and with those of the extensions that it can have. */
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

    /** What the last copy has written. */
    std::span<const uint8_t> bytes() const { return {bytes_, size_}; }

private:
    VkDevice device_;
    size_t size_;
    VkBuffer buffer_ = VK_NULL_HANDLE;
    VkDeviceMemory memory_ = VK_NULL_HANDLE;
    const uint8_t* bytes_ = nullptr;
};

/** Copies out of textures. Uses the device's first queue: never while a view draws. */
class TextureReader {
public:
    explicit TextureReader(VkDevice device);
    ~TextureReader();
    TextureReader(const TextureReader&) = delete;
    TextureReader& operator=(const TextureReader&) = delete;

    /**
     * Copies regions of one mip level to `target`, and waits until they are there. Finds the level in
     * VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL, and leaves it so.
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

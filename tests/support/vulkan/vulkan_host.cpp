#include "support/vulkan/vulkan_host.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

namespace marlune::test {

namespace {

// A game's instance can show windows, and so has these where the driver does.
constexpr std::array WINDOW_EXTENSIONS = {"VK_KHR_surface", "VK_KHR_xcb_surface",
                                          "VK_KHR_xlib_surface", "VK_KHR_wayland_surface",
                                          "VK_KHR_win32_surface"};

class ValidationMessages {
public:
    void add(const char* message)
    {
        const std::lock_guard lock(mutex_);
        messages_.emplace_back(message);
    }
    std::vector<std::string> take()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(messages_, {});
    }

private:
    std::mutex mutex_;
    std::vector<std::string> messages_;
};

ValidationMessages& validation_messages()
{
    static ValidationMessages messages;
    return messages;
}

VKAPI_ATTR VkBool32 VKAPI_CALL
on_validation_message(VkDebugUtilsMessageSeverityFlagBitsEXT, VkDebugUtilsMessageTypeFlagsEXT,
                      const VkDebugUtilsMessengerCallbackDataEXT* data, void*)
{
    std::fprintf(stderr, "%s\n", data->pMessage);
    validation_messages().add(data->pMessage);
    return VK_FALSE;
}

void check(VkResult result, const char* call)
{
    if (result != VK_SUCCESS)
        throw std::runtime_error(std::string(call) + " failed with " + std::to_string(result));
}

bool layer_is_there()
{
    uint32_t count = 0;
    check(vkEnumerateInstanceLayerProperties(&count, nullptr),
          "vkEnumerateInstanceLayerProperties");
    std::vector<VkLayerProperties> layers(count);
    check(vkEnumerateInstanceLayerProperties(&count, layers.data()),
          "vkEnumerateInstanceLayerProperties");
    return std::any_of(layers.begin(), layers.end(), [](const VkLayerProperties& layer) {
        return std::strcmp(layer.layerName, VulkanHost::VALIDATION_LAYER) == 0;
    });
}

using ExtensionQuery = std::function<VkResult(uint32_t*, VkExtensionProperties*)>;

/** Those of `wanted` that the query names. */
template <size_t N>
std::vector<const char*> present(const std::array<const char*, N>& wanted,
                                 const ExtensionQuery& query)
{
    uint32_t count = 0;
    check(query(&count, nullptr), "enumerating extensions");
    std::vector<VkExtensionProperties> extensions(count);
    check(query(&count, extensions.data()), "enumerating extensions");

    std::vector<const char*> result;
    std::copy_if(wanted.begin(), wanted.end(), std::back_inserter(result), [&](const char* name) {
        return std::any_of(extensions.begin(), extensions.end(), [&](const auto& extension) {
            return std::strcmp(extension.extensionName, name) == 0;
        });
    });
    return result;
}

VkDebugUtilsMessengerCreateInfoEXT messenger_info()
{
    // Not GENERAL: in that the loader speaks of drivers that the machine lacks.
    return {
        .sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_MESSENGER_CREATE_INFO_EXT,
        .messageSeverity = VK_DEBUG_UTILS_MESSAGE_SEVERITY_WARNING_BIT_EXT
            | VK_DEBUG_UTILS_MESSAGE_SEVERITY_ERROR_BIT_EXT,
        .messageType = VK_DEBUG_UTILS_MESSAGE_TYPE_VALIDATION_BIT_EXT
            | VK_DEBUG_UTILS_MESSAGE_TYPE_PERFORMANCE_BIT_EXT,
        .pfnUserCallback = on_validation_message,
    };
}

template <typename Function>
Function instance_function(VkInstance instance, const char* name)
{
    return reinterpret_cast<Function>(vkGetInstanceProcAddr(instance, name));
}

/** A buffer that the GPU writes and the CPU reads. */
class StagingBuffer {
public:
    StagingBuffer(VkPhysicalDevice physical_device, VkDevice device, VkDeviceSize size)
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
            .memoryTypeIndex = host_memory_type(physical_device, needs.memoryTypeBits)};
        check(vkAllocateMemory(device, &memory, nullptr, &memory_), "vkAllocateMemory");
        check(vkBindBufferMemory(device, buffer_, memory_, 0), "vkBindBufferMemory");
    }
    ~StagingBuffer()
    {
        vkDestroyBuffer(device_, buffer_, nullptr);
        vkFreeMemory(device_, memory_, nullptr);
    }
    StagingBuffer(const StagingBuffer&) = delete;
    StagingBuffer& operator=(const StagingBuffer&) = delete;

    VkBuffer buffer() const { return buffer_; }

    std::vector<uint8_t> bytes() const
    {
        void* data = nullptr;
        check(vkMapMemory(device_, memory_, 0, size_, 0, &data), "vkMapMemory");
        std::vector<uint8_t> result(size_);
        std::memcpy(result.data(), data, size_);
        vkUnmapMemory(device_, memory_);
        return result;
    }

private:
    static uint32_t host_memory_type(VkPhysicalDevice physical_device, uint32_t allowed)
    {
        constexpr VkMemoryPropertyFlags wanted =
            VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
        VkPhysicalDeviceMemoryProperties memory;
        vkGetPhysicalDeviceMemoryProperties(physical_device, &memory);
        for (uint32_t i = 0; i < memory.memoryTypeCount; ++i) {
            if ((allowed & 1u << i) && (memory.memoryTypes[i].propertyFlags & wanted) == wanted)
                return i;
        }
        throw std::runtime_error("no memory that the CPU can read");
    }

    VkDevice device_;
    VkDeviceSize size_;
    VkBuffer buffer_ = VK_NULL_HANDLE;
    VkDeviceMemory memory_ = VK_NULL_HANDLE;
};

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

void record_copy(VkCommandBuffer commands, VkImage image, VkExtent3D extent, uint32_t level,
                 VkBuffer target)
{
    constexpr VkImageLayout resting = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    constexpr VkImageLayout copying = VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
    constexpr VkAccessFlags drawing =
        VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;

    const auto there = barrier(image, level, resting, copying, VK_ACCESS_MEMORY_WRITE_BIT,
                               VK_ACCESS_TRANSFER_READ_BIT);
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                         VK_PIPELINE_STAGE_TRANSFER_BIT, 0, 0, nullptr, 0, nullptr, 1, &there);

    const VkBufferImageCopy region{.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, level, 0, 1},
                                   .imageExtent = extent};
    vkCmdCopyImageToBuffer(commands, image, copying, target, 1, &region);

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
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT,
                         VK_PIPELINE_STAGE_HOST_BIT | VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0,
                         nullptr, 1, &to_host, 1, &back);
}

std::unique_ptr<VulkanHost>& shared_host()
{
    // Never deleted by itself: when main has been left, the layer may be gone before.
    static auto* const host = new std::unique_ptr<VulkanHost>;
    return *host;
}

}  // namespace

VulkanHost::VulkanHost(const std::vector<const char*>& layers, uint32_t queues)
{
    create_instance(layers);
    choose_physical_device();
    create_device(queues);
}

VulkanHost::~VulkanHost()
{
    vkDestroyCommandPool(device_, command_pool_, nullptr);
    vkDestroyDevice(device_, nullptr);
    const auto destroy_messenger = instance_function<PFN_vkDestroyDebugUtilsMessengerEXT>(
        instance_, "vkDestroyDebugUtilsMessengerEXT");
    destroy_messenger(instance_, messenger_, nullptr);
    vkDestroyInstance(instance_, nullptr);
}

void VulkanHost::create_instance(const std::vector<const char*>& layers)
{
    if (!layer_is_there())
        throw std::runtime_error(std::string("the Vulkan layer is missing: ") + VALIDATION_LAYER);

    std::vector<const char*> extensions = present(WINDOW_EXTENSIONS, [](auto* count, auto* data) {
        return vkEnumerateInstanceExtensionProperties(nullptr, count, data);
    });
    extensions.push_back(VK_EXT_DEBUG_UTILS_EXTENSION_NAME);
    extensions.push_back(VK_EXT_VALIDATION_FEATURES_EXTENSION_NAME);

    const VkDebugUtilsMessengerCreateInfoEXT messenger = messenger_info();
    const std::array enabled = {VK_VALIDATION_FEATURE_ENABLE_SYNCHRONIZATION_VALIDATION_EXT};
    const VkValidationFeaturesEXT features{.sType = VK_STRUCTURE_TYPE_VALIDATION_FEATURES_EXT,
                                           .pNext = &messenger,
                                           .enabledValidationFeatureCount =
                                               uint32_t(enabled.size()),
                                           .pEnabledValidationFeatures = enabled.data()};
    const VkApplicationInfo application{.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO,
                                        .pApplicationName = "marlune tests",
                                        .apiVersion = VK_API_VERSION_1_1};
    const VkInstanceCreateInfo info{.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO,
                                    .pNext = &features,
                                    .pApplicationInfo = &application,
                                    .enabledLayerCount = uint32_t(layers.size()),
                                    .ppEnabledLayerNames = layers.data(),
                                    .enabledExtensionCount = uint32_t(extensions.size()),
                                    .ppEnabledExtensionNames = extensions.data()};
    check(vkCreateInstance(&info, nullptr, &instance_), "vkCreateInstance");

    const auto create_messenger = instance_function<PFN_vkCreateDebugUtilsMessengerEXT>(
        instance_, "vkCreateDebugUtilsMessengerEXT");
    check(create_messenger(instance_, &messenger, nullptr, &messenger_),
          "vkCreateDebugUtilsMessengerEXT");
}

void VulkanHost::choose_physical_device()
{
    uint32_t count = 1;
    const VkResult result = vkEnumeratePhysicalDevices(instance_, &count, &physical_device_);
    if (count == 0 || (result != VK_SUCCESS && result != VK_INCOMPLETE))
        throw std::runtime_error("no Vulkan device: install a driver, lavapipe is enough");
}

void VulkanHost::create_device(uint32_t queues)
{
    const std::vector<float> priorities(queues, 1);
    const VkDeviceQueueCreateInfo queue{.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO,
                                        .queueFamilyIndex = 0,
                                        .queueCount = queues,
                                        .pQueuePriorities = priorities.data()};
    const std::vector<const char*> extensions =
        present(std::array{VK_KHR_SWAPCHAIN_EXTENSION_NAME}, [this](auto* total, auto* data) {
            return vkEnumerateDeviceExtensionProperties(physical_device_, nullptr, total, data);
        });
    const VkDeviceCreateInfo info{.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO,
                                  .queueCreateInfoCount = 1,
                                  .pQueueCreateInfos = &queue,
                                  .enabledExtensionCount = uint32_t(extensions.size()),
                                  .ppEnabledExtensionNames = extensions.data()};
    check(vkCreateDevice(physical_device_, &info, nullptr, &device_), "vkCreateDevice");
    vkGetDeviceQueue(device_, 0, 0, &queue_);

    const VkCommandPoolCreateInfo pool{.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO,
                                       .flags = VK_COMMAND_POOL_CREATE_TRANSIENT_BIT};
    check(vkCreateCommandPool(device_, &pool, nullptr, &command_pool_), "vkCreateCommandPool");
}

Image VulkanHost::read_back(uint64_t texture, uint32_t width, uint32_t height, uint32_t level)
{
    if (texture == 0)
        throw std::invalid_argument("there is no texture to read back");
    const VkExtent3D extent{std::max(1u, width >> level), std::max(1u, height >> level), 1};
    const StagingBuffer staging(physical_device_, device_,
                                size_t(extent.width) * extent.height * 4);

    const std::lock_guard lock(queue_mutex_);  // guards the command pool as well
    const VkCommandBufferAllocateInfo allocation{.sType =
                                                     VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO,
                                                 .commandPool = command_pool_,
                                                 .level = VK_COMMAND_BUFFER_LEVEL_PRIMARY,
                                                 .commandBufferCount = 1};
    VkCommandBuffer commands = VK_NULL_HANDLE;
    check(vkAllocateCommandBuffers(device_, &allocation, &commands), "vkAllocateCommandBuffers");
    const VkCommandBufferBeginInfo begin{.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO,
                                         .flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT};
    check(vkBeginCommandBuffer(commands, &begin), "vkBeginCommandBuffer");
    record_copy(commands, reinterpret_cast<VkImage>(texture), extent, level, staging.buffer());
    check(vkEndCommandBuffer(commands), "vkEndCommandBuffer");

    const VkSubmitInfo submit{.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO,
                              .commandBufferCount = 1,
                              .pCommandBuffers = &commands};
    check(vkQueueSubmit(queue_, 1, &submit, VK_NULL_HANDLE), "vkQueueSubmit");
    check(vkQueueWaitIdle(queue_), "vkQueueWaitIdle");
    vkFreeCommandBuffers(device_, command_pool_, 1, &commands);
    return Image(extent.width, extent.height, staging.bytes());
}

VulkanHost& host()
{
    if (!shared_host())
        shared_host() = std::make_unique<VulkanHost>();
    return *shared_host();
}

void release_host()
{
    shared_host().reset();
}

void check_validation()
{
    for (const std::string& message : validation_messages().take())
        ADD_FAILURE() << "message of the Vulkan validation layer: " << message;
}

}  // namespace marlune::test

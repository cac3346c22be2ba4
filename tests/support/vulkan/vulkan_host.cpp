#include "support/vulkan/vulkan_host.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

namespace marlune::test {

using vulkan::check;

namespace {

// A game's instance can show windows, so it has these extensions if the driver supports them.
const vulkan::Names window_extensions{"VK_KHR_surface", "VK_KHR_xcb_surface", "VK_KHR_xlib_surface",
                                      "VK_KHR_wayland_surface", "VK_KHR_win32_surface"};

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

VkDebugUtilsMessengerCreateInfoEXT messenger_info()
{
    // Not GENERAL: the loader uses it to report drivers that the machine lacks.
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

std::unique_ptr<VulkanHost>& shared_host()
{
    // Never deleted automatically: after main() the layer may already be unloaded.
    static auto* const host = new std::unique_ptr<VulkanHost>;
    return *host;
}

}  // namespace

VulkanHost::VulkanHost(const std::vector<const char*>& layers, uint32_t queues)
{
    create_instance(layers);
    physical_device_ = vulkan::first_physical_device(instance_);
    device_ = vulkan::create_device(physical_device_, {VK_KHR_SWAPCHAIN_EXTENSION_NAME}, queues);
    reader_.emplace(device_);
}

VulkanHost::~VulkanHost()
{
    reader_.reset();
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

    vulkan::Names extensions = vulkan::instance_extensions(window_extensions);
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

Image VulkanHost::read_back(uint64_t texture, uint32_t width, uint32_t height, uint32_t level)
{
    const VkExtent3D extent{std::max(1u, width >> level), std::max(1u, height >> level), 1};
    const vulkan::ReadableBuffer buffer(physical_device_, device_,
                                        VkDeviceSize(extent.width) * extent.height * 4);
    const VkBufferImageCopy whole{.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, level, 0, 1},
                                  .imageExtent = extent};
    const std::lock_guard lock(queue_mutex_);  // also guards the reader
    reader_->copy(texture, {&whole, 1}, buffer);
    return Image(extent.width, extent.height, {buffer.bytes().begin(), buffer.bytes().end()});
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

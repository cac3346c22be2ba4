#include "support/vulkan/driver_layer.h"

#include <vulkan/vk_layer.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

namespace marlune::test::driver_layer {

namespace {

struct Failure {
    int first = 0, last = 0;
    VkResult result = VK_SUCCESS;
};

std::mutex mutex;
std::map<std::string, int, std::less<>> call_counts, object_counts;
std::map<std::string, Failure, std::less<>> failures;
size_t cache_data = 0;

/** The result that the current call is to return; VK_SUCCESS passes the call on to the driver. */
VkResult count_call(std::string_view function)
{
    const std::lock_guard lock(mutex);
    const int number = ++call_counts[std::string(function)];
    const auto failure = failures.find(function);
    if (failure == failures.end())
        return VK_SUCCESS;
    const auto& [first, last, result] = failure->second;
    return number >= first && number <= last ? result : VK_SUCCESS;
}

void count_object(std::string_view kind, int change)
{
    const std::lock_guard lock(mutex);
    object_counts[std::string(kind)] += change;
}

// --- The second queue --------------------------------------------------------------------------

/**
 * The second queue of family 0, whose other queues are the driver's: its work goes to the driver's
 * queue 0.
 */
struct SecondQueue {
    void* dispatch_table = nullptr;  // the loader reads it
    VkQueue real = VK_NULL_HANDLE;
};

SecondQueue second_queue;
std::mutex queue_mutex;
uint32_t real_queues = 0;

VkQueue real_queue(VkQueue queue)
{
    const bool is_second = reinterpret_cast<void*>(queue) == &second_queue;
    return is_second ? second_queue.real : queue;
}

// --- Functions of the device -------------------------------------------------------------------

template <size_t size>
struct Name {
    char text[size];

    constexpr Name(const char (&name)[size]) { std::copy_n(name, size, text); }
    constexpr std::string_view view() const { return {text, size - 1}; }
    constexpr bool starts_with(std::string_view start) const { return view().starts_with(start); }
    constexpr bool contains(std::string_view part) const
    {
        return view().find(part) != view().npos;
    }
    /** "Image" of "vkCreateImage". */
    constexpr std::string_view kind(size_t verb) const { return view().substr(verb); }
};

constexpr size_t CREATE = std::string_view("vkCreate").size();
constexpr size_t DESTROY = std::string_view("vkDestroy").size();

template <Name name, typename Function>
struct Hook;

/** Functions that can fail. */
template <Name name, typename First, typename... Others>
struct Hook<name, VkResult(VKAPI_PTR*)(First, Others...)> {
    static inline VkResult(VKAPI_PTR* next)(First, Others...) = nullptr;

    static VKAPI_ATTR VkResult VKAPI_CALL call(First first, Others... others)
    {
        const VkResult failure = count_call(name.view());
        const auto last = std::get<sizeof...(Others)>(std::tie(first, others...));
        // A call that waits must still wait: the driver is still working.
        if (failure != VK_SUCCESS && !name.contains("Wait")) {
            if constexpr (name.starts_with("vkCreate"))
                *last = VK_NULL_HANDLE;
            return failure;
        }
        const VkResult result = pass_on(first, others...);
        if (result == VK_SUCCESS)
            note_object(others...);
        return failure != VK_SUCCESS ? failure : result;
    }

private:
    static VkResult pass_on(First first, Others... others)
    {
        if constexpr (std::is_same_v<First, VkQueue>) {
            const std::lock_guard lock(queue_mutex);
            return next(real_queue(first), others...);
        } else if constexpr (name.contains("DeviceWaitIdle")) {
            const std::lock_guard lock(queue_mutex);
            return next(first, others...);
        } else {
            return next(first, others...);
        }
    }

    static void note_object(Others... others)
    {
        if constexpr (name.contains("vkCreatePipelineCache")) {
            const std::lock_guard lock(mutex);
            cache_data = std::get<0>(std::tie(others...))->initialDataSize;
        }
        // Qt creates pipelines one by one.
        if constexpr (name.starts_with("vkCreateGraphicsPipelines"))
            count_object("Pipeline", 1);
        else if constexpr (name.starts_with("vkCreate"))
            count_object(name.kind(CREATE), 1);
        else if constexpr (name.contains("vkAllocateMemory"))
            count_object("Memory", 1);
    }
};

/** Functions that destroy objects. */
template <Name name, typename Object>
struct Hook<name, void(VKAPI_PTR*)(VkDevice, Object, const VkAllocationCallbacks*)> {
    static inline void(VKAPI_PTR* next)(VkDevice, Object, const VkAllocationCallbacks*) = nullptr;

    static VKAPI_ATTR void VKAPI_CALL call(VkDevice device, Object object,
                                           const VkAllocationCallbacks* allocator)
    {
        if (object != VK_NULL_HANDLE)
            count_object(name.contains("vkFreeMemory") ? "Memory" : name.kind(DESTROY), -1);
        next(device, object, allocator);
    }
};

struct Entry {
    std::string_view name;
    PFN_vkVoidFunction hook;
    void (*set_next)(PFN_vkVoidFunction);
};

template <Name name, typename Function>
Entry entry()
{
    using ThisHook = Hook<name, Function>;
    return {name.view(), reinterpret_cast<PFN_vkVoidFunction>(&ThisHook::call),
            [](PFN_vkVoidFunction next) { ThisHook::next = reinterpret_cast<Function>(next); }};
}

#define ENTRY(function) entry<#function, PFN_##function>()

const std::vector<Entry>& entries()
{
    static const std::vector<Entry> all = {
        ENTRY(vkAllocateCommandBuffers),
        ENTRY(vkAllocateDescriptorSets),
        ENTRY(vkAllocateMemory),
        ENTRY(vkBeginCommandBuffer),
        ENTRY(vkBindBufferMemory),
        ENTRY(vkBindImageMemory),
        ENTRY(vkCreateBuffer),
        ENTRY(vkCreateCommandPool),
        ENTRY(vkCreateDescriptorPool),
        ENTRY(vkCreateDescriptorSetLayout),
        ENTRY(vkCreateFence),
        ENTRY(vkCreateFramebuffer),
        ENTRY(vkCreateGraphicsPipelines),
        ENTRY(vkCreateImage),
        ENTRY(vkCreateImageView),
        ENTRY(vkCreatePipelineCache),
        ENTRY(vkCreatePipelineLayout),
        ENTRY(vkCreateQueryPool),
        ENTRY(vkCreateRenderPass),
        ENTRY(vkCreateSampler),
        ENTRY(vkCreateShaderModule),
        ENTRY(vkDestroyBuffer),
        ENTRY(vkDestroyCommandPool),
        ENTRY(vkDestroyDescriptorPool),
        ENTRY(vkDestroyDescriptorSetLayout),
        ENTRY(vkDestroyFence),
        ENTRY(vkDestroyFramebuffer),
        ENTRY(vkDestroyImage),
        ENTRY(vkDestroyImageView),
        ENTRY(vkDestroyPipeline),
        ENTRY(vkDestroyPipelineCache),
        ENTRY(vkDestroyPipelineLayout),
        ENTRY(vkDestroyQueryPool),
        ENTRY(vkDestroyRenderPass),
        ENTRY(vkDestroySampler),
        ENTRY(vkDestroyShaderModule),
        ENTRY(vkDeviceWaitIdle),
        ENTRY(vkEndCommandBuffer),
        ENTRY(vkFreeMemory),
        ENTRY(vkGetPipelineCacheData),
        ENTRY(vkGetQueryPoolResults),
        ENTRY(vkMapMemory),
        ENTRY(vkQueueSubmit),
        ENTRY(vkQueueWaitIdle),
        ENTRY(vkResetCommandPool),
        ENTRY(vkResetDescriptorPool),
        ENTRY(vkResetFences),
        ENTRY(vkWaitForFences),
    };
    return all;
}

PFN_vkVoidFunction hook(std::string_view name)
{
    const auto found = std::find_if(entries().begin(), entries().end(),
                                    [name](const Entry& entry) { return entry.name == name; });
    return found == entries().end() ? nullptr : found->hook;
}

// --- The interface of a layer; see the loader's documentation of layers --------------------------

PFN_vkGetInstanceProcAddr next_of_instance = nullptr;
PFN_vkGetDeviceProcAddr next_of_device = nullptr;
VkInstance instance = VK_NULL_HANDLE;

template <typename Function>
Function next_function(const char* name)
{
    return reinterpret_cast<Function>(next_of_instance(instance, name));
}

/** The loader's entry in the list that it passes to each layer. */
template <typename Info>
Info* layer_link(const void* list, VkStructureType type)
{
    auto* info = static_cast<Info*>(const_cast<void*>(list));
    while (info && (info->sType != type || info->function != VK_LAYER_LINK_INFO))
        info = static_cast<Info*>(const_cast<void*>(info->pNext));
    return info;
}

VKAPI_ATTR VkResult VKAPI_CALL create_instance(const VkInstanceCreateInfo* info,
                                               const VkAllocationCallbacks* allocator,
                                               VkInstance* created)
{
    auto* const link = layer_link<VkLayerInstanceCreateInfo>(
        info->pNext, VK_STRUCTURE_TYPE_LOADER_INSTANCE_CREATE_INFO);
    next_of_instance = link->u.pLayerInfo->pfnNextGetInstanceProcAddr;
    link->u.pLayerInfo = link->u.pLayerInfo->pNext;
    instance = VK_NULL_HANDLE;
    const auto create = next_function<PFN_vkCreateInstance>("vkCreateInstance");
    const VkResult result = create(info, allocator, created);
    instance = result == VK_SUCCESS ? *created : VK_NULL_HANDLE;
    return result;
}

VKAPI_ATTR void VKAPI_CALL get_queue_families(VkPhysicalDevice physical_device, uint32_t* count,
                                              VkQueueFamilyProperties* families)
{
    next_function<PFN_vkGetPhysicalDeviceQueueFamilyProperties>(
        "vkGetPhysicalDeviceQueueFamilyProperties")(physical_device, count, families);
    if (!families || *count == 0)
        return;
    real_queues = families[0].queueCount;
    ++families[0].queueCount;
}

VKAPI_ATTR void VKAPI_CALL get_queue_families_2(VkPhysicalDevice physical_device, uint32_t* count,
                                                VkQueueFamilyProperties2* families)
{
    next_function<PFN_vkGetPhysicalDeviceQueueFamilyProperties2>(
        "vkGetPhysicalDeviceQueueFamilyProperties2")(physical_device, count, families);
    if (families && *count > 0)
        ++families[0].queueFamilyProperties.queueCount;
}

VKAPI_ATTR VkResult VKAPI_CALL create_device(VkPhysicalDevice physical_device,
                                             const VkDeviceCreateInfo* info,
                                             const VkAllocationCallbacks* allocator,
                                             VkDevice* device)
{
    auto* const link = layer_link<VkLayerDeviceCreateInfo>(
        info->pNext, VK_STRUCTURE_TYPE_LOADER_DEVICE_CREATE_INFO);
    next_of_device = link->u.pLayerInfo->pfnNextGetDeviceProcAddr;
    link->u.pLayerInfo = link->u.pLayerInfo->pNext;

    std::vector<VkDeviceQueueCreateInfo> queues(
        info->pQueueCreateInfos, info->pQueueCreateInfos + info->queueCreateInfoCount);
    for (VkDeviceQueueCreateInfo& queue : queues)
        queue.queueCount = std::min(queue.queueCount, std::max(real_queues, 1u));
    VkDeviceCreateInfo for_driver = *info;
    for_driver.pQueueCreateInfos = queues.data();
    const VkResult result = next_function<PFN_vkCreateDevice>("vkCreateDevice")(
        physical_device, &for_driver, allocator, device);
    if (result != VK_SUCCESS)
        return result;

    for (const Entry& entry : entries())
        entry.set_next(next_of_device(*device, std::string(entry.name).c_str()));
    return result;
}

VKAPI_ATTR void VKAPI_CALL get_queue(VkDevice device, uint32_t family, uint32_t index,
                                     VkQueue* queue)
{
    const auto get =
        reinterpret_cast<PFN_vkGetDeviceQueue>(next_of_device(device, "vkGetDeviceQueue"));
    if (family != 0 || index < real_queues || real_queues == 0)
        return get(device, family, index, queue);
    second_queue.dispatch_table = *reinterpret_cast<void**>(device);
    get(device, 0, 0, &second_queue.real);
    *queue = reinterpret_cast<VkQueue>(&second_queue);
}

VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL device_function(VkDevice device, const char* name)
{
    const std::string_view wanted = name;
    if (wanted == "vkGetDeviceProcAddr")
        return reinterpret_cast<PFN_vkVoidFunction>(&device_function);
    if (wanted == "vkGetDeviceQueue")
        return reinterpret_cast<PFN_vkVoidFunction>(&get_queue);
    const PFN_vkVoidFunction own = hook(wanted);
    return own ? own : next_of_device(device, name);
}

VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL instance_function(VkInstance of, const char* name)
{
    const std::string_view wanted = name;
    if (wanted == "vkGetInstanceProcAddr")
        return reinterpret_cast<PFN_vkVoidFunction>(&instance_function);
    if (wanted == "vkGetDeviceProcAddr")
        return reinterpret_cast<PFN_vkVoidFunction>(&device_function);
    if (wanted == "vkCreateInstance")
        return reinterpret_cast<PFN_vkVoidFunction>(&create_instance);
    if (wanted == "vkCreateDevice")
        return reinterpret_cast<PFN_vkVoidFunction>(&create_device);
    if (wanted == "vkGetPhysicalDeviceQueueFamilyProperties")
        return reinterpret_cast<PFN_vkVoidFunction>(&get_queue_families);
    if (wanted.starts_with("vkGetPhysicalDeviceQueueFamilyProperties2"))
        return reinterpret_cast<PFN_vkVoidFunction>(&get_queue_families_2);
    if (wanted == "vkGetDeviceQueue")
        return reinterpret_cast<PFN_vkVoidFunction>(&get_queue);
    const PFN_vkVoidFunction own = hook(wanted);
    return own ? own : next_of_instance(of, name);
}

}  // namespace

void announce()
{
    setenv("VK_ADD_LAYER_PATH", MARLUNE_DRIVER_LAYER_FOLDER, 1);
}

void fail_call(const std::string& function, int nth, VkResult result)
{
    const std::lock_guard lock(mutex);
    const int number = call_counts[function] + nth;
    failures[function] = {number, number, result};
}

void fail_calls(const std::string& function, VkResult result)
{
    const std::lock_guard lock(mutex);
    failures[function] = {0, std::numeric_limits<int>::max(), result};
}

void forget()
{
    const std::lock_guard lock(mutex);
    failures.clear();
    call_counts.clear();
}

std::map<std::string, int> calls()
{
    const std::lock_guard lock(mutex);
    return {call_counts.begin(), call_counts.end()};
}

std::map<std::string, int> objects()
{
    const std::lock_guard lock(mutex);
    std::map<std::string, int> living(object_counts.begin(), object_counts.end());
    std::erase_if(living, [](const auto& kind) { return kind.second == 0; });
    return living;
}

size_t pipeline_cache_data()
{
    const std::lock_guard lock(mutex);
    return cache_data;
}

}  // namespace marlune::test::driver_layer

extern "C" VKAPI_ATTR VkResult VKAPI_CALL
vkNegotiateLoaderLayerInterfaceVersion(VkNegotiateLayerInterface* interface)
{
    using namespace marlune::test::driver_layer;
    interface->loaderLayerInterfaceVersion = 2;
    interface->pfnGetInstanceProcAddr = &instance_function;
    interface->pfnGetDeviceProcAddr = &device_function;
    interface->pfnGetPhysicalDeviceProcAddr = nullptr;
    return VK_SUCCESS;
}

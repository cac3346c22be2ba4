#include "views/loader_lock.h"

#include <QVulkanInstance>

#include <cstddef>
#include <cstdlib>

namespace marlune {

namespace {

// The loader does not expose its lock, but allocates memory while it holds it. So the work runs in
// the allocation callback of an instance to be created; the callback then fails, and no instance
// is created.
class Allocator {
public:
    explicit Allocator(const std::function<void()>& work) : work_(work) {}

    const VkAllocationCallbacks& callbacks() const { return callbacks_; }

    void do_work()
    {
        if (is_done_)
            return;
        is_done_ = true;
        work_();
    }

private:
    static void* VKAPI_PTR allocate(void* self, size_t size, size_t alignment,
                                    VkSystemAllocationScope)
    {
        auto* const allocator = static_cast<Allocator*>(self);
        // The first one, of the instance itself, comes before the lock is taken.
        if (allocator->allocations_++ > 0) {
            allocator->do_work();
            return nullptr;
        }
        return alignment <= alignof(std::max_align_t) ? std::malloc(size) : nullptr;
    }

    static void* VKAPI_PTR reallocate(void* self, void* memory, size_t size, size_t alignment,
                                      VkSystemAllocationScope scope)
    {
        return memory ? nullptr : allocate(self, size, alignment, scope);
    }

    static void VKAPI_PTR release(void*, void* memory) { std::free(memory); }

    const std::function<void()>& work_;
    bool is_done_ = false;
    int allocations_ = 0;
    const VkAllocationCallbacks callbacks_{this, allocate, reallocate, release, nullptr, nullptr};
};

VkBool32 VKAPI_PTR ignore_message(VkDebugUtilsMessageSeverityFlagBitsEXT,
                                  VkDebugUtilsMessageTypeFlagsEXT,
                                  const VkDebugUtilsMessengerCallbackDataEXT*, void*)
{
    return VK_FALSE;
}

}  // namespace

void with_loader_locked(QVulkanInstance& instance, const std::function<void()>& work)
{
    const auto look_up = reinterpret_cast<PFN_vkGetInstanceProcAddr>(
        instance.getInstanceProcAddr("vkGetInstanceProcAddr"));
    const auto create =
        reinterpret_cast<PFN_vkCreateInstance>(look_up(VK_NULL_HANDLE, "vkCreateInstance"));

    Allocator allocator(work);
    // Memory for this is the first that the loader allocates under its lock.
    VkDebugUtilsMessengerCreateInfoEXT messenger{};
    messenger.sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_MESSENGER_CREATE_INFO_EXT;
    messenger.messageSeverity = VK_DEBUG_UTILS_MESSAGE_SEVERITY_ERROR_BIT_EXT;
    messenger.messageType = VK_DEBUG_UTILS_MESSAGE_TYPE_GENERAL_BIT_EXT;
    messenger.pfnUserCallback = ignore_message;
    VkInstanceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
    info.pNext = &messenger;
    VkInstance none = VK_NULL_HANDLE;
    create(&info, &allocator.callbacks(), &none);
    allocator.do_work();
}

}  // namespace marlune

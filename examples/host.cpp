// A complete host in one file: it makes a Vulkan device, starts the library, shows five views for three
// seconds with some input, and writes what they show to PNG files.
//
//     marlune-demo [FOLDER]      (default: out)
//
// The project root, in which the library finds Qt's files, is read from MARLUNE_PROJECT_ROOT.

#include <marlune/marlune.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;

constexpr int FRAMES = 180;  // three seconds
constexpr auto FRAME_TIME = 1'000'000us / 60;

void check(VkResult result, const char* call)
{
    if (result != VK_SUCCESS)
        throw std::runtime_error(std::string(call) + " failed: VkResult " + std::to_string(result));
}

// --- The game's device -------------------------------------------------------------------------

// The library draws on queue 0 of queue family 0 of the device that it is given.
class Gpu {
public:
    Gpu()
    {
        // A game shows windows, and Qt looks for what goes with them.
        const std::vector<std::string> names = window_extensions();
        std::vector<const char*> extensions;
        for (const std::string& name : names)
            extensions.push_back(name.c_str());
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
        const VkDeviceCreateInfo device_info{.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO,
                                             .queueCreateInfoCount = 1,
                                             .pQueueCreateInfos = &queue_info};
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
};

// --- Reading a texture back --------------------------------------------------------------------
// A game samples the texture where it is. This demo wants it in files, and so copies it to a buffer.

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

VkImageMemoryBarrier barrier(VkImage image, uint32_t level, VkImageLayout from, VkImageLayout to,
                             VkAccessFlags before, VkAccessFlags after)
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

// The library leaves the texture in the layout of a colour attachment, and wants it back in the same.
void record_copy(VkCommandBuffer commands, VkImage image, uint32_t level, VkExtent3D extent,
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

void run_copy(const Gpu& gpu, VkImage image, uint32_t level, VkExtent3D extent, VkBuffer buffer)
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

// PNG wants straight alpha; the texture's is premultiplied.
void unpremultiply(std::vector<uint8_t>& rgba)
{
    for (size_t i = 0; i < rgba.size(); i += 4) {
        const int alpha = rgba[i + 3];
        for (size_t channel = i; alpha > 0 && channel < i + 3; ++channel)
            rgba[channel] = uint8_t(std::min(255, (rgba[channel] * 255 + alpha / 2) / alpha));
    }
}

void save_level(const Gpu& gpu, uint64_t texture, uint32_t width, uint32_t height, uint32_t level,
                const std::filesystem::path& file)
{
    const VkExtent3D extent{std::max(1u, width >> level), std::max(1u, height >> level), 1};
    const ReadbackBuffer target(gpu, VkDeviceSize(extent.width) * extent.height * 4);
    run_copy(gpu, reinterpret_cast<VkImage>(texture), level, extent, target.buffer);
    std::vector<uint8_t> pixels = target.bytes();
    unpremultiply(pixels);
    const int stride = int(extent.width) * 4;
    if (!stbi_write_png(file.string().c_str(), int(extent.width), int(extent.height), 4,
                        pixels.data(), stride))
        throw std::runtime_error("cannot write " + file.string());
}

// --- The library and its views -----------------------------------------------------------------

// Started once a process, stopped when all views are gone and before the device goes.
struct Library {
    Library() { marlune::M::create_app(); }
    ~Library() { marlune::M::destroy(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

struct Screen {
    const char* module;
    const char* component;
    uint32_t width, height;
    bool mipmaps;

    marlune::MQuickView view{};
    int asked = 0;
    int drawn = 0;
    Milliseconds drawing_time{0};

    // A facade does not end its view by itself.
    ~Screen() { view.destroy(); }
};

void open(Screen& screen, Gpu& gpu)
{
    screen.view.set_view_monitor(gpu.instance);
    screen.view.set_statistics_monitor(gpu.physical_device, gpu.device);
    screen.view.set_resolution({screen.width, screen.height});
    screen.view.set_mipmaps_enabled(screen.mipmaps);
    if (!screen.view.load(screen.module, screen.component))
        throw std::runtime_error(std::string("cannot load ") + screen.component);
}

// A player with one pointer, which visits one view after the other: circles, clicks, scrolls, types.
void feed_input(const Screen& screen, int frame)
{
    constexpr uint32_t key_right = 0x01000014, key_space = 0x20;  // values of Qt::Key
    const double angle = frame * 0.1;
    const auto x = uint32_t(screen.width * (0.5 + 0.3 * std::cos(angle)));
    const auto y = uint32_t(screen.height * (0.5 + 0.3 * std::sin(angle)));
    screen.view.mouse_move(x, y);
    switch (frame) {
    case 6:
        screen.view.mouse_click(0, 0, x, y);
        break;
    case 10:
        screen.view.mouse_click(0, 1, x, y);
        break;
    case 14:
        screen.view.mouse_wheel_down(x, y);
        break;
    case 18:
        screen.view.mouse_wheel_up(x, y);
        break;
    case 22:
        screen.view.key_event(key_right, 0, "");
        break;
    case 23:
        screen.view.key_event(key_right, 1, "");
        break;
    case 28:
        screen.view.key_event(key_space, 0, " ");
        break;
    case 29:
        screen.view.key_event(key_space, 1, " ");
        break;
    default:
        break;
    }
}

// What a call costs that does nothing: the way to the library's thread and back.
Milliseconds cost_of_an_empty_call(const marlune::MView& view)
{
    std::array<Milliseconds, 101> times;
    for (Milliseconds& time : times) {
        const auto start = Clock::now();
        view.get_mips_count();
        time = Clock::now() - start;
    }
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
}

// render() does not tell whether a frame was due. One that was drawn has waited for the GPU, and so has
// taken many times as long as an empty call.
void render(Screen& screen, Milliseconds empty_call)
{
    const auto start = Clock::now();
    screen.view.render();
    const Milliseconds time = Clock::now() - start;
    ++screen.asked;
    if (time < 4 * empty_call)
        return;
    ++screen.drawn;
    screen.drawing_time += time;
}

void play(std::span<Screen> screens)
{
    const Milliseconds empty_call = cost_of_an_empty_call(screens.front().view);
    auto next_frame = Clock::now();
    const int visit = FRAMES / int(screens.size());
    for (int frame = 0; frame < FRAMES; ++frame) {
        feed_input(screens[std::min(size_t(frame / visit), screens.size() - 1)], frame % visit);
        for (Screen& screen : screens)
            render(screen, empty_call);
        next_frame = std::max(next_frame + FRAME_TIME, Clock::now());
        std::this_thread::sleep_until(next_frame);
    }
}

// Without mipmaps only level 0 has content.
int levels_of(const Screen& screen)
{
    return screen.mipmaps ? screen.view.get_mips_count() : 1;
}

void save(const Screen& screen, const Gpu& gpu, const std::filesystem::path& folder)
{
    for (int level = 0; level < levels_of(screen); ++level) {
        std::string name = screen.component;
        if (level > 0)
            name += "-mip" + std::to_string(level);
        save_level(gpu, screen.view.get_texture(), screen.width, screen.height, uint32_t(level),
                   folder / (name + ".png"));
    }
}

void print_table(std::span<const Screen> screens)
{
    std::printf("%-16s %11s %6s %6s %9s %6s\n", "view", "size", "asked", "drawn", "ms/frame",
                "levels");
    for (const Screen& screen : screens) {
        const std::string size =
            std::to_string(screen.width) + " x " + std::to_string(screen.height);
        const double average = screen.drawn ? screen.drawing_time.count() / screen.drawn : 0;
        std::printf("%-16s %11s %6d %6d %9.2f %6d\n", screen.component, size.c_str(), screen.asked,
                    screen.drawn, average, levels_of(screen));
    }
}

void run(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    Gpu gpu;
    const Library library;
    Screen screens[] = {
        {"Splash", "Splash", 1280, 720, false},   {"Splash", "StackViewFancy", 960, 540, false},
        {"Debug", "Debug", 640, 360, false},      {"Debug", "DebugVideo", 512, 512, true},
        {"Debug", "DebugMouse", 800, 600, false},
    };
    for (Screen& screen : screens)
        open(screen, gpu);
    play(screens);
    for (const Screen& screen : screens)
        save(screen, gpu, folder);
    print_table(screens);
    std::printf("pictures are in %s\n", folder.string().c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        const char* root = std::getenv("MARLUNE_PROJECT_ROOT");
        if (!root)
            throw std::runtime_error("set MARLUNE_PROJECT_ROOT to the project's root directory");
        marlune::opts::PATH_PROJECT_ROOT = root;
        run(argc > 1 ? argv[1] : "out");
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "marlune-demo: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

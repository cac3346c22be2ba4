// A complete host: it starts the library, shows five views with some input for three seconds on a
// Vulkan device, and writes their textures to PNG files.
//
//     marlune-demo [FOLDER]      (default: out)
//
// The project root, which contains Qt's files, is read from MARLUNE_PROJECT_ROOT.

#define STB_IMAGE_WRITE_IMPLEMENTATION
#include "game.h"

#include <marlune/marlune.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using namespace example;

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using namespace std::chrono_literals;

constexpr int FRAMES = 180;  // three seconds
constexpr auto FRAME_TIME = 1'000'000us / 60;

struct Screen {
    const char* module;
    const char* component;
    uint32_t width, height;
    bool mipmaps;

    marlune::MQuickView view{};
    int asked = 0;
    int drawn = 0;
    Milliseconds drawing_time{0};

    // A facade does not destroy its view by itself.
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

// A player with one pointer, which visits the views one after the other: it circles, clicks,
// scrolls and types.
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

// Measures the cost of an empty call: the way to the Qt thread and back.
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

// render() does not report whether a frame was due. A call that drew a frame has waited for the
// GPU, and has thus taken many times as long as an empty call.
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
        save_png(
            read_back(gpu, screen.view.get_texture(), screen.width, screen.height, uint32_t(level)),
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
    std::printf("the images are in %s\n", folder.string().c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        run(argc > 1 ? argv[1] : "out");
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "marlune-demo: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

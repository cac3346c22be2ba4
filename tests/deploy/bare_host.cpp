// A host like a game: it links the library and Vulkan, no Qt, and from the tests' code a camera
// alone. It shows one view of each kind, checks the content of the images, and writes them to a
// folder.
//
//     bare-host OUT CLIP [VIEW]       CLIP shows four quarters: red and green, blue and white below
//     bare-host --compare ONE OTHER   whether the images in two folders are the same
//
// The project root is read from MARLUNE_PROJECT_ROOT. With SANDBOXED in the environment, all pages
// in /proc must be in the engine's sandbox. The host paints the whole screen for the screen
// capture.

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include "../../examples/game.h"
#include "support/media/fake_camera.h"

#include <stb_image.h>

#include <marlune/marlune.h>

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace example;
using namespace std::chrono_literals;

constexpr uint32_t WIDTH = 640, HEIGHT = 360;

// A view is drawn until it shows the expected content and does not change for this many frames.
constexpr int STILL_FRAMES = 20;
constexpr auto CAP = 30s;

// --- The expected images -----------------------------------------------------------------------

struct Colour {
    int red, green, blue;
};

constexpr Colour RED{255, 0, 0}, GREEN{0, 255, 0}, BLUE{0, 0, 255}, WHITE{255, 255, 255};

bool has_at(const Picture& picture, double x, double y, Colour colour)
{
    constexpr int tolerance = 12;  // a clip's colours have been through a codec
    const size_t index =
        (size_t(picture.height * y) * picture.width + size_t(picture.width * x)) * 4;
    const uint8_t* const pixel = picture.rgba.data() + index;
    return std::abs(pixel[0] - colour.red) <= tolerance
        && std::abs(pixel[1] - colour.green) <= tolerance
        && std::abs(pixel[2] - colour.blue) <= tolerance && pixel[3] == 255;
}

// At the middles of the quarters.
bool has_quarters(const Picture& picture)
{
    return has_at(picture, 0.25, 0.25, RED) && has_at(picture, 0.75, 0.25, GREEN)
        && has_at(picture, 0.25, 0.75, BLUE) && has_at(picture, 0.75, 0.75, WHITE);
}

// A drawn scene has many colours, because its text has smooth edges and shades.
bool has_many_colours(const Picture& picture)
{
    std::set<uint32_t> colours;
    for (size_t i = 0; i < picture.rgba.size() && colours.size() < 40; i += 4) {
        uint32_t colour = 0;
        std::memcpy(&colour, picture.rgba.data() + i, 4);
        colours.insert(colour);
    }
    return colours.size() >= 40;
}

// --- The views ---------------------------------------------------------------------------------

void set_up(marlune::MView& view, Gpu& gpu)
{
    view.set_view_monitor(gpu.instance);
    view.set_statistics_monitor(gpu.physical_device, gpu.device);
    view.set_resolution({WIDTH, HEIGHT});
}

template <typename View>
std::shared_ptr<View> make_view(Gpu& gpu)
{
    auto view = std::make_shared<View>();
    set_up(*view, gpu);
    return view;
}

void load(const marlune::MQuickView& view, const char* module, const char* component)
{
    if (!view.load(module, component))
        throw std::runtime_error(std::string("cannot load ") + component);
}

// A script paints three quarters, a style sheet the fourth; a text shows whether fonts are found.
constexpr const char* PAGE = R"(<!doctype html><meta charset="utf-8">
<style>body { margin: 0; background: #fff; font: 24px "DejaVu Sans", sans-serif }</style>
<canvas width="640" height="360" style="position: absolute"></canvas>
<p style="position: absolute; left: 40px; top: 10px; margin: 0; color: #fff">Größe</p>
<script>
const pen = document.querySelector("canvas").getContext("2d");
for (const [colour, x, y] of [["#f00", 0, 0], ["#0f0", 320, 0], ["#00f", 0, 180]]) {
    pen.fillStyle = colour;
    pen.fillRect(x, y, 320, 180);
}
</script>)";

std::shared_ptr<marlune::MView> make_scene(Gpu& gpu, const std::string&)
{
    auto view = make_view<marlune::MQuickView>(gpu);
    load(*view, "Debug", "DebugMouse");
    return view;
}

std::shared_ptr<marlune::MView> make_page(Gpu& gpu, const std::string&)
{
    auto view = make_view<marlune::MWebView>(gpu);
    view->set_zoom_factor(100);
    if (!view->load())
        throw std::runtime_error("cannot load a page");
    view->load_html(PAGE, "");
    return view;
}

std::shared_ptr<marlune::MView> make_video(Gpu& gpu, const std::string& clip)
{
    auto view = make_view<marlune::MVideoPlayerView>(gpu);
    view->set_controls(false);
    view->set_fill_mode(0);  // stretched
    view->set_source("file://" + clip);
    load(*view, "Multimedia", "VideoPlayer");
    return view;
}

std::shared_ptr<marlune::MView> make_camera(Gpu& gpu, const std::string&)
{
    auto view = make_view<marlune::MCameraView>(gpu);
    view->set_fill_mode(0);  // stretched
    view->set_camera_hint("Webcam");
    load(*view, "Multimedia", "Camera");
    view->start();
    return view;
}

std::shared_ptr<marlune::MView> make_screen_capture(Gpu& gpu, const std::string&)
{
    auto view = make_view<marlune::MScreenCaptureView>(gpu);
    load(*view, "Multimedia", "ScreenCapture");
    return view;
}

struct Kind {
    const char* name;
    std::shared_ptr<marlune::MView> (*make)(Gpu& gpu, const std::string& clip);
    bool (*is_right)(const Picture& picture);
    bool has_frame_number = false;
};

constexpr Kind KINDS[] = {
    {"scene", make_scene, has_many_colours},       {"page", make_page, has_quarters},
    {"video", make_video, has_quarters},           {"camera", make_camera, has_quarters, true},
    {"screen", make_screen_capture, has_quarters},
};

struct Screen {
    const Kind& kind;
    std::shared_ptr<marlune::MView> view;
    Picture picture{};
    int still_for = 0;
};

// The camera draws the number of each frame into its image: the one part that always changes.
void cover_frame_number(Picture& picture)
{
    constexpr auto number = marlune::test::CAMERA_NUMBER;
    constexpr uint32_t x_scale = WIDTH / marlune::test::CAMERA_WIDTH, margin = 4;
    constexpr uint32_t left = number.x * x_scale - margin;
    constexpr uint32_t width = number.width * x_scale + 2 * margin;
    const uint32_t top = number.y * HEIGHT / marlune::test::CAMERA_HEIGHT - margin;
    const uint32_t bottom =
        top + number.height * HEIGHT / marlune::test::CAMERA_HEIGHT + 2 * margin;
    for (uint32_t y = top; y < bottom; ++y)
        std::memset(picture.rgba.data() + (size_t(y) * WIDTH + left) * 4, 0, size_t(width) * 4);
}

void draw(Screen& screen, const Gpu& gpu)
{
    screen.view->render();
    Picture picture = read_back(gpu, screen.view->get_texture(), WIDTH, HEIGHT);
    if (screen.kind.has_frame_number)
        cover_frame_number(picture);
    const bool still = picture.rgba == screen.picture.rgba && screen.kind.is_right(picture);
    screen.still_for = still ? screen.still_for + 1 : 0;
    screen.picture = std::move(picture);
}

bool is_done(const Screen& screen)
{
    return screen.still_for >= STILL_FRAMES;
}

void show(std::vector<Screen>& screens, const Gpu& gpu)
{
    const auto end = std::chrono::steady_clock::now() + CAP;
    while (!std::ranges::all_of(screens, is_done) && std::chrono::steady_clock::now() < end) {
        for (Screen& screen : screens) {
            if (!is_done(screen))
                draw(screen, gpu);
        }
        std::this_thread::sleep_for(1000ms / 60);
    }
}

// --- The screen --------------------------------------------------------------------------------

// Shows the quarters on the display during its lifetime.
class PaintedScreen {
public:
    PaintedScreen()
    {
        if (xcb_connection_has_error(connection_))
            throw std::runtime_error("there is no display");
        const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        const auto width = uint16_t(screen.width_in_pixels / 2);
        const auto height = uint16_t(screen.height_in_pixels / 2);
        // Without a window manager in between, and above all others.
        constexpr std::array<std::array<uint32_t, 3>, 4> quarters = {
            {{0, 0, 0xff0000}, {1, 0, 0x00ff00}, {0, 1, 0x0000ff}, {1, 1, 0xffffff}}};
        for (const auto& [column, row, colour] : quarters) {
            const std::array<uint32_t, 2> values = {colour, 1};
            const xcb_window_t window = xcb_generate_id(connection_);
            xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen.root,
                              int16_t(column * width), int16_t(row * height), width, height, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                              XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());
            xcb_map_window(connection_, window);
        }
        xcb_flush(connection_);
    }
    ~PaintedScreen() { xcb_disconnect(connection_); }
    PaintedScreen(const PaintedScreen&) = delete;
    PaintedScreen& operator=(const PaintedScreen&) = delete;

private:
    xcb_connection_t* connection_ = xcb_connect(nullptr, nullptr);
};

// --- The sandbox -------------------------------------------------------------------------------

std::string read_text(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Page processes have the command line of the process that forks them. Only they have this thread.
bool is_page(const std::filesystem::path& process)
{
    std::error_code gone;
    for (const auto& thread : std::filesystem::directory_iterator(process / "task", gone)) {
        if (read_text(thread.path() / "comm") == "Compositor\n")
            return true;
    }
    return false;
}

// Whether pages exist, and the kernel filters the system calls of each of their processes.
bool are_pages_sandboxed()
{
    int pages = 0, sandboxed = 0;
    for (const auto& process : std::filesystem::directory_iterator("/proc")) {
        if (!is_page(process.path()))
            continue;
        ++pages;
        sandboxed +=
            read_text(process.path() / "status").find("\nSeccomp:\t2") != std::string::npos;
    }
    std::printf("%d of %d processes of pages are sandboxed\n", sandboxed, pages);
    return pages > 0 && sandboxed == pages;
}

// --- Comparing ---------------------------------------------------------------------------------

Picture read_png(const std::filesystem::path& file)
{
    int width = 0, height = 0, channels = 0;
    uint8_t* const bytes = stbi_load(file.string().c_str(), &width, &height, &channels, 4);
    if (!bytes)
        throw std::runtime_error("cannot read " + file.string());
    Picture picture{
        uint32_t(width), uint32_t(height), {bytes, bytes + size_t(width) * size_t(height) * 4}};
    stbi_image_free(bytes);
    return picture;
}

// Drivers of different versions may round a colour differently, by one or two.
size_t count_differences(const Picture& one, const Picture& other)
{
    size_t count = 0;
    for (size_t i = 0; i < one.rgba.size(); i += 4) {
        bool same = true;
        for (size_t channel = i; channel < i + 4; ++channel)
            same &= std::abs(one.rgba[channel] - other.rgba[channel]) <= 2;
        count += !same;
    }
    return count;
}

int compare(const std::filesystem::path& one, const std::filesystem::path& other)
{
    int compared = 0, different = 0;
    for (const auto& entry : std::filesystem::directory_iterator(one)) {
        const std::filesystem::path name = entry.path().filename();
        const Picture a = read_png(entry.path()), b = read_png(other / name);
        const bool same_size = a.width == b.width && a.height == b.height;
        const size_t count = same_size ? count_differences(a, b) : a.rgba.size() / 4;
        std::printf("%-12s %zu pixels differ\n", name.string().c_str(), count);
        ++compared;
        different += count > 0;
    }
    return compared > 0 && different == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

int run(const std::filesystem::path& folder, const std::string& clip, const std::string& only)
{
    std::filesystem::create_directories(folder);
    Gpu gpu;
    const PaintedScreen painted;
    marlune::test::plug_cameras({{.name = "Webcam"}});
    marlune::opts::SANDBOXED = std::getenv("SANDBOXED") != nullptr;
    const Library library;
    std::vector<Screen> screens;
    for (const Kind& kind : KINDS) {
        if (only.empty() || kind.name == only)
            screens.push_back({kind, kind.make(gpu, clip)});
    }
    show(screens, gpu);
    const bool safe = !marlune::opts::SANDBOXED || are_pages_sandboxed();
    for (const Screen& screen : screens) {
        std::printf("%-8s %s\n", screen.kind.name, is_done(screen) ? "right" : "WRONG");
        save_png(screen.picture, folder / (std::string(screen.kind.name) + ".png"));
        screen.view->destroy();
    }
    return safe && std::ranges::all_of(screens, is_done) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    try {
        if (argc == 4 && std::string(argv[1]) == "--compare")
            return compare(argv[2], argv[3]);
        if (argc == 3 || argc == 4)
            return run(argv[1], argv[2], argc > 3 ? argv[3] : "");
        throw std::runtime_error("usage: bare-host OUT CLIP [VIEW] | --compare ONE OTHER");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bare-host: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

// Videos, cameras and screens: shows a film with its controls, the machine's first camera or the
// reason why there is none, and its first screen for some seconds, and writes them to PNG files.
//
//     marlune-media FILM [FOLDER]      (default: out)
//     marlune-media --paint FILE       paints the picture that examples/make_film.sh uses
//
// The project root, which contains Qt's files, is read from MARLUNE_PROJECT_ROOT.

#define STB_IMAGE_WRITE_IMPLEMENTATION
#include "game.h"
#include "landscape.h"

#include <marlune/marlune.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace example;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr uint32_t WIDTH = 1280, HEIGHT = 720;
constexpr auto FRAME_TIME = 1'000'000us / 60;

void set_up(const marlune::MView& view, Gpu& gpu)
{
    view.set_view_monitor(gpu.instance);
    view.set_statistics_monitor(gpu.physical_device, gpu.device);
    view.set_resolution({WIDTH, HEIGHT});
}

void load(const marlune::MQuickView& view, const char* component)
{
    if (!view.load("Multimedia", component))
        throw std::runtime_error(std::string("cannot load ") + component);
}

// --- The film ----------------------------------------------------------------------------------

class Film {
public:
    Film(Gpu& gpu, const std::filesystem::path& file)
    {
        set_up(view_, gpu);
        // Registered before load(), so that none is missed. They are called on the Qt thread.
        view_.set_func_on_media_status_changed([this](int status) { status_ = status; });
        view_.set_func_on_error_occurred([](int error, std::string text) {
            std::fprintf(stderr, "the film: error %d, %s\n", error, text.c_str());
        });
        view_.set_volume(0.6f);
        view_.set_loops(-1);
        view_.set_source(std::filesystem::absolute(file).string());
        load(view_, "VideoPlayer");
    }
    ~Film() { view_.destroy(); }
    Film(const Film&) = delete;
    Film& operator=(const Film&) = delete;

    bool plays() const
    {
        if (status_ == INVALID)
            throw std::runtime_error("the film cannot be played");
        return status_ == BUFFERED;
    }

    void describe() const
    {
        const auto metadata = view_.get_metadata();
        const auto title = metadata.find("Title");
        std::printf("\"%s\", %.1f s\n", title == metadata.end() ? "a film" : title->second.c_str(),
                    double(view_.get_duration()) / 1000);
        describe("picture", view_.get_video_tracks());
        describe("sound", view_.get_audio_tracks());
        describe("subtitles", view_.get_subtitle_tracks());
    }

    void show_subtitles() const { view_.set_active_subtitle_track(0); }
    void seek(uint64_t position) const { view_.set_position(position); }

    // The player's use of the mouse. Positions are fractions of the view's width and height.
    void point_at(double x, double y) const
    {
        view_.mouse_move(uint32_t(x * WIDTH), uint32_t(y * HEIGHT));
    }
    void click_at(double x, double y) const
    {
        point_at(x, y);
        view_.mouse_click(0, 0, uint32_t(x * WIDTH), uint32_t(y * HEIGHT));
        view_.mouse_click(0, 1, uint32_t(x * WIDTH), uint32_t(y * HEIGHT));
    }

    const marlune::MView& view() const { return view_; }

private:
    enum Status { NO_MEDIA, LOADING, LOADED, STALLED, BUFFERING, BUFFERED, ENDED, INVALID };

    static void describe(const char* what,
                         const std::vector<marlune::MVideoPlayerView::Metadata>& tracks)
    {
        for (const auto& track : tracks) {
            std::printf("  %s:", what);
            for (const auto& [name, value] : track) {
                if (!value.empty())
                    std::printf(" %s %s", name.c_str(), value.c_str());
            }
            std::printf("\n");
        }
    }

    std::atomic<int> status_ = NO_MEDIA;
    marlune::MVideoPlayerView view_;
};

// --- The camera and the screen -----------------------------------------------------------------

class Camera {
public:
    explicit Camera(Gpu& gpu)
    {
        set_up(view_, gpu);
        view_.set_func_error_occurred(
            [](int, std::string text) { std::printf("the camera: %s\n", text.c_str()); });
        view_.set_camera_hint("");  // the first one
        load(view_, "Camera");
        view_.start();
    }
    ~Camera() { view_.destroy(); }
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    const marlune::MView& view() const { return view_; }

private:
    marlune::MCameraView view_;
};

class Screen {
public:
    explicit Screen(Gpu& gpu)
    {
        set_up(view_, gpu);
        view_.set_physical_screen("-1");  // the first one
        load(view_, "ScreenCapture");
    }
    ~Screen() { view_.destroy(); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    const marlune::MView& view() const { return view_; }

private:
    marlune::MScreenCaptureView view_;
};

// --- The show ----------------------------------------------------------------------------------

// The work of a game in each of its frames.
class Show {
public:
    explicit Show(std::vector<const marlune::MView*> views) : views_(std::move(views)) {}

    void run_for(std::chrono::milliseconds time)
    {
        const auto end = Clock::now() + time;
        while (Clock::now() < end)
            render();
    }

    template <typename Condition>
    void run_until(Condition holds)
    {
        const auto end = Clock::now() + 30s;
        while (!holds()) {
            if (Clock::now() > end)
                throw std::runtime_error("the film does not begin");
            render();
        }
    }

private:
    void render()
    {
        for (const marlune::MView* const view : views_)
            view->render();
        next_frame_ = std::max(next_frame_ + FRAME_TIME, Clock::now());
        std::this_thread::sleep_until(next_frame_);
    }

    std::vector<const marlune::MView*> views_;
    Clock::time_point next_frame_ = Clock::now();
};

void run(const std::filesystem::path& film_file, const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    Gpu gpu;
    const Library library;
    const Film film(gpu, film_file);
    const Camera camera(gpu);
    const Screen screen(gpu);
    Show show({&film.view(), &camera.view(), &screen.view()});
    const auto save = [&](const marlune::MView& view, const char* name) {
        save_png(read_back(gpu, view.get_texture(), WIDTH, HEIGHT),
                 folder / (std::string(name) + ".png"));
    };

    show.run_until([&] { return film.plays(); });
    film.describe();
    film.show_subtitles();
    film.seek(7000);
    film.point_at(0.62, 0.875);  // on the bar, which shows the time there
    show.run_for(1500ms);
    save(film.view(), "VideoPlayer");
    film.click_at(0.78, 0.944);  // the button of the subtitles
    film.point_at(0.78, 0.75);
    show.run_for(500ms);
    save(film.view(), "VideoPlayer-menu");
    save(camera.view(), "Camera");
    save(screen.view(), "ScreenCapture");
    std::printf("the images are in %s\n", folder.string().c_str());
}

// Wider than the film's picture, which pans along it.
void paint(const std::filesystem::path& file)
{
    constexpr double heading = 312;
    save_png(Landscape(heading, false).paint(WIDTH * 3 / 2, HEIGHT), file);
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        if (arguments.empty())
            throw std::runtime_error("which film? (usage: marlune-media FILM [FOLDER])");
        if (arguments.front() == "--paint")
            paint(arguments.at(1));
        else
            run(arguments.front(), arguments.size() > 1 ? arguments[1] : "out");
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "marlune-media: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

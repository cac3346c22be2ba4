// The examples of the guide to media views. They are compiled here as a host would compile them.

#include <marlune/marlune.h>

#include <cstdio>
#include <string>

namespace guide {

marlune::MVideoPlayerView first_video(VkInstance instance, VkPhysicalDevice physical_device,
                                      VkDevice device)
{
    marlune::MVideoPlayerView view;
    view.set_view_monitor(instance);
    view.set_statistics_monitor(physical_device, device);
    view.set_resolution({1280, 720});
    view.set_func_on_error_occurred([](int error, std::string text) {
        std::fprintf(stderr, "error %d: %s\n", error, text.c_str());
    });
    view.set_source("file:///games/mygame/intro.mp4");
    if (!view.load("Multimedia", "VideoPlayer"))
        std::fprintf(stderr, "the view cannot be loaded, see the messages above\n");
    return view;
}

void show_next(const marlune::MVideoPlayerView& view, const std::string& source)
{
    view.set_source(source);
    view.play();  // begins as soon as it has been loaded
}

void choose_german(const marlune::MVideoPlayerView& view)
{
    const auto tracks = view.get_audio_tracks();
    for (int i = 0; i < int(tracks.size()); ++i) {
        const auto language = tracks[i].find("Language");
        if (language != tracks[i].end() && language->second == "German")
            view.set_active_audio_track(i);
    }
}

marlune::MCameraView first_camera(VkInstance instance, VkPhysicalDevice physical_device,
                                  VkDevice device)
{
    marlune::MCameraView view;
    view.set_view_monitor(instance);
    view.set_statistics_monitor(physical_device, device);
    view.set_resolution({640, 480});
    view.set_func_error_occurred([](int error, std::string text) {
        std::fprintf(stderr, "camera error %d: %s\n", error, text.c_str());
    });
    view.set_camera_hint("usb");
    if (!view.load("Multimedia", "Camera"))
        std::fprintf(stderr, "the view cannot be loaded, see the messages above\n");
    view.start();
    return view;
}

void have_camera_back(const marlune::MCameraView& view, const std::string& hint)
{
    view.set_camera_hint(hint);
    view.start();
}

marlune::MScreenCaptureView first_screen(VkInstance instance, VkPhysicalDevice physical_device,
                                         VkDevice device)
{
    marlune::MScreenCaptureView view;
    view.set_view_monitor(instance);
    view.set_statistics_monitor(physical_device, device);
    view.set_resolution({1280, 720});
    view.set_physical_screen("DELL");
    if (!view.load("Multimedia", "ScreenCapture"))
        std::fprintf(stderr, "the view cannot be loaded, see the messages above\n");
    return view;
}

void show_screen(marlune::MScreenCaptureView& view, const std::string& screen)
{
    view.set_physical_screen(screen);
    view.reset();
    if (!view.load("Multimedia", "ScreenCapture"))
        std::fprintf(stderr, "the view cannot be loaded, see the messages above\n");
}

}  // namespace guide

// The guides' examples. They are compiled here as a host would compile them; the guides quote them.

#include <marlune/marlune.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace guide {

void start(const std::string& game_directory)
{
    marlune::opts::PATH_PROJECT_ROOT = game_directory;  // no slash at the end
    marlune::opts::SANDBOXED = true;
    marlune::M::create_app();
}

marlune::MQuickView first_view(VkInstance instance, VkPhysicalDevice physical_device,
                               VkDevice device)
{
    marlune::MQuickView view;  // waits until the library is ready
    view.set_view_monitor(instance);
    view.set_statistics_monitor(physical_device, device);
    view.set_resolution({1280, 720});
    if (!view.load("Splash", "Splash"))
        std::fprintf(stderr, "the view cannot be loaded, see the messages above\n");
    return view;
}

void stop(marlune::MQuickView& view)
{
    view.destroy();         // each view, once the GPU no longer reads its texture
    marlune::M::destroy();  // then the library
    // then the VkDevice and the VkInstance
}

void show_another(const marlune::MQuickView& view)
{
    view.reset();
    view.set_resolution({960, 540});
    if (view.load("Splash", "StackViewFancy"))
        std::printf("new texture: %llu\n", static_cast<unsigned long long>(view.get_texture()));
}

void draw_frame(const marlune::MQuickView& view, std::mutex& queue)
{
    const std::lock_guard lock(queue);
    view.render();
}

void type(const marlune::MQuickView& view)
{
    constexpr uint32_t key_a = 0x41, key_c = 0x43, key_shift = 0x01000020;
    view.key_event(key_a, 0, "a");  // the letter a
    view.key_event(key_a, 1, "a");

    view.key_event(key_shift, 0, "");  // a capital A, as a keyboard gives it
    view.key_event(key_a, 0, "A");
    view.key_event(key_a, 1, "A");

    view.key_event(key_c, 0, "Ctrl+c");  // copy
    view.key_event(key_c, 1, "c");
}

void print_console(const marlune::MView& view)
{
    view.set_func_javascript_console_log(
        [](int level, std::string message, int line_number, std::string source_id) {
            const char* const names[] = {"info", "warning", "error"};
            const char* const name = level >= 0 && level <= 2 ? names[level] : "message";
            std::printf("%s: %s (%s:%d)\n", name, message.c_str(), source_id.c_str(), line_number);
        });
}

void serve_files(const marlune::MView& view, std::map<std::string, std::vector<uint8_t>>& pack)
{
    view.set_func_resource_file([&pack](std::string path, bool&, uint64_t& size) -> uint8_t* {
        const auto file = pack.find(path);  // such as "/index.html"
        if (file == pack.end())
            return nullptr;  // the size stays 0: there is no such file
        size = file->second.size();
        return file->second.data();
    });
}

void print_screens()
{
    for (const std::map<std::string, std::string>& screen : marlune::MView().get_physical_screens())
        std::printf("%s: %s\n", screen.at("name").c_str(), screen.at("availableSize").c_str());
}

}  // namespace guide

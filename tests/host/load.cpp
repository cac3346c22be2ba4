// Loading components: the state of the view afterwards, and the messages if a load fails.

#include "support/host_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

constexpr const char* NO_ITEM =
    "Root object is not a QQuickItem\\. If this is a scene with Window in it, note that such scenes "
    "are not supported\\.";

void expect_that_it_loads(HostView& view)
{
    ASSERT_TRUE(view.load("Quadrants"));
    EXPECT_TRUE(every_pixel_in(view.picture(), Rect{0, 0, 256, 128}.inside(2), RED,
                               "a view whose loading has failed can be loaded again"));
}

struct Failure {
    const char* scene;
    std::vector<const char*> messages;  // one regex a message, in any order

    friend void PrintTo(const Failure& failure, std::ostream* out) { *out << failure.scene; }
};

class LoadFailure : public testing::TestWithParam<Failure> {};

TEST_P(LoadFailure, is_logged_with_its_reason_and_leaves_a_view_that_can_be_loaded)
{
    HostView view;
    for (const char* message : GetParam().messages)
        expect_message_matching(message);
    EXPECT_FALSE(view.load(GetParam().scene));
    EXPECT_TRUE(all_expected_messages_came()) << "the reasons are logged before load() returns";
    EXPECT_EQ(view->get_texture(), 0u);
    view->render();
    expect_that_it_loads(view);
}

TEST_P(LoadFailure, after_a_scene_leaves_a_view_that_can_be_loaded)
{
    HostView view;
    ASSERT_TRUE(view.load("Greys"));
    for (const char* message : GetParam().messages)
        expect_message_matching(message);
    EXPECT_FALSE(view.load(GetParam().scene));
    view->render();
    expect_that_it_loads(view);
}

INSTANTIATE_TEST_SUITE_P(
    Scenes, LoadFailure,
    testing::Values(Failure{"SyntaxError", {"line 4\\b", "^Failed to load$"}},
                    Failure{"UnknownType",
                            {"line 3\\b.*NoSuchType is not a type", "^Failed to load$"}},
                    Failure{"UnknownImport", {"line 2\\b.*No\\.Such\\.Module", "^Failed to load$"}},
                    Failure{"NoSuchComponent", {"NoSuchComponent", "^Failed to load$"}},
                    Failure{"CreationError", {"line 5\\b.*demanded", "Failed to create component"}},
                    Failure{"WindowRoot", {NO_ITEM}}, Failure{"QtObjectRoot", {NO_ITEM}},
                    Failure{"Zero", {"64 x 0", "Cannot create texture object"}},
                    Failure{"TooLarge", {"100000 x 256", "Cannot create texture object"}}),
    [](const auto& test) { return test.param.scene; });

TEST(Load, refuses_the_module_Web)
{
    HostView view;
    expect_message("cannot load component by module name Web");
    EXPECT_FALSE(view->load("Web", "Webview"));
    expect_that_it_loads(view);
}

TEST(Load, distinguishes_modules_by_case)
{
    HostView view;
    allow_messages_matching("\"web\"");
    expect_message("Failed to load");
    EXPECT_FALSE(view->load("web", "Webview"));
}

TEST(Load, of_a_module_that_does_not_exist_fails)
{
    HostView view;
    allow_messages_matching("NoSuchModule");
    expect_message("Failed to load");
    EXPECT_FALSE(view->load("NoSuchModule", "Quadrants"));
    expect_that_it_loads(view);
}

TEST(Load, of_empty_names_fails)
{
    HostView view;
    allow_messages_matching("\"\"");
    expect_message("Failed to load");
    EXPECT_FALSE(view->load("", ""));
    expect_that_it_loads(view);
}

TEST(Load, of_names_with_a_path_fails)
{
    HostView view;
    allow_messages_matching("Scenes");
    expect_message("Failed to load");
    EXPECT_FALSE(view->load("Scenes", "../Scenes/Quadrants"));
    expect_that_it_loads(view);
}

TEST(Load, without_an_instance_or_device_fails_until_they_are_set)
{
    HostView starter;  // the library must be running
    MQuickView view;
    view.set_resolution({512, 256});
    expect_message_matching("set_view_monitor");
    expect_message_matching("QQuickRenderControl::initialize\\(\\) failed");
    EXPECT_FALSE(view.load("Scenes", "Quadrants"));

    view.set_view_monitor(host().instance());
    expect_message_matching("set_statistics_monitor");
    expect_message_matching("QQuickRenderControl::initialize\\(\\) failed");
    EXPECT_FALSE(view.load("Scenes", "Quadrants"));

    view.set_statistics_monitor(host().physical_device(), host().device());
    EXPECT_TRUE(view.load("Scenes", "Quadrants"));
    view.destroy();
}

TEST(Load, works_at_the_default_resolution)
{
    HostView starter;
    MQuickView view;
    view.set_view_monitor(host().instance());
    view.set_statistics_monitor(host().physical_device(), host().device());
    ASSERT_TRUE(view.load("Scenes", "Quadrants"));
    const Image picture = host().read_back(view.get_texture(), 1920, 1080);
    EXPECT_TRUE(every_pixel_in(picture, {962, 0, 958, 538}, GREEN, "the default is 1920 x 1080"));
    view.destroy();
}

TEST(Load, replaces_the_current_scene_without_a_reset)
{
    HostView view;
    ASSERT_TRUE(view.load("Greys"));
    expect_that_it_loads(view);
}

TEST(Load, repeats_the_same_component)
{
    HostView view;
    for (int i = 0; i < 5; ++i)
        expect_that_it_loads(view);
}

TEST(Load, creates_a_scene_of_one_component_for_each_of_several_views)
{
    HostView one, other;
    ASSERT_TRUE(one.load("MipPattern"));
    ASSERT_TRUE(other.load("MipPattern"));
    one.type(0x20, " ");
    one.draw_frame();
    other.draw_frame();
    EXPECT_EQ(one.picture().pixel(10, 10), GREEN);
    EXPECT_EQ(other.picture().pixel(10, 10), RED);
}

/** Uses Vulkan as the web engine does on its own thread, and as other libraries of a game may. */
void use_vulkan_beside(const std::atomic<bool>& done)
{
    const VkInstanceCreateInfo info{.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO};
    while (!done) {
        VkInstance instance = VK_NULL_HANDLE;
        ASSERT_EQ(vkCreateInstance(&info, nullptr, &instance), VK_SUCCESS);
        std::array<VkPhysicalDevice, 8> devices{};
        auto count = static_cast<uint32_t>(devices.size());
        // In this call the loader unloads the drivers that have no device.
        EXPECT_EQ(vkEnumeratePhysicalDevices(instance, &count, devices.data()), VK_SUCCESS);
        vkDestroyInstance(instance, nullptr);
    }
}

TEST(Load, survives_other_threads_that_use_vulkan)
{
    // Overwrites freed memory, so that every use of it has an effect.
    mallopt(M_PERTURB, 0xa5);
    HostView first;
    std::atomic<bool> done = false;
    std::jthread beside([&] { use_vulkan_beside(done); });
    for (int i = 0; i < 60; ++i) {
        HostView view;
        expect_that_it_loads(view);
    }
    done = true;
    mallopt(M_PERTURB, 0);
}

TEST(Load, of_a_root_without_the_console_signal_only_warns)
{
    HostView view;
    expect_message_matching("No such signal .*javaScriptConsoleMessage");
    expect_message_matching("receiver name");  // Qt's second line about the same signal
    ASSERT_TRUE(view.load("Mute"));
    EXPECT_TRUE(every_pixel_in(view.picture(), {0, 0, 512, 256}, BLUE, "the scene is drawn"));
}

TEST(Reset, allows_loading_again)
{
    HostView view;
    ASSERT_TRUE(view.load("Greys"));
    view->reset();
    view->reset();
    expect_that_it_loads(view);
}

TEST(Reset, before_loading_does_nothing)
{
    HostView view;
    view->reset();
    expect_that_it_loads(view);
}

/** The names of files that are created or deleted in a folder; see inotify(7). */
class FolderWatch {
public:
    explicit FolderWatch(const std::filesystem::path& folder) : inotify_(inotify_init1(IN_NONBLOCK))
    {
        inotify_add_watch(inotify_, folder.c_str(), IN_CREATE | IN_DELETE);
    }
    ~FolderWatch() { close(inotify_); }
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /**
     * Reads the events since the last call, and counts in `created` and `deleted` how often each
     * file was created and deleted.
     */
    void look()
    {
        alignas(inotify_event) std::array<char, 4096> buffer;
        ssize_t size = 0;
        while ((size = read(inotify_, buffer.data(), buffer.size())) > 0) {
            for (ssize_t at = 0; at < size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
                ++(event->mask & IN_CREATE ? created : deleted)[event->name];
                at += ssize_t(sizeof(inotify_event) + event->len);
            }
        }
    }

    std::map<std::string, int> created, deleted;

private:
    int inotify_;
};

TEST(TemporaryFile, of_a_component_is_the_same_each_time_and_soon_deleted)
{
    HostView view;
    FolderWatch folder(std::filesystem::temp_directory_path());  // belongs to this process alone
    ASSERT_TRUE(view.load("Wide16"));
    ASSERT_TRUE(view.load("Wide16"));
    EXPECT_TRUE(wait_until([&] {
        folder.look();
        return !folder.deleted.empty() && folder.deleted.begin()->second == 2;
    })) << "each load deletes its file when the event loop turns";

    ASSERT_EQ(folder.created.size(), 1u) << "one file serves all loads of a component";
    const auto& [name, times] = *folder.created.begin();
    EXPECT_EQ(times, 2);
    EXPECT_EQ(folder.deleted, folder.created);
    EXPECT_EQ(name.size(), 36u) << "a UUID without braces and extension: " << name;
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::temp_directory_path() / name));
}

bool is_gone(const std::filesystem::path& path)
{
    return wait_until([&] { return !std::filesystem::exists(symlink_status(path)); });
}

/** The path of the file that a first load of the scene has used and deleted. */
std::filesystem::path used_path(HostView& view, const std::string& scene)
{
    const auto folder = std::filesystem::temp_directory_path();
    FolderWatch watch(folder);
    EXPECT_TRUE(view.load(scene));
    watch.look();
    EXPECT_EQ(watch.created.size(), 1u);
    const auto path = folder / watch.created.begin()->first;
    EXPECT_TRUE(is_gone(path));
    return path;
}

TEST(TemporaryFile, is_never_written_through_a_link_at_its_path)
{
    HostView view;
    const auto path = used_path(view, "Wide16");
    const auto other = std::filesystem::temp_directory_path() / "other";
    std::ofstream(other) << "keep me";
    for (const bool symbolic : {true, false}) {
        if (symbolic)
            std::filesystem::create_symlink(other, path);
        else
            std::filesystem::create_hard_link(other, path);
        EXPECT_TRUE(view.load("Wide16"));
        EXPECT_TRUE(is_gone(path));
        std::string text;
        std::getline(std::ifstream(other), text);
        EXPECT_EQ(text, "keep me");
    }
    std::filesystem::remove(other);
}

TEST(TemporaryFile, whose_path_is_a_directory_fails_the_load)
{
    HostView view;
    const auto path = used_path(view, "Narrow15");
    std::filesystem::create_directories(path / "x");
    expect_message_matching("^cannot write \"" + path.string());
    expect_message("Failed to load");
    EXPECT_FALSE(view.load("Narrow15"));
    std::filesystem::remove_all(path);
    EXPECT_TRUE(view.load("Narrow15"));
}

TEST(TemporaryFile, is_deleted_after_a_failed_load_too)
{
    HostView view;
    FolderWatch folder(std::filesystem::temp_directory_path());
    expect_message_matching("SyntaxError|line 4");
    expect_message("Failed to load");
    EXPECT_FALSE(view.load("SyntaxError"));
    EXPECT_TRUE(wait_until([&] {
        folder.look();
        return folder.created.size() == 1 && folder.deleted == folder.created;
    }));
}

}  // namespace

}  // namespace marlune::test

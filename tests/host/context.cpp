// The context properties of a component.

#include "support/host_view.h"

#include <marlune/app.h>
#include <marlune/mcamera_view.h>
#include <marlune/mscreen_capture_view.h>
#include <marlune/mvideo_player_view.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

namespace marlune::test {

namespace {

constexpr uint32_t KEY_SPACE = 0x20;

std::map<std::string, std::string> context_of(HostView& view)
{
    EXPECT_TRUE(view.load("ContextProbe"));
    view.type(KEY_SPACE, " ");
    std::map<std::string, std::string> result;
    for (const std::string& message : view.console().take_messages()) {
        const size_t split = message.find('=');
        result.emplace(message.substr(0, split), message.substr(split + 1));
    }
    return result;
}

TEST(Context, calls_the_view_both_ctx_and_view)
{
    HostView view;
    EXPECT_EQ(context_of(view)["ctx is view"], "true");
}

TEST(Context, provides_the_addon_directory)
{
    HostView view;
    const std::string root = std::getenv("MARLUNE_PROJECT_ROOT");
    EXPECT_EQ(context_of(view)["PATH_ADDON"], root + "/addons/webview/");
}

TEST(Context, provides_the_version_of_the_library)
{
    HostView view;
    EXPECT_EQ(context_of(view)["version"], M::get_version_full());
}

TEST(Context, provides_the_name_of_the_hosts_gpu)
{
    HostView view;
    VkPhysicalDeviceProperties properties;
    vkGetPhysicalDeviceProperties(host().physical_device(), &properties);
    EXPECT_EQ(context_of(view)["gpuName"], properties.deviceName);
}

TEST(Context, provides_the_resolution)
{
    HostView view({640, 360});
    EXPECT_EQ(context_of(view)["resolution"], "640x360");
}

/** Returns the number of a new view; the library numbers views in the order of their creation. */
int number_of_new_view()
{
    HostView view;
    const std::string name = context_of(view)["name"];
    return std::stoi(name.substr(name.find(' ')));
}

template <typename Facade>
int views_made_for()
{
    const int before = number_of_new_view();
    Facade view;
    view.destroy();
    return number_of_new_view() - before - 1;
}

TEST(Facades, of_media_have_a_view_in_addition_to_that_of_their_base_class)
{
    EXPECT_EQ(views_made_for<MQuickView>(), 1);
    EXPECT_EQ(views_made_for<MVideoPlayerView>(), 2);
    EXPECT_EQ(views_made_for<MCameraView>(), 2);
    EXPECT_EQ(views_made_for<MScreenCaptureView>(), 2);
}

}  // namespace

}  // namespace marlune::test

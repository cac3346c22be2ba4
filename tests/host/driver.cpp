// Views on a driver that fails, loses its device or has a second queue; and which of its objects
// they use.

#include "support/host_view.h"
#include "support/message_log.h"
#include "support/vulkan/driver_layer.h"

#include <marlune/mcamera_view.h>
#include <marlune/mscreen_capture_view.h>
#include <marlune/mvideo_player_view.h>
#include <marlune/mweb_view.h>

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

/** A view on a driver whose failures the test determines. */
class Driver : public testing::Test {
protected:
    Driver() { driver_layer::forget(); }
    ~Driver() override { driver_layer::forget(); }

    void load()
    {
        ASSERT_TRUE(view.load("Quadrants"));
        EXPECT_EQ(view.picture().pixel(0, 0), RED);
    }

    // The validation layer assumes that the calls it passes on succeed, so it must not see the
    // failures.
    VulkanHost host{
        (driver_layer::announce(), std::vector{driver_layer::NAME, VulkanHost::VALIDATION_LAYER}),
        1};
    HostView view{{512, 256}, host};
};

/** A function of the driver whose calls the test makes fail one by one. */
struct Call {
    const char* function;
    std::set<int> crash = {};  // calls in a load whose failure makes Qt crash or leak

    friend void PrintTo(const Call& call, std::ostream* out) { *out << call.function; }
};

class DriverCall : public Driver, public testing::WithParamInterface<Call> {};

TEST_F(Driver, that_fails_the_first_frame_fails_the_load)
{
    allow_messages_matching("frame command buffer|submit");
    for (const char* function : {"vkBeginCommandBuffer", "vkQueueSubmit"}) {
        expect_message_matching("^QuickView \\d+: the first frame could not be drawn");
        driver_layer::fail_calls(function, VK_ERROR_OUT_OF_HOST_MEMORY);
        EXPECT_FALSE(view.load("Quadrants"));
        EXPECT_EQ(view->get_texture(), 0u);
        driver_layer::forget();
        load();
    }
}

TEST_F(Driver, that_fails_a_frame_keeps_the_one_before)
{
    view->set_mipmaps_enabled(true);
    ASSERT_TRUE(view.load("ContextProbe"));
    const int before = view.frames_rendered();
    allow_messages_matching("frame command buffer|submit");
    for (const char* function : {"vkBeginCommandBuffer", "vkQueueSubmit"}) {
        expect_message_matching("^QuickView \\d+: a frame could not be drawn");
        driver_layer::fail_calls(function, VK_ERROR_OUT_OF_HOST_MEMORY);
        for (int i = 0; i < 3; ++i)
            view.draw_frame();
        driver_layer::forget();
        view.draw_frame();
    }
    EXPECT_EQ(view.frames_rendered(), before + 2);
}

TEST_F(Driver, that_loses_the_device_is_reported_once)
{
    load();
    const Image picture = view.picture();
    allow_messages_matching("Device loss detected");
    expect_message_matching("^QuickView \\d+: the Vulkan device is lost");
    driver_layer::fail_calls("vkQueueSubmit", VK_ERROR_DEVICE_LOST);
    for (int i = 0; i < 5; ++i)
        view.draw_frame();
    view->reset();
    view->render();
    driver_layer::forget();
    EXPECT_EQ(view.picture(), picture) << "the texture keeps its last content";
    load();
}

TEST_F(Driver, that_loses_the_device_while_loading_fails_the_load)
{
    for (const char* function : {"vkBeginCommandBuffer", "vkQueueSubmit", "vkWaitForFences"}) {
        allow_messages_matching("Device loss detected|^Failed to query timestamp|device is lost");
        expect_message_matching("^QuickView \\d+: the first frame could not be drawn");
        driver_layer::fail_calls(function, VK_ERROR_DEVICE_LOST);
        driver_layer::fail_calls("vkQueueWaitIdle", VK_ERROR_DEVICE_LOST);
        EXPECT_FALSE(view.load("Quadrants"));
        EXPECT_EQ(view->get_texture(), 0u);
        driver_layer::forget();
        load();
    }
}

TEST_F(Driver, that_loses_the_device_lets_the_view_be_destroyed)
{
    load();
    allow_messages_matching("Device loss detected|device is lost");
    driver_layer::fail_calls("vkQueueSubmit", VK_ERROR_DEVICE_LOST);
    driver_layer::fail_calls("vkWaitForFences", VK_ERROR_DEVICE_LOST);
    view.draw_frame();
    view->destroy();
}

TEST_F(Driver, that_creates_no_render_pass_is_reported)
{
    allow_messages_matching("Failed to create renderpass");
    expect_message_matching("Cannot create render target");
    driver_layer::fail_calls("vkCreateRenderPass", VK_ERROR_OUT_OF_HOST_MEMORY);
    EXPECT_FALSE(view.load("Quadrants"));
    driver_layer::forget();
    load();
}

TEST_P(DriverCall, that_fails_in_a_load_leaves_a_view_that_can_be_loaded)
{
    const auto& [function, crash] = GetParam();
    load();
    driver_layer::forget();
    load();
    const int calls = driver_layer::calls()[function];
    ASSERT_GT(calls, 0);
    allow_messages_matching("");  // Qt has a message for each failure
    for (int nth = 1; nth <= calls; ++nth) {
        for (const VkResult result : {VK_ERROR_OUT_OF_DEVICE_MEMORY, VK_ERROR_DEVICE_LOST}) {
            if (crash.contains(nth))
                continue;
            SCOPED_TRACE(nth);
            driver_layer::fail_call(function, nth, result);
            view.load("Quadrants");
            view.draw_frame();
            driver_layer::forget();
            load();
        }
    }
}

// Not listed: functions whose failure Qt ignores, for descriptor set layouts, shader modules,
// secondary command buffers and the reset of fences; and framebuffers, for which Qt leaks after a
// failure.
INSTANTIATE_TEST_SUITE_P(
    Function, DriverCall,
    testing::Values(Call{"vkAllocateCommandBuffers", {2, 3}}, Call{"vkAllocateDescriptorSets"},
                    Call{"vkAllocateMemory", {2}}, Call{"vkBindBufferMemory"},
                    Call{"vkBindImageMemory"}, Call{"vkCreateBuffer"}, Call{"vkCreateCommandPool"},
                    Call{"vkCreateDescriptorPool"}, Call{"vkCreateFence"},
                    Call{"vkCreateGraphicsPipelines"}, Call{"vkCreateImage"},
                    Call{"vkCreateImageView"}, Call{"vkCreatePipelineCache"},
                    Call{"vkCreatePipelineLayout"}, Call{"vkCreateQueryPool"},
                    Call{"vkCreateRenderPass"}, Call{"vkGetPipelineCacheData"},
                    Call{"vkGetQueryPoolResults"}, Call{"vkMapMemory"}, Call{"vkQueueSubmit"},
                    Call{"vkQueueWaitIdle"}, Call{"vkResetCommandPool"}, Call{"vkWaitForFences"}),
    [](const auto& test) { return std::string(test.param.function); });

bool load_scene(const MWebView& view)
{
    return view.load();
}

bool load_scene(const MVideoPlayerView& view)
{
    return view.load("Multimedia", "VideoPlayer");
}

bool load_scene(const MCameraView& view)
{
    return view.load("Multimedia", "Camera");
}

bool load_scene(const MScreenCaptureView& view)
{
    return view.load("Multimedia", "ScreenCapture");
}

template <typename Facade>
class DriverOfView : public testing::Test {
};

using Facades = testing::Types<MWebView, MVideoPlayerView, MCameraView, MScreenCaptureView>;
TYPED_TEST_SUITE(DriverOfView, Facades);

TYPED_TEST(DriverOfView, that_fails_in_a_load_leaves_a_view_that_can_be_loaded)
{
    driver_layer::announce();
    VulkanHost host({driver_layer::NAME, VulkanHost::VALIDATION_LAYER}, 1);
    HostViewOf<TypeParam> view({512, 256}, host);
    allow_messages_matching("");  // Qt has a message for each failure
    for (const bool after_a_scene : {false, true}) {
        for (const char* function :
             {"vkCreateCommandPool", "vkCreateImage", "vkBeginCommandBuffer", "vkQueueSubmit"}) {
            driver_layer::fail_calls(function, VK_ERROR_OUT_OF_DEVICE_MEMORY);
            EXPECT_FALSE(load_scene(view.facade())) << function;
            view.draw_frame();
            driver_layer::forget();
            if (after_a_scene) {
                EXPECT_TRUE(load_scene(view.facade())) << function;
            }
        }
    }
    driver_layer::fail_calls("vkQueueSubmit", VK_ERROR_DEVICE_LOST);
    view.draw_frame();
    view.draw_frame();
    driver_layer::forget();
    EXPECT_TRUE(load_scene(view.facade()));
}

TEST_F(Driver, gets_the_objects_of_a_scene_back_when_the_view_is_reset)
{
    const auto before = driver_layer::objects();
    load();
    view.draw_frame();
    view->reset();
    using Objects = std::map<std::string, int>;
    const Objects kept = {{"CommandPool", 3},   {"DescriptorPool", 1}, {"Fence", 1},
                          {"Image", 1},         {"ImageView", 1},      {"Memory", 1},
                          {"PipelineCache", 1}, {"QueryPool", 1}};
    EXPECT_EQ(driver_layer::objects(), kept) << "the texture and the objects for drawing it stay";
    view->destroy();
    EXPECT_EQ(driver_layer::objects(), before);
}

TEST(Queue, beside_the_first_may_be_in_use_all_the_time)
{
    driver_layer::announce();
    VulkanHost host({VulkanHost::VALIDATION_LAYER, driver_layer::NAME}, 2);
    driver_layer::forget();
    VkQueue other = VK_NULL_HANDLE;
    vkGetDeviceQueue(host.device(), 0, 1, &other);
    std::jthread game([other](std::stop_token stop) {
        while (!stop.stop_requested()) {
            vkQueueSubmit(other, 0, nullptr, VK_NULL_HANDLE);
            vkQueueWaitIdle(other);
        }
    });
    {
        HostView view({512, 256}, host);
        for (int i = 0; i < 20; ++i) {
            ASSERT_TRUE(view.load("Quadrants"));
            view->reset();
        }
    }
    EXPECT_EQ(driver_layer::calls()["vkDeviceWaitIdle"], 0);
}

}  // namespace

}  // namespace marlune::test

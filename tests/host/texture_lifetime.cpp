// How long the handle of the texture is valid.

#include "support/host_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

namespace marlune::test {

namespace {

TEST(Texture, is_0_before_the_first_loading)
{
    HostView view;
    EXPECT_EQ(view->get_texture(), 0u);
}

TEST(Texture, is_the_same_for_all_frames_of_a_scene)
{
    HostView view;
    ASSERT_TRUE(view.load("Moving"));
    const uint64_t texture = view->get_texture();
    EXPECT_NE(texture, 0u);
    for (int i = 0; i < 5; ++i) {
        view.draw_frame();
        EXPECT_EQ(view->get_texture(), texture);
    }
}

TEST(Texture, keeps_its_handle_and_content_after_reset)
{
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    const uint64_t texture = view->get_texture();
    const Image before = view.picture();
    view->reset();
    EXPECT_EQ(view->get_texture(), texture);
    EXPECT_EQ(view.picture(), before);
    view->reset();
    EXPECT_EQ(view->get_texture(), texture);
    EXPECT_EQ(view.picture(), before);
}

TEST(Texture, is_created_again_by_loading_after_reset)
{
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    view->reset();
    ASSERT_TRUE(view.load("Greys"));
    EXPECT_EQ(view.picture().pixel(0, 0), (Colour{0x40, 0x40, 0x40, 255}));
}

TEST(Texture, is_released_with_the_view)
{
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    MView copy = view.facade();
    view->destroy();
    EXPECT_EQ(view->get_texture(), 0u);
    EXPECT_EQ(copy.get_texture(), 0u);
}

TEST(Texture, that_a_reset_has_kept_is_released_with_the_view)
{
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    view->reset();
    view->destroy();
    EXPECT_EQ(view->get_texture(), 0u);
}

TEST(Devices, that_are_set_again_change_nothing)
{
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    const uint64_t texture = view->get_texture();
    view->set_view_monitor(host().instance());
    view->set_statistics_monitor(host().physical_device(), host().device());
    view.draw_frame();
    EXPECT_EQ(view->get_texture(), texture);
    EXPECT_EQ(view.picture().pixel(0, 0), RED);
}

TEST(Devices, of_another_instance_destroy_the_scene_and_its_texture)
{
    VulkanHost other;
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    view->set_view_monitor(other.instance());
    EXPECT_EQ(view->get_texture(), 0u);

    view->set_statistics_monitor(other.physical_device(), other.device());
    ASSERT_TRUE(view.load("Quadrants"));
    EXPECT_EQ(other.read_back(view->get_texture(), 512, 256).pixel(0, 0), RED);
    view->destroy();
}

TEST(Devices, of_two_hosts_serve_two_views_at_once)
{
    VulkanHost other;
    HostView here, there({512, 256}, other);
    ASSERT_TRUE(here.load("Quadrants"));
    ASSERT_TRUE(there.load("Quadrants"));
    here.draw_frame();
    there.draw_frame();
    EXPECT_EQ(here.picture().pixel(0, 0), RED);
    EXPECT_EQ(there.picture().pixel(0, 0), RED);
}

TEST(Devices, without_a_usable_instance_are_reported)
{
    HostView view;
    VkInstance none = VK_NULL_HANDLE;
    expect_message_matching("Failed to create VkInstance");
    view->set_view_monitor(none);
    view->set_view_monitor(host().instance());
    EXPECT_TRUE(view.load("Quadrants"));
}

}  // namespace

}  // namespace marlune::test

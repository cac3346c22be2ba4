// The content of the texture: orientation, channels, alpha, encoding, size.

#include "support/host_view.h"

#include <gtest/gtest.h>

namespace marlune::test {

namespace {

TEST(Texture, has_its_first_row_at_the_top_of_the_scene)
{
    HostView view({512, 256});
    ASSERT_TRUE(view.load("Quadrants"));
    const Image picture = view.picture();
    EXPECT_TRUE(every_pixel_in(picture, {0, 0, 256, 128}, RED, "red is top left"));
    EXPECT_TRUE(every_pixel_in(picture, {256, 0, 256, 128}, GREEN, "green is top right"));
    EXPECT_TRUE(every_pixel_in(picture, {0, 128, 256, 128}, BLUE, "blue is bottom left"));
}

TEST(Texture, has_premultiplied_alpha)
{
    HostView view({512, 256});
    ASSERT_TRUE(view.load("Quadrants"));
    EXPECT_TRUE(every_pixel_in(view.picture(), {256, 128, 256, 128}, {128, 128, 128, 128},
                               "half-transparent white has half of each channel"));
}

TEST(Texture, is_transparent_where_nothing_is_drawn)
{
    HostView view;
    ASSERT_TRUE(view.load("Transparent"));
    EXPECT_TRUE(every_pixel_in(view.picture(), view.picture().area(), TRANSPARENT,
                               "what the scene does not draw is transparent", 0));
}

TEST(Texture, contains_srgb_encoded_values)
{
    HostView view({512, 256});
    ASSERT_TRUE(view.load("Greys"));
    const Image picture = view.picture();
    EXPECT_TRUE(
        every_pixel_in(picture, {0, 0, 256, 256}, {0x40, 0x40, 0x40, 255}, "dark grey as written"));
    EXPECT_TRUE(
        every_pixel_in(picture, {256, 0, 256, 256}, {0x80, 0x80, 0x80, 255}, "grey as written"));
}

TEST(Texture, shows_the_first_frame_as_soon_as_the_scene_is_loaded)
{
    HostView view;
    view->set_refresh_rate(1);
    ASSERT_TRUE(view.load("Quadrants"));
    EXPECT_EQ(view.picture().pixel(0, 0), RED);
}

TEST(Texture, has_the_size_of_a_scene_with_its_own_size)
{
    HostView view({1920, 1080});
    ASSERT_TRUE(view.load("SelfSized"));
    const Image picture = view.picture({800, 600});
    EXPECT_TRUE(every_pixel_in(picture, picture.area().inside(12), RED,
                               "the texture shows the whole scene"));
    for (const Rect& corner :
         {Rect{0, 0, 10, 10}, Rect{790, 0, 10, 10}, Rect{0, 590, 10, 10}, Rect{790, 590, 10, 10}}) {
        EXPECT_TRUE(every_pixel_in(picture, corner, WHITE,
                                   "each corner of the texture shows a corner of the scene"));
    }
}

TEST(Texture, has_the_resolution_when_the_scene_is_15_px_wide)
{
    HostView view({512, 256});
    ASSERT_TRUE(view.load("Narrow15"));
    EXPECT_TRUE(every_pixel_in(view.picture(), {0, 0, 512, 256}, GREEN,
                               "a scene of less than 16 px gets the view's resolution"));
}

TEST(Texture, has_the_size_of_a_scene_that_is_16_px_wide)
{
    HostView view({512, 256});
    ASSERT_TRUE(view.load("Wide16"));
    EXPECT_TRUE(every_pixel_in(view.picture({16, 300}), {0, 0, 16, 300}, GREEN,
                               "a scene of 16 px keeps its own size"));
}

TEST(Texture, is_correct_at_odd_sizes)
{
    HostView view({257, 333});
    ASSERT_TRUE(view.load("Greys"));
    const Image picture = view.picture();
    EXPECT_EQ(picture.pixel(0, 332), (Colour{0x40, 0x40, 0x40, 255}));
    EXPECT_EQ(picture.pixel(256, 0), (Colour{0x80, 0x80, 0x80, 255}));
    EXPECT_EQ(picture.pixel(256, 332), (Colour{0x80, 0x80, 0x80, 255}));
}

TEST(Texture, of_each_view_shows_its_own_scene)
{
    HostView one({512, 256}), other({300, 300});
    ASSERT_TRUE(one.load("Quadrants"));
    ASSERT_TRUE(other.load("Narrow15"));
    EXPECT_NE(one->get_texture(), other->get_texture());
    one.draw_frame();
    other.draw_frame();
    EXPECT_EQ(one.picture().pixel(0, 0), RED);
    EXPECT_EQ(other.picture().pixel(0, 0), GREEN);
}

}  // namespace

}  // namespace marlune::test

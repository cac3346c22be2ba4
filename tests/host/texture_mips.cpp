// The mip levels of the texture.

#include "support/host_view.h"

#include <gtest/gtest.h>

namespace marlune::test {

namespace {

constexpr uint32_t KEY_SPACE = 0x20;
constexpr Size SIZE{512, 256};

/**
 * Expects that the level shows its two colours side by side, as level 0 does, and no third colour
 * where they meet.
 */
void expect_halves(HostView& view, uint32_t level, Colour left, Colour right)
{
    const Image picture = view.picture(level);
    const uint32_t half = picture.width() / 2;
    const std::string rule = "level " + std::to_string(level) + " is a reduced level 0";
    EXPECT_TRUE(every_pixel_in(picture, {0, 0, half, picture.height()}, left, rule));
    EXPECT_TRUE(every_pixel_in(picture, {half, 0, half, picture.height()}, right, rule));
}

class Mips : public testing::Test {
protected:
    void SetUp() override
    {
        view->set_mipmaps_enabled(true);
        ASSERT_TRUE(view.load("MipPattern"));
    }

    HostView view{SIZE};
};

TEST_F(Mips, are_filled_down_to_the_last_level)
{
    view.draw_frame();
    const int count = view->get_mips_count();
    ASSERT_EQ(count, 10);
    for (int level = 0; level < count - 1; ++level)
        expect_halves(view, uint32_t(level), RED, BLUE);
    EXPECT_TRUE(every_pixel_in(view.picture(9), {0, 0, 1, 1}, {128, 0, 128, 255},
                               "the last level is the mean of all", 2));
}

TEST_F(Mips, show_the_previous_frame)
{
    view.draw_frame();
    view.type(KEY_SPACE, " ");
    view.draw_frame();
    expect_halves(view, 0, GREEN, WHITE);
    expect_halves(view, 1, RED, BLUE);
    expect_halves(view, 8, RED, BLUE);

    view.draw_frame();
    expect_halves(view, 0, GREEN, WHITE);
    expect_halves(view, 1, GREEN, WHITE);
    expect_halves(view, 8, GREEN, WHITE);
}

TEST_F(Mips, keep_their_content_when_they_are_switched_off)
{
    view.draw_frame();
    view->set_mipmaps_enabled(false);
    view.type(KEY_SPACE, " ");
    view.draw_frame();
    view.draw_frame();
    expect_halves(view, 0, GREEN, WHITE);
    expect_halves(view, 1, RED, BLUE);
}

TEST_F(Mips, can_be_switched_on_while_a_scene_is_shown)
{
    HostView late{SIZE};
    ASSERT_TRUE(late.load("MipPattern"));
    late.draw_frame();
    late->set_mipmaps_enabled(true);
    late.draw_frame();
    expect_halves(late, 1, RED, BLUE);
}

TEST_F(Mips, stay_readable_after_reset)
{
    view.draw_frame();
    view->reset();
    expect_halves(view, 0, RED, BLUE);
    expect_halves(view, 3, RED, BLUE);
}

}  // namespace

}  // namespace marlune::test

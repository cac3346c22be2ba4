// Resolution, refresh rate and number of mip levels: rules, rounding and messages.

#include "support/host_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <tuple>

namespace marlune::test {

namespace {

using Resolution = std::tuple<uint32_t, uint32_t>;

constexpr const char* TOO_NARROW = "resolution not set, width must be more than 256";
constexpr const char* TOO_LOW = "resolution not set, height must be more than 256";

TEST(Resolution, returns_the_value_that_was_set)
{
    HostView view;
    view->set_resolution({1280, 720});
    EXPECT_EQ(view->get_resolution(), Resolution(1280, 720));
}

TEST(Resolution, keeps_the_old_size_when_the_width_is_below_256)
{
    HostView view({1920, 1080});
    expect_message(TOO_NARROW);
    view->set_resolution({255, 1080});
    EXPECT_EQ(view->get_resolution(), Resolution(1920, 1080));
}

TEST(Resolution, keeps_the_old_size_when_the_height_is_below_256)
{
    HostView view({1920, 1080});
    expect_message(TOO_LOW);
    view->set_resolution({1920, 255});
    EXPECT_EQ(view->get_resolution(), Resolution(1920, 1080));
}

TEST(Resolution, reports_only_the_width_when_both_sides_are_too_small)
{
    HostView view;
    expect_message(TOO_NARROW);
    view->set_resolution({0, 0});
}

TEST(Resolution, accepts_a_side_of_exactly_256)
{
    HostView view;
    view->set_resolution({256, 256});
    EXPECT_EQ(view->get_resolution(), Resolution(256, 256));
}

TEST(Resolution, is_kept_exactly_up_to_the_greatest_number)
{
    constexpr uint32_t greatest = std::numeric_limits<uint32_t>::max();
    HostView view;
    view->set_resolution({greatest, greatest});
    EXPECT_EQ(view->get_resolution(), Resolution(greatest, greatest));
}

TEST(Resolution, beyond_the_limit_of_the_device_fails_the_load)
{
    constexpr uint32_t greatest = std::numeric_limits<uint32_t>::max();
    VkPhysicalDeviceProperties properties;
    vkGetPhysicalDeviceProperties(host().physical_device(), &properties);
    const uint32_t limit = properties.limits.maxImageDimension2D;
    for (const Resolution& size : {Resolution(greatest, 256),
                                   {256, greatest},
                                   {limit + 1, 256},
                                   {1u << 31, 1u << 31},
                                   {(1u << 31) - 1, 256}}) {
        HostView view;
        view->set_resolution(size);
        const auto [width, height] = size;
        expect_message_matching(" " + std::to_string(width) + " x " + std::to_string(height)
                                + " px cannot be drawn; .* to " + std::to_string(limit) + " px");
        expect_message_matching("Cannot create texture object");
        EXPECT_FALSE(view.load("Quadrants"));
        EXPECT_EQ(view->get_texture(), 0u);

        view->set_resolution({512, 256});
        EXPECT_TRUE(view.load("Quadrants"));
        view->set_resolution(size);
        EXPECT_GE(view->get_mips_count(), 15) << "the levels of the requested resolution";
    }
}

TEST(Resolution, beyond_the_limit_of_the_device_does_not_affect_scenes_with_their_own_size)
{
    constexpr uint32_t greatest = std::numeric_limits<uint32_t>::max();
    HostView view;
    view->set_resolution({greatest, greatest});
    EXPECT_TRUE(view.load("SelfSized"));
}

TEST(Resolution, takes_effect_at_the_next_load)
{
    HostView view({512, 256});
    ASSERT_TRUE(view.load("Quadrants"));
    const uint64_t texture = view->get_texture();

    view->set_resolution({300, 400});
    view.draw_frame();
    EXPECT_EQ(view->get_texture(), texture);
    EXPECT_TRUE(every_pixel_in(view.picture({512, 256}), {260, 0, 252, 126}, GREEN,
                               "a new resolution leaves the loaded scene as it is"));

    ASSERT_TRUE(view.load("Quadrants"));
    EXPECT_TRUE(every_pixel_in(view.picture({300, 400}), {152, 0, 148, 198}, GREEN,
                               "the next load draws at the new resolution"));
}

TEST(RefreshRate, of_60_reads_back_as_63)
{
    HostView view;
    view->set_refresh_rate(60);
    EXPECT_EQ(view->get_refresh_rate(), 63);
}

struct Rate {
    int asked, read_back;
};

class RefreshRates : public testing::TestWithParam<Rate> {};

TEST_P(RefreshRates, are_rounded_to_an_interval_of_whole_milliseconds)
{
    HostView view;
    view->set_refresh_rate(GetParam().asked);
    EXPECT_EQ(view->get_refresh_rate(), GetParam().read_back);
}

INSTANTIATE_TEST_SUITE_P(Hz, RefreshRates,
                         testing::Values(Rate{1, 1}, Rate{24, 24}, Rate{30, 30}, Rate{50, 50},
                                         Rate{57, 56}, Rate{58, 63}, Rate{59, 63}, Rate{61, 63},
                                         Rate{75, 77}, Rate{100, 100}, Rate{119, 125},
                                         Rate{120, 125}),
                         [](const auto& test) { return std::to_string(test.param.asked); });

TEST(RefreshRate, below_1_is_refused)
{
    HostView view;
    view->set_refresh_rate(30);
    expect_message("bad refresh rate 0");
    view->set_refresh_rate(0);
    expect_message("bad refresh rate -5");
    view->set_refresh_rate(-5);
    EXPECT_EQ(view->get_refresh_rate(), 30);
}

TEST(RefreshRate, above_120_becomes_120)
{
    HostView view;
    expect_message("refresh rate  121  too high, setting to 120");
    view->set_refresh_rate(121);
    EXPECT_EQ(view->get_refresh_rate(), 125);
    expect_message("refresh rate  500  too high, setting to 120");
    view->set_refresh_rate(500);
    EXPECT_EQ(view->get_refresh_rate(), 125);
}

TEST(MipsCount, is_1_before_loading)
{
    HostView view({1920, 1080});
    EXPECT_EQ(view->get_mips_count(), 1);
}

TEST(MipsCount, is_11_for_a_scene_of_1920_by_1080)
{
    HostView view({1920, 1080});
    ASSERT_TRUE(view.load("Transparent"));
    EXPECT_EQ(view->get_mips_count(), 11);
}

TEST(MipsCount, does_not_depend_on_mipmaps_being_enabled)
{
    HostView view({512, 256});
    ASSERT_TRUE(view.load("Transparent"));
    EXPECT_EQ(view->get_mips_count(), 10);
    view->set_mipmaps_enabled(true);
    EXPECT_EQ(view->get_mips_count(), 10);
}

TEST(MipsCount, follows_the_requested_resolution)
{
    HostView view({512, 256});
    ASSERT_TRUE(view.load("Transparent"));
    view->set_resolution({2048, 256});
    EXPECT_EQ(view->get_mips_count(), 12);
}

}  // namespace

}  // namespace marlune::test

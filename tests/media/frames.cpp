// The frames of videos in the texture, in cases where Qt's own video output draws them wrong or not
// at all.

#include "support/media/host_video_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <string>

namespace marlune::test {

namespace {

constexpr Colour HALF_RED{128, 0, 0, 128};
constexpr Size SQUARE{256, 256};

class Frames : public testing::Test {
protected:
    void SetUp() override
    {
        view->set_controls(false);
        view->set_fill_mode(STRETCH);
        view->set_loops(static_cast<unsigned int>(-1));
    }

    testing::AssertionResult show(const std::string& clip, Colour colour)
    {
        if (const auto opened = view.open(clip); !opened)
            return opened;
        return view.wait_for_colour(128, 128, colour, 2);
    }

    HostVideoView view{SQUARE};
};

class SeeThroughFilms : public Frames, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Codecs, SeeThroughFilms,
                         testing::Values("png.mkv", "apng.apng", "qtrle.mov", "ffv1.mkv"),
                         [](const auto& info) {
                             const std::string file = info.param;
                             return file.substr(0, file.find('.'));
                         });

TEST_P(SeeThroughFilms, are_drawn_with_premultiplied_alpha)
{
    EXPECT_TRUE(show(std::string("half_red_") + GetParam(), HALF_RED));
}

TEST_F(Frames, of_rgb_without_alpha_are_opaque)
{
    EXPECT_TRUE(show("red_ffv1.mkv", RED));
}

TEST_F(Frames, too_large_for_the_device_are_left_out)
{
    expect_message_matching("a frame of 20000 x 16 px cannot be drawn; each side must be from 2");
    ASSERT_TRUE(view.open("wide.mkv"));
    ASSERT_TRUE(view.draw_until([&] { return view->get_position() > 500; }));
    EXPECT_TRUE(view.wait_for_colour(128, 128, TRANSPARENT));
    ASSERT_TRUE(view.change_to("red_ffv1.mkv"));
    view->play();
    EXPECT_TRUE(view.wait_for_colour(128, 128, RED)) << "the next film is shown";
}

TEST_F(Frames, of_pixels_that_are_too_wide_are_left_out)
{
    ASSERT_TRUE(view.load());
    // Qt cannot scale to the second size, and does not check whether it can.
    for (const char* const clip : {"stretched_600.mkv", "stretched_8000.mkv"}) {
        SCOPED_TRACE(clip);
        for (int i = 0; i < 2; ++i)
            expect_message_matching("px and is not shown; each side can be at most 32768 px");
        ASSERT_TRUE(view.change_to(clip));
        EXPECT_EQ(view->get_active_video_track(), -1);
        view->play();
        view->set_active_video_track(0);
        EXPECT_EQ(view->get_active_video_track(), -1);
        EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 500; }))
            << "the sound does not play";
    }
    ASSERT_TRUE(view.change_to("red_ffv1.mkv"));
    view->play();
    EXPECT_TRUE(view.wait_for_colour(128, 128, RED)) << "the next film is shown";
}

TEST_F(Frames, of_a_single_pixel_are_left_out)
{
    expect_message_matching("a frame of 1 x 1 px cannot be drawn; each side must be from 2");
    ASSERT_TRUE(view.open("dot.mkv"));
    ASSERT_TRUE(view.draw_until([&] { return view->get_position() > 500; }));
    EXPECT_TRUE(view.wait_for_colour(128, 128, TRANSPARENT));
}

}  // namespace

}  // namespace marlune::test

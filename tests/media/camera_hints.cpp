// Which camera a view chooses, by its hint and by the plugged cameras.

#include "support/media/host_camera_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace marlune::test {

namespace {

using Names = std::vector<std::string>;

const std::vector<FakeCamera> THREE = {{.name = "Integrated Webcam"},
                                       {.name = "USB Camera Pro", .border = CYAN},
                                       {.name = "Capture Card Ölig", .border = MAGENTA}};

std::vector<FakeCamera> some_cameras(size_t count)
{
    return {THREE.begin(), THREE.begin() + count};
}

std::string wrong_number(const std::string& hint, size_t count)
{
    return "Camera: wrong camera number supplied (index " + hint
        + ", available: " + std::to_string(count) + "), returning default primary screen";
}

std::string not_found(const std::string& hint)
{
    return "Could not find camera by hint: " + hint + ", setting default";
}

struct Choice {
    size_t cameras;
    std::string hint;
    size_t chosen;
    std::string warning = {};
};

void PrintTo(const Choice& choice, std::ostream* out)
{
    *out << '"' << choice.hint << "\" of " << choice.cameras;
}

class Hints : public testing::TestWithParam<Choice> {};

TEST_P(Hints, choose_a_camera)
{
    const Choice& choice = GetParam();
    plug_cameras(some_cameras(choice.cameras));
    if (!choice.warning.empty())
        expect_message(choice.warning);
    HostCameraView view;
    view->set_camera_hint(choice.hint);
    view->start();
    EXPECT_EQ(running_cameras(), Names{THREE[choice.chosen].name});
    EXPECT_EQ(view.reports(), Names{"active_changed"})
        << "a hint that matches no camera is an error";
}

const Choice CHOICES[] = {
    {3, "", 0},
    {3, "-1", 0},
    {3, "0", 0},
    {3, "1", 1},
    {3, "2", 2},
    {3, "3", 0, wrong_number("3", 3)},
    {3, "2147483647", 0, wrong_number("2147483647", 3)},
    {3, "002", 2},
    {3, "+1", 1},
    {3, "-2", 0},
    {3, "-2147483648", 0},
    {3, "2147483648", 0, not_found("2147483648")},
    {3, "0x1", 0, not_found("0x1")},
    {3, "1.0", 0, not_found("1.0")},
    {3, "usb", 1},
    {3, "USB", 1},
    {3, "USB Camera Pro", 1},
    {3, "cAm", 0},
    {3, "camera", 1},
    {3, "a pro", 1},
    {3, "ÖLIG", 2},
    {3, "öl", 2},
    {3, "elsewhere", 0, not_found("elsewhere")},
    {3, "%1 %2", 0, not_found("%1 %2")},
    {3, " ", 0},
    {2, "1", 1},
    {2, "2", 0, wrong_number("2", 2)},
    {2, "öl", 0, not_found("öl")},
    {1, "", 0},
    {1, "-1", 0},
    {1, "0", 0},
    {1, "1", 0, wrong_number("1", 1)},
    {1, "web", 0},
    {1, "usb", 0, not_found("usb")},
};

INSTANTIATE_TEST_SUITE_P(Camera, Hints, testing::ValuesIn(CHOICES));

TEST(Hint, finds_no_camera_where_none_is_plugged)
{
    plug_cameras({});
    HostCameraView view;
    for (const char* const hint : {"-1", "0", "1", "usb", ""}) {
        const size_t first = view.events().size();
        view->set_camera_hint(hint);
        EXPECT_FALSE(view->is_available());
        EXPECT_EQ(view.reports(first), Names{"error_occurred 1 no cameras found"}) << hint;
    }
    view->start();
    view->set_auto_play(true);
    EXPECT_FALSE(view->get_is_active());
    EXPECT_EQ(view->get_error(), NO_CAMERA_ERROR) << "the missing camera is not reported";
    EXPECT_TRUE(open_cameras().empty());
}

TEST(Hint, keeps_the_camera_when_all_are_unplugged)
{
    plug_cameras(some_cameras(1));
    HostCameraView view;
    view->set_camera_hint("0");
    view->set_focus_distance(0.25f);
    EXPECT_EQ(view->get_focus_distance(), 0.25f);
    plug_cameras({});
    view->set_camera_hint("0");
    EXPECT_EQ(view->get_focus_distance(), 0.25f);
    EXPECT_TRUE(view.wait_for_event("error_occurred", "1 no cameras found"));
}

TEST(Hint, counts_the_cameras_that_are_plugged_by_then)
{
    expect_message(wrong_number("2", 2));
    plug_cameras(THREE);
    HostCameraView view;
    unplug_camera(THREE[0].name);
    view->set_camera_hint("2");
    view->start();
    EXPECT_EQ(running_cameras(), Names{"USB Camera Pro"});
    view->set_camera_hint("1");
    view->start();
    EXPECT_EQ(running_cameras(), Names{"Capture Card Ölig"});
}

TEST(Hint, switches_the_camera_off_that_was_chosen_before)
{
    plug_cameras(THREE);
    HostCameraView view;
    view->set_camera_hint("0");
    view->start();
    const size_t first = view.events().size();
    view->set_camera_hint("1");
    EXPECT_FALSE(view->get_is_active()) << "the new camera runs before its start";
    EXPECT_TRUE(running_cameras().empty());
    EXPECT_EQ(view.reports(first), Names{"active_changed"});
    view->start();
    EXPECT_TRUE(view->get_is_active());
    EXPECT_EQ(running_cameras(), Names{"USB Camera Pro"});
}

TEST(Hint, chooses_again_even_when_it_is_the_same)
{
    plug_cameras(THREE);
    HostCameraView view;
    view->set_camera_hint("usb");
    view->start();
    view->set_camera_hint("usb");
    EXPECT_FALSE(view->get_is_active());
    view->start();
    EXPECT_EQ(running_cameras(), Names{"USB Camera Pro"});
}

TEST(Hint, brings_a_camera_back_that_another_one_has_replaced)
{
    plug_cameras(THREE);
    HostCameraView view, other;
    for (int i = 0; i < 30; ++i) {
        view->set_camera_hint(std::to_string(i % 3));
        view->start();
        ASSERT_TRUE(view->get_is_active());
        ASSERT_EQ(running_cameras(), Names{THREE[i % 3].name}) << i;
    }
    other->set_camera_hint("0");
    other->start();
    EXPECT_EQ(running_cameras(), (Names{THREE[2].name, THREE[0].name})) << "in another view";
}

TEST(Hint, that_comes_last_wins)
{
    plug_cameras(THREE);
    HostCameraView view;
    for (int i = 0; i < 20; ++i)
        view->set_camera_hint(std::to_string(i % 3));
    view->start();
    EXPECT_EQ(running_cameras(), Names{"USB Camera Pro"});
}

TEST(Hint, shows_another_camera_in_the_same_scene)
{
    plug_cameras(THREE);
    HostCameraView view;
    ASSERT_TRUE(view.show("web"));
    EXPECT_TRUE(view.wait_for_border(YELLOW));
    view->set_camera_hint("usb");
    view->start();
    EXPECT_TRUE(view.wait_for_border(CYAN));
    EXPECT_TRUE(view.goes_on());
    view->set_camera_hint("2");
    view->start();
    EXPECT_TRUE(view.wait_for_border(MAGENTA));
    EXPECT_EQ(running_cameras(), Names{"Capture Card Ölig"});
}

}  // namespace

}  // namespace marlune::test

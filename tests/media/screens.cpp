// Two screens: which of them a view shows.

#include "support/media/host_screen_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

constexpr Size FRONT_SIZE{640, 480}, SIDE_SIZE{512, 384};
constexpr Rect FRONT{0, 0, 640, 480}, SIDE{640, 0, 512, 384};

std::unique_ptr<ScreenServer> server;

/** From before the library's start until after its stop. */
class TwoScreens : public testing::Environment {
    void SetUp() override
    {
        server = std::make_unique<ScreenServer>(
            ScreenServer::Options{.width = 1152,
                                  .height = 480,
                                  .monitors = {{"Front-1", FRONT, true},
                                               {.name = "Side-2",
                                                .area = SIDE,
                                                .model = "DELL U2720Q",
                                                .serial_number = "XK-77"}}});
        server->paint(FRONT, RED);
        server->paint(SIDE, BLUE);
    }
    void TearDown() override { server.reset(); }
};

// Registered first, and so torn down last.
[[maybe_unused]] testing::Environment* const two_screens =
    testing::AddGlobalTestEnvironment(new TwoScreens);

constexpr auto NO_SCREEN_OF_THAT_NAME = "CaptureScreen: returning default primary screen";

class Screens : public testing::Test {
protected:
    testing::AssertionResult shows(const char* hint, Colour colour)
    {
        if (!view.load(hint))
            return testing::AssertionFailure() << "the scene for \"" << hint << "\" is not made";
        return view.wait_for_colour(view.picture().area(), colour) << " for \"" << hint << '"';
    }

    HostScreenView view{FRONT_SIZE};
};

TEST_F(Screens, are_listed_with_what_they_can_be_chosen_by)
{
    const auto screens = view->get_physical_screens();
    ASSERT_EQ(screens.size(), 2u);
    EXPECT_EQ(screens[0].at("name"), "Front-1");
    EXPECT_EQ(screens[1].at("name"), "Side-2");
    EXPECT_EQ(screens[1].at("model"), "DELL U2720Q");
    EXPECT_EQ(screens[1].at("serialNumber"), "XK-77");
}

TEST_F(Screens, are_shown_from_the_first_on_without_a_hint)
{
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(view.wait_for_colour(view.picture().area(), RED));
    EXPECT_TRUE(shows("-1", RED));
    EXPECT_TRUE(shows("", RED));
}

TEST_F(Screens, are_chosen_by_number)
{
    EXPECT_TRUE(shows("1", BLUE));
    EXPECT_TRUE(shows("0", RED));
}

TEST_F(Screens, are_chosen_by_a_part_of_what_they_are_called)
{
    EXPECT_TRUE(shows("side", BLUE)) << "the name";
    EXPECT_TRUE(shows("dell", BLUE)) << "the model";
    EXPECT_TRUE(shows("xk-7", BLUE)) << "the serial number";
    EXPECT_TRUE(shows("FRONT", RED));
    EXPECT_TRUE(shows("-", RED)) << "not the first screen that matches";
}

TEST_F(Screens, are_the_primary_one_where_the_number_is_wrong)
{
    expect_message("CaptureScreen: wrong screen number supplied (index 3, available: 2), returning "
                   "default primary screen");
    EXPECT_TRUE(shows("3", RED));
    expect_message("CaptureScreen: wrong screen number supplied (index 2, available: 2), returning "
                   "default primary screen");
    EXPECT_TRUE(shows("2", RED));
    EXPECT_TRUE(shows("-2", RED));
}

TEST_F(Screens, are_the_primary_one_where_none_is_called_so)
{
    expect_message(NO_SCREEN_OF_THAT_NAME);
    EXPECT_TRUE(shows("Eizo", RED));
}

TEST_F(Screens, are_changed_by_another_hint_with_the_next_scene)
{
    ASSERT_TRUE(shows("0", RED));
    const Rect corner{0, 0, 40, 40};
    view->set_physical_screen("side");
    server->paint(corner, GREEN);
    EXPECT_TRUE(view.wait_for_colour(corner, GREEN)) << "it goes on with the first";
    server->paint(corner, RED);
    EXPECT_TRUE(view.wait_for_colour(view.picture().area(), RED));

    view->set_active(false);
    view->set_active(true);
    EXPECT_TRUE(view.wait_for_colour(view.picture().area(), RED)) << "and after a rest";

    view->reset();
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(view.wait_for_colour(view.picture().area(), BLUE));
}

TEST_F(Screens, are_shown_to_their_edges)
{
    HostScreenView side(SIDE_SIZE);
    ASSERT_TRUE(side.load("side"));
    server->paint({SIDE.x, SIDE.y, 1, SIDE.height}, GREEN);
    server->paint({SIDE.x + SIDE.width - 1, SIDE.y, 1, SIDE.height}, WHITE);
    const Rect first_column{0, 0, 1, SIDE.height}, last_column{SIDE.width - 1, 0, 1, SIDE.height};
    EXPECT_TRUE(side.wait_for_colour(first_column, GREEN));
    EXPECT_TRUE(side.wait_for_colour(last_column, WHITE));
    EXPECT_TRUE(
        every_pixel_in(side.picture(), {1, 0, SIDE.width - 2, SIDE.height}, BLUE, "between them"));
    server->paint(SIDE, BLUE);
}

TEST_F(Screens, are_shown_side_by_side_in_two_views)
{
    HostScreenView side(SIDE_SIZE);
    ASSERT_TRUE(side.load("1"));
    ASSERT_TRUE(view.load("0"));
    EXPECT_TRUE(side.wait_for_colour(side.picture().area(), BLUE));
    EXPECT_TRUE(view.wait_for_colour(view.picture().area(), RED));
    side->destroy();
    server->paint(FRONT, GREEN);
    EXPECT_TRUE(view.wait_for_colour(view.picture().area(), GREEN)) << "the other one goes on";
    server->paint(FRONT, RED);
}

}  // namespace

}  // namespace marlune::test

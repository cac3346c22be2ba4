// The list of screens, which needs no view.

#include "support/library.h"

#include <marlune/app.h>
#include <marlune/mview.h>

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <string>

namespace marlune::test {

namespace {

using Screen = std::map<std::string, std::string>;

class Screens : public testing::Test {
protected:
    void SetUp() override
    {
        start_library();
        M::ensure_qt_eventloop_is_running();
        screens = MView().get_physical_screens();
        ASSERT_FALSE(screens.empty()) << "the tests need a display";
    }

    void expect_all_match(const std::string& key, const std::string& pattern)
    {
        for (const Screen& screen : screens)
            EXPECT_TRUE(std::regex_match(screen.at(key), std::regex(pattern)))
                << key << ": " << screen.at(key);
    }

    std::vector<Screen> screens;
};

TEST_F(Screens, have_these_nine_entries_each)
{
    const std::set<std::string> expected = {"name",         "model",         "manufacturer",
                                            "serialNumber", "availableSize", "virtualSize",
                                            "isPortrait",   "isLandscape",   "refreshRate"};
    for (const Screen& screen : screens) {
        std::set<std::string> keys;
        for (const auto& [key, value] : screen)
            keys.insert(key);
        EXPECT_EQ(keys, expected);
    }
}

TEST_F(Screens, have_a_name)
{
    expect_all_match("name", ".+");
}

TEST_F(Screens, report_their_sizes_as_width_x_height)
{
    expect_all_match("availableSize", "[1-9][0-9]*x[1-9][0-9]*");
    expect_all_match("virtualSize", "[1-9][0-9]*x[1-9][0-9]*");
}

TEST_F(Screens, report_their_rate_with_six_decimals)
{
    expect_all_match("refreshRate", "[0-9]+\\.[0-9]{6}");
}

TEST_F(Screens, report_their_orientation_as_true_or_false)
{
    expect_all_match("isPortrait", "true|false");
    expect_all_match("isLandscape", "true|false");
}

TEST_F(Screens, are_the_same_in_the_next_call)
{
    EXPECT_EQ(MView().get_physical_screens(), screens);
}

}  // namespace

}  // namespace marlune::test

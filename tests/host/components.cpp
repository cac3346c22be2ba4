// Each component of the library: it loads, draws and processes input without a warning.

#include "support/host_view.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace marlune::test {

namespace {

struct Component {
    const char* module;
    const char* name;
};

std::string name_of(const Component& component, Size size)
{
    return std::string(component.name) + "_" + std::to_string(size.width) + "x"
        + std::to_string(size.height);
}

class Components : public testing::TestWithParam<std::tuple<Component, Size>> {
protected:
    const Component component = std::get<Component>(GetParam());
    const Size size = std::get<Size>(GetParam());
};

void give_input(HostView& view, Size size)
{
    const uint32_t x = size.width / 2, y = size.height / 2;
    view->mouse_move(x - 20, y);
    view->mouse_move(x, y);
    view->mouse_wheel_down(x, y);
    view->mouse_wheel_up(x, y);
    for (uint16_t button = 0; button < 5; ++button) {
        view->mouse_click(button, 0, x, y);
        view->mouse_click(button, 1, x, y);
    }
    for (const uint32_t key :
         {0x41u, 0x01000012u, 0x01000014u, 0x01000004u, 0x01000003u, 0x01000000u})
        view.type(key);
}

TEST_P(Components, draw_and_process_input)
{
    HostView view(size);
    ASSERT_TRUE(view->load(component.module, component.name));
    give_input(view, size);
    for (int i = 0; i < 10; ++i)
        view.draw_frame();
    EXPECT_TRUE(shows_something(view.picture(), "the component draws something"));
    view->reset();
    ASSERT_TRUE(view->load(component.module, component.name))
        << "the component loads a second time";
}

/** The number in a code strip of DebugVideo; the head of that component describes its layout. */
int frame_number(const Image& picture, uint32_t y)
{
    constexpr uint32_t CELLS = 27;
    const uint32_t cell = picture.width() / CELLS;
    const auto bit = [&](uint32_t k) {
        return int(picture.pixel(k * cell + cell / 2, y) == WHITE);
    };
    EXPECT_EQ(bit(0), 1);
    EXPECT_EQ(bit(1), 0);
    int number = 0, ones = bit(26);
    for (uint32_t k = 2; k <= 25; ++k) {
        number = 2 * number + bit(k);
        ones += bit(k);
    }
    EXPECT_EQ(ones % 2, 0) << "the parity of the strip is even";
    return number;
}

TEST(DebugVideo, numbers_each_frame_that_is_drawn)
{
    constexpr Size SIZE{640, 480};
    HostView view(SIZE);
    ASSERT_TRUE(view->load("Debug", "DebugVideo"));
    for (int frame = 0; frame < 20; ++frame) {
        const Image picture = view.picture();
        const uint32_t middle = SIZE.width / 27 / 2;
        EXPECT_EQ(frame_number(picture, middle), frame);
        EXPECT_EQ(frame_number(picture, SIZE.height - middle), frame)
            << "the bottom strip shows the same number";
        view.draw_frame();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Library, Components,
    testing::Combine(testing::Values(Component{"Splash", "Splash"},
                                     Component{"Splash", "StackViewFancy"},
                                     Component{"Debug", "Debug"}, Component{"Debug", "DebugMouse"},
                                     Component{"Debug", "DebugVideo"}),
                     testing::Values(Size{256, 256}, Size{1280, 720}, Size{1920, 1080})),
    [](const auto& test) {
        return name_of(std::get<Component>(test.param), std::get<Size>(test.param));
    });

}  // namespace

}  // namespace marlune::test

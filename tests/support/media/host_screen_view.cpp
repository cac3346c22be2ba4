#include "support/media/host_screen_view.h"

#include "support/process/tree.h"

#include <unistd.h>

namespace marlune::test {

namespace {

// The colour of the component's cards.
constexpr Colour CARD{9, 22, 44, 217};

bool is_filled(const Image& image, Rect area, Colour colour)
{
    for (uint32_t y = area.y; y < area.y + area.height; ++y) {
        for (uint32_t x = area.x; x < area.x + area.width; ++x) {
            if (!is_close(image.pixel(x, y), colour, 1))
                return false;
        }
    }
    return true;
}

}  // namespace

bool HostScreenView::load()
{
    const bool loaded = facade().load("Multimedia", "ScreenCapture");
    note_frame();
    return loaded;
}

bool HostScreenView::load(const std::string& screen)
{
    facade().set_physical_screen(screen);
    return load();
}

testing::AssertionResult HostScreenView::wait_for_colour(uint32_t x, uint32_t y, Colour colour)
{
    return wait_for_colour({x, y, 1, 1}, colour);
}

testing::AssertionResult HostScreenView::wait_for_colour(Rect area, Colour colour)
{
    if (draw_until([&] { return is_filled(picture(), area, colour); }))
        return testing::AssertionSuccess();
    return every_pixel_in(picture(), area, colour, "the screen is shown");
}

testing::AssertionResult HostScreenView::wait_for_notice()
{
    if (draw_until([&] { return shows_notice(picture()); }))
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
        << "the view shows no notice; see " << keep_picture(picture());
}

int capturing_threads()
{
    return count_threads(getpid(), "QThread");  // no other thread has this name
}

bool shows_notice(const Image& image)
{
    // The texts differ, so no pixel of the card is the same in each.
    uint32_t pixels_of_card = 0;
    for (uint32_t x = 0; x < image.width(); ++x)
        pixels_of_card += is_close(image.pixel(x, image.height() / 2), CARD, 2);
    return pixels_of_card > image.width() / 20
        && is_filled(image, {0, 0, image.width(), 8}, TRANSPARENT);
}

}  // namespace marlune::test

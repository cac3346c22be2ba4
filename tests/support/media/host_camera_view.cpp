#include "support/media/host_camera_view.h"

namespace marlune::test {

namespace {

// The tolerance of a colour after conversion to YUYV, with less resolution for colour than for
// brightness, and after scaling.
constexpr int TOLERANCE = 12;

}  // namespace

void write_to(std::shared_ptr<EventLog> log, const MCameraView& view)
{
#define MARLUNE_FOLLOW(kind, name, parameters, signal, slot) \
    view.set_func_##name([log](const auto&... values) { log->add(#name, values...); });
    MARLUNE_CAMERA_CALLBACKS(MARLUNE_FOLLOW)
#undef MARLUNE_FOLLOW
}

HostCameraView::HostCameraView(Size resolution, VulkanHost& host) : FollowedView(resolution, host)
{
    write_to(log(), facade());
}

bool HostCameraView::load()
{
    const bool loaded = facade().load("Multimedia", "Camera");
    note_frame();
    return loaded;
}

testing::AssertionResult HostCameraView::show(const std::string& hint)
{
    facade().set_camera_hint(hint);
    facade().set_fill_mode(STRETCH);
    if (!load())
        return testing::AssertionFailure() << "the component cannot be loaded";
    facade().start();
    return goes_on();
}

std::optional<int> HostCameraView::frame_number()
{
    const Image image = picture();
    const uint32_t cell = CAMERA_NUMBER.width / CAMERA_NUMBER_BITS;
    const uint32_t y = CAMERA_NUMBER.y + CAMERA_NUMBER.height / 2;
    int number = 0;
    for (uint32_t bit = 0; bit < CAMERA_NUMBER_BITS; ++bit) {
        const uint32_t x = CAMERA_NUMBER.x + bit * cell + cell / 2;
        const Colour colour =
            image.pixel(x * image.width() / CAMERA_WIDTH, y * image.height() / CAMERA_HEIGHT);
        const bool is_white = is_close(colour, WHITE, TOLERANCE);
        if (!is_white && !is_close(colour, BLACK, TOLERANCE))
            return std::nullopt;
        number = 2 * number + is_white;
    }
    return number;
}

testing::AssertionResult HostCameraView::goes_on()
{
    std::optional<int> first;
    const auto is_later = [&] {
        const std::optional<int> number = frame_number();
        if (!first)
            first = number;
        return number > first;
    };
    if (draw_until(is_later, PATIENCE))
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
        << "the image does not change"
        << (first ? " at frame " + std::to_string(*first) : ", and is none of a camera's")
        << "; see " << keep_picture(picture()) << "; the view reported " << log()->describe();
}

testing::AssertionResult HostCameraView::wait_for_colour_at(uint32_t x, uint32_t y, Colour colour)
{
    const Image image = picture();
    return wait_for_colour(x * image.width() / CAMERA_WIDTH, y * image.height() / CAMERA_HEIGHT,
                           colour, TOLERANCE);
}

testing::AssertionResult HostCameraView::wait_for_border(Colour colour)
{
    return wait_for_colour_at(CAMERA_BORDER / 2, CAMERA_HEIGHT / 2, colour);
}

}  // namespace marlune::test

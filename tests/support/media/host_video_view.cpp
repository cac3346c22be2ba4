#include "support/media/host_video_view.h"

#include <QString>
#include <QUrl>

#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace marlune::test {

namespace {

bool is_loaded(int status)
{
    return status == LOADED_MEDIA || status == BUFFERING_MEDIA || status == BUFFERED_MEDIA
        || status == END_OF_MEDIA;
}

std::string clips_folder()
{
    const char* const folder = std::getenv("MARLUNE_CLIPS");
    if (!folder)
        throw std::runtime_error("MARLUNE_CLIPS is not set");
    return folder;
}

}  // namespace

void write_to(std::shared_ptr<EventLog> log, const MVideoPlayerView& view)
{
#define MARLUNE_FOLLOW(source, name, parameters, signal, slot) \
    view.set_func_on_##name([log](const auto&... values) { log->add(#name, values...); });
    MARLUNE_VIDEO_CALLBACKS(MARLUNE_FOLLOW)
#undef MARLUNE_FOLLOW
}

std::string clip_path(const std::string& name)
{
    return clips_folder() + "/" + name;
}

std::string clip_url(const std::string& name)
{
    return QUrl::fromLocalFile(QString::fromStdString(clip_path(name)))
        .toString(QUrl::FullyEncoded)
        .toStdString();
}

HostVideoView::HostVideoView(Size resolution, VulkanHost& host) : FollowedView(resolution, host)
{
    write_to(log(), facade());
}

bool HostVideoView::load()
{
    const bool loaded = facade().load("Multimedia", "VideoPlayer");
    note_frame();
    return loaded;
}

testing::AssertionResult HostVideoView::open(const std::string& clip)
{
    const size_t first = events().size();
    facade().set_source(clip_url(clip));
    if (!load())
        return testing::AssertionFailure() << "the component for " << clip << " cannot be loaded";
    return wait_until_loaded(first);
}

testing::AssertionResult HostVideoView::change_to(const std::string& clip)
{
    const size_t first = events().size();
    facade().set_source(clip_url(clip));
    return wait_until_loaded(first);
}

testing::AssertionResult HostVideoView::wait_until_loaded(size_t first)
{
    if (draw_until([&] { return is_loaded(facade().get_media_status()); }, PATIENCE))
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
        << "the clip is not loaded; the view reported " << log()->describe(first);
}

std::optional<int> HostVideoView::frame_number()
{
    constexpr uint32_t CELLS = 16;
    const Image image = picture();
    const uint32_t cell = image.width() / CELLS;
    int number = 0;
    for (uint32_t k = 0; k < CELLS; ++k) {
        const Colour colour = image.pixel(k * cell + cell / 2, image.height() / 3);
        const bool white = is_close(colour, WHITE, 40);
        if (!white && !is_close(colour, BLACK, 40))
            return std::nullopt;
        if (k < 2 && white != (k == 0))
            return std::nullopt;
        if (k >= 2)
            number = 2 * number + white;
    }
    return number;
}

testing::AssertionResult HostVideoView::wait_for_frame_number(int number)
{
    std::optional<int> last;
    const auto is_shown = [&] {
        last = frame_number();
        return last == number;
    };
    if (draw_until(is_shown))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "frame " << number << " is not shown, but "
                                       << (last ? std::to_string(*last) : "no frame's number")
                                       << "; see " << keep_picture(picture());
}

void HostVideoView::move(uint32_t x, uint32_t y)
{
    facade().mouse_move(x, y);
}

void HostVideoView::press(uint32_t x, uint32_t y)
{
    facade().mouse_click(LEFT_BUTTON, 0, x, y);
}

void HostVideoView::release(uint32_t x, uint32_t y)
{
    facade().mouse_click(LEFT_BUTTON, 1, x, y);
}

void HostVideoView::click(uint32_t x, uint32_t y)
{
    move(x, y);
    press(x, y);
    release(x, y);
}

}  // namespace marlune::test

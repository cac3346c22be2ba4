#include "support/web/overlay.h"

#include "support/library.h"
#include "support/qt_thread.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <sstream>
#include <utility>

namespace marlune::test {

namespace {

// The side in px of the smallest square that counts as an area. Smaller ones are lines or edges.
constexpr uint32_t BLOCK = 5;

bool has_block(const Image& image, uint32_t left, uint32_t top, Colour colour, int tolerance)
{
    for (uint32_t y = top; y < top + BLOCK; ++y) {
        for (uint32_t x = left; x < left + BLOCK; ++x) {
            if (!is_close(image.pixel(x, y), colour, tolerance))
                return false;
        }
    }
    return true;
}

/** Lives on the Qt thread. */
class SurfaceCounter : public QObject {
public:
    explicit SurfaceCounter(std::shared_ptr<std::atomic<int>> count) : count_(std::move(count)) {}

    // Qt sends this event to a window when its native window is created and when it is destroyed.
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::PlatformSurface)
            ++*count_;
        return false;
    }

private:
    std::shared_ptr<std::atomic<int>> count_;
};

testing::AssertionResult failure_with(const Image& image, Colour colour, const char* what)
{
    return testing::AssertionFailure()
        << "the view " << what << " " << colour << "; see " << keep_picture(image);
}

}  // namespace

Sighting find_colour(const Image& image, Colour colour, int tolerance)
{
    Sighting seen{0, image.width(), image.height(), 0, 0};
    for (uint32_t y = 0; y + BLOCK <= image.height(); ++y) {
        for (uint32_t x = 0; x + BLOCK <= image.width(); ++x) {
            if (!has_block(image, x, y, colour, tolerance))
                continue;
            ++seen.count;
            seen.left = std::min(seen.left, x);
            seen.right = std::max(seen.right, x + BLOCK - 1);
            seen.top = std::min(seen.top, y);
            seen.bottom = std::max(seen.bottom, y + BLOCK - 1);
        }
    }
    return seen;
}

testing::AssertionResult shows(HostWebView& view, Colour colour, uint32_t count)
{
    const auto is_there = [&] {
        view.draw_frame();
        return find_colour(view.picture(), colour).count >= count;
    };
    if (wait_until(is_there))
        return testing::AssertionSuccess();
    return failure_with(view.picture(), colour, "never showed enough of");
}

testing::AssertionResult shows_no(HostWebView& view, Colour colour)
{
    const auto is_gone = [&] {
        view.draw_frame();
        return find_colour(view.picture(), colour).count == 0;
    };
    if (wait_until(is_gone))
        return testing::AssertionSuccess();
    return failure_with(view.picture(), colour, "did not stop showing");
}

testing::AssertionResult click_on(HostWebView& view, Colour colour)
{
    if (const testing::AssertionResult shown = shows(view, colour); !shown)
        return shown;
    const Sighting place = find_colour(view.picture(), colour);
    view.click(place.x(), place.y());
    return testing::AssertionSuccess();
}

WindowWatch::WindowWatch()
{
    start_library();
    on_qt_thread([this] {
        filter_ = new SurfaceCounter(windows_);
        QCoreApplication::instance()->installEventFilter(filter_);
    });
}

WindowWatch::~WindowWatch()
{
    on_qt_thread([this] { delete filter_; });
}

}  // namespace marlune::test

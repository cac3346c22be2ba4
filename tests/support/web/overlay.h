#pragma once

#include "support/web/host_web_view.h"

#include <atomic>
#include <memory>
#include <string>

class QObject;

namespace marlune::test {

/** Colours of the overlays of a web view. */
namespace overlay {

inline constexpr Colour CARD{0x0f, 0x23, 0x40, 255};     // dialogs and the menu
inline constexpr Colour ACCEPT{0x7f, 0xd6, 0xd0, 255};   // the button for Enter
inline constexpr Colour REJECT{0x1c, 0x3a, 0x5c, 255};   // the other one
inline constexpr Colour END{0x14, 0x2d, 0x4e, 255};      // "No more dialogs from this page"
inline constexpr Colour FIELD{0x07, 0x13, 0x27, 255};    // a line to fill in
inline constexpr Colour CURRENT{0x24, 0x50, 0x7a, 255};  // the menu's entry under the mouse

}  // namespace overlay

/** Where an image shows a colour. */
struct Sighting {
    uint32_t count = 0;  // about how many pixels
    uint32_t left = 0, top = 0, right = 0, bottom = 0;

    uint32_t x() const { return (left + right) / 2; }
    uint32_t y() const { return (top + bottom) / 2; }
};

/** Finds areas: thin lines, and edges where two colours blend, do not count. */
Sighting find_colour(const Image& image, Colour colour, int tolerance = 2);

/** Draws until at least `count` pixels of the texture have the colour. */
testing::AssertionResult shows(HostWebView& view, Colour colour, uint32_t count = 200);

/** Draws until no pixel has the colour. */
testing::AssertionResult shows_no(HostWebView& view, Colour colour);

/** Waits for an area of this colour and clicks in its middle. */
testing::AssertionResult click_on(HostWebView& view, Colour colour);

/** Presses and releases a key that writes no text. */
inline void press_key(HostWebView& view, Key key)
{
    view.type(key);
}

/** Counts the native windows that the process creates, including those that close at once. */
class WindowWatch {
public:
    /** Starts the library. */
    WindowWatch();
    ~WindowWatch();

    int windows() const { return *windows_; }

private:
    std::shared_ptr<std::atomic<int>> windows_ = std::make_shared<std::atomic<int>>(0);
    QObject* filter_ = nullptr;
};

}  // namespace marlune::test

#pragma once

#include <marlune/mquick_view.h>

#include <string>

namespace marlune {

/**
 * A view that shows one of the machine's screens live. See MView for what all views have in common.
 *
 * @code
 * marlune::MScreenCaptureView view;
 * view.set_view_monitor(instance);
 * view.set_statistics_monitor(physical_device, device);
 * view.set_resolution({1280, 720});
 * view.set_physical_screen("DELL");
 * if (!view.load("Multimedia", "ScreenCapture")) ...
 * @endcode
 *
 * The component "ScreenCapture" shows the whole screen in its proportions; the rest of the view is
 * transparent. If capturing is off or the system refuses it, the component displays a text; the
 * host is not notified. A separate thread captures at the screen's refresh rate, also between the
 * frames that the host draws with render().
 *
 * Privacy: the texture contains everything that is visible on the screen, including the windows of
 * other programs, and the library does not ask the player for consent. A game that passes the
 * texture on must ask its player first. Capturing begins with load(); to begin later, call
 * set_active(false) before load(). Capturing ends with set_active(false), reset(), destroy() and
 * the stop of the library.
 *
 * Capturing works on Windows and under X11. Under Wayland it depends on the desktop, which asks the
 * player for permission if it supports capturing at all.
 *
 * Constructing this facade creates a second, unused view that stays until the process ends: keep
 * one view and load it again instead of constructing new ones.
 */
class MARLUNE_EXPORT MScreenCaptureView : public MQuickView {
public:
    /**
     * Creates a view. Blocks until the Qt thread is ready, and forever if the library is never
     * started.
     */
    MScreenCaptureView();

    /**
     * Switches capturing on or off; default on. While it is off, the view shows no picture and
     * reads none from the screen. The value is kept through reset() and load(). Blocks until
     * capturing has begun or ended. Does nothing without a view.
     */
    void set_active(bool active) const;

    /**
     * Chooses the screen for the next load(); a capture in progress keeps its screen. Default "-1".
     * To switch a view to another screen, call set_physical_screen(), reset() and load().
     *
     * "-1" or an empty string: the first screen of get_physical_screens(). A number from 0: the
     * screen at that index. Any other text: the first screen whose serial number, model or name
     * contains it, ignoring case. If there is no such screen: the system's primary screen, with a
     * warning in Qt's log. Other negative numbers: the primary screen, without a warning.
     *
     * Does not block. Does nothing without a view.
     */
    void set_physical_screen(std::string screen) const;
};

static_assert(sizeof(MScreenCaptureView) == sizeof(MView));

}  // namespace marlune

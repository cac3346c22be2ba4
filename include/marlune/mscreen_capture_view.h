#pragma once

#include <marlune/mquick_view.h>

#include <string>

namespace marlune {

/**
 * A view that shows the live picture of one of the machine's screens. MView tells what all views have in
 * common.
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
 * The component "ScreenCapture" shows the whole screen, in its proportions; what it leaves free is
 * transparent. It says in words that capturing is off or that the system refuses it; the host is not
 * told. Capturing is done on a thread of its own, at the screen's refresh rate, and goes on between the
 * frames that the host draws with render().
 *
 * Privacy: all that is seen on the screen is in the texture, windows of other programs included, and
 * nobody is asked. A game that hands the texture on has to ask its player first. Capturing begins with
 * load(): a host that wants to begin later calls set_active(false) before. It ends with
 * set_active(false), reset(), destroy() and the library's stop.
 *
 * Screens are captured on Windows and under X11. Under Wayland it is up to the desktop, which asks the
 * player if it can do it at all.
 *
 * Making one makes a second view, which is not used and stays until the process ends: keep such a view
 * and load it again.
 */
class MARLUNE_EXPORT MScreenCaptureView : public MQuickView {
public:
    /** Makes a view. Blocks until the Qt thread is ready; waits for ever if the library is never started. */
    MScreenCaptureView();

    /**
     * Whether it captures; default true. While it does not, no picture is shown, and none is taken from
     * the screen. Holds through reset() and load(). Blocks until capturing has begun or ended. Nothing
     * without a view.
     */
    void set_active(bool active) const;

    /**
     * Chooses the screen for the next load(); one that is being captured stays. Default "-1".
     *
     * "-1", or nothing: the first screen of get_physical_screens(). A number from 0: the screen at that
     * place in it. Any other text: the first screen whose serial number, model or name has it in it, in
     * any letter case. Where there is no such screen: the system's primary one, with a warning in the log.
     *
     * Does not block. To move a view: set_physical_screen(), reset(), load(). Nothing without a view.
     */
    void set_physical_screen(std::string screen) const;
};

static_assert(sizeof(MScreenCaptureView) == sizeof(MView));

}  // namespace marlune

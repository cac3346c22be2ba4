#pragma once

#include <marlune/camera_callbacks.h>
#include <marlune/mquick_view.h>

#include <functional>
#include <string>
#include <vector>

namespace marlune {

/**
 * A view that shows the picture of a camera of this machine. MView tells what all views have in common.
 *
 * @code
 * marlune::MCameraView view;
 * view.set_view_monitor(instance);
 * view.set_statistics_monitor(physical_device, device);
 * view.set_resolution({1280, 720});
 * view.set_func_error_occurred([](int error, std::string text) { ... });
 * view.set_camera_hint("usb");
 * if (!view.load("Multimedia", "Camera")) ...
 * view.start();
 * @endcode
 *
 * set_camera_hint() chooses the camera, and start() switches it on: neither load() nor the choice does.
 * The component "Camera" shows the picture, and says in words why there is none.
 *
 * The camera goes with its scene: reset(), and a load() over another scene, give its device back, and what
 * was set on it is gone. load() then chooses it again by the hint, and it waits for start(). Before the
 * first load(), reset() only switches it off.
 *
 * Without a view (see MView), and before a camera has been chosen, a member returns at once or does
 * nothing: 0, false, or an empty string or list. Modes and values that the camera does not have are
 * not taken, nor is any by one that could not be opened or has been unplugged.
 *
 * Making one makes a second view, which is not used and stays until the process ends: keep such a view
 * and load it again, rather than making one each time.
 */
class MARLUNE_EXPORT MCameraView : public MQuickView {
public:
    /** Makes a view. Blocks until the Qt thread is ready; waits for ever if the library is never started. */
    MCameraView();

    /**
     * Chooses the camera. Does not block; a call that the same thread makes afterwards already finds the new
     * one, but not one that is made in a callback.
     *
     * "", "-1", "0" and any other negative number: the first one. Another number: the one of that place
     * in the system's list, from 0. Any other text: the first one whose name contains it, in letters of
     * either case. Where there is no such camera the first one is taken, and Qt's log says so; where
     * there is none at all, set_func_error_occurred() tells, and what was chosen before stays.
     *
     * The camera that was chosen before is switched off, and what was set on it is gone; the new one waits
     * for start(). So it is for the same camera too, which is how one is had back that has failed or has
     * been unplugged. Some systems keep the former one from other programs until the next reset().
     */
    void set_camera_hint(std::string hint) const;

    /** Switches the camera on. Blocks, but not for the first picture. */
    void start() const;
    /** Switches it off; some systems keep it from other programs and views all the same. Blocks. */
    void stop() const;
    /** Switches it on or off. Does not block. */
    void set_active(bool active) const;
    /** Whether it is on: also when it fails, or has been unplugged. Blocks. */
    bool get_is_active() const;
    /** Whether there is one to switch on: also after it has been unplugged. Blocks. */
    bool is_available() const;

    /** True switches the camera on; false leaves it as it is. Blocks. */
    void set_auto_play(bool enabled) const;

    /** How the picture fills the scene: 0 stretched, 1 whole (the default), 2 cropped. Blocks. */
    unsigned int get_fill_mode() const;
    /** Any other number is taken for 0, but for 4294967295, which shows the picture as 1 does. Blocks. */
    void set_fill_mode(unsigned int mode) const;

    /** 0 none, 1 the camera failed, as when another program uses it. Blocks. */
    int get_error() const;
    /** For people; empty without an error. Blocks. */
    std::string get_error_string() const;

    /** Always 0, with a warning in Qt's log: what a camera can do is not told. Blocks. */
    int get_supported_features() const;

    /**
     * 0 automatic, 1 manual, 2 portrait, 3 night, 4 sports, 5 snow, 6 beach, 7 action, 8 landscape,
     * 9 portrait at night, 10 theatre, 11 sunset, 12 steady, 13 fireworks, 14 party, 15 candlelight,
     * 16 bar codes. They block.
     */
    int get_exposure_mode() const;
    void set_exposure_mode(int mode) const;
    bool is_exposure_mode_supported(int mode) const;

    /** In EV, positive for a brighter picture. Blocks. */
    float get_exposure_compensation() const;
    /** Does not block. */
    void set_exposure_compensation(float compensation) const;

    /** What the camera exposes with, in seconds; -1 when it does not tell. Blocks. */
    float get_exposure_time() const;
    /** What was set, in seconds; -1 when nothing was. Blocks. */
    float get_manual_exposure_time() const;
    /** Does not block. */
    void set_manual_exposure_time(float seconds) const;
    /** Leaves it to the camera. Does not block. */
    void set_auto_exposure_time() const;
    /** The range of set_manual_exposure_time(), in seconds; -1 when it is not known. They block. */
    float minimum_exposure_time() const;
    float maximum_exposure_time() const;

    /** What the camera is at, in ISO; -1 when it does not tell. Blocks. */
    int get_iso_sensitivity() const;
    /** What was set, in ISO; -1 when nothing was. Blocks. */
    int get_manual_iso_sensitivity() const;
    /** Does not block. */
    void set_manual_iso_sensitivity(int sensitivity) const;
    /** Leaves it to the camera. Does not block. */
    void set_auto_iso_sensitivity() const;
    /** The range of set_manual_iso_sensitivity(), in ISO; -1 when it is not known. They block. */
    int minimum_iso_sensitivity() const;
    int maximum_iso_sensitivity() const;

    /** 0 off, 1 on, 2 automatic. They block. */
    int get_flash_mode() const;
    void set_flash_mode(int mode) const;
    bool is_flash_mode_supported(int mode) const;
    /** Whether the flash is charged. Blocks. */
    bool get_is_flash_ready() const;

    /** The steady light: 0 off, 1 on, 2 automatic. They block. */
    int get_torch_mode() const;
    void set_torch_mode(int mode) const;
    bool is_torch_mode_supported(int mode) const;

    /** 0 automatic, 1 near, 2 far, 3 hyperfocal, 4 infinity, 5 manual. They block. */
    int get_focus_mode() const;
    void set_focus_mode(int mode) const;
    bool is_focus_mode_supported(int mode) const;

    /** From 0, as near as can be, to 1, infinity: for the manual focus mode. Blocks. */
    float get_focus_distance() const;
    /** Does not block. */
    void set_focus_distance(float distance) const;

    /**
     * Where the camera focuses: x and y from the picture's upper left, 0 to 1; -1 and -1 when it does
     * not tell. Blocks.
     */
    std::vector<float> get_focus_point() const;
    /** Where it should: as get_focus_point(). Blocks. */
    std::vector<float> get_custom_focus_point() const;
    /** Takes the first two numbers; does nothing, but for a warning, where there are fewer. Does not block. */
    void set_custom_focus_point(std::vector<float> point) const;

    /**
     * 0 automatic, 1 manual, 2 sunlight, 3 cloudy, 4 shade, 5 tungsten, 6 fluorescent, 7 flash,
     * 8 sunset. They block.
     */
    int get_white_balance_mode() const;
    void set_white_balance_mode(int mode) const;
    bool is_white_balance_mode_supported(int mode) const;

    /** What was set, in kelvin; 0 when nothing was. Blocks. */
    int get_color_temperature() const;
    /** Sets the white balance to manual too; 0 leaves it to the camera. Does not block. */
    void set_color_temperature(int kelvin) const;

    /** 1 is the whole picture. They block. */
    float get_zoom_factor() const;
    /** Factors out of range are taken for the nearest one in it. */
    void set_zoom_factor(float factor) const;
    float get_minimum_zoom_factor() const;
    float get_maximum_zoom_factor() const;
    /** Zooms at a rate in powers of two a second; 0 for as fast as can be. Blocks, but not for the zooming. */
    void zoom_to(float factor, float rate) const;

    // The callbacks: a member for each that sets the function to call. Empty: none. They do not wait for
    // the Qt thread, only for a call of the former function that is under way, and in a callback not even
    // for that. Set them before the camera starts, to miss none. Called on the Qt thread.
#define MARLUNE_DECLARE_CAMERA_CALLBACK(kind, name, parameters, signal, slot) \
    void set_func_##name(std::function<void parameters> callback) const;
    MARLUNE_CAMERA_CALLBACKS(MARLUNE_DECLARE_CAMERA_CALLBACK)
#undef MARLUNE_DECLARE_CAMERA_CALLBACK
};

static_assert(sizeof(MCameraView) == sizeof(MView));

}  // namespace marlune

#pragma once

#include <marlune/camera_callbacks.h>
#include <marlune/mquick_view.h>

#include <functional>
#include <string>
#include <vector>

namespace marlune {

/**
 * A view that shows the picture of one of the machine's cameras. See MView for what all views have
 * in common.
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
 * set_camera_hint() chooses the camera, and start() switches it on; load() and set_camera_hint() do
 * not. The component "Camera" shows the picture, or a text that explains why there is none.
 *
 * The camera is released with its scene: reset(), and a load() that replaces a scene, release the
 * device and discard the settings made on it. load() then chooses the camera by the hint again, and
 * start() switches it on. Before the first load(), reset() only switches the camera off.
 *
 * Without a view (see MView), and before a camera has been chosen, a member returns at once: it
 * does nothing, or returns 0, false, or an empty string or list. A camera ignores modes and values
 * that it does not support. A camera that could not be opened or has been unplugged ignores all
 * modes and values.
 *
 * Constructing this facade creates a second, unused view that stays until the process ends: keep
 * one view and load it again instead of constructing new ones.
 */
class MARLUNE_EXPORT MCameraView : public MQuickView {
public:
    /**
     * Creates a view. Blocks until the Qt thread is ready, and forever if the library is never
     * started.
     */
    MCameraView();

    /**
     * Chooses the camera. Does not block. Later calls of the same thread already use the new
     * camera, except calls within a callback.
     *
     * "", "-1", "0" and any other negative number: the first camera. Another number: the camera at
     * that index in the system's list, from 0. Any other text: the first camera whose name contains
     * it, ignoring case. If there is no such camera, the library chooses the first one and logs a
     * warning. If there is no camera at all, the library calls the callback of
     * set_func_error_occurred() and keeps the previous camera.
     *
     * The previous camera is switched off, its settings are discarded, and the new one needs
     * start(). This also applies if the hint selects the same camera: choose a camera again to
     * recover it after a failure or after it has been unplugged. On some systems, other programs
     * cannot use the previous camera until the next reset().
     */
    void set_camera_hint(std::string hint) const;

    /** Switches the camera on. Blocks, but does not wait for the first picture. */
    void start() const;
    /**
     * Switches the camera off. On some systems, other programs and views still cannot use it.
     * Blocks.
     */
    void stop() const;
    /** Switches the camera on or off. Does not block. */
    void set_active(bool active) const;
    /** Returns whether the camera is on, also if it has failed or has been unplugged. Blocks. */
    bool get_is_active() const;
    /** Returns whether there is a camera to switch on, also after it has been unplugged. Blocks. */
    bool is_available() const;

    /** True switches the camera on; false leaves it as it is. Blocks. */
    void set_auto_play(bool enabled) const;

    /**
     * Returns how the picture fills the scene: 0 stretched, 1 scaled to fit (the default),
     * 2 cropped. Blocks.
     */
    unsigned int get_fill_mode() const;
    /**
     * Sets how the picture fills the scene. Any other number means 0, except 4294967295, which
     * means 1. Blocks.
     */
    void set_fill_mode(unsigned int mode) const;

    /**
     * Returns 0 no error, 1 the camera failed, for example because another program uses it. Blocks.
     */
    int get_error() const;
    /** Returns a message for people; empty if there is no error. Blocks. */
    std::string get_error_string() const;

    /**
     * Returns 0 and logs a warning: the library does not report features. The interface requires
     * it. Blocks.
     */
    int get_supported_features() const;

    /**
     * Returns the exposure mode: 0 automatic, 1 manual, 2 portrait, 3 night, 4 sports, 5 snow,
     * 6 beach, 7 action, 8 landscape, 9 night portrait, 10 theatre, 11 sunset, 12 steady photo,
     * 13 fireworks, 14 party, 15 candlelight, 16 barcode. Blocks.
     */
    int get_exposure_mode() const;
    /** Sets the exposure mode. Blocks. */
    void set_exposure_mode(int mode) const;
    /** Returns whether the camera supports the mode. Blocks. */
    bool is_exposure_mode_supported(int mode) const;

    /**
     * Returns the exposure compensation in EV; positive values make the picture brighter. Blocks.
     */
    float get_exposure_compensation() const;
    /** Sets the exposure compensation in EV. Does not block. */
    void set_exposure_compensation(float compensation) const;

    /** Returns the exposure time that the camera uses, in seconds; -1 if it is unknown. Blocks. */
    float get_exposure_time() const;
    /** Returns the exposure time that was set, in seconds; -1 if none was. Blocks. */
    float get_manual_exposure_time() const;
    /** Sets the exposure time in seconds. Does not block. */
    void set_manual_exposure_time(float seconds) const;
    /** Lets the camera choose the exposure time. Does not block. */
    void set_auto_exposure_time() const;
    /**
     * Returns the lower limit of set_manual_exposure_time(), in seconds; -1 if it is unknown.
     * Blocks.
     */
    float minimum_exposure_time() const;
    /**
     * Returns the upper limit of set_manual_exposure_time(), in seconds; -1 if it is unknown.
     * Blocks.
     */
    float maximum_exposure_time() const;

    /** Returns the sensitivity that the camera uses, in ISO; -1 if it is unknown. Blocks. */
    int get_iso_sensitivity() const;
    /** Returns the sensitivity that was set, in ISO; -1 if none was. Blocks. */
    int get_manual_iso_sensitivity() const;
    /** Sets the sensitivity in ISO. Does not block. */
    void set_manual_iso_sensitivity(int sensitivity) const;
    /** Lets the camera choose the sensitivity. Does not block. */
    void set_auto_iso_sensitivity() const;
    /**
     * Returns the lower limit of set_manual_iso_sensitivity(), in ISO; -1 if it is unknown. Blocks.
     */
    int minimum_iso_sensitivity() const;
    /**
     * Returns the upper limit of set_manual_iso_sensitivity(), in ISO; -1 if it is unknown. Blocks.
     */
    int maximum_iso_sensitivity() const;

    /** Returns the flash mode: 0 off, 1 on, 2 automatic. Blocks. */
    int get_flash_mode() const;
    /** Sets the flash mode. Blocks. */
    void set_flash_mode(int mode) const;
    /** Returns whether the camera supports the mode. Blocks. */
    bool is_flash_mode_supported(int mode) const;
    /** Returns whether the flash is charged. Blocks. */
    bool get_is_flash_ready() const;

    /** Returns the mode of the torch, the continuous light: 0 off, 1 on, 2 automatic. Blocks. */
    int get_torch_mode() const;
    /** Sets the mode of the torch. Blocks. */
    void set_torch_mode(int mode) const;
    /** Returns whether the camera supports the mode. Blocks. */
    bool is_torch_mode_supported(int mode) const;

    /**
     * Returns the focus mode: 0 automatic, 1 near, 2 far, 3 hyperfocal, 4 infinity, 5 manual.
     * Blocks.
     */
    int get_focus_mode() const;
    /** Sets the focus mode. Blocks. */
    void set_focus_mode(int mode) const;
    /** Returns whether the camera supports the mode. Blocks. */
    bool is_focus_mode_supported(int mode) const;

    /**
     * Returns the distance for the manual focus mode, from 0 (as near as possible) to 1 (infinity).
     * Blocks.
     */
    float get_focus_distance() const;
    /** Sets the distance for the manual focus mode, from 0 to 1. Does not block. */
    void set_focus_distance(float distance) const;

    /**
     * Returns the point on which the camera focuses: x and y from the top left of the picture, each
     * from 0 to 1; -1 and -1 if it is unknown. Blocks.
     */
    std::vector<float> get_focus_point() const;
    /** Returns the point that was set, in the same form. Blocks. */
    std::vector<float> get_custom_focus_point() const;
    /**
     * Sets the point on which the camera should focus. Uses the first two numbers; logs a warning
     * and does nothing else if there are fewer. Does not block.
     */
    void set_custom_focus_point(std::vector<float> point) const;

    /**
     * Returns the white balance mode: 0 automatic, 1 manual, 2 sunlight, 3 cloudy, 4 shade,
     * 5 tungsten, 6 fluorescent, 7 flash, 8 sunset. Blocks.
     */
    int get_white_balance_mode() const;
    /** Sets the white balance mode. Blocks. */
    void set_white_balance_mode(int mode) const;
    /** Returns whether the camera supports the mode. Blocks. */
    bool is_white_balance_mode_supported(int mode) const;

    /** Returns the colour temperature that was set, in kelvin; 0 if none was. Blocks. */
    int get_color_temperature() const;
    /**
     * Sets the colour temperature in kelvin and the white balance mode to manual; 0 lets the camera
     * choose. Does not block.
     */
    void set_color_temperature(int kelvin) const;

    /** Returns the zoom factor; 1 shows the whole picture. Blocks. */
    float get_zoom_factor() const;
    /** Sets the zoom factor, limited to the range of the camera. Blocks. */
    void set_zoom_factor(float factor) const;
    /** Returns the smallest zoom factor of the camera. Blocks. */
    float get_minimum_zoom_factor() const;
    /** Returns the largest zoom factor of the camera. Blocks. */
    float get_maximum_zoom_factor() const;
    /**
     * Starts to zoom to a factor. `rate` is in powers of two per second; 0 means as fast as
     * possible. Blocks, but does not wait until the zoom has ended.
     */
    void zoom_to(float factor, float rate) const;

    // The callbacks of camera_callbacks.h: each member registers one. An empty function unregisters
    // it. The members do not wait for the Qt thread. They wait only for a running call of the
    // previous function; in a callback they do not wait for that either. Register the callbacks
    // before the camera starts, so that none is missed. The library calls them on the Qt thread.
#define MARLUNE_DECLARE_CAMERA_CALLBACK(kind, name, parameters, signal, slot) \
    void set_func_##name(std::function<void parameters> callback) const;
    MARLUNE_CAMERA_CALLBACKS(MARLUNE_DECLARE_CAMERA_CALLBACK)
#undef MARLUNE_DECLARE_CAMERA_CALLBACK
};

static_assert(sizeof(MCameraView) == sizeof(MView));

}  // namespace marlune

#pragma once

/**
 * The callbacks of a camera view, one per row. A row with the name flash_ready stands for the
 * member MCameraView::set_func_flash_ready(), which registers the callback: a `std::function` with
 * the row's parameters, here `std::function<void(bool value)>`.
 *
 * The columns: the kind of payload (Nothing, Value or Error), the name, the parameters, the signal
 * of QCamera that triggers the callback, and the slot of the internal view that calls it. The
 * comment on a row says when the callback is called and what its parameters mean. Callbacks run on
 * the Qt thread.
 */
#define MARLUNE_CAMERA_CALLBACKS(X)                                                                \
    /** The camera has been switched on or has stopped. get_is_active() returns the state. */      \
    X(Nothing, active_changed, (), activeChanged, onActivechanged)                                 \
    /** Never called by this library. The interface requires it. */                                \
    X(Nothing, camera_device_changed, (), cameraDeviceChanged, onCameradevicechanged)              \
    /** The camera's resolution, frame rate or pixel format has changed. */                        \
    X(Nothing, camera_format_changed, (), cameraFormatChanged, onCameraformatchanged)              \
    /** The colour temperature has changed, by set_color_temperature() or by the camera. */        \
    X(Nothing, color_temperature_changed, (), colorTemperatureChanged, onColortemperaturechanged)  \
    /** set_custom_focus_point() has changed the focus point. */                                   \
    X(Nothing, custom_focus_point_changed, (), customFocusPointChanged, onCustomfocuspointchanged) \
    /** The error has changed or has been cleared. get_error() returns it. */                      \
    X(Nothing, error_changed, (), errorChanged, onErrorchanged)                                    \
    /** `error` 1: the camera failed, or there is no camera. `text` is a message for people. */    \
    X(Error, error_occurred, (int error, std::string text), errorOccurred, onErroroccurred)        \
    /** `value`: the new exposure compensation in EV. */                                           \
    X(Value, exposure_compensation_changed, (float value), exposureCompensationChanged,            \
      onExposurecompensationchanged)                                                               \
    /** set_exposure_mode() has changed the exposure mode. */                                      \
    X(Nothing, exposure_mode_changed, (), exposureModeChanged, onExposuremodechanged)              \
    /** `value`: the new exposure time in seconds. */                                              \
    X(Value, exposure_time_changed, (float value), exposureTimeChanged, onExposuretimechanged)     \
    /** set_flash_mode() has changed the flash mode. */                                            \
    X(Nothing, flash_mode_changed, (), flashModeChanged, onFlashmodechanged)                       \
    /** `value`: whether the flash is charged. */                                                  \
    X(Value, flash_ready, (bool value), flashReady, onFlashready)                                  \
    /** set_focus_distance() has changed the focus distance. */                                    \
    X(Nothing, focus_distance_changed, (), focusDistanceChanged, onFocusdistancechanged)           \
    /** set_focus_mode() has changed the focus mode. */                                            \
    X(Nothing, focus_mode_changed, (), focusModeChanged, onFocusmodechanged)                       \
    /** The camera has changed its focus point. */                                                 \
    X(Nothing, focus_point_changed, (), focusPointChanged, onFocuspointchanged)                    \
    /** `value`: the new sensitivity in ISO. */                                                    \
    X(Value, iso_sensitivity_changed, (int value), isoSensitivityChanged, onIsosensitivitychanged) \
    /** `value`: the exposure time that was set, in seconds. */                                    \
    X(Value, manual_exposure_time_changed, (float value), manualExposureTimeChanged,               \
      onManualexposuretimechanged)                                                                 \
    /** set_manual_iso_sensitivity() has changed the sensitivity that was set. */                  \
    X(Nothing, manual_iso_sensitivity_changed, (), manualIsoSensitivityChanged,                    \
      onManualisosensitivitychanged)                                                               \
    /** The upper limit of the camera's zoom has changed. */                                       \
    X(Nothing, maximum_zoom_factor_changed, (), maximumZoomFactorChanged,                          \
      onMaximumzoomfactorchanged)                                                                  \
    /** The lower limit of the camera's zoom has changed. */                                       \
    X(Nothing, minimum_zoom_factor_changed, (), minimumZoomFactorChanged,                          \
      onMinimumzoomfactorchanged)                                                                  \
    /** The set of features that the camera supports has changed. */                               \
    X(Nothing, supported_features_changed, (), supportedFeaturesChanged,                           \
      onSupportedfeatureschanged)                                                                  \
    /** set_torch_mode() has changed the torch mode. */                                            \
    X(Nothing, torch_mode_changed, (), torchModeChanged, onTorchmodechanged)                       \
    /** set_white_balance_mode() has changed the white balance mode. */                            \
    X(Nothing, white_balance_mode_changed, (), whiteBalanceModeChanged, onWhitebalancemodechanged) \
    /** The zoom has changed, by set_zoom_factor() or in steps during zoom_to(). */                \
    X(Nothing, zoom_factor_changed, (), zoomFactorChanged, onZoomfactorchanged)

#pragma once

/**
 * What a camera tells its host. Each row stands for a member of MCameraView, `set_func_` with the row's
 * second word appended, that takes a function of the third: set_func_flash_ready() takes a
 * `std::function<void(bool value)>`. A row: what comes along (Nothing, a Value, or an Error), name,
 * parameters, and the signal of Qt Multimedia that stands behind it.
 */
#define MARLUNE_CAMERA_CALLBACKS(X)                                                                \
    /** It runs, or has stopped: get_is_active() tells. */                                         \
    X(Nothing, active_changed, (), activeChanged, onActivechanged)                                 \
    /** Never by anything that this library does: another hint makes another camera. */            \
    X(Nothing, camera_device_changed, (), cameraDeviceChanged, onCameradevicechanged)              \
    /** Its size, rate or kind of picture. */                                                      \
    X(Nothing, camera_format_changed, (), cameraFormatChanged, onCameraformatchanged)              \
    /** set_color_temperature(), or the camera. */                                                 \
    X(Nothing, color_temperature_changed, (), colorTemperatureChanged, onColortemperaturechanged)  \
    /** set_custom_focus_point(). */                                                               \
    X(Nothing, custom_focus_point_changed, (), customFocusPointChanged, onCustomfocuspointchanged) \
    /** Another error, or none any more: get_error() tells. */                                     \
    X(Nothing, error_changed, (), errorChanged, onErrorchanged)                                    \
    /** 1: the camera failed, or the hint has found none; `text` for people. */                    \
    X(Error, error_occurred, (int error, std::string text), errorOccurred, onErroroccurred)        \
    /** In EV. */                                                                                  \
    X(Value, exposure_compensation_changed, (float value), exposureCompensationChanged,            \
      onExposurecompensationchanged)                                                               \
    /** set_exposure_mode(). */                                                                    \
    X(Nothing, exposure_mode_changed, (), exposureModeChanged, onExposuremodechanged)              \
    /** In seconds. */                                                                             \
    X(Value, exposure_time_changed, (float value), exposureTimeChanged, onExposuretimechanged)     \
    /** set_flash_mode(). */                                                                       \
    X(Nothing, flash_mode_changed, (), flashModeChanged, onFlashmodechanged)                       \
    /** Whether the flash is charged. */                                                           \
    X(Value, flash_ready, (bool value), flashReady, onFlashready)                                  \
    /** set_focus_distance(). */                                                                   \
    X(Nothing, focus_distance_changed, (), focusDistanceChanged, onFocusdistancechanged)           \
    /** set_focus_mode(). */                                                                       \
    X(Nothing, focus_mode_changed, (), focusModeChanged, onFocusmodechanged)                       \
    /** The camera looks elsewhere for what is sharp. */                                           \
    X(Nothing, focus_point_changed, (), focusPointChanged, onFocuspointchanged)                    \
    /** In ISO. */                                                                                 \
    X(Value, iso_sensitivity_changed, (int value), isoSensitivityChanged, onIsosensitivitychanged) \
    /** In seconds. */                                                                             \
    X(Value, manual_exposure_time_changed, (float value), manualExposureTimeChanged,               \
      onManualexposuretimechanged)                                                                 \
    /** set_manual_iso_sensitivity(). */                                                           \
    X(Nothing, manual_iso_sensitivity_changed, (), manualIsoSensitivityChanged,                    \
      onManualisosensitivitychanged)                                                               \
    /** The camera's range of zoom. */                                                             \
    X(Nothing, maximum_zoom_factor_changed, (), maximumZoomFactorChanged,                          \
      onMaximumzoomfactorchanged)                                                                  \
    /** The camera's range of zoom. */                                                             \
    X(Nothing, minimum_zoom_factor_changed, (), minimumZoomFactorChanged,                          \
      onMinimumzoomfactorchanged)                                                                  \
    /** What can be set on the camera. */                                                          \
    X(Nothing, supported_features_changed, (), supportedFeaturesChanged,                           \
      onSupportedfeatureschanged)                                                                  \
    /** set_torch_mode(). */                                                                       \
    X(Nothing, torch_mode_changed, (), torchModeChanged, onTorchmodechanged)                       \
    /** set_white_balance_mode(). */                                                               \
    X(Nothing, white_balance_mode_changed, (), whiteBalanceModeChanged, onWhitebalancemodechanged) \
    /** set_zoom_factor(), and zoom_to() as it goes. */                                            \
    X(Nothing, zoom_factor_changed, (), zoomFactorChanged, onZoomfactorchanged)

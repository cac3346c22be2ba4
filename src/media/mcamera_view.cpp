#include "marlune/mcamera_view.h"

#include "media/camera_view.h"
#include "runtime/facade_call.h"
#include "runtime/set_callback.h"
#include "views/view_factory.h"

#include <QMetaEnum>

#include <optional>
#include <utility>

namespace marlune {

static std::vector<float> convert(const QPointF& point, To<std::vector<float>>)
{
    return {static_cast<float>(point.x()), static_cast<float>(point.y())};
}

namespace {

/**
 * Returns nothing for a number that is not a mode: such a value would be outside the range of the
 * type.
 */
template <typename Mode>
std::optional<Mode> to_mode(int number)
{
    const auto modes = QMetaEnum::fromType<Mode>();
    for (int i = 0; i < modes.keyCount(); ++i) {
        if (modes.value(i) == number)
            return static_cast<Mode>(number);
    }
    return std::nullopt;
}

/** Wraps a member that takes a mode as work that takes a number. */
template <typename Mode>
auto with_mode(bool (QCamera::*is_supported)(Mode) const)
{
    return [is_supported](QCamera& camera, int number) {
        const auto mode = to_mode<Mode>(number);
        return mode && (camera.*is_supported)(*mode);
    };
}

template <typename Mode>
auto with_mode(void (QCamera::*set)(Mode))
{
    return [set](QCamera& camera, int number) {
        if (const auto mode = to_mode<Mode>(number))
            (camera.*set)(*mode);
    };
}

// The objects that the calls run on; null if the view has no camera, or the camera no device.
constexpr auto camera = &CameraView::camera;
constexpr auto device = &CameraView::device;

}  // namespace

MCameraView::MCameraView()
{
    view_ = make_view<CameraView>("marlune::MCameraView", "marlune::_create_cameraview", view_);
}

void MCameraView::set_camera_hint(std::string hint) const
{
    with_live_object(view_, &CameraView::set_camera_hint, std::move(hint));
}

void MCameraView::set_auto_play(bool enabled) const
{
    complete(view_, &CameraView::set_auto_play, enabled);
}

unsigned int MCameraView::get_fill_mode() const
{
    return ask(view_, 0u, &CameraView::fill_mode);
}

void MCameraView::set_fill_mode(unsigned int mode) const
{
    complete(view_, &CameraView::set_fill_mode, mode);
}

std::string MCameraView::get_error_string() const
{
    return ask(view_, std::string(), camera, &QCamera::errorString);
}

int MCameraView::get_supported_features() const
{
    return ask(view_, 0, [](CameraView&) {
        qWarning("get_supported_features: not implemented");
        return 0;
    });
}

std::vector<float> MCameraView::get_focus_point() const
{
    return ask(view_, std::vector<float>(), camera, &QCamera::focusPoint);
}

std::vector<float> MCameraView::get_custom_focus_point() const
{
    return ask(view_, std::vector<float>(), camera, &QCamera::customFocusPoint);
}

void MCameraView::set_custom_focus_point(std::vector<float> point) const
{
    post(view_, &CameraView::set_custom_focus_point, std::move(point));
}

float MCameraView::get_exposure_time() const
{
    return ask(view_, 0.0f, &CameraView::exposure_time);
}

int MCameraView::get_iso_sensitivity() const
{
    return ask(view_, 0, &CameraView::iso_sensitivity);
}

bool MCameraView::get_is_active() const
{
    return ask(view_, false, camera, &QCamera::isActive);
}

bool MCameraView::is_available() const
{
    return ask(view_, false, camera, &QCamera::isAvailable);
}

int MCameraView::get_error() const
{
    return ask(view_, 0, camera, &QCamera::error);
}

int MCameraView::get_exposure_mode() const
{
    return ask(view_, 0, camera, &QCamera::exposureMode);
}

float MCameraView::get_exposure_compensation() const
{
    return ask(view_, 0.0f, camera, &QCamera::exposureCompensation);
}

float MCameraView::get_manual_exposure_time() const
{
    return ask(view_, 0.0f, camera, &QCamera::manualExposureTime);
}

float MCameraView::minimum_exposure_time() const
{
    return ask(view_, 0.0f, camera, &QCamera::minimumExposureTime);
}

float MCameraView::maximum_exposure_time() const
{
    return ask(view_, 0.0f, camera, &QCamera::maximumExposureTime);
}

int MCameraView::get_manual_iso_sensitivity() const
{
    return ask(view_, 0, camera, &QCamera::manualIsoSensitivity);
}

int MCameraView::minimum_iso_sensitivity() const
{
    return ask(view_, 0, camera, &QCamera::minimumIsoSensitivity);
}

int MCameraView::maximum_iso_sensitivity() const
{
    return ask(view_, 0, camera, &QCamera::maximumIsoSensitivity);
}

int MCameraView::get_flash_mode() const
{
    return ask(view_, 0, camera, &QCamera::flashMode);
}

bool MCameraView::get_is_flash_ready() const
{
    return ask(view_, false, camera, &QCamera::isFlashReady);
}

int MCameraView::get_torch_mode() const
{
    return ask(view_, 0, camera, &QCamera::torchMode);
}

int MCameraView::get_focus_mode() const
{
    return ask(view_, 0, camera, &QCamera::focusMode);
}

float MCameraView::get_focus_distance() const
{
    return ask(view_, 0.0f, camera, &QCamera::focusDistance);
}

int MCameraView::get_white_balance_mode() const
{
    return ask(view_, 0, camera, &QCamera::whiteBalanceMode);
}

int MCameraView::get_color_temperature() const
{
    return ask(view_, 0, camera, &QCamera::colorTemperature);
}

float MCameraView::get_zoom_factor() const
{
    return ask(view_, 0.0f, camera, &QCamera::zoomFactor);
}

float MCameraView::get_minimum_zoom_factor() const
{
    return ask(view_, 0.0f, camera, &QCamera::minimumZoomFactor);
}

float MCameraView::get_maximum_zoom_factor() const
{
    return ask(view_, 0.0f, camera, &QCamera::maximumZoomFactor);
}

bool MCameraView::is_exposure_mode_supported(int mode) const
{
    return ask(view_, false, camera, with_mode(&QCamera::isExposureModeSupported), mode);
}

bool MCameraView::is_flash_mode_supported(int mode) const
{
    return ask(view_, false, camera, with_mode(&QCamera::isFlashModeSupported), mode);
}

bool MCameraView::is_torch_mode_supported(int mode) const
{
    return ask(view_, false, camera, with_mode(&QCamera::isTorchModeSupported), mode);
}

bool MCameraView::is_focus_mode_supported(int mode) const
{
    return ask(view_, false, camera, with_mode(&QCamera::isFocusModeSupported), mode);
}

bool MCameraView::is_white_balance_mode_supported(int mode) const
{
    return ask(view_, false, camera, with_mode(&QCamera::isWhiteBalanceModeSupported), mode);
}

void MCameraView::start() const
{
    complete(view_, camera, &QCamera::start);
}

void MCameraView::stop() const
{
    complete(view_, camera, &QCamera::stop);
}

void MCameraView::set_zoom_factor(float factor) const
{
    complete(view_, device, &QCamera::setZoomFactor, factor);
}

void MCameraView::zoom_to(float factor, float rate) const
{
    complete(view_, device, &QCamera::zoomTo, factor, rate);
}

void MCameraView::set_exposure_mode(int mode) const
{
    complete(view_, device, with_mode(&QCamera::setExposureMode), mode);
}

void MCameraView::set_flash_mode(int mode) const
{
    complete(view_, device, with_mode(&QCamera::setFlashMode), mode);
}

void MCameraView::set_torch_mode(int mode) const
{
    complete(view_, device, with_mode(&QCamera::setTorchMode), mode);
}

void MCameraView::set_focus_mode(int mode) const
{
    complete(view_, device, with_mode(&QCamera::setFocusMode), mode);
}

void MCameraView::set_white_balance_mode(int mode) const
{
    complete(view_, device, with_mode(&QCamera::setWhiteBalanceMode), mode);
}

void MCameraView::set_active(bool active) const
{
    post(view_, camera, &QCamera::setActive, active);
}

void MCameraView::set_exposure_compensation(float compensation) const
{
    post(view_, device, &QCamera::setExposureCompensation, compensation);
}

void MCameraView::set_manual_exposure_time(float seconds) const
{
    post(view_, device, &QCamera::setManualExposureTime, seconds);
}

void MCameraView::set_auto_exposure_time() const
{
    post(view_, device, &QCamera::setAutoExposureTime);
}

void MCameraView::set_manual_iso_sensitivity(int sensitivity) const
{
    post(view_, device, &QCamera::setManualIsoSensitivity, sensitivity);
}

void MCameraView::set_auto_iso_sensitivity() const
{
    post(view_, device, &QCamera::setAutoIsoSensitivity);
}

void MCameraView::set_focus_distance(float distance) const
{
    post(view_, device, &QCamera::setFocusDistance, distance);
}

void MCameraView::set_color_temperature(int kelvin) const
{
    post(view_, device, &QCamera::setColorTemperature, kelvin);
}

#define MARLUNE_DEFINE_CAMERA_CALLBACK(kind, name, parameters, signal, slot)         \
    void MCameraView::set_func_##name(std::function<void parameters> callback) const \
    {                                                                                \
        set_callback_in_place(                                                       \
            view_, [](CameraView & view) -> auto& { return view.callbacks().name; }, \
            std::move(callback));                                                    \
    }
MARLUNE_CAMERA_CALLBACKS(MARLUNE_DEFINE_CAMERA_CALLBACK)
#undef MARLUNE_DEFINE_CAMERA_CALLBACK

}  // namespace marlune

#include "marlune/camera_view.h"

#include "media/camera_view.h"
#include "runtime/call.h"
#include "runtime/set_callback.h"
#include "views/view_factory.h"

#include <QMetaEnum>

#include <functional>
#include <optional>
#include <utility>

namespace marlune {

namespace {

/** Carries a question to the view's camera; a view that has none gives the default too. */
template <typename Result, typename Work>
Result ask_camera(const char* name, View* target, Work work)
{
    return call<CameraView>(
        name, target, Delivery::Queued, Result(), [&](CameraView& view) -> Result {
            QCamera* const camera = view.camera();
            return camera ? static_cast<Result>(std::invoke(work, *camera)) : Result();
        });
}

/** The same for what only the device knows. */
template <typename Result, typename Work>
Result ask_device(const char* name, View* target, Result unknown, Work work)
{
    return call<CameraView>(name, target, Delivery::Queued, Result(),
                            [&](CameraView& view) -> Result {
                                if (!view.has_device())
                                    return view.camera() ? unknown : Result();
                                return std::invoke(work, *view.camera());
                            });
}

/** Work on the camera, to be carried in one way or another. */
template <typename... Arguments>
auto on_camera(void (QCamera::*member)(Arguments...), std::decay_t<Arguments>... arguments)
{
    return [=](CameraView& view) {
        if (QCamera* const camera = view.camera())
            (camera->*member)(arguments...);
    };
}

/** The same for what is set on the device. */
template <typename... Arguments>
auto on_device(void (QCamera::*member)(Arguments...), std::decay_t<Arguments>... arguments)
{
    return [=](CameraView& view) {
        if (view.has_device())
            (view.camera()->*member)(arguments...);
    };
}

/** Null for a number that is none of the modes: such a value would not even be one of the type's. */
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

std::vector<float> to_host(const QPointF& point)
{
    return {static_cast<float>(point.x()), static_cast<float>(point.y())};
}

}  // namespace

MCameraView::MCameraView()
{
    view_ = make_view<CameraView>("marlune::MCameraView", "marlune::_create_cameraview", view_);
}

void MCameraView::set_camera_hint(std::string hint) const
{
    visit<CameraView>("marlune::MCameraView::set_camera_hint", view_, [&hint](CameraView& view) {
        view.set_camera_hint(QString::fromStdString(hint));
    });
}

void MCameraView::set_auto_play(bool enabled) const
{
    call<CameraView>("marlune::MCameraView::set_auto_play", view_, Delivery::Blocking,
                     [enabled](CameraView& view) { view.set_auto_play(enabled); });
}

unsigned int MCameraView::get_fill_mode() const
{
    return call<CameraView>("marlune::MCameraView::get_fill_mode", view_, Delivery::Queued, 0u,
                            &CameraView::fill_mode);
}

void MCameraView::set_fill_mode(unsigned int mode) const
{
    call<CameraView>("marlune::MCameraView::set_fill_mode", view_, Delivery::Blocking,
                     [mode](CameraView& view) { view.set_fill_mode(mode); });
}

std::string MCameraView::get_error_string() const
{
    return ask_camera<std::string>(
        "marlune::MCameraView::get_error_string", view_,
        [](QCamera& camera) { return camera.errorString().toStdString(); });
}

int MCameraView::get_supported_features() const
{
    return call<CameraView>("marlune::MCameraView::get_supported_features", view_, Delivery::Queued,
                            0, [](CameraView&) {
                                qWarning("get_supported_features: not implemented");
                                return 0;
                            });
}

std::vector<float> MCameraView::get_focus_point() const
{
    return ask_camera<std::vector<float>>(
        "marlune::MCameraView::get_focus_point", view_,
        [](QCamera& camera) { return to_host(camera.focusPoint()); });
}

std::vector<float> MCameraView::get_custom_focus_point() const
{
    return ask_camera<std::vector<float>>(
        "marlune::MCameraView::get_custom_focus_point", view_,
        [](QCamera& camera) { return to_host(camera.customFocusPoint()); });
}

void MCameraView::set_custom_focus_point(std::vector<float> point) const
{
    post<CameraView>("marlune::MCameraView::set_custom_focus_point", view_,
                     [point = std::move(point)](CameraView& view) {
                         if (point.size() < 2)
                             qWarning("set_custom_focus_point: give both x and y");
                         else
                             on_device(&QCamera::setCustomFocusPoint,
                                       QPointF(point[0], point[1]))(view);
                     });
}

float MCameraView::get_exposure_time() const
{
    return ask_device("marlune::MCameraView::get_exposure_time", view_, -1.0f,
                      &QCamera::exposureTime);
}

int MCameraView::get_iso_sensitivity() const
{
    return ask_device("marlune::MCameraView::get_iso_sensitivity", view_, -1,
                      &QCamera::isoSensitivity);
}

// The members that do no more than what the camera's own do.

#define MARLUNE_ASK(Result, name, member)                                                   \
    Result MCameraView::name() const                                                        \
    {                                                                                       \
        return ask_camera<Result>("marlune::MCameraView::" #name, view_, &QCamera::member); \
    }

MARLUNE_ASK(bool, get_is_active, isActive)
MARLUNE_ASK(bool, is_available, isAvailable)
MARLUNE_ASK(int, get_error, error)
MARLUNE_ASK(int, get_exposure_mode, exposureMode)
MARLUNE_ASK(float, get_exposure_compensation, exposureCompensation)
MARLUNE_ASK(float, get_manual_exposure_time, manualExposureTime)
MARLUNE_ASK(float, minimum_exposure_time, minimumExposureTime)
MARLUNE_ASK(float, maximum_exposure_time, maximumExposureTime)
MARLUNE_ASK(int, get_manual_iso_sensitivity, manualIsoSensitivity)
MARLUNE_ASK(int, minimum_iso_sensitivity, minimumIsoSensitivity)
MARLUNE_ASK(int, maximum_iso_sensitivity, maximumIsoSensitivity)
MARLUNE_ASK(int, get_flash_mode, flashMode)
MARLUNE_ASK(bool, get_is_flash_ready, isFlashReady)
MARLUNE_ASK(int, get_torch_mode, torchMode)
MARLUNE_ASK(int, get_focus_mode, focusMode)
MARLUNE_ASK(float, get_focus_distance, focusDistance)
MARLUNE_ASK(int, get_white_balance_mode, whiteBalanceMode)
MARLUNE_ASK(int, get_color_temperature, colorTemperature)
MARLUNE_ASK(float, get_zoom_factor, zoomFactor)
MARLUNE_ASK(float, get_minimum_zoom_factor, minimumZoomFactor)
MARLUNE_ASK(float, get_maximum_zoom_factor, maximumZoomFactor)

#undef MARLUNE_ASK

#define MARLUNE_ASK_ABOUT(name, Mode, member)                                                    \
    bool MCameraView::name(int mode) const                                                       \
    {                                                                                            \
        return ask_camera<bool>("marlune::MCameraView::" #name, view_, [mode](QCamera& camera) { \
            const auto wanted = to_mode<QCamera::Mode>(mode);                                    \
            return wanted && camera.member(*wanted);                                             \
        });                                                                                      \
    }

MARLUNE_ASK_ABOUT(is_exposure_mode_supported, ExposureMode, isExposureModeSupported)
MARLUNE_ASK_ABOUT(is_flash_mode_supported, FlashMode, isFlashModeSupported)
MARLUNE_ASK_ABOUT(is_torch_mode_supported, TorchMode, isTorchModeSupported)
MARLUNE_ASK_ABOUT(is_focus_mode_supported, FocusMode, isFocusModeSupported)
MARLUNE_ASK_ABOUT(is_white_balance_mode_supported, WhiteBalanceMode, isWhiteBalanceModeSupported)

#undef MARLUNE_ASK_ABOUT

#define MARLUNE_CALL(on, name, parameters, ...)                                     \
    void MCameraView::name parameters const                                         \
    {                                                                               \
        call<CameraView>("marlune::MCameraView::" #name, view_, Delivery::Blocking, \
                         on(&QCamera::__VA_ARGS__));                                \
    }

MARLUNE_CALL(on_camera, start, (), start)
MARLUNE_CALL(on_camera, stop, (), stop)
MARLUNE_CALL(on_device, set_zoom_factor, (float factor), setZoomFactor, factor)
MARLUNE_CALL(on_device, zoom_to, (float factor, float rate), zoomTo, factor, rate)

#undef MARLUNE_CALL

#define MARLUNE_SET_MODE(name, Mode, member)                                        \
    void MCameraView::name(int mode) const                                          \
    {                                                                               \
        call<CameraView>("marlune::MCameraView::" #name, view_, Delivery::Blocking, \
                         [mode](CameraView& view) {                                 \
                             if (const auto wanted = to_mode<QCamera::Mode>(mode))  \
                                 on_device(&QCamera::member, *wanted)(view);        \
                         });                                                        \
    }

MARLUNE_SET_MODE(set_exposure_mode, ExposureMode, setExposureMode)
MARLUNE_SET_MODE(set_flash_mode, FlashMode, setFlashMode)
MARLUNE_SET_MODE(set_torch_mode, TorchMode, setTorchMode)
MARLUNE_SET_MODE(set_focus_mode, FocusMode, setFocusMode)
MARLUNE_SET_MODE(set_white_balance_mode, WhiteBalanceMode, setWhiteBalanceMode)

#undef MARLUNE_SET_MODE

#define MARLUNE_POST(on, name, parameters, ...)                                             \
    void MCameraView::name parameters const                                                 \
    {                                                                                       \
        post<CameraView>("marlune::MCameraView::" #name, view_, on(&QCamera::__VA_ARGS__)); \
    }

MARLUNE_POST(on_camera, set_active, (bool active), setActive, active)
MARLUNE_POST(on_device, set_exposure_compensation, (float compensation), setExposureCompensation,
             compensation)
MARLUNE_POST(on_device, set_manual_exposure_time, (float seconds), setManualExposureTime, seconds)
MARLUNE_POST(on_device, set_auto_exposure_time, (), setAutoExposureTime)
MARLUNE_POST(on_device, set_manual_iso_sensitivity, (int sensitivity), setManualIsoSensitivity,
             sensitivity)
MARLUNE_POST(on_device, set_auto_iso_sensitivity, (), setAutoIsoSensitivity)
MARLUNE_POST(on_device, set_focus_distance, (float distance), setFocusDistance, distance)
MARLUNE_POST(on_device, set_color_temperature, (int kelvin), setColorTemperature, kelvin)

#undef MARLUNE_POST

#define MARLUNE_DEFINE_CAMERA_CALLBACK(kind, name, parameters, signal, slot)         \
    void MCameraView::set_func_##name(std::function<void parameters> callback) const \
    {                                                                                \
        set_callback_in_place<CameraView>(                                           \
            "marlune::MCameraView::set_func_" #name, view_,                          \
            [](CameraView & view) -> auto& { return view.callbacks().name; },        \
            std::move(callback));                                                    \
    }
MARLUNE_CAMERA_CALLBACKS(MARLUNE_DEFINE_CAMERA_CALLBACK)
#undef MARLUNE_DEFINE_CAMERA_CALLBACK

}  // namespace marlune

#pragma once

#include "marlune/camera_callbacks.h"
#include "runtime/callback_slot.h"
#include "views/quick_view.h"

#include <QCamera>
#include <QCameraDevice>
#include <QPointer>
#include <QString>

#include <mutex>
#include <string>
#include <vector>

class QMediaDevices;

namespace marlune {

/** The callbacks of the host that a camera calls. */
struct CameraCallbacks {
#define MARLUNE_CAMERA_CALLBACK_SLOT(kind, name, parameters, signal, slot) \
    CallbackSlot<void parameters> name;
    MARLUNE_CAMERA_CALLBACKS(MARLUNE_CAMERA_CALLBACK_SLOT)
#undef MARLUNE_CAMERA_CALLBACK_SLOT
};

/** The view that shows a camera. Its scene, the component "Camera", binds to its properties. */
class CameraView : public QuickView {
    Q_OBJECT
    Q_PROPERTY(QCamera* camera MEMBER camera_ NOTIFY cameraChanged)
    Q_PROPERTY(uint fill_mode MEMBER fill_mode_ NOTIFY fill_modeChanged)

public:
    CameraView();
    ~CameraView() override;

    void prepare_context(QQmlContext* root_context) override;
    void post_setup(QQmlEngine* engine, QObject* root) override;
    void before_reset() override;

    /** Null until a camera has been chosen, and after it has been deleted with its scene. */
    QCamera* camera() const { return camera_; }
    /**
     * Whether the camera's controls can be read and set. Without a device, because it could not be
     * opened or was unplugged, QCamera (Qt 6.8) would dereference a null pointer.
     */
    bool has_device() const { return camera_ && has_device_; }
    /** Returns the camera if it has a device, or null. */
    QCamera* device() const { return has_device() ? camera_.data() : nullptr; }

    // Known only to the device; -1 for a camera without a device.
    float exposure_time() const;
    int iso_sensitivity() const;
    /** The first two numbers are x and y, each from 0 to 1. */
    void set_custom_focus_point(const std::vector<float>& point);

    /** Callbacks may be set on any thread. */
    CameraCallbacks& callbacks() { return callbacks_; }

    /** Callable on any thread. The event loop makes the choice later. */
    void set_camera_hint(const QString& hint);
    QString camera_hint() const;

    /** Replaces the current camera. */
    void install(const QCameraDevice& device);

    void set_active(bool active);
    void set_auto_play(bool enabled);
    bool auto_play() const { return auto_play_; }
    uint fill_mode() const { return fill_mode_; }

    Q_INVOKABLE void set_fill_mode(uint fill_mode);

public slots:
    void onActivechanged();
    void onCameradevicechanged();
    void onCameraformatchanged();
    void onColortemperaturechanged();
    void onCustomfocuspointchanged();
    void onErrorchanged();
    void onErroroccurred(QCamera::Error error, QString errorString);
    void onExposurecompensationchanged(float value);
    void onExposuremodechanged();
    void onExposuretimechanged(float speed);
    void onFlashmodechanged();
    void onFlashready(bool ready);
    void onFocusdistancechanged();
    void onFocusmodechanged();
    void onFocuspointchanged();
    void onIsosensitivitychanged(int value);
    void onManualexposuretimechanged(float speed);
    void onManualisosensitivitychanged();
    void onMaximumzoomfactorchanged();
    void onMinimumzoomfactorchanged();
    void onSupportedfeatureschanged();
    void onTorchmodechanged();
    void onWhitebalancemodechanged();
    void onZoomfactorchanged();
    void onCameraHintChanged();

signals:
    void fill_modeChanged();
    void cameraChanged();
    void camera_hintChanged();

private:
    void choose_by_hint();
    void retire_camera();
    void follow_devices();
    void look_for_device();
    void connect_callbacks();

    // A child of the view, or of the scene, with which it is deleted, if there is one.
    QPointer<QCamera> camera_;
    bool is_chosen_ = false;
    bool has_device_ = false;
    QMediaDevices* devices_ = nullptr;
    CameraCallbacks callbacks_;
    bool auto_play_ = true;
    mutable std::mutex hint_mutex_;
    QString camera_hint_ = QStringLiteral("-1");
    uint fill_mode_ = 1;
};

}  // namespace marlune

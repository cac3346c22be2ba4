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

/** The functions of the host that a camera calls. */
struct CameraCallbacks {
#define MARLUNE_CAMERA_CALLBACK_SLOT(kind, name, parameters, signal, slot) \
    CallbackSlot<void parameters> name;
    MARLUNE_CAMERA_CALLBACKS(MARLUNE_CAMERA_CALLBACK_SLOT)
#undef MARLUNE_CAMERA_CALLBACK_SLOT
};

/** The view that shows a camera: what its scene, the component "Camera", binds to. */
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

    /** Null until one has been chosen, and when it has gone with its scene. */
    QCamera* camera() const { return camera_; }
    /**
     * Whether its controls can be asked and set. Without a device to ask, because it could not be opened
     * or was unplugged, Qt's camera would follow a null pointer.
     */
    bool has_device() const { return camera_ && has_device_; }
    /** The camera, where it has a device. */
    QCamera* device() const { return has_device() ? camera_.data() : nullptr; }

    // What only the device knows; -1 where there is a camera without one.
    float exposure_time() const;
    int iso_sensitivity() const;
    /** x and y, from 0 to 1. */
    void set_custom_focus_point(const std::vector<float>& point);

    /** Its slots may be filled by any thread. */
    CameraCallbacks& callbacks() { return callbacks_; }

    /** On any thread. The choice follows in the event loop. */
    void set_camera_hint(const QString& hint);
    QString camera_hint() const;

    /** In the place of the camera that there is. */
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

    // A child of the view, and with a scene one of the scene, with which it goes.
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

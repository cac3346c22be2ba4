#include "media/camera_view.h"

#include "media/camera_hint.h"
#include "media/media_view.h"
#include "runtime/host_callback.h"
#include "runtime/trace.h"

#include <QMediaDevices>
#include <QtQml>

#include <vector>

namespace marlune {

namespace {

// Cameras that views have replaced. Their parents still own them. Only on the Qt thread.
std::vector<QPointer<QCamera>> former_cameras;

/** A camera that is off still keeps its device open, so that no other camera could open it. */
void release_device(const QCameraDevice& device)
{
    std::erase_if(former_cameras, [&](const QPointer<QCamera>& former) {
        if (former && former->cameraDevice().id() == device.id())
            delete former;
        return !former;
    });
}

void register_type()
{
    // Register once: each registration adds to Qt's tables.
    [[maybe_unused]] static const int id = qmlRegisterUncreatableType<CameraView>(
        "Custom", 1, 0, "CameraView", QStringLiteral("Don't try to add to a qml definition"));
}

QStringList descriptions_of(const QList<QCameraDevice>& devices)
{
    QStringList descriptions;
    for (const QCameraDevice& device : devices)
        descriptions += device.description();
    return descriptions;
}

}  // namespace

CameraView::CameraView() : QuickView("CameraView")
{
    trace("CameraView::CameraView()", "T");
    // Queued even on the Qt thread: a callback of the camera must not delete it while it runs.
    connect(this, &CameraView::camera_hintChanged, this, &CameraView::onCameraHintChanged,
            Qt::QueuedConnection);
}

CameraView::~CameraView()
{
    // While this is still a CameraView: the scene may call it until the scene is deleted.
    withdraw();
    reset();
    delete camera_;
}

void CameraView::prepare_context(QQmlContext* root_context)
{
    register_type();
    prepare_media_context(root_context, this);
}

void CameraView::post_setup(QQmlEngine*, QObject* root)
{
    // The chosen camera was deleted with the previous scene.
    if (is_chosen_ && !camera_)
        choose_by_hint();
    if (camera_)
        camera_->setParent(root);
}

void CameraView::before_reset()
{
    if (camera_)
        camera_->setActive(false);
}

void CameraView::set_camera_hint(const QString& hint)
{
    {
        const std::lock_guard lock(hint_mutex_);
        camera_hint_ = hint;
    }
    emit camera_hintChanged();
}

QString CameraView::camera_hint() const
{
    const std::lock_guard lock(hint_mutex_);
    return camera_hint_;
}

void CameraView::onCameraHintChanged()
{
    // A callback that processes events may have been called by a signal of the camera that is to
    // be deleted.
    run_outside_callbacks(*this, [](CameraView& view) { view.choose_by_hint(); });
}

void CameraView::choose_by_hint()
{
    const QList<QCameraDevice> devices = QMediaDevices::videoInputs();
    if (devices.isEmpty())
        return onErroroccurred(QCamera::CameraError, QStringLiteral("no cameras found"));
    const CameraChoice choice = choose_camera(camera_hint(), descriptions_of(devices));
    if (!choice.warning.isEmpty())
        qWarning("%s", qUtf8Printable(choice.warning));
    install(devices[choice.index]);
}

void CameraView::install(const QCameraDevice& device)
{
    if (camera_)
        retire_camera();
    release_device(device);
    camera_ = new QCamera(device, this);
    is_chosen_ = true;
    has_device_ = camera_->error() == QCamera::NoError;
    delete_at_shutdown(camera_);
    connect_callbacks();
    follow_devices();
    emit cameraChanged();
    // A failure to open the device is reported during construction, before anything is connected.
    if (camera_ && !has_device_) {
        onErroroccurred(camera_->error(), camera_->errorString());
        onErrorchanged();
    }
}

void CameraView::follow_devices()
{
    if (devices_)
        return;
    devices_ = new QMediaDevices(this);
    connect(devices_, &QMediaDevices::videoInputsChanged, this, &CameraView::look_for_device);
}

/** A camera that is plugged in again has to be chosen again. */
void CameraView::look_for_device()
{
    const bool is_plugged =
        camera_ && QMediaDevices::videoInputs().contains(camera_->cameraDevice());
    has_device_ = has_device_ && is_plugged;
}

void CameraView::retire_camera()
{
    QCamera* const former = camera_;
    former->setActive(false);
    former->disconnect(this);
    camera_.clear();
    emit cameraChanged();
    former_cameras.emplace_back(former);
}

/** Connected first, so that the host is notified of a change before the scene. */
void CameraView::connect_callbacks()
{
#define MARLUNE_CONNECT_CAMERA_CALLBACK(kind, name, parameters, signal, slot) \
    connect(camera_, &QCamera::signal, this, &CameraView::slot);
    MARLUNE_CAMERA_CALLBACKS(MARLUNE_CONNECT_CAMERA_CALLBACK)
#undef MARLUNE_CONNECT_CAMERA_CALLBACK
}

void CameraView::set_active(bool active)
{
    if (camera_)
        camera_->setActive(active);
}

void CameraView::set_auto_play(bool enabled)
{
    auto_play_ = enabled;
    if (enabled)
        set_active(true);
}

void CameraView::set_fill_mode(uint fill_mode)
{
    fill_mode_ = accepted_fill_mode(fill_mode);
    emit fill_modeChanged();
}

float CameraView::exposure_time() const
{
    if (has_device())
        return camera_->exposureTime();
    return camera_ ? -1 : 0;
}

int CameraView::iso_sensitivity() const
{
    if (has_device())
        return camera_->isoSensitivity();
    return camera_ ? -1 : 0;
}

void CameraView::set_custom_focus_point(const std::vector<float>& point)
{
    if (point.size() < 2)
        qWarning("set_custom_focus_point: give both x and y");
    else if (has_device())
        camera_->setCustomFocusPoint(QPointF(point[0], point[1]));
}

}  // namespace marlune

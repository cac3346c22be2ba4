#include "views/view.h"

#include "runtime/host_callback.h"
#include "runtime/version.h"
#include "views/private_graphics.h"
#include "views/short_text.h"

#include <QCoreApplication>
#include <QDebug>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickWindow>
#include <QScopedValueRollback>
#include <rhi/qrhi.h>

#include <limits>
#include <utility>

namespace marlune {

namespace {

constexpr qreal minimum_side = 256;

}  // namespace

View::View(const char* kind)
{
    static int made = 0;
    setObjectName(QStringLiteral("%1 %2").arg(QLatin1StringView(kind)).arg(++made));
}

View::~View()
{
    withdraw();
    reset();
    texture_.release();
}

void View::prepare_context(QQmlContext*)
{
    qWarning("prepare_context is virtual");
}

void View::post_setup(QQmlEngine*, QObject*)
{
    qWarning("post_setup is virtual");
}

void View::before_reset() {}

void View::set_view_monitor(VkInstance instance)
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Vulkan);
    if (!device_.is_other_instance(instance))
        return;
    reset();
    texture_.release();
    device_.set_instance(instance);
}

void View::set_statistics_monitor(VkPhysicalDevice physical_device, VkDevice device)
{
    device_.set_device(physical_device, device);
}

void View::set_resolution(QSizeF resolution)
{
    if (resolution.width() < minimum_side) {
        qWarning("resolution not set, width must be more than 256");
    } else if (resolution.height() < minimum_side) {
        qWarning("resolution not set, height must be more than 256");
    } else {
        resolution_ = resolution;
        emit resolutionChanged();
    }
}

bool View::has_usable_resolution() const
{
    if (resolution_.width() < minimum_side) {
        qWarning(
            "resolution not set, width must be more than 256. Call `set_resolution(width, height)`");
        return false;
    }
    if (resolution_.height() < minimum_side) {
        qWarning(
            "resolution not set, height must be more than 256. Call `set_resolution(width, height)`");
        return false;
    }
    return true;
}

int View::get_mips_count() const
{
    // Such a resolution would overflow the numbers of QSize.
    constexpr auto largest = static_cast<qreal>(std::numeric_limits<int>::max());
    const QSizeF size = resolution_.boundedTo({largest, largest});
    return texture_.rhi() ? QRhi::mipLevelsForSize(size.toSize()) : 1;
}

void View::render()
{
    // A set-up that has failed leaves a render control behind, but no target.
    if (!render_control_ || !texture_.has_target())
        return;
    // A script that runs in the frame can call back to here by way of the host.
    if (rendering_ || texture_.is_device_lost() || !pacer_.take_due_frame())
        return;
    const QScopedValueRollback guard(rendering_, true);
    if (!texture_.draw(*render_control_, mipmaps_enabled_))
        return report_missing_frame();
    frame_is_missing_ = false;
    ++frames_rendered_;
    emit frameRendered();
}

/** Once for a series of frames, and once for a lost device, which draws no more. */
void View::report_missing_frame()
{
    if (texture_.is_device_lost()) {
        qCritical("%s: the Vulkan device is lost; load again with a new one, or destroy the view",
                  qUtf8Printable(objectName()));
    } else if (texture_.is_drawn() && !std::exchange(frame_is_missing_, true)) {
        qWarning("%s: a frame could not be drawn; the texture keeps the previous frame",
                 qUtf8Printable(objectName()));
    }
}

/**
 * Outside of a frame: nothing is recorded and nothing is submitted, since the host may be using the
 * queue. Uploads wait for the next frame, as they do in Qt Quick anyway.
 */
void View::sync_changes()
{
    // Before the first frame there is no command buffer, by which items find their device.
    if (rendering_ || !texture_.is_drawn() || !texture_.has_target() || texture_.is_device_lost()
        || !private_graphics::knows_device(*render_control_))
        return;
    // The producer of an unseen item may wait, which saves its work.
    if (pacer_.is_idle())
        return;
    const QScopedValueRollback guard(rendering_, true);
    private_graphics::sync_changes(*render_control_);
}

void View::sync_on_scene_change()
{
    connect(render_control_.get(), &QQuickRenderControl::sceneChanged, this, &View::sync_changes,
            Qt::QueuedConnection);
}

void View::reset()
{
    before_reset();
    texture_.close_target();
    delete std::exchange(root_item_, nullptr);
    component_.reset();
    engine_.reset();
    window_.reset();
    render_control_.reset();
    texture_.keep_for_host();
}

void View::mouse_click(quint16 button, quint16 action, QPointF position)
{
    if (window_)
        input_.mouse_click(*window_, button, action, position);
}

void View::mouse_move(QPointF position)
{
    if (window_)
        input_.mouse_move(*window_, position);
}

void View::mouse_wheel(QPointF position, int notches)
{
    if (window_)
        input_.mouse_wheel(*window_, position, notches);
}

void View::key_event(int key, quint16 action, QString text)
{
    // The scene must have reacted when the host's call returns. Last: events may destroy this view.
    if (window_ && input_.key_event(*window_, key, action, std::move(text)))
        QCoreApplication::processEvents();
}

QString View::shortened(const QString& text, int units, int lines) const
{
    return marlune::shortened(text, units, lines);
}

void View::onJavaScriptConsoleMessage(int level, QString message, int line_number,
                                      QString source_id)
{
    console_log_.call(this, level, message.toStdString(), line_number, source_id.toStdString());
}

QString View::version() const
{
    return QString::fromLatin1(full_version);
}

QString View::gpu_name() const
{
    const QRhi* const rhi = texture_.rhi();
    return rhi ? QString::fromUtf8(rhi->driverInfo().deviceName) : QString();
}

}  // namespace marlune

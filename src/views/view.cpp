#include "views/view.h"

#include "marlune/app.h"
#include "runtime/host_callback.h"
#include "views/short_text.h"

#include <QDebug>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickWindow>
#include <QScopedValueRollback>
#include <rhi/qrhi.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace marlune {

namespace {

constexpr qreal minimum_side = 256;
constexpr int maximum_rate = 120;
constexpr auto unseen_after = std::chrono::milliseconds(250);

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
    release_texture();
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
    if (vulkan_instance_.isValid() && vulkan_instance_.vkInstance() == instance)
        return;

    // All that stands was made on the old instance. Without one given, Qt would make its own.
    reset();
    release_texture();
    vulkan_instance_.destroy();
    vulkan_instance_.setVkInstance(instance);
    if (!instance || !vulkan_instance_.create())
        throw std::runtime_error("Failed to create VkInstance");
}

void View::set_statistics_monitor(VkPhysicalDevice physical_device, VkDevice device)
{
    physical_device_ = physical_device;
    device_ = device;
    graphics_device_ = physical_device && device
        ? QQuickGraphicsDevice::fromDeviceObjects(physical_device, device, 0, 0)
        : QQuickGraphicsDevice();
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

void View::set_refresh_rate(int rate)
{
    if (rate < 1) {
        qWarning() << "bad refresh rate" << rate;
        return;
    }
    if (rate > maximum_rate) {
        qWarning() << "refresh rate " << rate << " too high, setting to 120";
        rate = maximum_rate;
    }
    const auto interval = static_cast<int>(std::round(1000.0 / rate));
    // 60 Hz: a host that asks every 16.7 ms must not find every other frame not yet due.
    frame_interval_ = std::chrono::milliseconds(interval == 17 ? 16 : interval);
}

int View::get_refresh_rate() const
{
    return static_cast<int>(
        std::round(1 / (static_cast<double>(frame_interval_.count()) / 1000.0)));
}

int View::get_mips_count() const
{
    // A resolution that no device can do fits no whole number of Qt's either.
    constexpr auto largest = static_cast<qreal>(std::numeric_limits<int>::max());
    const QSizeF size = resolution_.boundedTo({largest, largest});
    return rhi_ ? QRhi::mipLevelsForSize(size.toSize()) : 1;
}

void View::render()
{
    // A set-up that has failed leaves a render control behind, but no target.
    if (!render_control_ || !render_target_)
        return;
    // Script that the frame runs can lead, through a callback of the host, back to here.
    if (rendering_ || rhi_->isDeviceLost())
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - last_frame_ < frame_interval_)
        return;
    last_frame_ = now;
    const QScopedValueRollback guard(rendering_, true);
    if (!draw_frame())
        return report_missing_frame();
    texture_drawn_ = true;
    frame_is_missing_ = false;
    ++frames_rendered_;
    emit frameRendered();
}

/** False when the device is lost or has no memory, of which Qt has said more. */
bool View::draw_frame()
{
    render_control_->polishItems();
    render_control_->beginFrame();
    if (!rhi_->isRecordingFrame())
        return false;
    render_control_->sync();
    // A new texture has nothing to make smaller levels from, nor a layout to come back to.
    if (mipmaps_enabled_ && texture_drawn_) {
        QRhiResourceUpdateBatch* const updates = rhi_->nextResourceUpdateBatch();
        updates->generateMips(texture_.get());
        render_control_->commandBuffer()->resourceUpdate(updates);
    }
    render_control_->render();
    return private_graphics::end_frame(*render_control_);
}

/** Once for all frames in a row, and once for a lost device, which draws no more. */
void View::report_missing_frame()
{
    if (rhi_->isDeviceLost()) {
        qCritical("%s: the Vulkan device is lost; load again with a new one, or destroy the view",
                  qUtf8Printable(objectName()));
    } else if (texture_drawn_ && !std::exchange(frame_is_missing_, true)) {
        qWarning("%s: a frame could not be drawn; the texture keeps the previous frame",
                 qUtf8Printable(objectName()));
    }
}

/**
 * Outside of a frame: nothing is recorded and nothing is submitted, for the queue may be the host's just
 * now. What has to be uploaded waits for the next frame, as it does in Qt Quick anyway.
 */
void View::take_changes()
{
    // Before the first frame there is no command buffer, by which items find their device.
    if (rendering_ || !texture_drawn_ || !render_target_ || rhi_->isDeviceLost()
        || !private_graphics::knows_device(*render_control_))
        return;
    // Nobody looks: what feeds the items may wait, and so saves its work.
    if (std::chrono::steady_clock::now() - last_frame_ > unseen_after)
        return;
    const QScopedValueRollback guard(rendering_, true);
    private_graphics::take_changes(*render_control_);
}

void View::take_changes_at_once()
{
    connect(render_control_.get(), &QQuickRenderControl::sceneChanged, this, &View::take_changes,
            Qt::QueuedConnection);
}

void View::reset()
{
    before_reset();
    ready_ = false;
    render_pass_.reset();
    render_target_.reset();
    depth_stencil_.reset();
    delete std::exchange(root_item_, nullptr);
    component_.reset();
    engine_.reset();
    window_.reset();
    render_control_.reset();
    // The texture stays for the host, and the QRhi that it belongs to with it. What the scene has used
    // on the GPU would stay too, until the QRhi's next frame, which never comes.
    if (!texture_)
        rhi_.reset();
    else if (rhi_)
        rhi_->finish();
}

/** Ends what reset() leaves. Nothing but the destructor, a new set-up and a new instance may do so. */
void View::release_texture()
{
    native_texture_ = 0;
    texture_.reset();
    rhi_.reset();
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
    return QString::fromStdString(M::get_version_full());
}

QString View::gpu_name() const
{
    return rhi_ ? QString::fromUtf8(rhi_->driverInfo().deviceName) : QString();
}

}  // namespace marlune

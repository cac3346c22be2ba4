#include "raw/scene.h"

#include <QMouseEvent>
#include <QQuickGraphicsDevice>
#include <QQuickItem>
#include <QQuickRenderTarget>
#include <QVideoSink>
#include <QVulkanInstance>
#include <rhi/qrhi.h>

namespace marlune::bench {

namespace {

/**
 * One instance for all scenes. Qt only borrows the host's instance, so nothing needs to be
 * released.
 */
QVulkanInstance* adopted(VkInstance instance)
{
    static QVulkanInstance* const adopted = [instance] {
        auto* const made = new QVulkanInstance;
        made->setVkInstance(instance);
        if (!made->create())
            qFatal("raw Qt cannot use the instance");
        return made;
    }();
    return adopted;
}

}  // namespace

RawScene::RawScene(const Gpu& gpu, Picture picture, const char* component,
                   const QVariantMap& properties)
    : mipmaps_(picture.mipmaps), component_(&engine_, QUrl(QLatin1StringView(component)))
{
    const QSize size(static_cast<int>(picture.width), static_cast<int>(picture.height));
    window_.setColor(Qt::transparent);
    window_.setVulkanInstance(adopted(gpu.instance));
    window_.setGraphicsDevice(
        QQuickGraphicsDevice::fromDeviceObjects(gpu.physical_device, gpu.device, 0, 0));
    // First: the engine of a page uses the Vulkan loader on another thread, which must not happen
    // at the same time.
    if (!control_.initialize())
        qFatal("raw Qt cannot use the device");
    create_root(size, properties);
    create_render_target(size);
    render();
}

RawScene::~RawScene()
{
    // Deleted before the engine in which its bindings run.
    root_.reset();
}

void RawScene::create_root(QSize size, const QVariantMap& properties)
{
    root_.reset(qobject_cast<QQuickItem*>(component_.createWithInitialProperties(properties)));
    if (!root_)
        qFatal("raw Qt cannot load the scene: %s", qUtf8Printable(component_.errorString()));
    root_->setSize(size);
    window_.contentItem()->setSize(size);
    window_.setGeometry(QRect(QPoint(), size));
    root_->setParentItem(window_.contentItem());
}

void RawScene::create_render_target(QSize size)
{
    QRhi* const rhi = control_.rhi();
    QRhiTexture::Flags flags = QRhiTexture::RenderTarget;
    if (mipmaps_)
        flags |= QRhiTexture::MipMapped | QRhiTexture::UsedWithGenerateMips;
    texture_.reset(rhi->newTexture(QRhiTexture::RGBA8, size, 1, flags));
    depth_stencil_.reset(rhi->newRenderBuffer(QRhiRenderBuffer::DepthStencil, size));
    if (!texture_->create() || !depth_stencil_->create())
        qFatal("raw Qt cannot create the texture");

    QRhiTextureRenderTargetDescription description{QRhiColorAttachment(texture_.get())};
    description.setDepthStencilBuffer(depth_stencil_.get());
    target_.reset(rhi->newTextureRenderTarget(description));
    pass_.reset(target_->newCompatibleRenderPassDescriptor());
    target_->setRenderPassDescriptor(pass_.get());
    if (!target_->create())
        qFatal("raw Qt cannot create the render target");
    window_.setRenderTarget(QQuickRenderTarget::fromRhiRenderTarget(target_.get()));
}

void RawScene::render()
{
    control_.polishItems();
    control_.beginFrame();
    control_.sync();
    control_.render();
    if (mipmaps_) {
        QRhiResourceUpdateBatch* const updates = control_.rhi()->nextResourceUpdateBatch();
        updates->generateMips(texture_.get());
        control_.commandBuffer()->resourceUpdate(updates);
    }
    control_.endFrame();
}

QVideoSink* RawScene::video_sink() const
{
    return qobject_cast<QVideoSink*>(root_->property("videoSink").value<QObject*>());
}

uint64_t RawScene::texture() const
{
    return texture_->nativeTexture().object;
}

void RawScene::mouse_move(QPointF position)
{
    if (position == mouse_position_)
        return;
    mouse_position_ = position;
    QMouseEvent event(QEvent::MouseMove, position, window_.mapToGlobal(position), Qt::NoButton,
                      Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window_, &event);
}

}  // namespace marlune::bench

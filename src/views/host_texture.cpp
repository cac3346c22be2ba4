#include "views/host_texture.h"

#include "views/pipeline_file.h"

#include <QQuickRenderControl>
#include <rhi/qrhi.h>

#include <stdexcept>
#include <utility>

namespace marlune {

HostTexture::HostTexture() = default;

HostTexture::~HostTexture() = default;

void HostTexture::attach(QQuickRenderControl& control, const QString& pipeline_file)
{
    release();
    if (!control.rhi())
        throw std::runtime_error("No QRhi");
    rhi_ = private_graphics::take_rhi(control, pipeline_file);
    load_pipelines(*rhi_, pipeline_file);
}

void HostTexture::create(QSize size)
{
    texture_.reset(rhi_->newTexture(QRhiTexture::RGBA8, size, 1,
                                    QRhiTexture::RenderTarget | QRhiTexture::MipMapped
                                        | QRhiTexture::UsedWithGenerateMips));
    if (!texture_->create())
        throw std::runtime_error("Cannot create texture object");

    depth_stencil_.reset(rhi_->newRenderBuffer(QRhiRenderBuffer::DepthStencil, size, 1));
    if (!depth_stencil_->create())
        throw std::runtime_error("Cannot create depth-stencil buffer");

    QRhiTextureRenderTargetDescription description{QRhiColorAttachment(texture_.get())};
    description.setDepthStencilBuffer(depth_stencil_.get());
    std::unique_ptr<QRhiTextureRenderTarget> target(rhi_->newTextureRenderTarget(description));
    render_pass_.reset(target->newCompatibleRenderPassDescriptor());
    target->setRenderPassDescriptor(render_pass_.get());
    if (!render_pass_ || !target->create())
        throw std::runtime_error("Cannot create render target");

    render_target_ = std::move(target);
    native_ = texture_->nativeTexture().object;
    drawn_ = false;
}

bool HostTexture::draw(QQuickRenderControl& control, bool with_mipmaps)
{
    control.polishItems();
    control.beginFrame();
    if (!rhi_->isRecordingFrame())
        return false;
    control.sync();
    // A texture that has not been drawn has no content for smaller levels, and no layout.
    if (with_mipmaps && drawn_)
        generate_mipmaps(control);
    control.render();
    if (!private_graphics::end_frame(control))
        return false;
    drawn_ = true;
    return true;
}

void HostTexture::generate_mipmaps(QQuickRenderControl& control)
{
    QRhiResourceUpdateBatch* const updates = rhi_->nextResourceUpdateBatch();
    updates->generateMips(texture_.get());
    control.commandBuffer()->resourceUpdate(updates);
}

void HostTexture::close_target()
{
    render_pass_.reset();
    render_target_.reset();
    depth_stencil_.reset();
}

void HostTexture::keep_for_host()
{
    // Frees the scene's GPU resources, for which the QRhi would wait until its next frame.
    if (!texture_)
        rhi_.reset();
    else if (rhi_)
        rhi_->finish();
}

void HostTexture::release()
{
    native_ = 0;
    drawn_ = false;
    texture_.reset();
    rhi_.reset();
}

bool HostTexture::is_device_lost() const
{
    return rhi_ && rhi_->isDeviceLost();
}

QQuickRenderTarget HostTexture::target() const
{
    return QQuickRenderTarget::fromRhiRenderTarget(render_target_.get());
}

}  // namespace marlune

#pragma once

#include "views/private_graphics.h"

#include <QQuickRenderTarget>
#include <QSize>
#include <QString>

#include <memory>

class QQuickRenderControl;
class QRhiRenderBuffer;
class QRhiRenderPassDescriptor;
class QRhiTexture;
class QRhiTextureRenderTarget;

namespace marlune {

/**
 * The texture on the host's device that a view's scene is drawn to, with the QRhi that it belongs
 * to.
 *
 * A scene begins with attach() and create(), is drawn by draw(), and ends between close_target()
 * and keep_for_host(): the host may go on showing the texture, until the next scene or release().
 */
class HostTexture {
public:
    HostTexture();
    ~HostTexture();
    Q_DISABLE_COPY_MOVE(HostTexture)

    /** Releases what was there and takes over the QRhi of the initialized render control. */
    void attach(QQuickRenderControl& control, const QString& pipeline_file);

    /** @throws std::runtime_error where the device cannot make a texture of that size, in px. */
    void create(QSize size);

    /** Draws a frame. False when the device is lost or has no memory; Qt has logged the details. */
    bool draw(QQuickRenderControl& control, bool with_mipmaps);

    /** Before the scene ends: nothing can be drawn from then on. */
    void close_target();

    /** After the scene's end: keeps the texture, if there is one. */
    void keep_for_host();

    void release();

    bool has_target() const { return render_target_ != nullptr; }
    bool is_device_lost() const;
    /** True once the texture has content. */
    bool is_drawn() const { return drawn_; }
    QQuickRenderTarget target() const;
    /** The VkImage; 0 without a texture. */
    quint64 native() const { return native_; }
    /** Null without a scene or a texture. */
    QRhi* rhi() const { return rhi_.get(); }

private:
    void generate_mipmaps(QQuickRenderControl& control);

    // Destroyed last: the others belong to it.
    private_graphics::OwnRhi rhi_;
    std::unique_ptr<QRhiTexture> texture_;
    std::unique_ptr<QRhiRenderBuffer> depth_stencil_;
    std::unique_ptr<QRhiTextureRenderTarget> render_target_;
    std::unique_ptr<QRhiRenderPassDescriptor> render_pass_;
    quint64 native_ = 0;
    bool drawn_ = false;
};

}  // namespace marlune

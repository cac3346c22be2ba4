#pragma once

#include "support/gpu.h"
#include "support/picture.h"

#include <QObject>
#include <QPointF>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickRenderControl>
#include <QQuickWindow>
#include <QVariantMap>

#include <cstdint>
#include <memory>

class QQuickItem;
class QRhiRenderBuffer;
class QRhiRenderPassDescriptor;
class QRhiTexture;
class QRhiTextureRenderTarget;
class QVideoSink;

namespace marlune::bench {

/**
 * The minimal code that renders the scene into a texture: Qt's render control, an engine, and the
 * scene. Lives on the Qt thread. Any failure is fatal.
 */
class RawScene : public QObject {
public:
    RawScene(const Gpu& gpu, Picture picture, const char* component = "qrc:/Bench/Bench.qml",
             const QVariantMap& properties = {});
    ~RawScene() override;

    void render();
    QQuickItem* root() const { return root_.get(); }
    /** The sink of RawVideo.qml; null in other scenes. */
    QVideoSink* video_sink() const;
    /** As the library returns it to the host. */
    uint64_t texture() const;

    /** The counterparts of the two calls whose way to the Qt thread is measured. */
    void mouse_move(QPointF position);
    int refresh_rate() const { return refresh_rate_; }

private:
    void create_root(QSize size, const QVariantMap& properties);
    void create_render_target(QSize size);

    const bool mipmaps_;
    int refresh_rate_ = 60;
    QPointF mouse_position_;
    QQuickRenderControl control_;
    QQuickWindow window_{&control_};
    QQmlEngine engine_;
    QQmlComponent component_;
    std::unique_ptr<QQuickItem> root_;
    std::unique_ptr<QRhiTexture> texture_;
    std::unique_ptr<QRhiRenderBuffer> depth_stencil_;
    std::unique_ptr<QRhiTextureRenderTarget> target_;
    std::unique_ptr<QRhiRenderPassDescriptor> pass_;
};

}  // namespace marlune::bench

#include "views/private_graphics.h"

#include "views/pipeline_file.h"

#include <QQuickRenderControl>
#include <QQuickWindow>
#include <rhi/qrhi.h>

#include <QtGui/private/qrhivulkan_p.h>
#include <QtQuick/private/qquickrendercontrol_p.h>
#include <QtQuick/private/qquickwindow_p.h>

namespace marlune::private_graphics {

namespace {

/** Gives access to a protected member. */
struct Reach : QRhiResource {
    static QRhiImplementation* implementation(QRhiResource& resource)
    {
        return resource.*&Reach::m_rhi;
    }
};

/**
 * ~QRhi waits for the whole device, which requires that no thread of the host uses any queue
 * meanwhile. It does not wait for a lost device, so the device is marked as lost.
 */
void skip_wait_for_device(QRhi& rhi)
{
    const std::unique_ptr<QRhiResource> resource(
        rhi.newRenderBuffer(QRhiRenderBuffer::DepthStencil, QSize(1, 1)));
    static_cast<QRhiVulkan*>(Reach::implementation(*resource))->deviceLost = true;
}

}  // namespace

void EndRhi::operator()(QRhi* rhi) const
{
    const std::unique_ptr<QRhi> owner(rhi);
    if (rhi->isDeviceLost())
        return;
    save_pipelines(*rhi, pipeline_file);
    rhi->finish();
    skip_wait_for_device(*rhi);
}

OwnRhi take_rhi(QQuickRenderControl& control, const QString& pipeline_file)
{
    QQuickRenderControlPrivate::get(&control)->ownRhi = false;
    return OwnRhi(control.rhi(), EndRhi{pipeline_file});
}

bool end_frame(QQuickRenderControl& control)
{
    // As QQuickRenderControl::endFrame(), which does not return the result.
    const QRhi::FrameOpResult result = control.rhi()->endOffscreenFrame();
    QQuickRenderControlPrivate::get(&control)->frameStatus =
        QQuickRenderControlPrivate::NotRecordingFrame;
    emit control.window()->afterFrameEnd();
    return result == QRhi::FrameOpSuccess;
}

bool knows_device(QQuickRenderControl& control)
{
    return QQuickWindowPrivate::get(control.window())->redirect.commandBuffer;
}

void sync_changes(QQuickRenderControl& control)
{
    control.polishItems();
    QQuickWindowPrivate::get(control.window())->syncSceneGraph();
    QQuickRenderControlPrivate::get(&control)->rc->endSync();
}

}  // namespace marlune::private_graphics

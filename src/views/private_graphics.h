#pragma once

#include <QString>

#include <memory>

class QQuickRenderControl;
class QRhi;

/**
 * What the render core does with Qt's graphics beyond Qt's public interface. All that views use of Qt's
 * private headers is used here.
 */
namespace marlune::private_graphics {

/** Ends a QRhi: saves the pipelines that it has compiled, and waits for its own queue alone. */
struct EndRhi {
    QString pipeline_file;  // empty: they are not saved

    void operator()(QRhi* rhi) const;
};

using OwnRhi = std::unique_ptr<QRhi, EndRhi>;

/** Takes over the QRhi of an initialized render control, which uses it on; it must outlive both. */
OwnRhi take_rhi(QQuickRenderControl& control, const QString& pipeline_file);

/** Ends the frame that has begun; false when the GPU has not been given it. */
bool end_frame(QQuickRenderControl& control);

/** True once the render control's window has had a frame, by which its items know their device. */
bool knows_device(QQuickRenderControl& control);

/** Takes changes of the items into the scene graph outside of a frame: nothing is submitted. */
void take_changes(QQuickRenderControl& control);

}  // namespace marlune::private_graphics

#pragma once

#include <QString>

#include <memory>

class QQuickRenderControl;
class QRhi;

/**
 * What the render core needs of Qt's graphics beyond the public interface. All use of Qt's private
 * headers by views is here.
 */
namespace marlune::private_graphics {

/** Destroys a QRhi: saves its compiled pipelines, and waits for its own queue only. */
struct EndRhi {
    QString pipeline_file;  // empty: not saved

    void operator()(QRhi* rhi) const;
};

using OwnRhi = std::unique_ptr<QRhi, EndRhi>;

/** Takes ownership of the QRhi of an initialized render control, which it must outlive. */
OwnRhi take_rhi(QQuickRenderControl& control, const QString& pipeline_file);

/** Ends the current frame; false when it was not submitted to the GPU. */
bool end_frame(QQuickRenderControl& control);

/** True once the render control's window has had a frame, by which its items know their device. */
bool knows_device(QQuickRenderControl& control);

/**
 * Synchronizes the items' changes into the scene graph outside of a frame: nothing is submitted.
 */
void sync_changes(QQuickRenderControl& control);

}  // namespace marlune::private_graphics

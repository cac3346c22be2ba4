#include "media/frame_filter.h"

#include "media/drawable_frame.h"
#include "media/subtitle_text.h"

#include <rhi/qrhi.h>

#include <algorithm>
#include <utility>

namespace marlune {

namespace {

// The minimum limit of Vulkan devices, for frames that arrive before the scene has a device.
constexpr int smallest_limit = 4096;

// Chroma is stored for every second pixel.
constexpr int smallest_side = 2;

}  // namespace

FrameFilter::FrameFilter(QObject* parent) : QObject(parent)
{
    connect(&sink_, &QVideoSink::videoFrameChanged, this, &FrameFilter::take_frame,
            Qt::DirectConnection);
    connect(&sink_, &QVideoSink::subtitleTextChanged, this, &FrameFilter::take_subtitle,
            Qt::DirectConnection);
}

void FrameFilter::take_frame(const QVideoFrame& frame)
{
    if (!output_)
        return;
    const bool is_drawable = !frame.isValid() || fits_output(frame.size());
    output_->setVideoFrame(is_drawable ? drawable(frame) : QVideoFrame());
}

bool FrameFilter::fits_output(QSize size)
{
    QRhi* const rhi = output_->rhi();
    const int limit = rhi ? rhi->resourceLimit(QRhi::TextureSizeMax) : smallest_limit;
    const int least = std::min(size.width(), size.height());
    const int most = std::max(size.width(), size.height());
    if (least >= smallest_side && most <= limit)
        return true;
    if (std::exchange(refused_size_, size) != size)
        qWarning("a frame of %d x %d px cannot be drawn; each side must be from %d to %d px",
                 size.width(), size.height(), smallest_side, limit);
    return false;
}

QString FrameFilter::subtitle_text() const
{
    const std::lock_guard lock(subtitle_mutex_);
    return subtitle_text_;
}

void FrameFilter::take_subtitle(const QString& text)
{
    const QString plain = plain_subtitle(text);
    const std::lock_guard lock(subtitle_mutex_);
    subtitle_text_ = plain;
    if (!std::exchange(subtitle_announced_, true))
        QMetaObject::invokeMethod(this, &FrameFilter::announce_subtitle, Qt::QueuedConnection);
}

/** The scene reads the latest subtitle that has arrived until then. */
void FrameFilter::announce_subtitle()
{
    {
        const std::lock_guard lock(subtitle_mutex_);
        subtitle_announced_ = false;
    }
    emit subtitleTextChanged();
}

}  // namespace marlune

#include "media/drawable_frame.h"

#include <QImage>
#include <QScopeGuard>
#include <QVideoFrameFormat>

#include <algorithm>
#include <bit>
#include <optional>

namespace marlune {

namespace {

using PixelFormat = QVideoFrameFormat::PixelFormat;

/** The layout of a frame's bytes. */
struct Layout {
    QImage::Format format;
    bool alpha_first;  // alpha or unused byte first; in QImage it is last
};

/** Returns nothing for formats that need no conversion. */
std::optional<Layout> layout_of(PixelFormat format)
{
    switch (format) {
    case QVideoFrameFormat::Format_RGBA8888:
        return Layout{QImage::Format_RGBA8888, false};
    case QVideoFrameFormat::Format_BGRA8888:
        return Layout{QImage::Format_ARGB32, false};
    case QVideoFrameFormat::Format_ARGB8888:
        return Layout{QImage::Format_RGBA8888, true};
    case QVideoFrameFormat::Format_ABGR8888:
        return Layout{QImage::Format_ARGB32, true};
    case QVideoFrameFormat::Format_RGBX8888:
        return Layout{QImage::Format_RGBX8888, false};
    case QVideoFrameFormat::Format_BGRX8888:
        return Layout{QImage::Format_RGB32, false};
    case QVideoFrameFormat::Format_XRGB8888:
        return Layout{QImage::Format_RGBX8888, true};
    case QVideoFrameFormat::Format_XBGR8888:
        return Layout{QImage::Format_RGB32, true};
    default:
        return std::nullopt;
    }
}

/** Moves the first byte of each pixel to the end. */
QImage rotated(const QImage& image)
{
    static_assert(std::endian::native == std::endian::little);
    constexpr int bits_a_byte = 8;
    QImage result(image.size(), image.format());
    for (int y = 0; y < image.height(); ++y) {
        const auto* const line = reinterpret_cast<const quint32*>(image.constScanLine(y));
        std::transform(line, line + image.width(), reinterpret_cast<quint32*>(result.scanLine(y)),
                       [](quint32 pixel) { return std::rotr(pixel, bits_a_byte); });
    }
    return result;
}

}  // namespace

QVideoFrame drawable(const QVideoFrame& frame)
{
    const std::optional<Layout> layout = layout_of(frame.pixelFormat());
    QVideoFrame source = frame;
    if (!layout)
        return frame;
    if (!source.map(QVideoFrame::ReadOnly))
        return QVideoFrame();
    const auto unmap = qScopeGuard([&source] { source.unmap(); });
    const QImage bytes(source.bits(0), source.width(), source.height(), source.bytesPerLine(0),
                       layout->format);
    const QImage image = layout->alpha_first ? rotated(bytes) : bytes;

    QVideoFrame result(image.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    result.setRotation(frame.surfaceFormat().rotation());
    result.setMirrored(frame.surfaceFormat().isMirrored());
    result.setStartTime(frame.startTime());
    result.setEndTime(frame.endTime());
    return result;
}

}  // namespace marlune

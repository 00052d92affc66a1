// SPDX-License-Identifier: BSD-3-Clause
#include "pictureformat.h"

#include <limits>

namespace Veltra {
namespace Ocelle {

namespace {

bool holds(const GraphicBuffer::Plane &plane, int bytes, int lines)
{
    return plane.data && plane.stride >= bytes && plane.lines >= lines &&
           qint64(plane.stride) * plane.lines <= std::numeric_limits<int>::max() / 4;
}

} // namespace

PictureFormat PictureFormat::of(const Picture &picture)
{
    const GraphicBuffer &buffer = *picture.buffer;
    PictureFormat format;
    format.width = buffer.width;
    format.height = buffer.height;
    format.format = buffer.format;
    format.mirrored = picture.mirrored;
    format.viewport = picture.viewport;
    return format;
}

QVideoSurfaceFormat PictureFormat::surfaceFormat(QVideoFrame::PixelFormat pixelFormat) const
{
    QVideoSurfaceFormat surfaceFormat(QSize(width, height), pixelFormat);
    // A viewport beyond the picture would make a surface read past its end.
    const QRect visible = viewport & QRect(0, 0, width, height);
    if (!visible.isEmpty())
        surfaceFormat.setViewport(visible);
    surfaceFormat.setMirrored(mirrored);
    return surfaceFormat;
}

QVideoFrame::PixelFormat qtPixelFormat(PixelFormat format)
{
    switch (format) {
    case PixelFormat::YUV420Planar:
    case PixelFormat::YU12:
        return QVideoFrame::Format_YUV420P;
    case PixelFormat::YUV420SemiPlanar:
    case PixelFormat::NV12:
        return QVideoFrame::Format_NV12;
    case PixelFormat::NV21:
        return QVideoFrame::Format_NV21;
    }
    return QVideoFrame::Format_Invalid;
}

const QVector<QVideoFrame::PixelFormat> &presentableAs(PixelFormat format)
{
    using Formats = QVector<QVideoFrame::PixelFormat>;
    static const Formats planar { QVideoFrame::Format_YUV420P, QVideoFrame::Format_YV12,
                                  QVideoFrame::Format_NV12, QVideoFrame::Format_NV21,
                                  QVideoFrame::Format_RGB32 };
    static const Formats nv12 { QVideoFrame::Format_NV12, QVideoFrame::Format_NV21,
                                QVideoFrame::Format_YUV420P, QVideoFrame::Format_YV12,
                                QVideoFrame::Format_RGB32 };
    static const Formats nv21 { QVideoFrame::Format_NV21, QVideoFrame::Format_NV12,
                                QVideoFrame::Format_YUV420P, QVideoFrame::Format_YV12,
                                QVideoFrame::Format_RGB32 };
    static const Formats none;
    switch (qtPixelFormat(format)) {
    case QVideoFrame::Format_YUV420P:
        return planar;
    case QVideoFrame::Format_NV12:
        return nv12;
    case QVideoFrame::Format_NV21:
        return nv21;
    default:
        return none;
    }
}

bool needsNoConversion(PixelFormat format, QVideoFrame::PixelFormat target)
{
    const QVideoFrame::PixelFormat own = qtPixelFormat(format);
    return target == own ||
           (own == QVideoFrame::Format_YUV420P && target == QVideoFrame::Format_YV12);
}

QString pixelFormatName(PixelFormat format)
{
    const auto value = quint32(format);
    QString name;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto letter = uchar(value >> shift);
        if (letter < 0x20 || letter > 0x7e)
            return QStringLiteral("0x%1").arg(value, 0, 16);
        name += QLatin1Char(char(letter));
    }
    return name;
}

bool hasWholePlanes(const GraphicBuffer &buffer)
{
    if (buffer.width <= 0 || buffer.height <= 0)
        return false;
    const int chromaWidth = buffer.width / 2 + buffer.width % 2;
    const int chromaLines = buffer.height / 2 + buffer.height % 2;
    const auto &planes = buffer.planes;
    if (!holds(planes[0], buffer.width, buffer.height))
        return false;
    if (qtPixelFormat(buffer.format) == QVideoFrame::Format_YUV420P) {
        return buffer.planeCount >= 3 && holds(planes[1], chromaWidth, chromaLines) &&
               holds(planes[2], chromaWidth, chromaLines);
    }
    return buffer.planeCount >= 2 && chromaWidth <= std::numeric_limits<int>::max() / 2 &&
           holds(planes[1], 2 * chromaWidth, chromaLines);
}

} // namespace Ocelle
} // namespace Veltra

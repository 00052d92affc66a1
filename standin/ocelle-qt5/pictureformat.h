// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "picturequeue.h"

#include <QRect>
#include <QString>
#include <QVector>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>

namespace Veltra {
namespace Ocelle {

/*! All of a picture that a surface has to be started for: if it changes, the surface restarts. */
struct PictureFormat
{
    static PictureFormat of(const Picture &picture);

    /*! What a surface that takes \a pixelFormat is started with. */
    QVideoSurfaceFormat surfaceFormat(QVideoFrame::PixelFormat pixelFormat) const;

    bool operator==(const PictureFormat &other) const
    {
        return width == other.width && height == other.height && format == other.format &&
               mirrored == other.mirrored && viewport == other.viewport;
    }

    int width = 0;  // pixels
    int height = 0; // lines
    PixelFormat format = PixelFormat::YU12;
    bool mirrored = false;
    QRect viewport; // pixels; null for the whole picture
};

/*! The same layout in Qt's words; Format_Invalid for one that is not known here. */
QVideoFrame::PixelFormat qtPixelFormat(PixelFormat format);

/*!
 * What a picture of the known layout \a format can be shown as, best first: without touching a
 * pixel, as another 4:2:0 layout, as RGB32.
 */
const QVector<QVideoFrame::PixelFormat> &presentableAs(PixelFormat format);

/*! Whether a picture of \a format becomes \a target with no more than its planes' order changed. */
bool needsNoConversion(PixelFormat format, QVideoFrame::PixelFormat target);

/*! Name for messages: the FourCC where \a format is one, else the number. */
QString pixelFormatName(PixelFormat format);

/*! Whether \a buffer has a size and planes that hold it; its layout must be a known one. */
bool hasWholePlanes(const GraphicBuffer &buffer);

} // namespace Ocelle
} // namespace Veltra

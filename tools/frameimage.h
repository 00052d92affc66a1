#pragma once

#include <QImage>
#include <QString>
#include <QVideoFrame>

namespace Tool {

/*!
 * The picture in \a frame as an RGB32 image, of its own size or scaled to \a size, and turned left
 * to right if it is \a mirrored. For NV12, NV21, YUV420P, YV12 and the two 32-bit RGB formats.
 *
 * Errors: a null image for any other format, or if the frame cannot be read.
 */
QImage toImage(const QVideoFrame &frame, bool mirrored, QSize size = QSize());

/*! Whether the name ends in an image format that can be written. */
bool canSaveImage(const QString &fileName);

} // namespace Tool

// SPDX-License-Identifier: BSD-3-Clause
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

/*!
 * Saves \a image under that name, whose end tells the format; a file that is there is replaced only
 * by a whole one.
 *
 * Errors: false, and \a error says why.
 */
bool saveImage(const QImage &image, const QString &fileName, QString *error);

/*! Whether the name ends in an image format that can be written. */
bool canSaveImage(const QString &fileName);

} // namespace Tool

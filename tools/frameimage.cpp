// SPDX-License-Identifier: BSD-3-Clause
#include "frameimage.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>

#include <libyuv.h>

namespace Tool {
namespace {

bool convert(const QVideoFrame &frame, QImage *image)
{
    std::uint8_t *to = image->bits();
    const int toStride = image->bytesPerLine();
    const int width = frame.width();
    const int height = frame.height();
    const auto plane = [&frame](int index) { return frame.bits(index); };
    const auto stride = [&frame](int index) { return frame.bytesPerLine(index); };
    switch (frame.pixelFormat()) {
    case QVideoFrame::Format_NV12:
        return libyuv::NV12ToARGB(plane(0), stride(0), plane(1), stride(1), to, toStride, width,
                                  height) == 0;
    case QVideoFrame::Format_NV21:
        return libyuv::NV21ToARGB(plane(0), stride(0), plane(1), stride(1), to, toStride, width,
                                  height) == 0;
    case QVideoFrame::Format_YUV420P:
        return libyuv::I420ToARGB(plane(0), stride(0), plane(1), stride(1), plane(2), stride(2), to,
                                  toStride, width, height) == 0;
    case QVideoFrame::Format_YV12:
        return libyuv::I420ToARGB(plane(0), stride(0), plane(2), stride(2), plane(1), stride(1), to,
                                  toStride, width, height) == 0;
    case QVideoFrame::Format_RGB32:
    case QVideoFrame::Format_ARGB32:
        return libyuv::ARGBCopy(plane(0), stride(0), to, toStride, width, height) == 0;
    default:
        return false;
    }
}

QImage scaled(const QImage &image, QSize size)
{
    QImage result(size, QImage::Format_RGB32);
    libyuv::ARGBScale(image.constBits(), image.bytesPerLine(), image.width(), image.height(),
                      result.bits(), result.bytesPerLine(), size.width(), size.height(),
                      libyuv::kFilterBilinear);
    return result;
}

} // namespace

QImage toImage(const QVideoFrame &frame, bool mirrored, QSize size)
{
    QVideoFrame mapped(frame); // shares the picture
    if (!mapped.isValid() || !mapped.map(QAbstractVideoBuffer::ReadOnly))
        return QImage();
    QImage image(mapped.size(), QImage::Format_RGB32);
    const bool converted = convert(mapped, &image);
    mapped.unmap();
    if (!converted)
        return QImage();
    if (!size.isEmpty() && size != image.size())
        image = scaled(image, size);
    return mirrored ? image.mirrored(true, false) : image;
}

bool saveImage(const QImage &image, const QString &fileName, QString *error)
{
    QBuffer buffer; // QImageWriter does not see that a disk is full
    QImageWriter writer(&buffer, QFileInfo(fileName).suffix().toLower().toLatin1());
    if (!writer.write(image)) {
        *error = writer.errorString();
        return false;
    }
    QSaveFile file(fileName);
    bool isGood = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    for (qint64 at = 0; isGood && at < buffer.size();) { // a full disk takes the beginning
        const qint64 taken = file.write(buffer.data().constData() + at, buffer.size() - at);
        isGood = taken > 0;
        at += taken;
    }
    if (isGood && file.commit())
        return true;
    *error = file.errorString();
    return false;
}

bool canSaveImage(const QString &fileName)
{
    const QByteArray suffix = QFileInfo(fileName).suffix().toLower().toLatin1();
    return QImageWriter::supportedImageFormats().contains(suffix);
}

} // namespace Tool

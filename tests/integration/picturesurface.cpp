// SPDX-License-Identifier: BSD-3-Clause
#include "picturesurface.h"

#include <QThread>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>

#include <patternreader.h>

QList<QVideoFrame::PixelFormat>
PictureSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    if (type != QAbstractVideoBuffer::NoHandle)
        return {};
    return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P };
}

bool PictureSurface::start(const QVideoSurfaceFormat &format)
{
    ++starts;
    return QAbstractVideoSurface::start(format);
}

void PictureSurface::stop()
{
    ++stops;
    QAbstractVideoSurface::stop();
}

bool PictureSurface::present(const QVideoFrame &presented)
{
    if (QThread::currentThread() != thread()) {
        ++strays;
        return false;
    }
    QVideoFrame frame(presented);
    if (!frame.map(QAbstractVideoBuffer::ReadOnly))
        return false;
    Picture picture { {}, frame.size(), frame.pixelFormat(), frame.startTime(), frame.bits(0), 0 };
    const auto reading = Veltra::Ocelle::readPattern(frame.bits(0), frame.bytesPerLine(0),
                                                     frame.width(), frame.height());
    if (reading)
        picture.sequence = reading->sequence;
    qint64 sum = 0;
    for (int y = 0; y < frame.height(); ++y) {
        const uchar *const line = frame.bits(0) + qint64(y) * frame.bytesPerLine(0);
        for (int x = 0; x < frame.width(); ++x)
            sum += line[x];
    }
    picture.lumaMean = int(sum / (qint64(frame.width()) * frame.height()));
    frame.unmap();
    pictures.append(picture);
    return true;
}

bool PictureSurface::lastIsNewerThan(quint32 sequence) const
{
    return !pictures.isEmpty() && pictures.last().sequence > sequence;
}

bool PictureSurface::sequenceRises() const
{
    for (int i = 1; i < pictures.size(); ++i) {
        if (!(pictures[i - 1].sequence < pictures[i].sequence))
            return false;
    }
    return true;
}

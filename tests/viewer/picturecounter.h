// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QVideoFrame>

/*! Takes pictures as a VideoOutput does and counts them. */
class PictureCounter : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    using QAbstractVideoSurface::QAbstractVideoSurface;

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override
    {
        return type == QAbstractVideoBuffer::NoHandle
                       ? QList<QVideoFrame::PixelFormat> { QVideoFrame::Format_NV12,
                                                           QVideoFrame::Format_YUV420P }
                       : QList<QVideoFrame::PixelFormat>();
    }
    bool present(const QVideoFrame &frame) override
    {
        last = frame;
        ++pictures;
        return true;
    }

    int pictures = 0;
    QVideoFrame last;
};

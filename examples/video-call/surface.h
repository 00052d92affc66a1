// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QVideoFrame>

/*! Hands on the pictures that come to it, on the thread that it lives on. */
class Surface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override
    {
        if (type != QAbstractVideoBuffer::NoHandle)
            return {};
        return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P };
    }
    bool start(const QVideoSurfaceFormat &format) override
    {
        emit formatCame(format);
        return QAbstractVideoSurface::start(format);
    }
    bool present(const QVideoFrame &frame) override
    {
        emit pictureCame(frame);
        return true;
    }

signals:
    void formatCame(const QVideoSurfaceFormat &format);
    void pictureCame(const QVideoFrame &frame);
};

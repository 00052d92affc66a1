// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QVideoFrame>

/*! Hands on the pictures that come to it in one of its formats, on the thread that it lives on. */
class Surface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    explicit Surface(const QList<QVideoFrame::PixelFormat> &formats)
        : m_formats(formats)
    {
    }

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override
    {
        return type == QAbstractVideoBuffer::NoHandle ? m_formats
                                                      : QList<QVideoFrame::PixelFormat>();
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

private:
    const QList<QVideoFrame::PixelFormat> m_formats; // the best first
};

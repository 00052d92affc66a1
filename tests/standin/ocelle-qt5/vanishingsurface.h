// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QVideoFrame>

/*! Destroys itself in present(), as a window that closes on a key picture might. */
class VanishingSurface : public QAbstractVideoSurface
{
public:
    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType) const override
    {
        return { QVideoFrame::Format_NV12 };
    }
    bool start(const QVideoSurfaceFormat &format) override
    {
        if (!vanishInStart)
            return QAbstractVideoSurface::start(format);
        delete this;
        return true;
    }
    void stop() override
    {
        if (vanishInStop)
            delete this;
        else
            QAbstractVideoSurface::stop();
    }
    bool present(const QVideoFrame &) override
    {
        if (!vanishInPresent)
            return true;
        const bool presented = accepts;
        delete this;
        return presented;
    }

    bool vanishInStart = false;
    bool vanishInStop = false;
    bool vanishInPresent = false;
    bool accepts = true;
};

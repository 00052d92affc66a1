// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QPointer>

namespace Viewer {

/*!
 * Hands pictures on to another surface and tells of each that went there.
 *
 * Threads: the application thread, which is also the other surface's.
 * Owner:   the other surface is borrowed and may go at any time.
 */
class PlayerSurface : public QAbstractVideoSurface
{
    Q_OBJECT
public:
    using QAbstractVideoSurface::QAbstractVideoSurface;

    QAbstractVideoSurface *target() const { return m_target; }
    void setTarget(QAbstractVideoSurface *target);

    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const override;
    bool start(const QVideoSurfaceFormat &format) override;
    void stop() override;
    bool present(const QVideoFrame &frame) override;

signals:
    void pictureShown(const QVideoFrame &frame);

private:
    QPointer<QAbstractVideoSurface> m_target;
};

} // namespace Viewer

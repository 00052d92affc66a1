// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QPointer>
#include <QVideoSurfaceFormat>

namespace Viewer {

/*!
 * Hands pictures on to another surface and tells of each that went there, and whether they are to
 * be shown mirrored. The other surface is not told so: a VideoOutput forgets it as soon as its size
 * or that of the pictures changes.
 *
 * Threads: the application thread, which is also the other surface's.
 * Owner:   the other surface is borrowed and may go at any time.
 */
class ForwardingSurface : public QAbstractVideoSurface
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

    bool isMirrored() const { return m_isMirrored; }

signals:
    void mirroredChanged();
    void pictureShown(const QVideoFrame &frame);

private:
    bool startTarget(QVideoSurfaceFormat format);

    QPointer<QAbstractVideoSurface> m_target;
    bool m_isMirrored = false;
};

} // namespace Viewer

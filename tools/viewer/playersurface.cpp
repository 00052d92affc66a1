// SPDX-License-Identifier: BSD-3-Clause
#include "playersurface.h"

#include <QVideoSurfaceFormat>

namespace Viewer {

void PlayerSurface::setTarget(QAbstractVideoSurface *target)
{
    QAbstractVideoSurface *const before = m_target;
    if (before == target)
        return;
    if (before)
        before->stop();
    m_target = target;
    if (target && isActive())
        target->start(surfaceFormat());
    emit supportedFormatsChanged();
}

QList<QVideoFrame::PixelFormat>
PlayerSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    const QAbstractVideoSurface *const target = m_target;
    return target ? target->supportedPixelFormats(type) : QList<QVideoFrame::PixelFormat>();
}

bool PlayerSurface::start(const QVideoSurfaceFormat &format)
{
    QAbstractVideoSurface *const target = m_target;
    return target && target->start(format) && QAbstractVideoSurface::start(format);
}

void PlayerSurface::stop()
{
    if (QAbstractVideoSurface *const target = m_target)
        target->stop();
    QAbstractVideoSurface::stop();
}

bool PlayerSurface::present(const QVideoFrame &frame)
{
    QAbstractVideoSurface *const target = m_target;
    if (!target || !target->present(frame)) {
        setError(target ? target->error() : ResourceError);
        return false;
    }
    emit pictureShown(frame);
    return true;
}

} // namespace Viewer

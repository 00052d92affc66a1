// SPDX-License-Identifier: BSD-3-Clause
#include "forwardingsurface.h"

#include <utility>

namespace Viewer {

void ForwardingSurface::setTarget(QAbstractVideoSurface *target)
{
    QAbstractVideoSurface *const before = m_target;
    if (before == target)
        return;
    if (before)
        before->stop();
    m_target = target;
    if (target && isActive())
        startTarget(surfaceFormat());
    emit supportedFormatsChanged();
}

QList<QVideoFrame::PixelFormat>
ForwardingSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    const QAbstractVideoSurface *const target = m_target;
    return target ? target->supportedPixelFormats(type) : QList<QVideoFrame::PixelFormat>();
}

bool ForwardingSurface::start(const QVideoSurfaceFormat &format)
{
    if (!startTarget(format) || !QAbstractVideoSurface::start(format))
        return false;
    if (format.isMirrored() != std::exchange(m_isMirrored, format.isMirrored()))
        emit mirroredChanged();
    return true;
}

bool ForwardingSurface::startTarget(QVideoSurfaceFormat format)
{
    format.setMirrored(false);
    QAbstractVideoSurface *const target = m_target;
    return target && target->start(format);
}

void ForwardingSurface::stop()
{
    if (QAbstractVideoSurface *const target = m_target)
        target->stop();
    QAbstractVideoSurface::stop();
}

bool ForwardingSurface::present(const QVideoFrame &frame)
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

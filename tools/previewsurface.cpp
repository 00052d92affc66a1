// SPDX-License-Identifier: BSD-3-Clause
#include "previewsurface.h"

#include "frameimage.h"

#include <QTransform>
#include <QVideoSurfaceFormat>

#include <chrono>

namespace Tool {
namespace {

qint64 now()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

PreviewSurface::PreviewSurface(QObject *parent)
    : QAbstractVideoSurface(parent)
{
}

QList<QVideoFrame::PixelFormat>
PreviewSurface::supportedPixelFormats(QAbstractVideoBuffer::HandleType type) const
{
    if (type != QAbstractVideoBuffer::NoHandle)
        return {};
    return { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P, QVideoFrame::Format_NV21,
             QVideoFrame::Format_YV12, QVideoFrame::Format_RGB32,   QVideoFrame::Format_ARGB32 };
}

bool PreviewSurface::present(const QVideoFrame &frame)
{
    if (m_limit >= 0 && m_presented >= m_limit) {
        setError(StoppedError);
        return false;
    }
    m_lastTime = now();
    if (m_presented == 0)
        m_firstTime = m_lastTime;
    if (frame.startTime() > 0)
        m_latencies.add(m_lastTime - frame.startTime());
    ++m_presented;
    m_frame = frame;
    m_mirrored = surfaceFormat().isMirrored();
    m_viewport = surfaceFormat().viewport() & QRect(QPoint(), frame.size());
    if (m_viewport.isEmpty())
        m_viewport = QRect(QPoint(), frame.size());
    if (m_presented == 1)
        emit firstPictureTaken();
    emit pictureTaken();
    if (m_presented == m_limit)
        emit limitReached();
    return true;
}

QImage PreviewSurface::image(QSize size) const
{
    const QImage lying = imageBeforeTurn(m_turn % 180 == 0 ? size : size.transposed());
    return m_turn == 0 ? lying : lying.transformed(QTransform().rotate(m_turn));
}

QImage PreviewSurface::imageBeforeTurn(QSize size) const
{
    if (!m_frame.isValid())
        return QImage();
    const QSize shown = size.isValid() ? m_viewport.size().scaled(size, Qt::KeepAspectRatio)
                                       : m_viewport.size();
    if (m_viewport == QRect(QPoint(), m_frame.size()))
        return toImage(m_frame, m_mirrored, shown);
    QRect part = m_viewport;
    if (m_mirrored)
        part.moveLeft(m_frame.width() - m_viewport.right() - 1);
    const QImage whole = toImage(m_frame, m_mirrored).copy(part);
    return whole.size() == shown
                   ? whole
                   : whole.scaled(shown, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

double PreviewSurface::rate() const
{
    return m_lastTime > m_firstTime
                   ? double(m_presented - 1) * 1e6 / double(m_lastTime - m_firstTime)
                   : 0;
}

} // namespace Tool

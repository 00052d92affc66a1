// SPDX-License-Identifier: BSD-3-Clause
#include "croppedvideobuffer.h"

namespace Tool {

QVideoFrame cropped(const QVideoFrame &frame, const QRect &viewport)
{
    const QRect whole(QPoint(), frame.size());
    const QRect part = viewport & whole;
    const bool isKnown = frame.pixelFormat() == QVideoFrame::Format_NV12 ||
                         frame.pixelFormat() == QVideoFrame::Format_YUV420P;
    if (!isKnown || part.isEmpty() || part == whole)
        return frame;
    QVideoFrame result(new CroppedVideoBuffer(frame, part), part.size(), frame.pixelFormat());
    result.setStartTime(frame.startTime());
    return result;
}

CroppedVideoBuffer::CroppedVideoBuffer(const QVideoFrame &frame, const QRect &part)
    : QAbstractPlanarVideoBuffer(NoHandle)
    , m_frame(frame)
    , m_part(part)
{
}

int CroppedVideoBuffer::map(MapMode mode, int *numBytes, int bytesPerLine[4], uchar *data[4])
{
    if (mode != ReadOnly || m_frame.isMapped() || !m_frame.map(mode))
        return 0;
    const bool isInterleaved = m_frame.pixelFormat() == QVideoFrame::Format_NV12;
    const int planes = m_frame.planeCount();
    for (int plane = 0; plane < planes; ++plane) {
        const int stride = m_frame.bytesPerLine(plane);
        const int lines = plane == 0 ? m_part.top() : m_part.top() / 2;
        const int samples = plane == 0 ? m_part.left() : m_part.left() / 2;
        const int bytes = plane > 0 && isInterleaved ? 2 * samples : samples;
        bytesPerLine[plane] = stride;
        data[plane] = m_frame.bits(plane) + qint64(lines) * stride + bytes;
    }
    if (numBytes) // of the first plane; each may be a piece of memory of its own
        *numBytes = bytesPerLine[0] * (m_part.height() - 1) + m_part.width();
    return planes;
}

} // namespace Tool

// SPDX-License-Identifier: BSD-3-Clause
#include "avvideobuffer.h"

namespace Tool {

AvVideoBuffer::AvVideoBuffer(const AVFrame *picture)
    : QAbstractPlanarVideoBuffer(NoHandle)
    , m_picture(av_frame_clone(picture))
{
}

QVideoFrame::PixelFormat AvVideoBuffer::formatOf(const AVFrame &picture)
{
    for (int plane = 0; plane < 3; ++plane) {
        if (picture.linesize[plane] < 0)
            return QVideoFrame::Format_Invalid; // stored from the bottom up
    }
    switch (picture.format) {
    case AV_PIX_FMT_YUV420P:
        return QVideoFrame::Format_YUV420P;
    case AV_PIX_FMT_NV12:
        return QVideoFrame::Format_NV12;
    default:
        return QVideoFrame::Format_Invalid;
    }
}

int AvVideoBuffer::map(MapMode mode, int *numBytes, int bytesPerLine[4], uchar *data[4])
{
    if (mode != ReadOnly || m_mapMode != NotMapped || !m_picture)
        return 0;
    m_mapMode = mode;
    const int planes = m_picture->format == AV_PIX_FMT_NV12 ? 2 : 3;
    for (int plane = 0; plane < planes; ++plane) {
        data[plane] = m_picture->data[plane];
        bytesPerLine[plane] = m_picture->linesize[plane];
    }
    if (numBytes) // of the first plane; each may be a piece of memory of its own
        *numBytes = m_picture->linesize[0] * m_picture->height;
    return planes;
}

} // namespace Tool

// SPDX-License-Identifier: BSD-3-Clause
#include "ocellemappedframe.h"

#include "ocelleencodelog.h"

namespace {

/*! QVideoFrame::map() divides by the number of chroma lines of these formats. */
bool isMappable(const QVideoFrame &frame)
{
    const QVideoFrame::PixelFormat format = frame.pixelFormat();
    const bool divides =
            format == QVideoFrame::Format_YUV420P || format == QVideoFrame::Format_YV12;
    return !divides || frame.height() / 2 != 0;
}

} // namespace

OcelleMappedFrame::OcelleMappedFrame(const QVideoFrame &frame)
    : m_frame(frame)
    , m_isMapped(isMappable(m_frame) && m_frame.map(QAbstractVideoBuffer::ReadOnly))
{
}

OcelleMappedFrame::~OcelleMappedFrame()
{
    if (m_isMapped)
        m_frame.unmap();
}

bool OcelleMappedFrame::isOnePiece() const
{
    const auto first = static_cast<quintptr>(m_frame.bytesPerLine(0)) *
                       static_cast<quintptr>(m_frame.height()); // bytes
    return reinterpret_cast<quintptr>(m_frame.bits(1)) ==
           reinterpret_cast<quintptr>(m_frame.bits(0)) + first;
}

bool OcelleMappedFrame::covers(const uchar *plane, int lines, int stride, int lineBytes) const
{
    const qint64 offset =
            reinterpret_cast<qintptr>(plane) - reinterpret_cast<qintptr>(m_frame.bits(0));
    const qint64 bytes = lines > 0 ? static_cast<qint64>(lines - 1) * stride + lineBytes : 0;
    return offset >= 0 && bytes <= m_frame.mappedBytes() - offset;
}

void OcelleMappedFrame::warnOfMissingMemory() const
{
    qCWarning(qLcEncode) << "The picture exceeds its memory" << m_frame;
}

#include "ocellemappedframe.h"

#include "ocelleencodelog.h"

OcelleMappedFrame::OcelleMappedFrame(const QVideoFrame &frame)
    : m_frame(frame)
    , m_isMapped(m_frame.map(QAbstractVideoBuffer::ReadOnly))
{
}

OcelleMappedFrame::~OcelleMappedFrame()
{
    if (m_isMapped)
        m_frame.unmap();
}

bool OcelleMappedFrame::covers(const uchar *plane, int lines, int stride, int lineBytes) const
{
    const auto begin = reinterpret_cast<quintptr>(m_frame.bits(0));
    const auto end = begin + static_cast<quintptr>(qMax(0, m_frame.mappedBytes()));
    const auto first = reinterpret_cast<quintptr>(plane);
    if (lines <= 0 || first < begin || (first >= end && first != begin))
        return true;
    const qint64 bytes = static_cast<qint64>(lines - 1) * stride + lineBytes;
    return bytes <= static_cast<qint64>(end - first);
}

void OcelleMappedFrame::warnOfMissingMemory() const
{
    qCWarning(qLcEncode) << "The picture exceeds its memory" << m_frame;
}

// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleinputframe.h"

OcelleInputFrame::OcelleInputFrame(const QVideoFrame &source)
    : Veltra::Ocelle::YCbCrFrame()
    , m_mapped(source)
{
    const QVideoFrame &picture = frame();
    const bool planar = picture.planeCount() == 3;
    y = picture.bits(0);
    cb = picture.bits(1);
    cr = planar ? picture.bits(2) : cb ? cb + 1 : nullptr;
    yStride = static_cast<std::uint16_t>(picture.bytesPerLine(0));
    cStride = static_cast<std::uint16_t>(picture.bytesPerLine(1));
    chromaStep = planar ? 1 : 2;
    width = static_cast<std::uint16_t>(picture.width());
    height = static_cast<std::uint16_t>(picture.height());
    timestamp = picture.startTime();
    if (!isReadable()) {
        m_mapped.warnOfMissingMemory();
        y = cb = cr = nullptr;
    }
}

/*! Judges what the encoder will read, which is the size as it was cut. */
bool OcelleInputFrame::isReadable() const
{
    if (!y)
        return true; // nothing to read
    const QVideoFrame &picture = frame();
    // A stride that counts backwards would become a long one.
    if (picture.bytesPerLine(0) < 0 || picture.bytesPerLine(1) < 0)
        return false;
    // The whole first plane as well: were it not there, the others would not be where they seem.
    if (!m_mapped.covers(y, height, yStride, width) ||
        !m_mapped.covers(y, picture.height(), picture.bytesPerLine(0), width))
        return false;
    if (!cb || !m_mapped.isOnePiece())
        return true;
    const int lines = (height + 1) / 2;
    const int lineBytes = ((width + 1) / 2 - 1) * chromaStep + 1;
    return m_mapped.covers(cb, lines, cStride, lineBytes) &&
           m_mapped.covers(cr, lines, cStride, lineBytes);
}

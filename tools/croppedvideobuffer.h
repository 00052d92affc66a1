// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractPlanarVideoBuffer>
#include <QRect>
#include <QVideoFrame>

namespace Tool {

/*!
 * \a frame, or the part of it that \a viewport tells, in place. Of NV12 and YUV420P, whose chroma
 * is that of two by two pixels: where the part begins with the second one, its chroma begins half a
 * sample early. Any other frame is given back as it is.
 */
QVideoFrame cropped(const QVideoFrame &frame, const QRect &viewport);

/*!
 * A part of another frame's picture; keeps that frame mapped while it is mapped itself.
 *
 * Threads: those of the QVideoFrame that holds it.
 * Errors:  mapping for writing fails.
 */
class CroppedVideoBuffer : public QAbstractPlanarVideoBuffer
{
public:
    CroppedVideoBuffer(const QVideoFrame &frame, const QRect &part);

    MapMode mapMode() const override { return m_frame.mapMode(); }
    int map(MapMode mode, int *numBytes, int bytesPerLine[4], uchar *data[4]) override;
    void unmap() override { m_frame.unmap(); }

private:
    QVideoFrame m_frame;
    const QRect m_part; // within the frame
};

} // namespace Tool

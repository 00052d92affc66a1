// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "avpointers.h"

#include <QAbstractPlanarVideoBuffer>
#include <QVideoFrame>

namespace Tool {

/*!
 * A decoded picture of libav as Qt's video frame sees it, in place; keeps the picture alive.
 *
 * Threads: those of the QVideoFrame that holds it.
 * Errors:  mapping for writing fails: the decoder may still refer to the picture.
 */
class AvVideoBuffer : public QAbstractPlanarVideoBuffer
{
public:
    /*! Takes a reference to \a picture, which is of one of the formats of formatOf(). */
    explicit AvVideoBuffer(const AVFrame *picture);

    /*! Qt's name for a picture's format; Format_Invalid for those that have to be converted. */
    static QVideoFrame::PixelFormat formatOf(const AVFrame &picture);

    MapMode mapMode() const override { return m_mapMode; }
    int map(MapMode mode, int *numBytes, int bytesPerLine[4], uchar *data[4]) override;
    void unmap() override { m_mapMode = NotMapped; }

private:
    const AvPointer<AVFrame> m_picture;
    MapMode m_mapMode = NotMapped;
};

} // namespace Tool

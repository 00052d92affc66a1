// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <QAbstractPlanarVideoBuffer>

#include <memory>

namespace Veltra {
namespace Ocelle {

/*!
 * A picture's planes as Qt's video frame sees them, in place; keeps the picture alive.
 *
 * Threads: those of the QVideoFrame that holds it.
 * Owner:   that QVideoFrame.
 * Errors:  mapping for writing fails: others may be showing the same picture.
 */
class PictureVideoBuffer : public QAbstractPlanarVideoBuffer
{
public:
    enum class Chroma { InOrder, Swapped };

    PictureVideoBuffer(std::shared_ptr<const GraphicBuffer> picture, Chroma chroma);
    ~PictureVideoBuffer() override;

    MapMode mapMode() const override;
    int map(MapMode mode, int *numBytes, int bytesPerLine[4], uchar *data[4]) override;
    void unmap() override;

private:
    const std::shared_ptr<const GraphicBuffer> m_picture;
    const Chroma m_chroma;
    MapMode m_mapMode = NotMapped;
};

} // namespace Ocelle
} // namespace Veltra

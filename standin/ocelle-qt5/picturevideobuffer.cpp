// SPDX-License-Identifier: BSD-3-Clause
#include "picturevideobuffer.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

PictureVideoBuffer::PictureVideoBuffer(std::shared_ptr<const GraphicBuffer> picture, Chroma chroma)
    : QAbstractPlanarVideoBuffer(NoHandle)
    , m_picture(std::move(picture))
    , m_chroma(chroma)
{
}

PictureVideoBuffer::~PictureVideoBuffer() = default;

QAbstractVideoBuffer::MapMode PictureVideoBuffer::mapMode() const
{
    return m_mapMode;
}

int PictureVideoBuffer::map(MapMode mode, int *numBytes, int bytesPerLine[4], uchar *data[4])
{
    if (mode != ReadOnly || m_mapMode != NotMapped)
        return 0;
    m_mapMode = mode;
    int bytes = 0;
    for (int i = 0; i < m_picture->planeCount; ++i) {
        const bool swapped = m_chroma == Chroma::Swapped && i > 0;
        const auto &plane = m_picture->planes[std::size_t(swapped ? 3 - i : i)];
        data[i] = const_cast<uchar *>(plane.data); // Qt has no pointer for reading only
        bytesPerLine[i] = plane.stride;
        bytes += plane.stride * plane.lines;
    }
    if (numBytes)
        *numBytes = bytes;
    return m_picture->planeCount;
}

void PictureVideoBuffer::unmap()
{
    m_mapMode = NotMapped;
}

} // namespace Ocelle
} // namespace Veltra

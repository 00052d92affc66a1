// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace Veltra {
namespace Ocelle {

/*!
 * A picture in memory of its own, YU12 or NV12, for a BufferPool.
 *
 * Threads: written by its maker before it is handed out, read by anyone after.
 * Owner:   the pool. The memory stays for the next picture.
 */
class PictureMemory : public GraphicBuffer
{
public:
    struct WritablePlane
    {
        std::uint8_t *data = nullptr;
        std::int32_t stride = 0; // bytes per line
    };
    using WritablePlanes = std::array<WritablePlane, 3>;

    /*!
     * Becomes such a picture, with lines that start at multiples of 64 bytes; true where the memory
     * is new. Other formats get the layout of YU12.
     */
    bool allocate(std::int32_t pictureWidth, std::int32_t pictureHeight, PixelFormat pictureFormat);
    const WritablePlanes &writablePlanes() const { return m_planes; }

    void release() {}

private:
    struct Free
    {
        void operator()(std::uint8_t *memory) const { std::free(memory); }
    };
    void describe();

    std::unique_ptr<std::uint8_t, Free> m_memory;
    WritablePlanes m_planes;
    std::int32_t m_width = 0; // of the memory: a derived picture may lie elsewhere for a while
    std::int32_t m_height = 0;
    PixelFormat m_format = PixelFormat::YU12;
};

} // namespace Ocelle
} // namespace Veltra

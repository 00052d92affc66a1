// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*!
 * A picture buffer of the library. Opaque here: the back end only passes its shared pointer on,
 * which keeps the picture alive.
 */
class GraphicBuffer;

/*! One 8-bit YCbCr 4:2:0 picture in memory that its producer owns. */
struct YCbCrFrame
{
    const unsigned char *y;  // first luma sample
    const unsigned char *cb; // first Cb sample
    const unsigned char *cr; // first Cr sample, cb + 1 (or cb - 1) where chroma is interleaved
    std::uint16_t yStride;   // bytes per luma line
    std::uint16_t cStride;   // bytes per chroma line
    std::uint16_t
            chromaStep;   // bytes between two samples of one chroma plane: 1 planar, 2 interleaved
    std::uint16_t width;  // pixels
    std::uint16_t height; // lines
    std::int64_t timestamp; // presentation time, microseconds
};

/*! One packed RGB picture in memory that its producer owns. */
struct RGBFrame
{
    std::uint32_t fourcc;
    std::uint16_t width;  // pixels
    std::uint16_t height; // lines
    std::uint16_t stride; // bytes per line
    const unsigned char *data;
    std::uint64_t reserved[2]; // zero
    std::int64_t timestamp;    // presentation time, microseconds
};

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*! How the chroma samples of an 8-bit YCbCr 4:2:0 picture lie in memory. */
enum class PictureLayout {
    Planar, // Cb and Cr planes
    NV12,   // one plane of Cb, Cr pairs
    NV21,   // one plane of Cr, Cb pairs
};

/*! A picture ready for a codec, in memory of somebody else. */
struct PictureView
{
    PictureLayout layout = PictureLayout::Planar;
    const std::uint8_t *y = nullptr;
    const std::uint8_t *cb = nullptr; // first sample of its kind, also where interleaved
    const std::uint8_t *cr = nullptr;
    int yStride = 0; // bytes per line
    int cStride = 0;
    int width = 0; // pixels
    int height = 0;

    /*! The plane of pairs of an interleaved layout. */
    const std::uint8_t *pairs() const { return layout == PictureLayout::NV21 ? cr : cb; }
};

} // namespace Ocelle
} // namespace Veltra

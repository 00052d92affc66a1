// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/frames.h>

#include <cstdint>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! A picture of the double, planar, and its renderer's business. */
class GraphicBuffer
{
public:
    /*! Grey. */
    GraphicBuffer(int pictureWidth, int pictureHeight);

    std::size_t lumaSize() const { return std::size_t(width) * std::size_t(height); }

    const int width;
    const int height;
    std::int64_t timestamp = 0;       // microseconds
    std::vector<std::uint8_t> planes; // Y, Cb, Cr without padding; the sides are even
};

} // namespace Ocelle
} // namespace Veltra

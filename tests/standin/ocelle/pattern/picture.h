// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "testpattern.h"

#include <cstdint>
#include <vector>

/*!
 * Memory for one NV12 or YU12 picture, with \a padding bytes beyond each line and a guard area
 * around each plane, all holding a value that the painter has to leave alone.
 */
class Picture
{
public:
    using PixelFormat = Veltra::Ocelle::PixelFormat;

    Picture(int width, int height, PixelFormat format, int padding = 0);

    int width() const { return m_width; }
    int height() const { return m_height; }
    const Veltra::Ocelle::TestPattern::Planes &planes() const { return m_planes; }
    std::uint8_t *luma() { return m_planes[0].data; }
    const std::uint8_t *luma() const { return m_planes[0].data; }
    int stride() const { return m_planes[0].stride; }

    /*! Whether the guard areas and the padding are as they were. */
    bool surroundingsIntact() const;

    /*! The visible samples of all planes, line by line. */
    std::vector<std::uint8_t> samples() const;

private:
    struct Layout
    {
        std::vector<std::uint8_t> memory;
        int bytesPerLine;
        int lines;
    };

    int m_width;
    int m_height;
    std::vector<Layout> m_memory; // one for each plane
    Veltra::Ocelle::TestPattern::Planes m_planes {};
};

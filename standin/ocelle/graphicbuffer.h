// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/camera.h>

#include <array>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*!
 * One picture in memory, as this platform's cameras and decoders hand it out.
 *
 * Threads: never written to once it is handed out, so any thread may read it.
 * Owner:   the shared pointers to it; with the last of them the memory goes back to where it came
 *          from, on the thread that dropped it.
 */
class GraphicBuffer
{
public:
    struct Plane
    {
        const std::uint8_t *data;
        std::int32_t stride; // bytes per line
        std::int32_t lines;
    };

    std::int32_t width = 0;  // pixels
    std::int32_t height = 0; // lines
    PixelFormat format = PixelFormat::YU12;
    std::int32_t planeCount = 0;    // YU12: Y, Cb, Cr; NV12 and NV21: Y, chroma
    std::array<Plane, 3> planes {}; // the first planeCount are valid
    std::int64_t timestamp = 0;     // capture time, microseconds of CLOCK_MONOTONIC
    std::uint64_t sequence = 0;     // counts every picture of the source, dropped ones included
    bool live = false;              // of a camera: only the newest picture is worth showing
};

} // namespace Ocelle
} // namespace Veltra

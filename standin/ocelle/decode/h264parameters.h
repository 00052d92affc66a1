// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*!
 * What is needed of H.264 sequence parameters.
 *
 * Threads: a plain record.
 */
struct H264SequenceParameters
{
    bool isValid = false;
    std::uint32_t id = 0;
    std::uint32_t profile = 0;
    std::uint64_t width = 0;  // coded pixels
    std::uint64_t height = 0; // coded lines
    std::uint32_t frameNumberBits = 0;
    bool allowsGaps = false; // frame numbers may be left out
    bool separatePlanes = false;
    bool reorders = false; // pictures may come in another order than they are shown in

    static constexpr std::uint32_t MaxId = 31;

    /*! Reads them, \a data beginning after the unit's header; not valid where they make no sense. */
    static H264SequenceParameters read(const std::uint8_t *data, std::size_t size);
};

} // namespace Ocelle
} // namespace Veltra

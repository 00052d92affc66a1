// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*! What walking a JPEG picture from marker to marker shows, without decoding it. */
struct JpegScan
{
    enum class State {
        Complete,
        NoStart,   // it does not begin with the start marker
        NoFrame,   // it ends before any picture data
        NoEnd,     // the end marker is missing: the picture was cut off
        Malformed, // a segment reaches beyond the data, or what should be a marker is none
    };
    State state = State::NoStart;
    std::int32_t width = 0;  // pixels; 0 where the frame header was not reached
    std::int32_t height = 0; // pixels
    std::size_t length = 0;  // bytes up to and with the end marker; 0 where there is none

    static JpegScan of(const std::uint8_t *data, std::size_t size);
};

} // namespace Ocelle
} // namespace Veltra

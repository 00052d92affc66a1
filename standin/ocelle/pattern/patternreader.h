// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>

namespace Veltra {
namespace Ocelle {

/*! What readPattern() found in a picture. */
struct PatternReading
{
    std::uint32_t sequence = 0; // as given to TestPattern::update(), modulo 2^32
    // How the picture stands to the one that was painted: first mirrored left to right, then turned.
    bool mirrored = false;
    int rotation = 0; // degrees clockwise: 0, 90, 180 or 270
};

/*!
 * Finds the sequence number in a picture of TestPattern that fills the whole of the given area, at
 * any size from 80x60 on, in any of the eight ways it can be mirrored and turned.
 *
 * \a luma are \a height lines of \a width samples, \a stride bytes apart (negative for a picture
 * stored from the bottom up), in full or limited range.
 *
 * Threads: any.
 * Errors:  nothing for a picture that is not of the pattern or too damaged to be sure of each cell;
 *          never a guess: 16 fixed cells and 16 check bits have to agree.
 */
std::optional<PatternReading> readPattern(const std::uint8_t *luma, int stride, int width,
                                          int height);

/*! The same for 32-bit pixels with blue, green, red and an unused byte in memory. */
std::optional<PatternReading> readPatternRgb32(const std::uint8_t *pixels, int stride, int width,
                                               int height);

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <optional>

namespace Veltra {
namespace Ocelle {

/*!
 * The machine-readable part of the test picture: 16 x 4 cells, black or white, of which the picture
 * is 20 wide and 15 high (so one is a macroblock at 320x240).
 *
 * Cell n of the 64 is bit n of a word, counted along the rows from the top left one. The first and
 * the last two of every row are fixed; the rest hold the number, most significant bit first, and
 * its CRC-16.
 */
namespace PatternCode {

constexpr int GridColumns = 20;
constexpr int GridRows = 15;
constexpr int FirstColumn = 2;
constexpr int FirstRow = 10;
constexpr int Columns = 16;
constexpr int Rows = 4;
constexpr int Cells = Columns * Rows;

/*! The cells that are the same for every number. */
std::uint64_t fixedMask();
/*! Those of them that are white. */
std::uint64_t fixedCells();

/*! All cells for \a sequence; a set bit is white. */
std::uint64_t encode(std::uint32_t sequence);
/*! The number in \a cells; nothing where a fixed cell or the check bits are wrong. */
std::optional<std::uint32_t> decode(std::uint64_t cells);

} // namespace PatternCode
} // namespace Ocelle
} // namespace Veltra

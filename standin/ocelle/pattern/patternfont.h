// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*! A font of capital letters, digits and a few marks, for the test picture. */
namespace PatternFont {

constexpr int Width = 5; // modules
constexpr int Height = 7;
constexpr int Advance = 6; // from one glyph to the next

/*! A glyph's rows from the top, its leftmost module in bit 4; unknown characters are blank. */
using Glyph = std::array<std::uint8_t, Height>;
const Glyph &glyph(char character);

} // namespace PatternFont
} // namespace Ocelle
} // namespace Veltra

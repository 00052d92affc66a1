// SPDX-License-Identifier: BSD-3-Clause
#include "patterncode.h"

namespace Veltra {
namespace Ocelle {
namespace PatternCode {
namespace {

// Two cells at either end of a row. Differs from each of its own mirror images and turns.
constexpr char Frame[Rows][5] = { "#.##", "##..", "#...", ".#.#" };
constexpr int CheckBits = 16;
constexpr int NumberBits = 32;

bool isFixed(int column)
{
    return column < 2 || column >= Columns - 2;
}

// CRC-16 with the polynomial x^16 + x^12 + x^5 + 1, starting from all ones.
std::uint16_t checkBits(std::uint32_t value)
{
    std::uint32_t crc = 0xffff;
    for (int bit = NumberBits - 1; bit >= 0; --bit) {
        const std::uint32_t out = ((crc >> 15) ^ (value >> bit)) & 1;
        crc = ((crc << 1) & 0xffff) ^ (out != 0 ? 0x1021U : 0U);
    }
    return static_cast<std::uint16_t>(crc);
}

constexpr std::uint64_t cellBit(int row, int column)
{
    return std::uint64_t(1) << (row * Columns + column);
}

} // namespace

std::uint64_t fixedMask()
{
    std::uint64_t mask = 0;
    for (int row = 0; row < Rows; ++row) {
        for (int column = 0; column < Columns; ++column)
            mask |= isFixed(column) ? cellBit(row, column) : 0;
    }
    return mask;
}

std::uint64_t fixedCells()
{
    std::uint64_t cells = 0;
    for (int row = 0; row < Rows; ++row) {
        for (int i = 0; i < 4; ++i) {
            const int column = i < 2 ? i : Columns - 4 + i;
            cells |= Frame[row][i] == '#' ? cellBit(row, column) : 0;
        }
    }
    return cells;
}

std::uint64_t encode(std::uint32_t sequence)
{
    std::uint64_t payload = std::uint64_t(sequence) << CheckBits | checkBits(sequence);
    std::uint64_t cells = fixedCells();
    for (int row = Rows - 1; row >= 0; --row) {
        for (int column = Columns - 3; column >= 2; --column) {
            cells |= (payload & 1) != 0 ? cellBit(row, column) : 0;
            payload >>= 1;
        }
    }
    return cells;
}

std::optional<std::uint32_t> decode(std::uint64_t cells)
{
    if ((cells & fixedMask()) != fixedCells())
        return std::nullopt;
    std::uint64_t payload = 0;
    for (int row = 0; row < Rows; ++row) {
        for (int column = 2; column < Columns - 2; ++column)
            payload = payload << 1 | ((cells & cellBit(row, column)) != 0 ? 1 : 0);
    }
    const auto sequence = static_cast<std::uint32_t>(payload >> CheckBits);
    if (checkBits(sequence) != static_cast<std::uint16_t>(payload))
        return std::nullopt;
    return sequence;
}

} // namespace PatternCode
} // namespace Ocelle
} // namespace Veltra

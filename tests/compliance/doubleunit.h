// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>

/*! What the double's encoders make of a test picture, followed by what fills up the bit rate. */
struct DoubleUnit
{
    static constexpr int Bars = 8; // of colour, side by side in the test picture's upper part

    struct Colour
    {
        std::uint8_t y;
        std::uint8_t cb;
        std::uint8_t cr;
    };

    static constexpr std::uint32_t Magic = 0x4C425544;

    std::uint32_t magic;
    std::int32_t type;  // CodecType
    std::int32_t width; // pixels, upright
    std::int32_t height;
    std::uint32_t number;
    std::int32_t rotation;  // degrees clockwise
    std::uint32_t mirrored; // top to bottom, before it is turned
    std::uint32_t isKey;
    Colour bars[Bars];
};

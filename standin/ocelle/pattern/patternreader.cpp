// SPDX-License-Identifier: BSD-3-Clause
#include "patternreader.h"

#include "patterncode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Veltra {
namespace Ocelle {
namespace {

using namespace PatternCode;

constexpr int MinWidth = 80; // pixels of the upright picture
constexpr int MinHeight = 60;
constexpr int SamplesPerSide = 6;  // of a cell, spread over its middle half
constexpr int MinContrast = 48;    // between the white and the black cells, in luma steps
constexpr double MinMargin = 0.15; // of that contrast, a cell's distance from the threshold

// A point of the painted picture, in the unit square.
struct Point
{
    double x, y;
};

// Where the point is after mirroring and turning.
Point moved(Point point, bool mirrored, int rotation)
{
    if (mirrored)
        point.x = 1 - point.x;
    switch (rotation) {
    case 90:
        return { 1 - point.y, point.x };
    case 180:
        return { 1 - point.x, 1 - point.y };
    case 270:
        return { point.y, 1 - point.x };
    default:
        return point;
    }
}

using Levels = std::array<double, Cells>;

// The mean luma of each cell, for one way of standing.
template <typename Sample>
Levels cellLevels(const Sample &sample, int width, int height, bool mirrored, int rotation)
{
    Levels levels {};
    for (int cell = 0; cell < Cells; ++cell) {
        int sum = 0;
        for (int i = 0; i < SamplesPerSide * SamplesPerSide; ++i) {
            const double inX = 0.25 + 0.5 * (i % SamplesPerSide + 0.5) / SamplesPerSide;
            const double inY = 0.25 + 0.5 * (i / SamplesPerSide + 0.5) / SamplesPerSide;
            const Point point = moved({ (FirstColumn + cell % Columns + inX) / GridColumns,
                                        (FirstRow + cell / Columns + inY) / GridRows },
                                      mirrored, rotation);
            sum += sample(std::min(static_cast<int>(point.x * width), width - 1),
                          std::min(static_cast<int>(point.y * height), height - 1));
        }
        levels[static_cast<std::size_t>(cell)] = double(sum) / (SamplesPerSide * SamplesPerSide);
    }
    return levels;
}

// The fixed cells give the threshold and the contrast; every cell has to be clear of doubt.
std::optional<std::uint64_t> cellsOf(const Levels &levels)
{
    double white = 0;
    double black = 0;
    int whites = 0;
    int blacks = 0;
    for (int cell = 0; cell < Cells; ++cell) {
        if ((fixedMask() >> cell & 1) == 0)
            continue;
        const bool isWhite = (fixedCells() >> cell & 1) != 0;
        (isWhite ? white : black) += levels[static_cast<std::size_t>(cell)];
        ++(isWhite ? whites : blacks);
    }
    white /= whites;
    black /= blacks;
    const double contrast = white - black;
    if (contrast < MinContrast)
        return std::nullopt;

    const double threshold = (white + black) / 2;
    std::uint64_t cells = 0;
    for (int cell = 0; cell < Cells; ++cell) {
        const double above = levels[static_cast<std::size_t>(cell)] - threshold;
        if (std::abs(above) < MinMargin * contrast)
            return std::nullopt;
        cells |= std::uint64_t(above > 0 ? 1 : 0) << cell;
    }
    return cells;
}

template <typename Sample>
std::optional<PatternReading> read(const Sample &sample, int width, int height)
{
    for (const int rotation : { 0, 180, 90, 270 }) {
        const bool turned = rotation % 180 != 0;
        if ((turned ? height : width) < MinWidth || (turned ? width : height) < MinHeight)
            continue;
        for (const bool mirrored : { false, true }) {
            const auto cells = cellsOf(cellLevels(sample, width, height, mirrored, rotation));
            const auto sequence = cells ? decode(*cells) : std::nullopt;
            if (sequence)
                return PatternReading { *sequence, mirrored, rotation };
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<PatternReading> readPattern(const std::uint8_t *luma, int stride, int width,
                                          int height)
{
    if (luma == nullptr)
        return std::nullopt;
    const auto sample = [=](int x, int y) -> int {
        return luma[static_cast<std::ptrdiff_t>(y) * stride + x];
    };
    return read(sample, width, height);
}

std::optional<PatternReading> readPatternRgb32(const std::uint8_t *pixels, int stride, int width,
                                               int height)
{
    if (pixels == nullptr)
        return std::nullopt;
    const auto sample = [=](int x, int y) -> int {
        const std::uint8_t *pixel = pixels + static_cast<std::ptrdiff_t>(y) * stride + x * 4;
        return (pixel[0] * 29 + pixel[1] * 150 + pixel[2] * 77) >> 8;
    };
    return read(sample, width, height);
}

} // namespace Ocelle
} // namespace Veltra

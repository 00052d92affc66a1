// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QRect>
#include <QSize>
#include <QString>

#include <ocelle/frames.h>
#include <patternreader.h>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace Compliance {

/*! As television has it: luma from 16 to 235, chroma around 128. */
struct Colour
{
    int y = 0;
    int cb = 0;
    int cr = 0;
};

/*! What was to be seen of one picture. */
struct SeenPicture
{
    static constexpr int Bars = 8; // of the test pattern's colours, from the left

    QSize size; // pixels, of the visible part
    qint64 timestamp = 0;
    std::optional<Veltra::Ocelle::PatternReading> reading; // of the test pattern, if it is one
    std::array<Colour, Bars> bars {};                      // of an upright one
};

/*! Where the samples of a mapped picture are. */
struct Planes
{
    const std::uint8_t *y = nullptr;
    const std::uint8_t *cb = nullptr; // null, as cr, where the colours cannot be seen
    const std::uint8_t *cr = nullptr;
    int yStride = 0; // bytes per line, negative for a picture stored from the bottom up
    int cStride = 0;
    int chromaStep = 1; // bytes between two samples
};

/*! What is to be seen in \a viewport of a picture in memory; all of it where that is empty. */
SeenPicture lookAt(const Veltra::Ocelle::YCbCrFrame &frame, const QRect &viewport);
SeenPicture lookAt(const Planes &planes, const QSize &size, const QRect &viewport);
/*! The same of pixels with blue, green, red and an unused byte in memory. */
SeenPicture lookAtRgb32(const std::uint8_t *pixels, int stride, const QSize &size,
                        const QRect &viewport);

/*! What keeps them from being the test pictures from 0 on, in order; empty where nothing does. */
QString numberProblem(const std::vector<SeenPicture> &seen);
/*! What is wrong with the colours of test pictures; empty where they are about the painted ones. */
QString colourProblem(const std::vector<SeenPicture> &seen);

} // namespace Compliance

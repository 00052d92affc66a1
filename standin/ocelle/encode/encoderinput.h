// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "pictureview.h"

#include <ocelle/frames.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

class PictureEncoder;

/*! In pixels. */
struct PictureSize
{
    int width;
    int height;
};

/*!
 * Turns pictures as they come into pictures as a codec takes them: mirrored top to bottom and then
 * turned clockwise, as asked; in a layout that it takes; with an even size where it needs one, by
 * repeating the last column and line. What can stay where it is, is not copied.
 *
 * Threads: one at a time.
 * Owner:   the result refers to the input and to this object's memory, until the next call.
 * Errors:  check() says what is wrong with a picture; prepare() takes only what has passed it.
 */
class EncoderInput
{
public:
    /*! \a degrees are 0, 90, 180 or 270, clockwise. */
    void setRotation(int degrees) { m_rotation = degrees; }
    void setMirrored(bool mirrored) { m_mirrored = mirrored; }

    /*! The error is what is wrong with \a frame. */
    static bool check(const YCbCrFrame &frame, std::string *error);
    /*! RGB is 32-bit pixels with blue, green, red and an unused byte in memory. */
    static bool check(const RGBFrame &frame, std::string *error);

    /*! What comes of a picture of that size, but for rounding: turned by 90 degrees or not. */
    PictureSize turnedSize(int width, int height) const;

    /*! \a frame, which has passed check(), as \a encoder takes it. */
    PictureView prepare(const YCbCrFrame &frame, const PictureEncoder &encoder);
    PictureView prepare(const RGBFrame &frame, const PictureEncoder &encoder);

    /*! The only RGB format: 'B', 'X', '2', '4'. */
    static constexpr std::uint32_t Rgb32 = 0x34325842;

private:
    // In m_memory, even in size.
    struct Planes
    {
        std::uint8_t *y, *cb, *cr;
        int yStride, cStride;
    };

    Planes planes(int width, int height);
    PictureView turned(const PictureView &picture, int chromaStep);
    PictureView withChromaApart(const PictureView &picture);
    void makeEven(PictureView *picture);
    int signedHeight(int height) const { return m_mirrored ? -height : height; }

    int m_rotation = 0;
    bool m_mirrored = false;
    std::vector<std::uint8_t> m_memory;    // of planes()
    std::vector<std::uint8_t> m_converted; // RGB as YCbCr before it is turned
};

} // namespace Ocelle
} // namespace Veltra

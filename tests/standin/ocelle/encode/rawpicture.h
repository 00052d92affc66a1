// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/frames.h>
#include <pictureview.h>

#include <cstdint>
#include <memory>
#include <vector>

/*! A YCbCr 4:2:0 picture of any size, lines without padding, for tests to paint and compare. */
struct RawPicture
{
    RawPicture(int width, int height);

    /*! The test picture with that number in it. */
    static RawPicture pattern(int width, int height, std::uint32_t number);

    int chromaWidth() const { return (width + 1) / 2; }
    int chromaHeight() const { return (height + 1) / 2; }

    int width;
    int height;
    std::vector<std::uint8_t> y, cb, cr;
};

/*! Peak signal to noise ratio over all three planes, in dB; 0 where the sizes differ. */
double psnr(const RawPicture &one, const RawPicture &other);
/*! The same of one plane. */
double psnr(const std::vector<std::uint8_t> &one, const std::vector<std::uint8_t> &other);

/*!
 * A copy of \a picture as an encoder takes it, which owns its memory. Lines are \a padding bytes
 * longer than they need to be; what is in these is noise.
 */
std::shared_ptr<Veltra::Ocelle::YCbCrFrame> ycbcrFrame(const RawPicture &picture,
                                                       Veltra::Ocelle::PictureLayout layout,
                                                       std::int64_t timestamp, int padding = 0);
/*! The same as 32-bit pixels. */
std::shared_ptr<Veltra::Ocelle::RGBFrame> rgbFrame(const RawPicture &picture,
                                                   std::int64_t timestamp, int padding = 0);

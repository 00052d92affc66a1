// SPDX-License-Identifier: BSD-3-Clause
#include "rawpicture.h"

#include <libyuv/convert_argb.h>
#include <testpattern.h>

#include <cmath>

using namespace Veltra::Ocelle;

namespace {
struct OwningFrame : YCbCrFrame
{
    std::vector<std::uint8_t> luma, chroma;
};

struct OwningRgbFrame : RGBFrame
{
    std::vector<std::uint8_t> pixels;
};

double squares(const std::vector<std::uint8_t> &one, const std::vector<std::uint8_t> &other)
{
    double sum = 0;
    for (std::size_t i = 0; i < one.size(); ++i)
        sum += (double(one[i]) - other[i]) * (double(one[i]) - other[i]);
    return sum;
}

double decibels(double sum, std::size_t count)
{
    constexpr double most = 100; // for equal ones
    return sum > 0 ? 10 * std::log10(255.0 * 255.0 * double(count) / sum) : most;
}
} // namespace

RawPicture::RawPicture(int pictureWidth, int pictureHeight)
    : width(pictureWidth)
    , height(pictureHeight)
    , y(std::size_t(width) * std::size_t(height), 16)
    , cb(std::size_t(chromaWidth()) * std::size_t(chromaHeight()), 128)
    , cr(cb)
{
}

RawPicture RawPicture::pattern(int width, int height, std::uint32_t number)
{
    RawPicture picture(width, height);
    const TestPattern pattern(width, height, PixelFormat::YU12);
    const TestPattern::Planes planes { { { picture.y.data(), width },
                                         { picture.cb.data(), picture.chromaWidth() },
                                         { picture.cr.data(), picture.chromaWidth() } } };
    pattern.paintBackground(planes);
    pattern.update(planes, number, std::int64_t(number) * 33333);
    return picture;
}

double psnr(const std::vector<std::uint8_t> &one, const std::vector<std::uint8_t> &other)
{
    return one.size() == other.size() ? decibels(squares(one, other), one.size()) : 0;
}

double psnr(const RawPicture &one, const RawPicture &other)
{
    if (one.width != other.width || one.height != other.height)
        return 0;
    return decibels(squares(one.y, other.y) + squares(one.cb, other.cb) + squares(one.cr, other.cr),
                    one.y.size() + one.cb.size() + one.cr.size());
}

std::shared_ptr<YCbCrFrame> ycbcrFrame(const RawPicture &picture, PictureLayout layout,
                                       std::int64_t timestamp, int padding)
{
    const bool planar = layout == PictureLayout::Planar;
    const int step = planar ? 1 : 2;
    const int yStride = picture.width + padding;
    const int cStride = picture.chromaWidth() * step + padding;
    auto frame = std::make_shared<OwningFrame>();
    frame->luma.assign(std::size_t(yStride) * std::size_t(picture.height), 0xAA);
    const std::size_t plane = std::size_t(cStride) * std::size_t(picture.chromaHeight());
    frame->chroma.assign(planar ? 2 * plane : plane, 0x55);
    std::uint8_t *chroma = frame->chroma.data();
    std::uint8_t *cb = layout == PictureLayout::NV21 ? chroma + 1 : chroma;
    std::uint8_t *cr = planar                          ? chroma + plane
                       : layout == PictureLayout::NV21 ? chroma
                                                       : chroma + 1;
    for (int line = 0; line < picture.height; ++line) {
        for (int x = 0; x < picture.width; ++x)
            frame->luma[std::size_t(line * yStride + x)] =
                    picture.y[std::size_t(line * picture.width + x)];
    }
    for (int line = 0; line < picture.chromaHeight(); ++line) {
        for (int x = 0; x < picture.chromaWidth(); ++x) {
            const auto from = std::size_t(line * picture.chromaWidth() + x);
            cb[line * cStride + x * step] = picture.cb[from];
            cr[line * cStride + x * step] = picture.cr[from];
        }
    }
    frame->y = frame->luma.data();
    frame->cb = cb;
    frame->cr = cr;
    frame->yStride = std::uint16_t(yStride);
    frame->cStride = std::uint16_t(cStride);
    frame->chromaStep = std::uint16_t(step);
    frame->width = std::uint16_t(picture.width);
    frame->height = std::uint16_t(picture.height);
    frame->timestamp = timestamp;
    return frame;
}

std::shared_ptr<RGBFrame> rgbFrame(const RawPicture &picture, std::int64_t timestamp, int padding)
{
    auto frame = std::make_shared<OwningRgbFrame>();
    const int stride = 4 * picture.width + padding;
    frame->pixels.assign(std::size_t(stride) * std::size_t(picture.height), 0xAA);
    libyuv::I420ToARGB(picture.y.data(), picture.width, picture.cb.data(), picture.chromaWidth(),
                       picture.cr.data(), picture.chromaWidth(), frame->pixels.data(), stride,
                       picture.width, picture.height);
    frame->fourcc = 0x34325842;
    frame->width = std::uint16_t(picture.width);
    frame->height = std::uint16_t(picture.height);
    frame->stride = std::uint16_t(stride);
    frame->data = frame->pixels.data();
    frame->reserved[0] = frame->reserved[1] = 0;
    frame->timestamp = timestamp;
    return frame;
}

// SPDX-License-Identifier: BSD-3-Clause
#include "encoderinput.h"

#include "pictureencoder.h"

#include <libyuv/convert.h>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate.h>

#include <cstddef>
#include <cstring>

namespace Veltra {
namespace Ocelle {

namespace {
int half(int value)
{
    return (value + 1) / 2;
}

std::string sizeText(int width, int height)
{
    return std::to_string(width) + 'x' + std::to_string(height);
}

// What is wrong with a picture, as text; empty where nothing is.
std::string problem(const YCbCrFrame &frame)
{
    if (!frame.width || !frame.height)
        return "the picture has no size: " + sizeText(frame.width, frame.height);
    if (!frame.y || !frame.cb || !frame.cr)
        return "the picture has no samples";
    if (frame.chromaStep != 1 && frame.chromaStep != 2)
        return "the picture's chroma step is " + std::to_string(frame.chromaStep) +
               ", neither 1 nor 2";
    const std::ptrdiff_t distance = frame.cr - frame.cb;
    if (frame.chromaStep == 2 && distance != 1 && distance != -1)
        return "the picture's chroma is neither planar nor in pairs";
    if (frame.yStride < frame.width)
        return "the picture's lines of " + std::to_string(frame.yStride) +
               " bytes are too short for " + std::to_string(frame.width) + " pixels";
    if (frame.cStride < frame.chromaStep * half(frame.width))
        return "the picture's chroma lines of " + std::to_string(frame.cStride) +
               " bytes are too short for " + std::to_string(frame.width) + " pixels";
    return {};
}

std::string problem(const RGBFrame &frame)
{
    if (frame.fourcc != EncoderInput::Rgb32)
        return "the picture's RGB format " + std::to_string(frame.fourcc) + " is not known";
    if (!frame.width || !frame.height)
        return "the picture has no size: " + sizeText(frame.width, frame.height);
    if (!frame.data)
        return "the picture has no samples";
    if (frame.stride < 4 * frame.width)
        return "the picture's lines of " + std::to_string(frame.stride) +
               " bytes are too short for " + std::to_string(frame.width) + " pixels";
    return {};
}

void repeatLastColumnAndLine(std::uint8_t *plane, int stride, int width, int height)
{
    if (width % 2) {
        for (int line = 0; line < height; ++line) {
            std::uint8_t *end = plane + std::ptrdiff_t(line) * stride + width;
            *end = end[-1];
        }
    }
    if (height % 2) {
        std::uint8_t *last = plane + std::ptrdiff_t(height - 1) * stride;
        std::memcpy(last + stride, last, std::size_t(2 * half(width)));
    }
}
} // namespace

bool EncoderInput::check(const YCbCrFrame &frame, std::string *error)
{
    *error = problem(frame);
    return error->empty();
}

bool EncoderInput::check(const RGBFrame &frame, std::string *error)
{
    *error = problem(frame);
    return error->empty();
}

PictureSize EncoderInput::turnedSize(int width, int height) const
{
    return m_rotation % 180 ? PictureSize { height, width } : PictureSize { width, height };
}

PictureView EncoderInput::prepare(const YCbCrFrame &frame, const PictureEncoder &encoder)
{
    const PictureLayout layout = frame.chromaStep == 1 ? PictureLayout::Planar
                                 : frame.cr > frame.cb ? PictureLayout::NV12
                                                       : PictureLayout::NV21;
    const PictureView picture = { layout,        frame.y,       frame.cb,    frame.cr,
                                  frame.yStride, frame.cStride, frame.width, frame.height };
    PictureView result = picture;
    if (m_rotation || m_mirrored)
        result = turned(picture, frame.chromaStep);
    else if (!encoder.takes(layout))
        result = withChromaApart(picture);
    if (!encoder.takesOddSizes())
        makeEven(&result);
    return result;
}

PictureView EncoderInput::prepare(const RGBFrame &frame, const PictureEncoder &encoder)
{
    const int width = frame.width;
    const int height = frame.height;
    PictureView picture { PictureLayout::Planar, nullptr,     nullptr, nullptr,
                          2 * half(width),       half(width), width,   height };
    Planes to;
    if (m_rotation) { // by way of a second picture: it is turned as YCbCr, a third of the bytes
        const std::size_t luma = std::size_t(picture.yStride) * height;
        const std::size_t chroma = std::size_t(picture.cStride) * half(height);
        m_converted.resize(luma + 2 * chroma);
        to = { m_converted.data(), m_converted.data() + luma, m_converted.data() + luma + chroma,
               picture.yStride, picture.cStride };
    } else {
        to = planes(width, height);
    }
    libyuv::ARGBToI420(frame.data, frame.stride, to.y, to.yStride, to.cb, to.cStride, to.cr,
                       to.cStride, width, m_rotation ? height : signedHeight(height));
    picture.y = to.y;
    picture.cb = to.cb;
    picture.cr = to.cr;
    if (m_rotation)
        picture = turned(picture, 1);
    if (!encoder.takesOddSizes())
        makeEven(&picture);
    return picture;
}

// Room for a picture of that size, rounded up to an even one, in memory that is kept.
EncoderInput::Planes EncoderInput::planes(int width, int height)
{
    const int yStride = 2 * half(width);
    const int cStride = half(width);
    const std::size_t luma = std::size_t(yStride) * (2 * half(height));
    const std::size_t chroma = std::size_t(cStride) * half(height);
    m_memory.resize(luma + 2 * chroma);
    std::uint8_t *y = m_memory.data();
    return { y, y + luma, y + luma + chroma, yStride, cStride };
}

PictureView EncoderInput::turned(const PictureView &picture, int chromaStep)
{
    const PictureSize size = turnedSize(picture.width, picture.height);
    const Planes to = planes(size.width, size.height);
    libyuv::Android420ToI420Rotate(picture.y, picture.yStride, picture.cb, picture.cStride,
                                   picture.cr, picture.cStride, chromaStep, to.y, to.yStride, to.cb,
                                   to.cStride, to.cr, to.cStride, picture.width,
                                   signedHeight(picture.height), libyuv::RotationMode(m_rotation));
    return {
        PictureLayout::Planar, to.y, to.cb, to.cr, to.yStride, to.cStride, size.width, size.height
    };
}

// Luma stays where it is.
PictureView EncoderInput::withChromaApart(const PictureView &picture)
{
    const Planes to = planes(picture.width, picture.height);
    const bool crFirst = picture.layout == PictureLayout::NV21;
    libyuv::SplitUVPlane(picture.pairs(), picture.cStride, crFirst ? to.cr : to.cb, to.cStride,
                         crFirst ? to.cb : to.cr, to.cStride, half(picture.width),
                         half(picture.height));
    PictureView result = picture;
    result.layout = PictureLayout::Planar;
    result.cb = to.cb;
    result.cr = to.cr;
    result.cStride = to.cStride;
    return result;
}

// Chroma needs nothing: its planes cover the rounded size already.
void EncoderInput::makeEven(PictureView *picture)
{
    const int width = picture->width;
    const int height = picture->height;
    if (width % 2 == 0 && height % 2 == 0)
        return;
    const bool isOurs = !m_memory.empty() && picture->y == m_memory.data();
    const Planes to = planes(width, height); // the same size as before where it is in use
    if (!isOurs)
        libyuv::CopyPlane(picture->y, picture->yStride, to.y, to.yStride, width, height);
    repeatLastColumnAndLine(to.y, to.yStride, width, height);
    picture->y = to.y;
    picture->yStride = to.yStride;
    picture->width = 2 * half(width);
    picture->height = 2 * half(height);
}

} // namespace Ocelle
} // namespace Veltra

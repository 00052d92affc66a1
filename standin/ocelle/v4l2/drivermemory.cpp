// SPDX-License-Identifier: BSD-3-Clause
#include "drivermemory.h"

#include "v4l2format.h"

#include <libyuv/convert.h>

#include <algorithm>

namespace Veltra {
namespace Ocelle {

namespace {

using Convert = int (*)(const std::uint8_t *, int, std::uint8_t *, int, std::uint8_t *, int,
                        std::uint8_t *, int, int, int);

struct Packed
{
    Convert convert;
    std::size_t lineBytes;
};

Packed packed(const v4l2_pix_format &format)
{
    const std::size_t width = format.width;
    switch (format.pixelformat) {
    case V4L2_PIX_FMT_YUYV:
        return { libyuv::YUY2ToI420, (width + 1) / 2 * 4 };
    case V4L2_PIX_FMT_UYVY:
        return { libyuv::UYVYToI420, (width + 1) / 2 * 4 };
    case V4L2_PIX_FMT_RGB24:
        return { libyuv::RAWToI420, width * 3 };
    default:
        return { nullptr, 0 };
    }
}

} // namespace

bool layOut(const v4l2_pix_format &format, const std::uint8_t *data, std::size_t size,
            GraphicBuffer &picture)
{
    const V4l2Format *const kind = V4l2Format::find(format.pixelformat);
    if (!kind || kind->isCopied)
        return false;
    const bool isPlanar = kind->delivered == PixelFormat::YU12;
    const std::size_t width = format.width;
    const std::size_t height = format.height;
    const std::size_t stride = std::max<std::size_t>(format.bytesperline, width);
    const std::size_t chromaStride = isPlanar ? stride / 2 : stride;
    const std::size_t chromaHeight = (height + 1) / 2;
    const std::size_t chromaBytes = chromaStride * chromaHeight;
    if (stride > 1U << 20 || chromaStride < (isPlanar ? (width + 1) / 2 : width + width % 2) ||
        size < stride * height + chromaBytes * (isPlanar ? 2 : 1))
        return false;

    picture.width = std::int32_t(width);
    picture.height = std::int32_t(height);
    picture.format = kind->delivered;
    picture.planeCount = isPlanar ? 3 : 2;
    picture.planes[0] = { data, std::int32_t(stride), std::int32_t(height) };
    const std::uint8_t *chroma = data + stride * height;
    for (std::size_t plane = 1; plane < std::size_t(picture.planeCount); ++plane) {
        picture.planes[plane] = { chroma, std::int32_t(chromaStride), std::int32_t(chromaHeight) };
        chroma += chromaBytes;
    }
    return true;
}

bool convert(const v4l2_pix_format &format, const std::uint8_t *data, std::size_t size,
             JpegDecoder &decoder, PictureMemory &picture)
{
    const V4l2Format *const kind = V4l2Format::find(format.pixelformat);
    if (!kind || !kind->isCopied)
        return false;
    const auto width = std::int32_t(format.width);
    const auto height = std::int32_t(format.height);
    picture.allocate(width, height, kind->delivered);
    const PictureMemory::WritablePlanes &out = picture.writablePlanes();
    if (kind->isCompressed)
        return decoder.decode(data, size, width, height,
                              { { { out[0].data, out[0].stride },
                                  { out[1].data, out[1].stride },
                                  { out[2].data, out[2].stride } } });

    const Packed how = packed(format);
    const std::size_t stride = std::max<std::size_t>(format.bytesperline, how.lineBytes);
    if (!how.convert || height < 1 || size < stride * (std::size_t(height) - 1) + how.lineBytes)
        return false;
    return how.convert(data, int(stride), out[0].data, out[0].stride, out[1].data, out[1].stride,
                       out[2].data, out[2].stride, width, height) == 0;
}

} // namespace Ocelle
} // namespace Veltra

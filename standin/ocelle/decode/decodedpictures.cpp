// SPDX-License-Identifier: BSD-3-Clause
#include "decodedpictures.h"

#include <libyuv/convert.h>

extern "C" {
#include <libavutil/frame.h>
}

#include <new>

namespace Veltra {
namespace Ocelle {

namespace {
using Planes = PictureMemory::WritablePlanes;
using Narrow = int (*)(const std::uint8_t *, int, const std::uint8_t *, int, const std::uint8_t *,
                       int, std::uint8_t *, int, std::uint8_t *, int, std::uint8_t *, int, int,
                       int);
using Wide = int (*)(const std::uint16_t *, int, const std::uint16_t *, int, const std::uint16_t *,
                     int, std::uint8_t *, int, std::uint8_t *, int, std::uint8_t *, int, int, int);

const std::uint16_t *wide(const std::uint8_t *data)
{
    return reinterpret_cast<const std::uint16_t *>(data);
}

bool convertNarrow(Narrow function, const AVFrame &from, const Planes &to)
{
    return function(from.data[0], from.linesize[0], from.data[1], from.linesize[1], from.data[2],
                    from.linesize[2], to[0].data, to[0].stride, to[1].data, to[1].stride,
                    to[2].data, to[2].stride, from.width, from.height) == 0;
}

bool convertWide(Wide function, const AVFrame &from, const Planes &to)
{
    return function(wide(from.data[0]), from.linesize[0] / 2, wide(from.data[1]),
                    from.linesize[1] / 2, wide(from.data[2]), from.linesize[2] / 2, to[0].data,
                    to[0].stride, to[1].data, to[1].stride, to[2].data, to[2].stride, from.width,
                    from.height) == 0;
}
} // namespace

DecodedPictures::DecodedPictures()
    : m_pool(std::make_shared<Pool>())
{
}

std::shared_ptr<FramePicture> DecodedPictures::make(AVFrame *frame)
{
    std::shared_ptr<FramePicture> picture = m_pool->take();
    if (!picture) // many are out: none is lost for that
        picture = std::make_shared<FramePicture>();
    if (FramePicture::isDirect(*frame, PixelFormat::YU12) ||
        FramePicture::isDirect(*frame, PixelFormat::NV12)) {
        picture->take(frame);
        return picture;
    }
    try {
        picture->allocate(frame->width, frame->height, PixelFormat::YU12);
    } catch (const std::bad_alloc &) {
        return {};
    }
    return convert(*frame, picture.get()) ? picture : nullptr;
}

bool DecodedPictures::convert(const AVFrame &frame, FramePicture *picture)
{
    const Planes &to = picture->writablePlanes();
    switch (frame.format) {
    case AV_PIX_FMT_YUV422P:
    case AV_PIX_FMT_YUVJ422P:
        return convertNarrow(libyuv::I422ToI420, frame, to);
    case AV_PIX_FMT_YUV444P:
    case AV_PIX_FMT_YUVJ444P:
        return convertNarrow(libyuv::I444ToI420, frame, to);
    case AV_PIX_FMT_GRAY8:
        return libyuv::I400ToI420(frame.data[0], frame.linesize[0], to[0].data, to[0].stride,
                                  to[1].data, to[1].stride, to[2].data, to[2].stride, frame.width,
                                  frame.height) == 0;
    case AV_PIX_FMT_YUV420P10LE:
        return convertWide(libyuv::I010ToI420, frame, to);
    case AV_PIX_FMT_YUV420P12LE:
        return convertWide(libyuv::I012ToI420, frame, to);
    case AV_PIX_FMT_YUV422P10LE:
        return convertWide(libyuv::I210ToI420, frame, to);
    case AV_PIX_FMT_YUV444P10LE:
        return convertWide(libyuv::I410ToI420, frame, to);
    default:
        return m_converter.convert(frame, *picture);
    }
}

} // namespace Ocelle
} // namespace Veltra

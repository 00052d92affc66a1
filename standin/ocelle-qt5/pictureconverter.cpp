// SPDX-License-Identifier: BSD-3-Clause
#include "pictureconverter.h"

#include "pictureformat.h"
#include "picturelayout.h"

#include <libyuv.h>

namespace Veltra {
namespace Ocelle {

namespace {

/*! Plane \a index of a buffer of the pool, to be written. */
std::uint8_t *writable(PooledFrame &buffer, std::size_t index)
{
    return buffer.memory + (buffer.planes[index].data - buffer.memory);
}

void toRgb32(const GraphicBuffer &from, PooledFrame &to)
{
    const auto &in = from.planes;
    std::uint8_t *const out = writable(to, 0);
    const int stride = to.planes[0].stride;
    switch (qtPixelFormat(from.format)) {
    case QVideoFrame::Format_NV12:
        libyuv::NV12ToARGB(in[0].data, in[0].stride, in[1].data, in[1].stride, out, stride,
                           from.width, from.height);
        break;
    case QVideoFrame::Format_NV21:
        libyuv::NV21ToARGB(in[0].data, in[0].stride, in[1].data, in[1].stride, out, stride,
                           from.width, from.height);
        break;
    default:
        libyuv::I420ToARGB(in[0].data, in[0].stride, in[1].data, in[1].stride, in[2].data,
                           in[2].stride, out, stride, from.width, from.height);
    }
}

/*! The chroma of one picture, interleaved or not, as two planes. */
void toPlanar(const GraphicBuffer &from, PooledFrame &to, bool crFirst)
{
    const auto &in = from.planes;
    const auto &out = to.planes;
    const bool fromNv21 = qtPixelFormat(from.format) == QVideoFrame::Format_NV21;
    const std::size_t first = fromNv21 == crFirst ? 1 : 2;
    libyuv::CopyPlane(in[0].data, in[0].stride, writable(to, 0), out[0].stride, from.width,
                      from.height);
    libyuv::SplitUVPlane(in[1].data, in[1].stride, writable(to, first), out[1].stride,
                         writable(to, 3 - first), out[2].stride, (from.width + 1) / 2,
                         (from.height + 1) / 2);
}

void toSemiPlanar(const GraphicBuffer &from, PooledFrame &to, bool crFirst)
{
    const auto &in = from.planes;
    const auto &out = to.planes;
    libyuv::CopyPlane(in[0].data, in[0].stride, writable(to, 0), out[0].stride, from.width,
                      from.height);
    const int width = (from.width + 1) / 2;
    const int height = (from.height + 1) / 2;
    if (qtPixelFormat(from.format) == QVideoFrame::Format_YUV420P) {
        const std::size_t first = crFirst ? 2 : 1;
        libyuv::MergeUVPlane(in[first].data, in[first].stride, in[3 - first].data,
                             in[3 - first].stride, writable(to, 1), out[1].stride, width, height);
    } else {
        libyuv::SwapUVPlane(in[1].data, in[1].stride, writable(to, 1), out[1].stride, width,
                            height);
    }
}

} // namespace

PictureConverter::PictureConverter()
    : m_pool(FramePool::create(MaxInUse))
{
}

std::shared_ptr<const GraphicBuffer> PictureConverter::convert(const GraphicBuffer &picture,
                                                               QVideoFrame::PixelFormat target)
{
    auto converted = acquirePicture(*m_pool, target, picture.width, picture.height);
    if (!converted)
        return nullptr;
    switch (target) {
    case QVideoFrame::Format_RGB32:
        toRgb32(picture, *converted);
        break;
    case QVideoFrame::Format_NV12:
    case QVideoFrame::Format_NV21:
        toSemiPlanar(picture, *converted, target == QVideoFrame::Format_NV21);
        break;
    default:
        toPlanar(picture, *converted, target == QVideoFrame::Format_YV12);
    }
    return converted;
}

} // namespace Ocelle
} // namespace Veltra

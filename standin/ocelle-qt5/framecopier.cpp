// SPDX-License-Identifier: BSD-3-Clause
#include "framecopier.h"

#include "picturelayout.h"

#include <libyuv.h>

#include <cstddef>
#include <limits>

namespace Veltra {
namespace Ocelle {

namespace {

/*! The layout in which the frame can be copied plane by plane; else YU12. */
PixelFormat layoutOf(const YCbCrFrame &frame)
{
    if (frame.chromaStep == 2 && frame.cr == frame.cb + 1)
        return PixelFormat::NV12;
    if (frame.chromaStep == 2 && frame.cb == frame.cr + 1)
        return PixelFormat::NV21;
    return PixelFormat::YU12;
}

QVideoFrame::PixelFormat qtLayout(PixelFormat format)
{
    return format == PixelFormat::YU12 ? QVideoFrame::Format_YUV420P : QVideoFrame::Format_NV12;
}

/*! Samples that lie further apart than interleaved ones, one by one. */
void gather(const unsigned char *from, int stride, int step, std::uint8_t *to, int toStride,
            int width, int height)
{
    for (int y = 0; y < height; ++y, from += stride, to += toStride) {
        for (int x = 0; x < width; ++x)
            to[x] = from[std::ptrdiff_t(x) * step];
    }
}

void copyChroma(const YCbCrFrame &frame, PooledFrame &to)
{
    const int width = (frame.width + 1) / 2;
    const int height = (frame.height + 1) / 2;
    std::uint8_t *const first = to.memory + (to.planes[1].data - to.memory);
    if (to.format != PixelFormat::YU12) {
        libyuv::CopyPlane(to.format == PixelFormat::NV12 ? frame.cb : frame.cr, frame.cStride,
                          first, to.planes[1].stride, 2 * width, height);
        return;
    }
    std::uint8_t *const second = to.memory + (to.planes[2].data - to.memory);
    if (frame.chromaStep == 1) {
        libyuv::CopyPlane(frame.cb, frame.cStride, first, to.planes[1].stride, width, height);
        libyuv::CopyPlane(frame.cr, frame.cStride, second, to.planes[2].stride, width, height);
        return;
    }
    gather(frame.cb, frame.cStride, frame.chromaStep, first, to.planes[1].stride, width, height);
    gather(frame.cr, frame.cStride, frame.chromaStep, second, to.planes[2].stride, width, height);
}

} // namespace

FrameCopier::FrameCopier()
    : m_pool(FramePool::create(MaxInUse))
{
}

bool FrameCopier::isWhole(const YCbCrFrame &frame)
{
    const int chromaWidth = (frame.width + 1) / 2;
    constexpr int mostPixels = std::numeric_limits<int>::max() / 4;
    return frame.y && frame.cb && frame.cr && frame.width > 0 && frame.height > 0 &&
           frame.height <= mostPixels / frame.width && frame.yStride >= frame.width &&
           frame.chromaStep > 0 && frame.cStride > (chromaWidth - 1) * frame.chromaStep;
}

std::shared_ptr<GraphicBuffer> FrameCopier::copy(const YCbCrFrame &frame)
{
    const PixelFormat format = layoutOf(frame);
    auto picture = acquirePicture(*m_pool, qtLayout(format), frame.width, frame.height);
    if (!picture)
        return nullptr;
    picture->format = format;
    picture->timestamp = frame.timestamp;
    libyuv::CopyPlane(frame.y, frame.yStride, picture->memory, picture->planes[0].stride,
                      frame.width, frame.height);
    copyChroma(frame, *picture);
    return picture;
}

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#include "framepicture.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace Veltra {
namespace Ocelle {

FramePicture::FramePicture()
    : m_frame(av_frame_alloc())
{
}

FramePicture::~FramePicture()
{
    AVFrame *frame = m_frame;
    av_frame_free(&frame);
}

bool FramePicture::isDirect(const AVFrame &frame, PixelFormat wanted)
{
    // The two planar formats differ in the range of the samples only, which nobody tells of here.
    const bool isPlanar = frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P;
    const bool isSemiPlanar = frame.format == AV_PIX_FMT_NV12;
    const bool fits = wanted == PixelFormat::NV12 ? isSemiPlanar : isPlanar;
    return fits && frame.linesize[0] > 0 && frame.linesize[1] > 0; // not stored upside down
}

void FramePicture::take(AVFrame *frame)
{
    av_frame_move_ref(m_frame, frame);
    const bool isSemiPlanar = m_frame->format == AV_PIX_FMT_NV12;
    width = m_frame->width;
    height = m_frame->height;
    format = isSemiPlanar ? PixelFormat::NV12 : PixelFormat::YU12;
    planeCount = isSemiPlanar ? 2 : 3;
    const std::int32_t chromaLines = (height + 1) / 2;
    for (std::size_t i = 0; i < planes.size(); ++i)
        planes[i] = { m_frame->data[i], m_frame->linesize[i], i == 0 ? height : chromaLines };
    if (isSemiPlanar)
        planes[2] = {};
}

void FramePicture::release()
{
    av_frame_unref(m_frame);
}

} // namespace Ocelle
} // namespace Veltra

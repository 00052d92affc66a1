// SPDX-License-Identifier: BSD-3-Clause
#include "frameconverter.h"

#include "framepicture.h"

extern "C" {
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

#include <libyuv/scale.h>

namespace Veltra {
namespace Ocelle {

FrameConverter::~FrameConverter()
{
    sws_freeContext(m_context);
}

bool FrameConverter::convert(const AVFrame &frame, PictureMemory &picture)
{
    return FramePicture::isDirect(frame, picture.format) ? scale(frame, picture)
                                                         : convertAny(frame, picture);
}

bool FrameConverter::scale(const AVFrame &frame, PictureMemory &picture)
{
    const PictureMemory::WritablePlanes &to = picture.writablePlanes();
    if (picture.format == PixelFormat::NV12) {
        return libyuv::NV12Scale(frame.data[0], frame.linesize[0], frame.data[1], frame.linesize[1],
                                 frame.width, frame.height, to[0].data, to[0].stride, to[1].data,
                                 to[1].stride, picture.width, picture.height,
                                 libyuv::kFilterBox) == 0;
    }
    return libyuv::I420Scale(frame.data[0], frame.linesize[0], frame.data[1], frame.linesize[1],
                             frame.data[2], frame.linesize[2], frame.width, frame.height,
                             to[0].data, to[0].stride, to[1].data, to[1].stride, to[2].data,
                             to[2].stride, picture.width, picture.height, libyuv::kFilterBox) == 0;
}

bool FrameConverter::convertAny(const AVFrame &frame, PictureMemory &picture)
{
    const AVPixelFormat target =
            picture.format == PixelFormat::NV12 ? AV_PIX_FMT_NV12 : AV_PIX_FMT_YUV420P;
    m_context = sws_getCachedContext(m_context, frame.width, frame.height,
                                     AVPixelFormat(frame.format), picture.width, picture.height,
                                     target, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!m_context)
        return false;
    std::uint8_t *data[4] = {};
    int strides[4] = {};
    for (std::size_t i = 0; i < std::size_t(picture.planeCount); ++i) {
        data[i] = picture.writablePlanes()[i].data;
        strides[i] = picture.writablePlanes()[i].stride;
    }
    return sws_scale(m_context, frame.data, frame.linesize, 0, frame.height, data, strides) ==
           picture.height;
}

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#include "v4l2format.h"

#include <linux/videodev2.h>

#include <iterator>

namespace Veltra {
namespace Ocelle {

namespace {

// Best first.
const V4l2Format Formats[] = {
    { V4L2_PIX_FMT_NV12, PixelFormat::NV12, false, false },
    { V4L2_PIX_FMT_NV21, PixelFormat::NV21, false, false },
    { V4L2_PIX_FMT_YUV420, PixelFormat::YU12, false, false },
    { V4L2_PIX_FMT_YUYV, PixelFormat::YU12, true, false },
    { V4L2_PIX_FMT_UYVY, PixelFormat::YU12, true, false },
    { V4L2_PIX_FMT_RGB24, PixelFormat::YU12, true, false },
    { V4L2_PIX_FMT_MJPEG, PixelFormat::YU12, true, true },
    { V4L2_PIX_FMT_JPEG, PixelFormat::YU12, true, true },
};

} // namespace

const V4l2Format *V4l2Format::find(std::uint32_t fourcc)
{
    for (const V4l2Format &format : Formats) {
        if (format.fourcc == fourcc)
            return &format;
    }
    return nullptr;
}

int V4l2Format::rank(std::uint32_t fourcc)
{
    const V4l2Format *const format = find(fourcc);
    return int((format ? format : std::end(Formats)) - std::begin(Formats));
}

std::string V4l2Format::name(std::uint32_t fourcc)
{
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const char letter = char((fourcc >> shift) & 0x7f);
        text += letter >= ' ' && letter <= '~' ? letter : '.';
    }
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

} // namespace Ocelle
} // namespace Veltra

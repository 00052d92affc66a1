// SPDX-License-Identifier: BSD-3-Clause
#include "encodersettings.h"

#include <algorithm>
#include <cstdint>
#include <thread>

namespace Veltra {
namespace Ocelle {

int encoderThreads(int width, int height)
{
    constexpr std::int64_t largePicture = 1280 * 720; // pixels
    constexpr int maxThreads = 4;
    if (std::int64_t(width) * height < largePicture)
        return 1;
    return std::clamp(int(std::thread::hardware_concurrency()), 1, maxThreads);
}

const char *codecName(CodecType type)
{
    switch (type) {
    case CodecType::VP8:
        return "VP8";
    case CodecType::VP9:
        return "VP9";
    case CodecType::H264:
        return "H.264";
    case CodecType::H265:
        return "H.265";
    case CodecType::Unknown:
        break;
    }
    return "unknown codec";
}

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#include "streamscan.h"

#include "decodersettings.h"
#include "h264scan.h"
#include "h265scan.h"
#include "vp8scan.h"
#include "vp9scan.h"

namespace Veltra {
namespace Ocelle {

std::unique_ptr<StreamScan> StreamScan::create(CodecType type)
{
    switch (type) {
    case CodecType::H264:
        return std::make_unique<H264Scan>();
    case CodecType::H265:
        return std::make_unique<H265Scan>();
    case CodecType::VP8:
        return std::make_unique<Vp8Scan>();
    case CodecType::VP9:
        return std::make_unique<Vp9Scan>();
    case CodecType::Unknown:
        break;
    }
    return {};
}

std::string StreamScan::sizeProblem(std::uint64_t width, std::uint64_t height)
{
    const std::string size = std::to_string(width) + 'x' + std::to_string(height);
    if (width == 0 || height == 0)
        return "pictures of " + size + " have no size";
    if (width > MaxPictureSide || height > MaxPictureSide)
        return "pictures of " + size + " are too large";
    return {};
}

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#include "capabilities.h"

#include <cstdint>
#include <cstdlib>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

using Distance = std::pair<std::int64_t, std::int64_t>; // in size, in rate

Distance distance(const CameraCapability &a, const CameraCapability &b)
{
    const std::int64_t widths = std::abs(std::int64_t(a.width) - b.width);
    const std::int64_t heights = std::abs(std::int64_t(a.height) - b.height);
    return { widths + heights, std::abs(std::int64_t(a.frameRate) - std::int64_t(b.frameRate)) };
}

} // namespace

bool isSame(const CameraCapability &a, const CameraCapability &b)
{
    return a.width == b.width && a.height == b.height && a.frameRate == b.frameRate;
}

std::string toText(const CameraCapability &capability)
{
    return std::to_string(capability.width) + 'x' + std::to_string(capability.height) + " at " +
           std::to_string(capability.frameRate) + " frames per second";
}

const CameraCapability *findNearest(const std::vector<CameraCapability> &capabilities,
                                    const CameraCapability &wanted)
{
    const CameraCapability *nearest = nullptr;
    for (const CameraCapability &candidate : capabilities) {
        if (!nearest || distance(candidate, wanted) < distance(*nearest, wanted))
            nearest = &candidate;
    }
    return nearest;
}

} // namespace Ocelle
} // namespace Veltra

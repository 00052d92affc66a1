// SPDX-License-Identifier: BSD-3-Clause
#include "nodekind.h"

namespace Veltra {
namespace Ocelle {

NodeKind nodeKind(const v4l2_capability &answer)
{
    const bool tellsOfNode = answer.capabilities & V4L2_CAP_DEVICE_CAPS;
    const std::uint32_t caps = tellsOfNode ? answer.device_caps : answer.capabilities;
    constexpr std::uint32_t capture = V4L2_CAP_VIDEO_CAPTURE;
    constexpr std::uint32_t multiPlanar = V4L2_CAP_VIDEO_CAPTURE_MPLANE;
    constexpr std::uint32_t output = V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_VIDEO_OUTPUT_MPLANE;

    // A codec's or scaler's node says that it captures too.
    if ((caps & (V4L2_CAP_VIDEO_M2M | V4L2_CAP_VIDEO_M2M_MPLANE)) ||
        ((caps & (capture | multiPlanar)) && (caps & output)))
        return NodeKind::MemoryToMemory;
    if (caps & capture)
        return caps & V4L2_CAP_STREAMING ? NodeKind::Capture : NodeKind::NoStreaming;
    if (caps & multiPlanar)
        return NodeKind::MultiPlanar;
    if (caps & (V4L2_CAP_META_CAPTURE | V4L2_CAP_META_OUTPUT))
        return NodeKind::Metadata;
    return caps & output ? NodeKind::Output : NodeKind::Other;
}

std::optional<NodeKind> nodeKind(const std::string &udevCapabilities)
{
    const auto has = [&udevCapabilities](const char *word) {
        return udevCapabilities.find(':' + std::string(word) + ':') != std::string::npos;
    };
    if (has("capture") && has("video_output"))
        return NodeKind::MemoryToMemory;
    if (has("capture"))
        return NodeKind::Capture;
    if (has("video_output"))
        return NodeKind::Output;
    if (udevCapabilities.empty())
        return {};
    return NodeKind::Other;
}

std::string whyNotOffered(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Capture:
        return {};
    case NodeKind::MultiPlanar:
        return "it is a camera of the multi-planar kind, which is not supported";
    case NodeKind::NoStreaming:
        return "it cannot stream into mapped memory";
    case NodeKind::Metadata:
        return "it is a metadata node, which carries no pictures";
    case NodeKind::Output:
        return "it is an output node, which shows pictures instead of taking them";
    case NodeKind::MemoryToMemory:
        return "it is a memory-to-memory node, as of a codec or scaler, not a camera";
    case NodeKind::Other:
        return "it does not capture video";
    }
    return {};
}

} // namespace Ocelle
} // namespace Veltra

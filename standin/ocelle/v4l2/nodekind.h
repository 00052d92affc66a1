// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <linux/videodev2.h>

#include <cstdint>
#include <optional>
#include <string>

namespace Veltra {
namespace Ocelle {

/*! What a video node is for. Only a Capture node is a camera. */
enum class NodeKind { Capture, MultiPlanar, NoStreaming, Metadata, Output, MemoryToMemory, Other };

/*! From the answer to VIDIOC_QUERYCAP. */
NodeKind nodeKind(const v4l2_capability &answer);

/*!
 * From udev's property ID_V4L_CAPABILITIES, as ":capture:video_overlay:"; empty where that is not
 * set. udev does not tell everything: a metadata node is Other, a multi-planar one is Capture.
 */
std::optional<NodeKind> nodeKind(const std::string &udevCapabilities);

/*! Why such a node is not offered, as the end of a sentence; empty for Capture. */
std::string whyNotOffered(NodeKind kind);

} // namespace Ocelle
} // namespace Veltra

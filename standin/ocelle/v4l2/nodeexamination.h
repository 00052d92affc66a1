// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "cameranodes.h"
#include "v4l2system.h"
#include "videonodes.h"

#include <memory>

namespace Veltra {
namespace Ocelle {

/*! The finding about one node. */
CameraNode examineNode(const std::shared_ptr<V4l2System> &system, const VideoNode &node);

/*! Gives the cameras among \a all, found on \a nodes, that share a serial number ids of their own. */
void useSharedSerialIds(const std::vector<VideoNode> &nodes, std::vector<CameraNode> &all);

} // namespace Ocelle
} // namespace Veltra

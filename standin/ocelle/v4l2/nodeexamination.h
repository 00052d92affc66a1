#pragma once

#include "cameranodes.h"
#include "v4l2system.h"
#include "videonodes.h"

#include <memory>

namespace Veltra {
namespace Ocelle {

/*! The finding about one node. */
CameraNode examineNode(const std::shared_ptr<V4l2System> &system, const VideoNode &node);

} // namespace Ocelle
} // namespace Veltra

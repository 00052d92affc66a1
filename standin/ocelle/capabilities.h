// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/camera.h>

#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

bool isSame(const CameraCapability &a, const CameraCapability &b);

/*! "640x480 at 30 frames per second" */
std::string toText(const CameraCapability &capability);

/*! The one nearest to \a wanted, first in size, then in rate; null where there is none. */
const CameraCapability *findNearest(const std::vector<CameraCapability> &capabilities,
                                    const CameraCapability &wanted);

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/global.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * What became of the pictures of one camera since the process began, over all its captures. The
 * pictures that were delivered are captured - dropped - late.
 */
struct CameraStatistics
{
    std::string id;             // the camera's
    std::uint64_t captured = 0; // pictures of the source, all of them
    std::uint64_t dropped = 0;  // of those, not delivered because consumers held all buffers
    std::uint64_t late = 0;     // of those, left out because the next one was already due
};

/*! One record for each camera that was opened, ordered by id. Any thread. */
OCELLE_EXPORT std::vector<CameraStatistics> cameraStatistics();

} // namespace Ocelle
} // namespace Veltra

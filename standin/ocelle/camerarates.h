// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/global.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! How fast a device was asked to be in its latest capture, and how fast it is. */
struct CameraRate
{
    std::string id;              // the camera's
    std::string format;          // the device's own, as "MJPG"
    std::uint32_t asked = 0;     // pictures per second
    double negotiated = 0;       // what the device said it would do
    double measured = 0;         // over the latest pictures; 0 while there are too few
    std::string loweringControl; // takes longer exposures than the rate allows; empty if none
};

/*! One record for each device that was captured from, ordered by id. Any thread. */
OCELLE_EXPORT std::vector<CameraRate> cameraRates();

} // namespace Ocelle
} // namespace Veltra

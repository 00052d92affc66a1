// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "device.h"
#include "outcome.h"

#include <string>
#include <vector>

namespace Compliance {

class Session;

/*!
 * Asks the platform for its cameras, and for its encoders and decoders: one of each kind, since a
 * codec is made by its kind, under the name of the first that is listed. On the check's thread.
 */
Outcome findDevices(Session &session, std::vector<Device> *devices);

/*! The ids of the cameras, in the platform's order. Those that it tells nothing of are left out. */
std::vector<std::string> cameraIds(Session &session);

} // namespace Compliance

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "device.h"
#include "outcome.h"

namespace Compliance {

class Session;

/*! Waits for a camera that comes and one that goes, which somebody has to see to meanwhile. */
Outcome hotPlug(Session &session, const Device &device);

} // namespace Compliance

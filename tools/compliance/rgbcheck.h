// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "device.h"
#include "outcome.h"

namespace Compliance {

class Session;

/*!
 * Whether an encoder takes RGB pictures and makes of them what it has to. The encoder service offers
 * that format whatever the platform says, which has no way to deny it: refusing is a fault.
 */
Outcome checkRgb(Session &session, const Device &device);

} // namespace Compliance

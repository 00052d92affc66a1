// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "device.h"
#include "outcome.h"

#include <vector>

namespace Compliance {

class Session;

/*! One thing that the contract demands. */
struct Check
{
    const char *name;
    const char *purpose; // a phrase for people
    Device::Kind kind;
    /*! On a thread of its own. Each call of the platform goes through the session, which bounds it. */
    Outcome (*run)(Session &session, const Device &device);
};

/*! Every check there is, in the order they are made. */
const std::vector<Check> &allChecks();

// The same by subject
std::vector<Check> cameraChecks();
std::vector<Check> codecListChecks();
std::vector<Check> encoderChecks();
std::vector<Check> decoderChecks();

} // namespace Compliance

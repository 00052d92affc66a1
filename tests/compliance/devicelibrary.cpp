// SPDX-License-Identifier: BSD-3-Clause
#include "doubleplatform.h"

#include <cstdlib>

namespace {

Fault chosenFault()
{
    const char *const number = std::getenv("OCELLE_DOUBLE_FAULT");
    return number ? Fault(std::atoi(number)) : Fault::None;
}

// The libraries of some device, as whoever links them finds them. Never destroyed: plugins let go of
// the managers when the process ends, in an order that nobody chooses.
[[maybe_unused]] const DoublePlatform &platform = *new DoublePlatform(chosenFault());

} // namespace

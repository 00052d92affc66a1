// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "commandline.h"

namespace Tool {

/*!
 * Checks the platform libraries and reports what came of it. Returns the exit code: Failure where a
 * check failed. Ends the process itself where the platform never came back from a call.
 */
int checkCompliance(const ComplianceOptions &options);

} // namespace Tool

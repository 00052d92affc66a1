// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace Tool {

/*! Prints the cameras with all that they offer, and the codecs; returns the exit code. */
int listDevices(bool json);

} // namespace Tool

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! Paths of the devices that may do VAAPI. Any thread. */
std::vector<std::string> vaapiDevices();

/*! Whether this machine has a V4L2 device that turns pictures into others. Any thread. */
bool hasMemoryToMemoryDevice();

} // namespace Ocelle
} // namespace Veltra

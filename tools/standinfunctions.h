// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cameranodes.h>
#include <camerarates.h>
#include <videooutputstatistics.h>

#include <optional>
#include <string>
#include <vector>

namespace Tool {

// What the desktop's platform libraries export beyond the declarations that every platform has. Nothing
// else in this program may refer to it, or the program would not run on a device's own libraries.
// Threads: any. Errors: nothing where the libraries that are loaded do not have it.

/*! What is to be said of each video node of this machine; opens each. */
std::optional<std::vector<Veltra::Ocelle::CameraNode>> examineVideoNodes();

/*! What is wrong with \a cameras, a value of OCELLE_CAMERAS, one sentence each. */
std::optional<std::vector<std::string>> problemsOfSelection(const char *cameras);

/*! How fast the device of that camera is, if it has one that was captured from. */
std::optional<Veltra::Ocelle::CameraRate> rateOf(const std::string &cameraId);

/*! What became of the pictures for \a surface, if an output of these libraries has it. */
std::optional<Veltra::Ocelle::VideoOutputStatistics>
statisticsOf(const QAbstractVideoSurface *surface);

} // namespace Tool

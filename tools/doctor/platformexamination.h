// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "finding.h"

#include <cameranodes.h>
#include <ocelle/codecmanager.h>

#include <vector>

namespace Doctor {

/*! The Qt that runs against the one that this program was built with. */
Findings examineVersions();

/*! Cameras that the platform offers, and its codecs. */
Findings examinePlatform();

/*! Video nodes, each opened for a moment. Only a note where other cameras are there. */
Findings examineNodes(bool hasCameras);
Findings judgeNodes(const std::vector<Veltra::Ocelle::CameraNode> &nodes, bool hasCameras);

/*! Codecs that are not among \a codecs. */
Findings judgeCodecs(const std::vector<Veltra::Ocelle::VideoCodecInfo> &codecs);

/*! How many cameras the platform offers. */
int cameraCount();

} // namespace Doctor

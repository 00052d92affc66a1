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

/*! Whether \a cameras, a value of OCELLE_CAMERAS, leaves video nodes out. */
bool leavesNodesOut(const QString &cameras);

enum class NodeUse {
    Needed,  // there is no camera yet
    Welcome, // there are other cameras
    LeftOut, // by OCELLE_CAMERAS
};

/*! Video nodes, each opened for a moment. Only notes where they are left out. */
Findings examineNodes(bool hasCameras);
Findings judgeNodes(const std::vector<Veltra::Ocelle::CameraNode> &nodes, NodeUse use);

/*! Codecs that are not among \a codecs. */
Findings judgeCodecs(const std::vector<Veltra::Ocelle::VideoCodecInfo> &codecs);

/*! How many cameras the platform offers. */
int cameraCount();

} // namespace Doctor

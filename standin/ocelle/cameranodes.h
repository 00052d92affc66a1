// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/global.h>

#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! What is to be said of one video node of this machine. */
struct CameraNode
{
    std::string node; // "/dev/video0"
    std::string name; // for people
    std::string id;   // the camera's, where it is offered
    bool isOffered = false;
    std::string finding; // a sentence: what it offers, or why it cannot be used
};

/*! Looks at every video node, opening each. Any thread; takes its time. */
OCELLE_EXPORT std::vector<CameraNode> examineCameraNodes();

/*!
 * What is wrong with \a cameras, a value of OCELLE_CAMERAS, one sentence each: entries that are not
 * understood, and files and folders that cannot be read. Any thread.
 */
OCELLE_EXPORT std::vector<std::string> examineCameraSelection(const char *cameras);

} // namespace Ocelle
} // namespace Veltra

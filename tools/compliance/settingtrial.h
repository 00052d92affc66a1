// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

#include <ocelle/camera.h>

#include <string>

namespace Compliance {

class Session;

/*!
 * Starts the camera with one of its settings and looks at what comes; says what is wrong, empty
 * where nothing is. The rate may be a fifth off; where it is, it is measured again for longer, since
 * the machine may have been busy.
 */
QString tryCapability(Session *session, const std::string &id,
                      const Veltra::Ocelle::CameraCapability &capability);

} // namespace Compliance

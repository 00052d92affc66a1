// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace Tool {

/*!
 * Says for each video node of this machine why it is offered as a camera or is not. Returns the exit
 * code: Failure where no camera can be used.
 */
int examineCameras(bool json);

/*!
 * Says what keeps an application from its cameras: plugins, libraries, versions, environment, devices,
 * other plugins. It looks at all of that as an application finds it, so neither this program's own
 * plugin folder nor its preference may have been set before. Returns the exit code: Failure where
 * there is something to be done.
 */
int examineAll(bool json);

} // namespace Tool

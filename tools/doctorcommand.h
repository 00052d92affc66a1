// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace Tool {

/*!
 * Says for each video node of this machine why it is offered as a camera or is not. Returns the exit
 * code: Failure where no camera can be used.
 */
int examineCameras(bool json);

} // namespace Tool

#pragma once

namespace Tool {

/*! Prints the cameras with all that they offer; returns the exit code. */
int listCameras(bool json);

} // namespace Tool

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QSize>
#include <QString>

#include <optional>

namespace Viewer {

/*! What the command line asks for. */
struct ViewerOptions
{
    QString camera;  // id; empty for the default one
    QSize size;      // pixels; empty for the camera's own
    double rate = 0; // pictures per second; 0 for the camera's own
};

/*!
 * Reads the command line.
 *
 * Errors: nothing, and \a exitCode is to be returned: help was asked for and printed, or one line on
 *         standard error says what is wrong.
 */
std::optional<ViewerOptions> parseViewerOptions(int argc, const char *const *argv, int *exitCode);

} // namespace Viewer

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerasource.h"

#include <memory>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Which camera sources are offered, as the environment variable OCELLE_CAMERAS tells:
 *
 *     v4l2         the devices that the kernel has drivers for, as they come and go
 *     pattern      two cameras that show a test picture
 *     file:PATH    a video file
 *     dir:PATH     every video file in a folder, as they come and go
 *
 * separated by commas. A comma within a path is written "\,", a backslash before a comma "\\".
 * Blanks around an entry do not count. Unset means "v4l2,pattern", empty no camera at all. An entry
 * given twice counts once.
 */
struct CameraSelection
{
    enum class Kind { V4l2, Pattern, File, Folder };
    struct Entry
    {
        Kind kind;
        std::string path; // absolute; empty for Kind::V4l2 and Kind::Pattern

        bool operator==(const Entry &other) const
        {
            return kind == other.kind && path == other.path;
        }
    };
    std::vector<Entry> entries;
    std::vector<std::string> errors; // one sentence for each wrong entry

    /*! \a text is the variable's value, null where it is not set. */
    static CameraSelection parse(const char *text);
};

/*!
 * The sources that \a cameras and \a patternFormat ask for: the values of OCELLE_CAMERAS and
 * OCELLE_PATTERN_FORMAT ("nv12", the default, or "yu12"), null where they are not set. \a watchdog
 * is that of OCELLE_V4L2_WATCHDOG: "on", the default, or "off", which lets a device that stops
 * delivering be. What is wrong with them goes to standard error, one line each, and is left out.
 */
std::vector<std::unique_ptr<CameraSource>>
selectedSources(const char *cameras, const char *patternFormat, const char *watchdog = nullptr);

} // namespace Ocelle
} // namespace Veltra

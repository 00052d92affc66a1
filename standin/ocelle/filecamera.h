// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerasource.h"
#include "capturecontrol.h"

#include <memory>
#include <optional>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * Cameras that play a video file, over and over, at the file's own rate: at its own size first, and
 * at 640x480 and 320x240, stretched where the aspect differs. The id is "file:" and the absolute
 * path, percent-encoded where it is not printable ASCII; the name is the file's.
 *
 * Any thread.
 */
namespace FileCamera {

std::string idOf(const std::string &path);
std::string nameOf(const std::string &path);

/*! Looks into the file at \a path; nothing, with an \a error that goes after the file's name. */
std::optional<CameraDescription> describe(const std::string &path, std::string &error);

/*! Opens it as it was described; empty, with an \a error, where that has become impossible. */
std::shared_ptr<CaptureControl> open(const CameraDescription &camera, const std::string &path,
                                     std::string &error);

} // namespace FileCamera
} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerasource.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * One video file as a camera. The file is looked into once, when this is made.
 *
 * Threads: any.
 * Errors:  one line on standard error and no camera, if it is not a video.
 */
class FileSource final : public CameraSource
{
public:
    /*! \a path is absolute. */
    explicit FileSource(std::string path);

    std::vector<CameraDescription> cameras() override;
    void watch(std::function<void()> changed) override;
    std::shared_ptr<Camera> open(const std::string &id) override;

private:
    const std::string m_path;
    std::optional<CameraDescription> m_camera; // set once
};

} // namespace Ocelle
} // namespace Veltra

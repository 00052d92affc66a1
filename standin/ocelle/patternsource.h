// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerasource.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Two cameras that are always there and show a test picture: "pattern:back" and "pattern:front".
 *
 * Both offer 640x480, 1280x720, 1920x1080 and 320x240, in this order, at 30, 60 and 15 pictures per
 * second each: who takes the first one that fits gets 640x480 at 30 without any wish, and 30 at any
 * size. Their pictures are upright as delivered, so the mount angle is 0; that of the front camera
 * is not mirrored, which is for the output to do.
 *
 * Threads: any.
 */
class PatternSource final : public CameraSource
{
public:
    /*! \a delivered, NV12 or YU12, is the format of the pictures and listed first. */
    explicit PatternSource(PixelFormat delivered);

    std::vector<CameraDescription> cameras() override;
    void watch(std::function<void()> changed) override;
    std::shared_ptr<Camera> open(const std::string &id) override;

private:
    const std::vector<CameraDescription> m_cameras;
};

} // namespace Ocelle
} // namespace Veltra

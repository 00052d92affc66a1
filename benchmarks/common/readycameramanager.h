// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "readycamera.h"

#include <ocelle/cameramanager.h>
#include <ocelle/codecmanager.h>

#include <memory>

/*! Offers one ReadyCamera. */
class ReadyCameraManager : public Veltra::Ocelle::CameraManager
{
public:
    ReadyCameraManager(int width, int height, std::uint64_t pictures,
                       ReadyCamera::Pace pace = ReadyCamera::WhenTold);

    ReadyCamera *camera() const;

    int getNumberOfCameras() override;
    bool getCameraInfo(int index, Veltra::Ocelle::CameraInfo &info) override;
    bool getCameraCapabilities(const Veltra::Ocelle::CameraInfo &info,
                               std::vector<Veltra::Ocelle::CameraCapability> &caps) override;
    std::shared_ptr<Veltra::Ocelle::Camera> openCamera(const std::string &id) override;

private:
    const int m_width;  // pixels
    const int m_height; // lines
    const std::shared_ptr<ReadyCamera> m_camera;
};

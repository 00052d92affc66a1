// SPDX-License-Identifier: BSD-3-Clause
#include "readycameramanager.h"

using Veltra::Ocelle::Camera;
using Veltra::Ocelle::CameraCapability;
using Veltra::Ocelle::CameraInfo;

ReadyCameraManager::ReadyCameraManager(int width, int height, std::uint64_t pictures,
                                       ReadyCamera::Pace pace)
    : m_width(width)
    , m_height(height)
    , m_camera(std::make_shared<ReadyCamera>(width, height, pictures, pace))
{
}

ReadyCamera *ReadyCameraManager::camera() const
{
    return m_camera.get();
}

int ReadyCameraManager::getNumberOfCameras()
{
    return 1;
}

bool ReadyCameraManager::getCameraInfo(int, CameraInfo &info)
{
    return m_camera->getInfo(info);
}

bool ReadyCameraManager::getCameraCapabilities(const CameraInfo &,
                                               std::vector<CameraCapability> &caps)
{
    caps = { { m_width, m_height, 30 } };
    return true;
}

std::shared_ptr<Camera> ReadyCameraManager::openCamera(const std::string &)
{
    return m_camera;
}

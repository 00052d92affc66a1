// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/camera.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/*!
 * The double's cameras. While there is a listener, one more camera comes and goes.
 *
 * Threads: any; the listener is called on a thread of its own.
 */
class DoubleCameraManager : public Veltra::Ocelle::CameraManager
{
public:
    ~DoubleCameraManager() override;

    int getNumberOfCameras() override;
    bool getCameraInfo(int index, Veltra::Ocelle::CameraInfo &info) override;
    bool getCameraCapabilities(const Veltra::Ocelle::CameraInfo &info,
                               std::vector<Veltra::Ocelle::CameraCapability> &caps) override;
    std::shared_ptr<Veltra::Ocelle::Camera> openCamera(const std::string &id) override;
    void setListener(Veltra::Ocelle::CameraManagerListener *listener) override;

private:
    void plugInAndOut();
    void tell(const std::string &id, bool added);
    bool isThere(const std::string &id) const;

    mutable std::mutex m_mutex; // guards m_ids
    std::vector<std::string> m_ids { "one", "two" };
    std::thread m_plugging; // while there is a listener
};

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "fakecamerascript.h"

#include <ocelle/cameramanager.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

class FakeCamera;

/*!
 * A camera manager over scripted cameras. It is called "manager" in the log.
 *
 * Threads: any thread.
 */
class FakeCameraManager : public Veltra::Ocelle::CameraManager
{
public:
    using Script = std::shared_ptr<FakeCameraScript>;

    int getNumberOfCameras() override;
    bool getCameraInfo(int index, Veltra::Ocelle::CameraInfo &info) override;
    bool getCameraCapabilities(const Veltra::Ocelle::CameraInfo &info,
                               std::vector<Veltra::Ocelle::CameraCapability> &caps) override;
    std::shared_ptr<Veltra::Ocelle::Camera> openCamera(const std::string &id) override;
    void setListener(Veltra::Ocelle::CameraManagerListener *listener) override;

    Veltra::Ocelle::CameraManagerListener *listener();

    /*! Adds a camera at the end of the list, without telling the listener. */
    Script add(const std::string &id,
               Veltra::Ocelle::CameraFacing facing = Veltra::Ocelle::CameraFacing::Back,
               int mountAngle = 0, const std::string &name = std::string());
    /*! Takes the first camera called \a id away, without telling the listener. */
    void remove(const std::string &id);

    // Tell the listener, on the calling thread
    void notifyAdded(const std::string &id);
    void notifyRemoved(const std::string &id);

    /*! The camera opened last, empty once nobody holds it. */
    std::shared_ptr<FakeCamera> openedCamera() const;
    /*! How many opened cameras are still held. */
    int heldCameras() const;

private:
    Script find(const std::string &id) const;

    mutable std::mutex m_mutex; // guards the members below
    std::vector<Script> m_cameras;
    std::vector<std::weak_ptr<FakeCamera>> m_opened; // oldest first
};

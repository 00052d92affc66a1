// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "gate.h"

#include <ocelle/camera.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

/*!
 * How one camera behaves: what it tells of itself, what fails and what is held up.
 *
 * Threads: any thread; the test changes it while the camera is in use.
 * Owner:   shared by the manager, the opened cameras and the test.
 */
class FakeCameraScript
{
public:
    FakeCameraScript(std::string id, std::string name, Veltra::Ocelle::CameraFacing facing,
                     int mountAngle);

    Veltra::Ocelle::CameraInfo info() const;
    void setInfo(const Veltra::Ocelle::CameraInfo &info);
    std::vector<Veltra::Ocelle::CameraCapability> capabilities() const;
    void setCapabilities(std::vector<Veltra::Ocelle::CameraCapability> capabilities);
    std::vector<Veltra::Ocelle::PixelFormat> formats() const;
    void setFormats(std::vector<Veltra::Ocelle::PixelFormat> formats);

    std::atomic<bool> listInfoFails { false };    // the manager's getCameraInfo()
    std::atomic<bool> openFails { false };        // openCamera() gives nothing
    std::atomic<bool> infoFails { false };        // the camera's own getInfo()
    std::atomic<bool> capabilitiesFail { false }; // getCameraCapabilities()
    std::atomic<bool> startFails { false };       // startCapture() gives false
    std::atomic<bool> streams { false };          // delivers from a thread of its own while started

    Gate openGate;  // holds openCamera() up
    Gate infoGate;  // holds the camera's getInfo() up
    Gate startGate; // holds startCapture() up
    Gate stopGate;  // holds stopCapture() up

private:
    mutable std::mutex m_mutex; // guards the members below
    Veltra::Ocelle::CameraInfo m_info;
    std::vector<Veltra::Ocelle::CameraCapability> m_capabilities;
    std::vector<Veltra::Ocelle::PixelFormat> m_formats;
};

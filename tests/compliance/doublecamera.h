// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/camera.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/*!
 * One opened camera of the double.
 *
 * Threads: operations one at a time; pictures come from a thread of its own between start and stop.
 */
class DoubleCamera : public Veltra::Ocelle::Camera
{
public:
    explicit DoubleCamera(std::string id);
    ~DoubleCamera() override;

    bool getInfo(Veltra::Ocelle::CameraInfo &info) override;
    std::vector<Veltra::Ocelle::PixelFormat> getSupportedPixelFormats() override;
    bool startCapture(const Veltra::Ocelle::CameraCapability &capability, int flags) override;
    void stopCapture() override;
    bool captureStarted() override;
    void setListener(Veltra::Ocelle::CameraListener *listener) override;

private:
    void stream();
    void deliver();
    void endStream();

    const std::string m_id;
    Veltra::Ocelle::CameraCapability m_capability {};
    int m_starts = 0;
    bool m_isStarted = false;
    std::thread m_stream;
    std::thread m_late; // after stopCapture(), where that is the fault

    std::mutex m_mutex; // guards m_isEnding
    std::condition_variable m_ending;
    bool m_isEnding = false;
};

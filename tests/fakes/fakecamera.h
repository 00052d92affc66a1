// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

#include <ocelle/camera.h>

#include <atomic>
#include <memory>
#include <string>

class FakeCameraScript;
class LibraryThread;

/*!
 * One opened camera that does what its script says. It is called "camera ID" in the log.
 *
 * Threads: as the contract of the camera; where the script streams, pictures come from a thread
 *          named "FakeCamera" until stopCapture(), which waits for that thread.
 */
class FakeCamera : public Veltra::Ocelle::Camera
{
public:
    explicit FakeCamera(std::shared_ptr<FakeCameraScript> script);
    ~FakeCamera() override;

    bool getInfo(Veltra::Ocelle::CameraInfo &info) override;
    std::vector<Veltra::Ocelle::PixelFormat> getSupportedPixelFormats() override;
    bool startCapture(const Veltra::Ocelle::CameraCapability &capability, int flags) override;
    void stopCapture() override;
    bool captureStarted() override;
    void setListener(Veltra::Ocelle::CameraListener *listener) override;

    Veltra::Ocelle::CameraListener *listener();

    // Tell the listener, on the calling thread
    void deliver(int number);
    void fail(const std::string &message);

    /*! How many pictures the thread "FakeCamera" has handed over. */
    int streamed() const { return m_streamed; }

private:
    void log(const QString &what) const;
    void endStream();

    const std::shared_ptr<FakeCameraScript> m_script;
    const QString m_object;
    std::atomic<bool> m_started { false };
    std::atomic<bool> m_streaming { false };
    std::atomic<int> m_streamed { 0 };
    std::unique_ptr<LibraryThread> m_stream; // between start and stop
};

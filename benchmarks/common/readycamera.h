// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "beat.h"
#include "bufferpool.h"
#include "graphicbuffer.h"

#include <ocelle/camera.h>
#include <semaphore.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

/*!
 * A camera whose pictures are ready: what is left is what everybody else spends on them. It hands
 * out the next one only when it is told to go on, so that every picture is used, or keeps a
 * camera's beat.
 *
 * Threads: delivers on a thread of its own; proceed() from any.
 * Owner:   ReadyCameraManager's clients.
 */
class ReadyCamera : public Veltra::Ocelle::Camera
{
public:
    enum Pace {
        WhenTold,
        Paced // 30 pictures a second
    };

    ReadyCamera(int width, int height, std::uint64_t pictures, Pace pace = WhenTold);
    ~ReadyCamera() override;

    /*! Lets \a pictures more be delivered, one after the other. */
    void proceed(std::uint64_t pictures = 1);
    /*! Returns once all pictures have been delivered. */
    void waitUntilDone();

    bool getInfo(Veltra::Ocelle::CameraInfo &info) override;
    std::vector<Veltra::Ocelle::PixelFormat> getSupportedPixelFormats() override;
    bool startCapture(const Veltra::Ocelle::CameraCapability &capability, int flags) override;
    void stopCapture() override;
    bool captureStarted() override;

private:
    struct Picture : Veltra::Ocelle::GraphicBuffer
    {
        std::vector<std::uint8_t> memory;
        void release() {}
    };

    void deliver();
    /*! False where it is to stop instead. */
    bool waitForNext();

    const int m_width;  // pixels
    const int m_height; // lines
    const std::uint64_t m_pictures;
    const Pace m_pace;
    Beat m_beat;
    std::uint64_t m_granted = 0; // pictures that may be delivered; the camera thread's
    std::shared_ptr<Veltra::Ocelle::BufferPool<Picture>> m_pool;
    std::vector<std::uint8_t> m_memory; // one NV12 picture, shared by all buffers
    std::thread m_thread;
    std::atomic<bool> m_stop { false };
    std::atomic<std::uint64_t> m_allowed {
        0
    }; // pictures that proceed() let go and are to be taken up
    sem_t m_go;
    sem_t m_done;
};

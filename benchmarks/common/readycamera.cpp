// SPDX-License-Identifier: BSD-3-Clause
#include "readycamera.h"

#include <utility>

using Veltra::Ocelle::CameraCapability;
using Veltra::Ocelle::CameraFacing;
using Veltra::Ocelle::CameraInfo;
using Veltra::Ocelle::PixelFormat;

ReadyCamera::ReadyCamera(int width, int height, std::uint64_t pictures, Pace pace)
    : m_width(width)
    , m_height(height)
    , m_pictures(pictures)
    , m_pace(pace)
    , m_pool(std::make_shared<Veltra::Ocelle::BufferPool<Picture>>())
    , m_memory(std::size_t(width) * std::size_t(height) * 3 / 2, 128)
{
    sem_init(&m_go, 0, 0);
    sem_init(&m_done, 0, 0);
}

ReadyCamera::~ReadyCamera()
{
    stopCapture();
    sem_destroy(&m_go);
    sem_destroy(&m_done);
}

void ReadyCamera::proceed(std::uint64_t pictures)
{
    m_allowed += pictures;
    sem_post(&m_go);
}

void ReadyCamera::waitUntilDone()
{
    sem_wait(&m_done);
}

bool ReadyCamera::getInfo(CameraInfo &info)
{
    info = CameraInfo { "ready", "Ready camera", {}, CameraFacing::Back, 0, {} };
    return true;
}

std::vector<PixelFormat> ReadyCamera::getSupportedPixelFormats()
{
    return { PixelFormat::NV12 };
}

bool ReadyCamera::startCapture(const CameraCapability &, int)
{
    m_stop = false;
    m_thread = std::thread([this] { deliver(); });
    return true;
}

void ReadyCamera::stopCapture()
{
    if (!m_thread.joinable())
        return;
    m_stop = true;
    sem_post(&m_go);
    m_thread.join();
}

bool ReadyCamera::captureStarted()
{
    return m_thread.joinable();
}

void ReadyCamera::deliver()
{
    for (std::uint64_t i = 0; i < m_pictures && waitForNext(); ++i) {
        std::shared_ptr<Picture> picture = m_pool->take();
        if (!picture)
            continue;
        picture->width = m_width;
        picture->height = m_height;
        picture->format = PixelFormat::NV12;
        picture->planeCount = 2;
        picture->planes[0] = { m_memory.data(), m_width, m_height };
        picture->planes[1] = { m_memory.data() + std::size_t(m_width) * std::size_t(m_height),
                               m_width, m_height / 2 };
        picture->timestamp = std::int64_t(i);
        picture->sequence = i;
        picture->live = true;
        m_listener->onCameraFrame(std::move(picture));
    }
    sem_post(&m_done);
}

bool ReadyCamera::waitForNext()
{
    if (m_pace == Paced) {
        m_beat.wait();
        return !m_stop;
    }
    while (m_granted == 0) {
        sem_wait(&m_go);
        if (m_stop)
            return false;
        m_granted = m_allowed.exchange(0);
    }
    --m_granted;
    return true;
}

// SPDX-License-Identifier: BSD-3-Clause
#include "doublecamera.h"

#include "doublepicture.h"
#include "doubleplatform.h"

#include <chrono>
#include <stdexcept>
#include <utility>

using namespace Veltra::Ocelle;

namespace {

constexpr std::chrono::milliseconds Late(10); // after stopCapture()
constexpr int MostStarts = 9;                 // of a camera that tires
std::atomic<int> streaming { 0 };             // cameras

} // namespace

DoubleCamera::DoubleCamera(std::string id)
    : m_id(std::move(id))
{
}

DoubleCamera::~DoubleCamera()
{
    endStream();
    if (m_late.joinable())
        m_late.join();
}

bool DoubleCamera::getInfo(CameraInfo &info)
{
    info = CameraInfo();
    info.id = DoublePlatform::has(Fault::CameraTellsOtherId) ? "other" : m_id;
    return true;
}

std::vector<PixelFormat> DoubleCamera::getSupportedPixelFormats()
{
    if (DoublePlatform::has(Fault::CameraHasNoFormat))
        return {};
    return { PixelFormat::YU12 };
}

bool DoubleCamera::startCapture(const CameraCapability &capability, int)
{
    if (DoublePlatform::has(Fault::CameraThrows))
        throw std::runtime_error("no luck");
    if (m_late.joinable())
        m_late.join();
    if (m_isStarted || (DoublePlatform::has(Fault::CameraTires) && m_starts == MostStarts) ||
        (DoublePlatform::has(Fault::CameraRefusesSetting) && capability.width != 160))
        return false;
    ++m_starts;
    m_capability = capability;
    m_isStarted = true;
    m_isEnding = false;
    ++streaming;
    m_stream = std::thread([this] { stream(); });
    return true;
}

void DoubleCamera::stopCapture()
{
    DoublePlatform::hangWith(Fault::CameraHangs);
    endStream();
    if (DoublePlatform::has(Fault::CameraThrowsLater))
        throw 1; // no std::exception
    if (DoublePlatform::has(Fault::CameraDeliversLate)) {
        m_late = std::thread([this] {
            std::this_thread::sleep_for(Late);
            deliver();
        });
    }
}

void DoubleCamera::endStream()
{
    if (!std::exchange(m_isStarted, false))
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_ending.notify_all();
    m_stream.join();
    --streaming;
}

bool DoubleCamera::captureStarted()
{
    return m_isStarted || (m_starts > 0 && DoublePlatform::has(Fault::CameraStaysStarted));
}

void DoubleCamera::setListener(CameraListener *listener)
{
    if (listener || !DoublePlatform::has(Fault::CameraKeepsListener))
        Camera::setListener(listener);
}

void DoubleCamera::stream()
{
    const unsigned slower = DoublePlatform::has(Fault::CameraWrongRate) ? 2 : 1;
    const std::chrono::microseconds period(1000000 * slower / m_capability.frameRate);
    auto due = std::chrono::steady_clock::now();
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_ending.wait_until(lock, due, [this] { return m_isEnding; })) {
        lock.unlock();
        if (streaming == 1 || !DoublePlatform::has(Fault::CameraYields))
            deliver();
        lock.lock();
        due += period;
    }
}

void DoubleCamera::deliver()
{
    const int wider = DoublePlatform::has(Fault::CameraWrongSize) ? 16 : 0;
    auto buffer = std::make_shared<GraphicBuffer>(m_capability.width + wider, m_capability.height);
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener)
        m_listener->onCameraFrame(std::move(buffer));
}

// SPDX-License-Identifier: BSD-3-Clause
#include "fakecamera.h"

#include "calllog.h"
#include "fakecamerascript.h"
#include "fakegraphicbuffer.h"
#include "librarythread.h"

#include <chrono>
#include <thread>
#include <utility>

using namespace Veltra::Ocelle;

namespace {

constexpr std::chrono::microseconds PicturePeriod { 500 }; // of a camera that streams

bool isEmpty(const CameraInfo &info)
{
    return info.id.empty() && info.name.empty() && info.extra1.empty() && info.extra2.empty() &&
           info.facing == CameraFacing() && info.mountAngle == 0;
}

} // namespace

FakeCamera::FakeCamera(std::shared_ptr<FakeCameraScript> script)
    : m_script(std::move(script))
    , m_object(QStringLiteral("camera ") + QString::fromStdString(m_script->info().id))
{
}

FakeCamera::~FakeCamera()
{
    endStream();
    log(QStringLiteral("destroyed"));
}

bool FakeCamera::getInfo(CameraInfo &info)
{
    log(isEmpty(info) ? QStringLiteral("getInfo()") : QStringLiteral("getInfo(not empty)"));
    m_script->infoGate.pass();
    if (m_script->infoFails)
        return false;
    info = m_script->info();
    return true;
}

std::vector<PixelFormat> FakeCamera::getSupportedPixelFormats()
{
    log(QStringLiteral("getSupportedPixelFormats()"));
    return m_script->formats();
}

bool FakeCamera::startCapture(const CameraCapability &capability, int flags)
{
    log(QStringLiteral("startCapture(%1x%2@%3, %4)")
                .arg(capability.width)
                .arg(capability.height)
                .arg(capability.frameRate)
                .arg(flags));
    m_script->startGate.pass();
    if (m_script->startFails)
        return false;
    m_started = true;
    if (m_script->streams && !m_stream) {
        m_streaming = true;
        m_stream = std::make_unique<LibraryThread>("FakeCamera", [this] {
            while (m_streaming) {
                deliver(m_streamed);
                ++m_streamed;
                std::this_thread::sleep_for(PicturePeriod);
            }
        });
    }
    return true;
}

void FakeCamera::stopCapture()
{
    log(QStringLiteral("stopCapture()"));
    m_script->stopGate.pass();
    endStream();
    m_started = false;
}

bool FakeCamera::captureStarted()
{
    log(QStringLiteral("captureStarted()"));
    return m_started;
}

void FakeCamera::setListener(CameraListener *listener)
{
    log(listener ? QStringLiteral("setListener(listener)") : QStringLiteral("setListener(null)"));
    Camera::setListener(listener);
}

CameraListener *FakeCamera::listener()
{
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    return m_listener;
}

void FakeCamera::deliver(int number)
{
    if (CameraListener *receiver = listener())
        receiver->onCameraFrame(GraphicBuffer::create(number));
}

void FakeCamera::fail(const std::string &message)
{
    if (CameraListener *receiver = listener())
        receiver->onCameraError(message);
}

void FakeCamera::log(const QString &what) const
{
    CallLog::instance().add(m_object, what);
}

void FakeCamera::endStream()
{
    m_streaming = false;
    m_stream.reset();
}

// SPDX-License-Identifier: BSD-3-Clause
#include "fakeplatform.h"

#include "calllog.h"

#include <ocelle/videodecoder.h>
#include <ocelle/videoencoder.h>

#include <atomic>

namespace {

std::atomic<FakePlatform *> currentPlatform { nullptr };

} // namespace

FakePlatform::FakePlatform()
{
    CallLog::instance().clear();
    FakeVideoOutput::forgetAll();
    currentPlatform = this;
}

FakePlatform::~FakePlatform()
{
    currentPlatform = nullptr;
    CallLog::instance().setObserver(nullptr);
}

Veltra::Ocelle::CameraManager *OcelleManager()
{
    CallLog::instance().add(QStringLiteral("factory"), QStringLiteral("OcelleManager()"));
    FakePlatform *platform = currentPlatform;
    return platform ? &platform->cameras : nullptr;
}

Veltra::Ocelle::CodecManager *OcelleCodecManager()
{
    CallLog::instance().add(QStringLiteral("factory"), QStringLiteral("OcelleCodecManager()"));
    FakePlatform *platform = currentPlatform;
    return platform ? &platform->codecs : nullptr;
}

namespace Veltra {
namespace Ocelle {

CameraManagerListener::~CameraManagerListener() = default;
CameraManager::~CameraManager() = default;
CameraListener::~CameraListener() = default;
Camera::~Camera() = default;
CodecManager::~CodecManager() = default;
VideoDecoderListener::~VideoDecoderListener() = default;
VideoDecoder::~VideoDecoder() = default;
VideoEncoderListener::~VideoEncoderListener() = default;
VideoEncoder::~VideoEncoder() = default;

void VideoDecoder::lockAndSetListener(VideoDecoderListener *listener)
{
    CallLog::instance().add(QStringLiteral("decoder"),
                            listener ? QStringLiteral("lockAndSetListener(listener)")
                                     : QStringLiteral("lockAndSetListener(null)"));
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    m_listener = listener;
}

void VideoEncoder::lockAndSetListener(VideoEncoderListener *listener)
{
    CallLog::instance().add(QStringLiteral("encoder"),
                            listener ? QStringLiteral("lockAndSetListener(listener)")
                                     : QStringLiteral("lockAndSetListener(null)"));
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    m_listener = listener;
}

// The slots nobody calls: a call is an error that the log shows.
void CameraManager::reserved3()
{
    CallLog::instance().add(QStringLiteral("manager"), QStringLiteral("reserved3()"));
}

void CameraManager::reserved8()
{
    CallLog::instance().add(QStringLiteral("manager"), QStringLiteral("reserved8()"));
}

void CameraManager::reserved9()
{
    CallLog::instance().add(QStringLiteral("manager"), QStringLiteral("reserved9()"));
}

void CameraManager::reserved10()
{
    CallLog::instance().add(QStringLiteral("manager"), QStringLiteral("reserved10()"));
}

void Camera::reserved8()
{
    CallLog::instance().add(QStringLiteral("camera"), QStringLiteral("reserved8()"));
}

void Camera::reserved9()
{
    CallLog::instance().add(QStringLiteral("camera"), QStringLiteral("reserved9()"));
}

void Camera::reserved10()
{
    CallLog::instance().add(QStringLiteral("camera"), QStringLiteral("reserved10()"));
}

void VideoDecoder::reserved4()
{
    CallLog::instance().add(QStringLiteral("decoder"), QStringLiteral("reserved4()"));
}

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#include "doubleplatform.h"

#include "doublecameramanager.h"
#include "doublecodecmanager.h"

#include <ocelle/camera.h>
#include <ocelle/videodecoder.h>
#include <ocelle/videoencoder.h>

#include <atomic>
#include <stdexcept>
#include <utility>

namespace {

std::atomic<DoublePlatform *> current { nullptr };

} // namespace

DoublePlatform::DoublePlatform(Fault fault)
    : m_fault(fault)
    , m_cameras(std::make_unique<DoubleCameraManager>())
    , m_codecs(std::make_unique<DoubleCodecManager>())
{
    current = this;
}

DoublePlatform::~DoublePlatform()
{
    letGo();
    current = nullptr;
}

bool DoublePlatform::has(Fault fault)
{
    DoublePlatform *const platform = current;
    return platform && platform->m_fault == fault;
}

void DoublePlatform::hangWith(Fault fault)
{
    DoublePlatform *const platform = current;
    if (!platform || platform->m_fault != fault)
        return;
    std::unique_lock<std::mutex> lock(platform->m_mutex);
    platform->m_released.wait(lock, [platform] { return platform->m_isReleased; });
}

void DoublePlatform::keep(std::shared_ptr<void> kept)
{
    DoublePlatform *const platform = current;
    const std::lock_guard<std::mutex> lock(platform->m_mutex);
    platform->m_kept.push_back(std::move(kept));
}

void DoublePlatform::letGo()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isReleased = true;
    }
    m_released.notify_all();
}

Veltra::Ocelle::CameraManager *OcelleManager()
{
    DoublePlatform *const platform = current;
    return platform ? &platform->cameras() : nullptr;
}

Veltra::Ocelle::CodecManager *OcelleCodecManager()
{
    DoublePlatform *const platform = current;
    return platform ? &platform->codecs() : nullptr;
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
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (listener || !DoublePlatform::has(Fault::DecoderKeepsListener))
        m_listener = listener;
}

void VideoEncoder::lockAndSetListener(VideoEncoderListener *listener)
{
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (!listener && DoublePlatform::has(Fault::EncoderThrows))
        throw std::runtime_error("no luck");
    if (listener || !DoublePlatform::has(Fault::EncoderKeepsListener))
        m_listener = listener;
}

void CameraManager::reserved3() {}
void CameraManager::reserved8() {}
void CameraManager::reserved9() {}
void CameraManager::reserved10() {}
void Camera::reserved8() {}
void Camera::reserved9() {}
void Camera::reserved10() {}
void VideoDecoder::reserved4() {}

} // namespace Ocelle
} // namespace Veltra

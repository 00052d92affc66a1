// SPDX-License-Identifier: BSD-3-Clause
#include "streamingcamera.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

StreamingCamera::StreamingCamera(std::shared_ptr<CaptureControl> control)
    : m_control(std::move(control))
{
}

StreamingCamera::~StreamingCamera()
{
    m_control->stop();
    m_control->setListener(nullptr);
}

bool StreamingCamera::getInfo(CameraInfo &info)
{
    info = m_control->description().info;
    return true;
}

std::vector<PixelFormat> StreamingCamera::getSupportedPixelFormats()
{
    return m_control->description().formats;
}

bool StreamingCamera::startCapture(const CameraCapability &capability, int)
{
    return m_control->start(capability);
}

void StreamingCamera::stopCapture()
{
    m_control->stop();
}

bool StreamingCamera::captureStarted()
{
    return m_control->isStarted();
}

void StreamingCamera::setListener(CameraListener *listener)
{
    m_control->setListener(listener);
}

} // namespace Ocelle
} // namespace Veltra

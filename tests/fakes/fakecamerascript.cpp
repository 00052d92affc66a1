// SPDX-License-Identifier: BSD-3-Clause
#include "fakecamerascript.h"

#include <utility>

using namespace Veltra::Ocelle;

FakeCameraScript::FakeCameraScript(std::string id, std::string name, CameraFacing facing,
                                   int mountAngle)
    : m_info { std::move(id), std::move(name), "first extra", facing, mountAngle, "second extra" }
    , m_capabilities { { 640, 480, 30 }, { 1280, 720, 30 }, { 1280, 720, 60 } }
    , m_formats { PixelFormat::NV12, PixelFormat::YU12 }
{
}

CameraInfo FakeCameraScript::info() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_info;
}

void FakeCameraScript::setInfo(const CameraInfo &info)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_info = info;
}

std::vector<CameraCapability> FakeCameraScript::capabilities() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_capabilities;
}

void FakeCameraScript::setCapabilities(std::vector<CameraCapability> capabilities)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_capabilities = std::move(capabilities);
}

std::vector<PixelFormat> FakeCameraScript::formats() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_formats;
}

void FakeCameraScript::setFormats(std::vector<PixelFormat> formats)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_formats = std::move(formats);
}

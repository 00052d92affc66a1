// SPDX-License-Identifier: BSD-3-Clause
#include "patternsource.h"

#include "capturecontrol.h"
#include "patternproducer.h"
#include "streamingcamera.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

std::vector<CameraCapability> capabilities()
{
    std::vector<CameraCapability> all;
    const std::pair<std::int32_t, std::int32_t> sizes[] = {
        { 640, 480 }, { 1280, 720 }, { 1920, 1080 }, { 320, 240 }
    };
    for (const auto &[width, height] : sizes) {
        for (const std::uint32_t rate : { 30U, 60U, 15U })
            all.push_back({ width, height, rate });
    }
    return all;
}

CameraDescription describe(CameraFacing facing, PixelFormat delivered)
{
    const bool isFront = facing == CameraFacing::Front;
    CameraDescription camera;
    camera.info.id = isFront ? "pattern:front" : "pattern:back";
    camera.info.name = isFront ? "Pattern camera (front)" : "Pattern camera (back)";
    camera.info.facing = facing;
    camera.capabilities = capabilities();
    camera.formats = { PixelFormat::NV12, PixelFormat::YU12 };
    if (delivered == PixelFormat::YU12)
        std::swap(camera.formats[0], camera.formats[1]);
    return camera;
}

} // namespace

PatternSource::PatternSource(PixelFormat delivered)
    : m_cameras { describe(CameraFacing::Back, delivered),
                  describe(CameraFacing::Front, delivered) }
{
}

std::vector<CameraDescription> PatternSource::cameras()
{
    return m_cameras;
}

void PatternSource::watch(std::function<void()>)
{
    // These cameras never come or go.
}

std::shared_ptr<Camera> PatternSource::open(const std::string &id)
{
    for (const CameraDescription &camera : m_cameras) {
        if (camera.info.id != id)
            continue;
        const std::string caption = camera.info.facing == CameraFacing::Front ? "FRONT" : "BACK";
        const PixelFormat format = camera.formats.front();
        const auto makeProducer = [caption, format](const CameraCapability &capability) {
            return std::make_unique<PatternProducer>(capability, format, caption);
        };
        return std::make_shared<StreamingCamera>(
                std::make_shared<CaptureControl>(camera, makeProducer));
    }
    return {};
}

} // namespace Ocelle
} // namespace Veltra

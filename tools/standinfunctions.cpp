// SPDX-License-Identifier: BSD-3-Clause
#include "standinfunctions.h"

namespace Veltra {
namespace Ocelle {

// Null where the platform libraries do not export them.
__attribute__((weak)) std::vector<CameraNode> examineCameraNodes();
__attribute__((weak)) std::vector<std::string> examineCameraSelection(const char *cameras);
__attribute__((weak)) std::vector<CameraRate> cameraRates();
__attribute__((weak)) bool videoOutputStatistics(const QAbstractVideoSurface *surface,
                                                 VideoOutputStatistics *statistics);

} // namespace Ocelle
} // namespace Veltra

namespace Tool {

using namespace Veltra::Ocelle;

std::optional<std::vector<CameraNode>> examineVideoNodes()
{
    if (!examineCameraNodes)
        return std::nullopt;
    return examineCameraNodes();
}

std::optional<std::vector<std::string>> problemsOfSelection(const char *cameras)
{
    if (!examineCameraSelection)
        return std::nullopt;
    return examineCameraSelection(cameras);
}

std::optional<CameraRate> rateOf(const std::string &cameraId)
{
    if (!cameraRates)
        return std::nullopt;
    for (const CameraRate &rate : cameraRates()) {
        if (rate.id == cameraId)
            return rate;
    }
    return std::nullopt;
}

std::optional<VideoOutputStatistics> statisticsOf(const QAbstractVideoSurface *surface)
{
    VideoOutputStatistics statistics;
    if (!videoOutputStatistics || !videoOutputStatistics(surface, &statistics))
        return std::nullopt;
    return statistics;
}

} // namespace Tool

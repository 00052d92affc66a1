// SPDX-License-Identifier: BSD-3-Clause
#include "discovery.h"

#include "session.h"

#include <ocelle/cameramanager.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

bool isKnown(CodecType type)
{
    return type == CodecType::VP8 || type == CodecType::VP9 || type == CodecType::H264 ||
           type == CodecType::H265;
}

// A platform may well list a limitless number.
int sum(int first, int second)
{
    const std::int64_t both = std::int64_t(first) + second;
    return int(std::clamp<std::int64_t>(both, 0, std::numeric_limits<int>::max()));
}

int addCodecs(const std::vector<VideoCodecInfo> &codecs, bool encoders,
              std::vector<Device> *devices)
{
    const Device::Kind kind = encoders ? Device::Kind::Encoder : Device::Kind::Decoder;
    int count = 0;
    for (const VideoCodecInfo &codec : codecs) {
        if (codec.isEncoder != encoders || !isKnown(codec.type))
            continue;
        const auto same = std::find_if(devices->begin(), devices->end(), [&](const Device &device) {
            return device.kind == kind && device.type == codec.type;
        });
        ++count;
        if (same == devices->end())
            devices->push_back({ kind, codec.codecName, codec.type, codec.maxInstances });
        else
            same->instances = sum(same->instances, codec.maxInstances);
    }
    return count;
}

} // namespace

std::vector<std::string> cameraIds(Session &session)
{
    CameraManager *const manager = OcelleManager();
    std::vector<std::string> ids;
    if (!manager)
        return ids;
    const int count = session.call(QStringLiteral("getNumberOfCameras()"),
                                   [&] { return manager->getNumberOfCameras(); });
    for (int index = 0; index < count; ++index) {
        CameraInfo info {};
        if (session.call(QStringLiteral("getCameraInfo(%1)").arg(index),
                         [&] { return manager->getCameraInfo(index, info); }))
            ids.push_back(info.id);
    }
    return ids;
}

Outcome findDevices(Session &session, std::vector<Device> *devices)
{
    if (!session.call(QStringLiteral("OcelleManager()"), [] { return OcelleManager(); }))
        return Outcome::fail(QStringLiteral("OcelleManager() gives no camera manager"));
    std::vector<Device> found; // handed over at once: a stuck thread must not come back to it
    const std::vector<std::string> ids = cameraIds(session);
    for (const std::string &id : ids)
        found.push_back({ Device::Kind::Camera, id, CodecType::Unknown, 0 });
    CodecManager *const codecs = session.call(QStringLiteral("OcelleCodecManager()"),
                                              [] { return OcelleCodecManager(); });
    if (!codecs)
        return Outcome::fail(QStringLiteral("OcelleCodecManager() gives no codec manager"));
    const std::vector<VideoCodecInfo> all = session.call(QStringLiteral("getVideoCodecs()"),
                                                         [&] { return codecs->getVideoCodecs(); });
    const int encoders = addCodecs(all, true, &found);
    const int decoders = addCodecs(all, false, &found);
    *devices = found;
    return Outcome::pass(QStringLiteral("cameras: %1, encoders: %2, decoders: %3")
                                 .arg(ids.size())
                                 .arg(encoders)
                                 .arg(decoders));
}

} // namespace Compliance

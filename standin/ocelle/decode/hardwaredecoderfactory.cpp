// SPDX-License-Identifier: BSD-3-Clause
#include "hardwaredecoderfactory.h"

#include "codecdevices.h"
#include "localvideodecoder.h"
#include "trialframe.h"

#include <array>
#include <filesystem>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {
constexpr int MostInstances = 4; // devices do not tell; more at once is more than most can do

struct Kind
{
    CodecType type;
    const char *name;   // in our ids
    const char *avName; // in libavcodec's names
};
constexpr std::array<Kind, 4> Kinds { { { CodecType::H264, "h264", "h264" },
                                        { CodecType::H265, "h265", "hevc" },
                                        { CodecType::VP8, "vp8", "vp8" },
                                        { CodecType::VP9, "vp9", "vp9" } } };
} // namespace

HardwareDecoderFactory::HardwareDecoderFactory(CodecType type, const std::string &name,
                                               AvDecoderKind kind, DecoderSettings settings)
    : DecoderFactory({ type, false, "hardware." + name + ".decoder", 0, MostInstances, true })
    , m_kind(std::move(kind))
    , m_settings(settings)
{
}

bool HardwareDecoderFactory::isAvailable()
{
    std::call_once(m_tried, [this] { m_isAvailable = decodesTrialFrame(); });
    return m_isAvailable;
}

std::shared_ptr<VideoDecoder> HardwareDecoderFactory::create(std::string *error)
{
    InstanceCount::Token token = instances().take();
    if (!token) {
        *error = "all " + std::to_string(instances().most()) + " instances are in use";
        return {};
    }
    AvDecoder trial(m_kind);
    if (!trial.open(m_settings, 0, 0, error))
        return {};
    return std::make_shared<LocalVideoDecoder>(info().type, info().codecName, m_kind, m_settings,
                                               std::move(token));
}

bool HardwareDecoderFactory::decodesTrialFrame() const
{
    const TrialFrame frame = trialFrame(info().type);
    AvDecoder decoder(m_kind);
    std::string error;
    int pictures = 0;
    const auto onPicture = [&pictures](const AvDecoder::Picture &) { ++pictures; };
    if (!decoder.open({}, 0, 0, &error) || !decoder.load(frame.data, frame.size, &error) ||
        !decoder.decode(0, false, onPicture, &error))
        return false;
    const bool isDrained = decoder.drain(onPicture, &error);
    return isDrained && pictures == 1 && (m_kind.devicePath.empty() || decoder.usesDevice());
}

std::vector<std::shared_ptr<DecoderFactory>> HardwareDecoderFactory::all(DecoderSettings settings)
{
    std::vector<std::shared_ptr<DecoderFactory>> factories;
    const auto add = [&](const Kind &kind, const std::string &name, AvDecoderKind av) {
        factories.push_back(
                std::make_shared<HardwareDecoderFactory>(kind.type, name, std::move(av), settings));
    };
    for (const std::string &path : vaapiDevices()) {
        const std::string device = std::filesystem::path(path).filename().string();
        for (const Kind &kind : Kinds)
            add(kind, "vaapi." + device + "." + kind.name, { kind.avName, path, false });
    }
    if (hasMemoryToMemoryDevice()) {
        for (const Kind &kind : Kinds)
            add(kind, std::string("v4l2.") + kind.name,
                { std::string(kind.avName) + "_v4l2m2m", {}, true });
    }
    return factories;
}

} // namespace Ocelle
} // namespace Veltra

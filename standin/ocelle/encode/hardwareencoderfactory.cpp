// SPDX-License-Identifier: BSD-3-Clause
#include "hardwareencoderfactory.h"

#include "codecdevices.h"

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

HardwareEncoderFactory::HardwareEncoderFactory(CodecType type, const std::string &name,
                                               AvEncoderKind kind)
    : EncoderFactory({ type, true, "hardware." + name + ".encoder", 0, MostInstances, true })
    , m_kind(std::move(kind))
{
}

bool HardwareEncoderFactory::isAvailable()
{
    std::call_once(m_tried, [this] { m_isAvailable = encodesTrialPictures(); });
    return m_isAvailable;
}

std::unique_ptr<PictureEncoder> HardwareEncoderFactory::create()
{
    return std::make_unique<AvEncoder>(m_kind);
}

bool HardwareEncoderFactory::encodesTrialPictures() const
{
    constexpr int width = 640;
    constexpr int height = 480;
    constexpr int pictures = 4;
    EncoderSettings settings;
    settings.width = width;
    settings.height = height;
    settings.bitrate = 1000000;
    AvEncoder encoder(m_kind);
    std::string error;
    if (!encoder.open(settings, &error))
        return false;
    const std::vector<std::uint8_t> grey(std::size_t(width) * height * 3 / 2, 128);
    const std::uint8_t *chroma = grey.data() + std::size_t(width) * height;
    const PictureView picture {
        PictureLayout::NV12, grey.data(), chroma, chroma + 1, width, width, width, height
    };
    int units = 0;
    const auto onUnit = [&units](const EncodedUnit &unit) { units += unit.size > 0; };
    for (int index = 0; index < pictures; ++index) {
        if (!encoder.encode(picture, index, index == 0, onUnit, &error))
            return false;
    }
    return encoder.finish(onUnit, &error) && units == pictures;
}

std::vector<std::shared_ptr<EncoderFactory>> HardwareEncoderFactory::all()
{
    std::vector<std::shared_ptr<EncoderFactory>> factories;
    const auto add = [&factories](const Kind &kind, const std::string &name, AvEncoderKind av) {
        factories.push_back(std::make_shared<HardwareEncoderFactory>(kind.type, name, av));
    };
    for (const std::string &path : vaapiDevices()) {
        const std::string device = std::filesystem::path(path).filename().string();
        for (const Kind &kind : Kinds)
            add(kind, "vaapi." + device + "." + kind.name,
                { std::string(kind.avName) + "_vaapi", path });
    }
    if (hasMemoryToMemoryDevice()) {
        for (const Kind &kind : Kinds)
            add(kind, std::string("v4l2.") + kind.name,
                { std::string(kind.avName) + "_v4l2m2m", {} });
    }
    return factories;
}

} // namespace Ocelle
} // namespace Veltra

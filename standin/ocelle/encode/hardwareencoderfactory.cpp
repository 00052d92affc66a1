#include "hardwareencoderfactory.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

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

// The nodes of a device folder whose names begin so; none where there is no such folder.
std::vector<std::string> nodes(const char *folder, const std::string &beginning)
{
    std::vector<std::string> paths;
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator(folder, ignored)) {
        if (entry.path().filename().string().compare(0, beginning.size(), beginning) == 0)
            paths.push_back(entry.path().string());
    }
    return paths;
}

bool isMemoryToMemory(const std::string &path)
{
    const int file = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    v4l2_capability capability {};
    const bool answers = ::ioctl(file, VIDIOC_QUERYCAP, &capability) == 0;
    ::close(file);
    const auto flags = capability.capabilities & V4L2_CAP_DEVICE_CAPS ? capability.device_caps
                                                                      : capability.capabilities;
    return answers && (flags & (V4L2_CAP_VIDEO_M2M | V4L2_CAP_VIDEO_M2M_MPLANE));
}

bool hasMemoryToMemoryDevice()
{
    for (const std::string &path : nodes("/dev", "video")) {
        if (isMemoryToMemory(path))
            return true;
    }
    return false;
}
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
    for (const std::string &path : nodes("/dev/dri", "renderD")) {
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

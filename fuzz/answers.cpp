// SPDX-License-Identifier: BSD-3-Clause
// A driver's answers about sizes and intervals, as the raw records, to what cameras offer.
#include "capturemodes.h"
#include "v4l2format.h"

#include <cstdlib>
#include <cstring>

using namespace Veltra::Ocelle;

namespace {

template <class Record>
std::vector<Record> records(const std::uint8_t *&data, std::size_t &size, std::size_t count)
{
    std::vector<Record> all;
    for (; count > 0 && size >= sizeof(Record); --count) {
        Record record;
        std::memcpy(&record, data, sizeof record);
        all.push_back(record);
        data += sizeof record;
        size -= sizeof record;
    }
    return all;
}

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::uint32_t fourccs[] = { V4L2_PIX_FMT_NV12, V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_MJPEG, 0 };
    const std::uint32_t fourcc = fourccs[data[0] % 4];
    const std::size_t sizeCount = data[1] % 8;
    data += 2;
    size -= 2;
    const auto sizes = sizesFrom(records<v4l2_frmsizeenum>(data, size, sizeCount));
    const auto intervals = intervalsFrom(records<v4l2_frmivalenum>(data, size, 8));
    std::vector<CaptureMode> modes;
    for (const PictureSize &one : sizes) {
        for (const v4l2_fract &interval : intervals)
            modes.push_back({ fourcc, one.first, one.second, interval, rateOf(interval) });
    }
    const auto capabilities = capabilitiesOf(modes);
    for (const CameraCapability &capability : capabilities) {
        require(capability.width > 0 && capability.height > 0 && capability.frameRate > 0);
        require(chooseMode(modes, capability)); // whatever is offered can be started
    }
    require(capabilities.empty() == deliveredFormats(modes).empty());
    require(capabilities.empty() == (modes.empty() || !V4l2Format::find(fourcc)));
    V4l2Format::name(fourcc);
    return 0;
}

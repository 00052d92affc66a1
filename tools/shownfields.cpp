// SPDX-License-Identifier: BSD-3-Clause
#include "shownfields.h"

namespace Tool {
namespace {

/*! The first bits of a VP9 frame: marker (2), profile (2 or 3), shown again, kind, shown. */
bool isVp9Shown(std::uint8_t first, std::uint8_t second)
{
    const unsigned bits = unsigned(first) << 8 | second;
    const bool isLongProfile = (first & 0x30) == 0x30; // followed by a reserved bit
    const int next = isLongProfile ? 10 : 11;          // bit with "shown again"
    const bool isShownAgain = bits >> next & 1;
    return isShownAgain || (bits >> (next - 2) & 1);
}

} // namespace

bool isShown(VideoCodec codec, const std::uint8_t *data, std::size_t size)
{
    if (size < 3)
        return size > 0;
    if (codec == VideoCodec::VP8)
        return data[0] & 0x10;
    const std::uint8_t last = data[size - 1];
    const bool isSuperframe = (last & 0xe0) == 0xc0;
    return isSuperframe || isVp9Shown(data[0], data[1]);
}

} // namespace Tool

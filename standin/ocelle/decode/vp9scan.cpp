// SPDX-License-Identifier: BSD-3-Clause
#include "vp9scan.h"

#include "bitreader.h"

namespace Veltra {
namespace Ocelle {

namespace {
// The start of a key frame after its type, as a problem; empty where there is none.
std::string skipColors(BitReader *bits, unsigned profile)
{
    constexpr std::uint32_t startCode = 0x498342;
    constexpr std::uint32_t rgb = 7; // color space
    if (bits->bits(24) != startCode)
        return "a key frame without its start code";
    if (profile >= 2)
        bits->skip(1); // 10 or 12 bits
    const std::uint32_t colorSpace = bits->bits(3);
    if (colorSpace != rgb)
        bits->skip(1); // range
    if (profile & 1)
        bits->skip(colorSpace == rgb ? 1 : 3); // subsampling
    return {};
}
} // namespace

UnitReport Vp9Scan::examine(const std::uint8_t *data, std::size_t size)
{
    constexpr std::uint32_t frameMarker = 2;
    UnitReport report;
    report.hasPicture = true;
    BitReader bits(data, size, BitReader::Escapes::Kept);
    if (bits.bits(2) != frameMarker) {
        report.problem = "no VP9 frame";
        return report;
    }
    unsigned profile = bits.bits(1);
    profile |= bits.bits(1) << 1;
    if (profile == 3)
        bits.skip(1);
    if (bits.flag()) // shows a picture that is there already
        return report;
    report.isKey = !bits.flag();
    bits.skip(2); // is shown, resilience
    if (report.isKey) {
        report.problem = skipColors(&bits, profile);
        const std::uint32_t width = bits.bits(16) + 1;
        const std::uint32_t height = bits.bits(16) + 1;
        if (report.problem.empty() && bits.isComplete())
            report.problem = sizeProblem(width, height);
    }
    if (!bits.isComplete() && report.problem.empty())
        report.problem = "a frame of " + std::to_string(size) + " bytes is cut off";
    return report;
}

} // namespace Ocelle
} // namespace Veltra

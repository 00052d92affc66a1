// SPDX-License-Identifier: BSD-3-Clause
#include "vp8scan.h"

namespace Veltra {
namespace Ocelle {

UnitReport Vp8Scan::examine(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t frameTag = 3;   // bytes
    constexpr std::size_t keyHeader = 10; // bytes
    UnitReport report;
    report.hasPicture = true;
    report.isKey = size > 0 && !(data[0] & 1);
    if (size < (report.isKey ? keyHeader : frameTag)) {
        report.problem = "a frame of " + std::to_string(size) + " bytes is cut off";
        return report;
    }
    if (!report.isKey)
        return report;
    if (data[3] != 0x9d || data[4] != 0x01 || data[5] != 0x2a) {
        report.problem = "a key frame without its start code";
        return report;
    }
    constexpr unsigned sizeMask = 0x3fff; // the upper two bits are about scaling
    report.problem = sizeProblem((data[6] | unsigned(data[7]) << 8) & sizeMask,
                                 (data[8] | unsigned(data[9]) << 8) & sizeMask);
    return report;
}

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#include "h265scan.h"

#include "bitreader.h"
#include "nalunits.h"

#include <algorithm>

namespace Veltra {
namespace Ocelle {

namespace {
enum NalType : unsigned {
    LastPlainSlice = 9,   // from 0 on
    FirstKeySlice = 16,   // decoding can begin with these
    LastKeySlice = 21,    //
    VideoParameters = 32, //
    SequenceParameters = 33,
    PictureParameters = 34,
    AccessUnitDelimiter = 35,
    EndOfSequence = 36,
    EndOfStream = 37,
    LastSideInformation = 40,
};
constexpr std::size_t HeaderSize = 2; // bytes

// The picture size of sequence parameters; false where they are cut off.
bool readSize(const std::uint8_t *data, std::size_t size, std::uint64_t *width,
              std::uint64_t *height)
{
    constexpr int profileBits = 88;
    constexpr int levelBits = 8;
    constexpr std::uint32_t apart = 3; // 4:4:4, where the planes may be coded apart
    BitReader bits(data, size, BitReader::Escapes::LeftOut);
    bits.skip(4);
    const auto subLayers = std::min<std::uint32_t>(bits.bits(3), 6);
    bits.skip(1 + profileBits + levelBits);
    const std::uint32_t present = bits.bits(subLayers ? 16 : 0); // two bits for each of eight
    for (std::uint32_t i = 0; i < subLayers; ++i) {
        const std::uint32_t flags = present >> (14 - 2 * i);
        bits.skip((flags & 2 ? profileBits : 0) + (flags & 1 ? levelBits : 0));
    }
    bits.number();
    if (bits.number() == apart)
        bits.skip(1);
    *width = bits.number();
    *height = bits.number();
    return bits.isComplete();
}
} // namespace

UnitReport H265Scan::examine(const std::uint8_t *data, std::size_t size)
{
    UnitReport report;
    NalUnits units(data, size);
    m_isKnown = false;
    bool hasUnit = false;
    while (units.next()) {
        hasUnit = true;
        examineNal(units.data(), units.sizeToEnd(), &report);
        if (report.hasPicture) {
            constexpr std::size_t startCode = 3;
            report.headSize = std::size_t(units.data() - data) - startCode;
            break; // the rest is more of it, but for its end
        }
        units.findNext();
    }
    constexpr unsigned allKinds = 7;
    report.isSelfContained = report.parameters == allKinds;
    if (!report.hasPicture)
        report.headSize = size;
    const unsigned last = lastUnitType(data, size, HeaderSize) >> 1 & 0x3f;
    report.endsStream = last == EndOfStream;
    report.endsSequence = report.endsStream || last == EndOfSequence;
    if (!hasUnit)
        report.problem = "no start code in " + std::to_string(size) + " bytes";
    else if (!m_isKnown && report.problem.empty())
        report.problem = "nothing that belongs to H.265";
    return report;
}

void H265Scan::examineNal(const std::uint8_t *data, std::size_t size, UnitReport *report)
{
    const bool isValid = size >= HeaderSize && !(data[0] & 0x80) && (data[1] & 7);
    if (!isValid)
        return;
    const unsigned type = data[0] >> 1 & 0x3f;
    if (type >= VideoParameters && type <= PictureParameters)
        report->parameters |= 1U << (type - VideoParameters);
    const bool isKey = type >= FirstKeySlice && type <= LastKeySlice;
    m_isKnown = m_isKnown || type <= LastPlainSlice || isKey ||
                (type >= VideoParameters && type <= LastSideInformation);
    if (type <= LastPlainSlice || isKey) {
        report->hasPicture = true;
        report->isKey = isKey;
        if (isKey && !(m_hasSequenceParameters && m_hasPictureParameters) &&
            report->problem.empty())
            report->problem = "a key frame without parameter sets";
    } else if (type == SequenceParameters) {
        std::uint64_t width = 0;
        std::uint64_t height = 0;
        const bool isComplete = readSize(data + HeaderSize, size - HeaderSize, &width, &height);
        const std::string problem =
                isComplete ? sizeProblem(width, height) : "parameter sets are cut off";
        m_hasSequenceParameters = m_hasSequenceParameters || problem.empty();
        if (report->problem.empty())
            report->problem = problem;
    } else if (type == PictureParameters) {
        m_hasPictureParameters = true;
    }
}

} // namespace Ocelle
} // namespace Veltra

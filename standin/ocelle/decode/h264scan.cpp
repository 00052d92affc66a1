// SPDX-License-Identifier: BSD-3-Clause
#include "h264scan.h"

#include "bitreader.h"
#include "nalunits.h"

namespace Veltra {
namespace Ocelle {

namespace {
enum NalType : unsigned {
    Slice = 1,
    FirstPartition = 2,
    LastPartition = 4,
    KeySlice = 5,
    SideInformation = 6,
    SequenceParameterSet = 7,
    PictureParameterSet = 8,
    EndOfSequence = 10,
    EndOfStream = 11,
    LastKnown = 20,
};

// Without the units that follow. The first byte is not zero.
std::size_t unitSize(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t startCode = 3;
    const std::uint8_t *const next = NalUnits::afterStartCode(data, data + size);
    return next ? std::size_t(next - data) - startCode : size;
}

bool hasRecoveryPoint(const std::uint8_t *data, std::size_t size)
{
    constexpr std::uint32_t recoveryPoint = 6;
    constexpr std::uint32_t more = 255;
    BitReader bits(data, size, BitReader::Escapes::LeftOut);
    for (;;) {
        std::uint32_t sums[2] = {}; // type and length of a message
        for (std::uint32_t &sum : sums) {
            std::uint32_t byte = more;
            while (byte == more && bits.isComplete()) {
                byte = bits.bits(8);
                sum += byte;
            }
        }
        if (!bits.isComplete())
            return false;
        if (sums[0] == recoveryPoint)
            return true;
        for (std::uint32_t i = 0; i < sums[1] && bits.isComplete(); ++i)
            bits.skip(8);
    }
}
} // namespace

UnitReport H264Scan::examine(const std::uint8_t *data, std::size_t size)
{
    UnitReport report;
    NalUnits units(data, size);
    m_isKnown = false;
    m_isRecovery = false;
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
    constexpr unsigned bothKinds = 3;
    report.isSelfContained = report.parameters == bothKinds;
    if (!report.hasPicture)
        report.headSize = size;
    const unsigned last = lastUnitType(data, size, 1) & 0x1f;
    report.endsStream = last == EndOfStream;
    report.endsSequence = report.endsStream || last == EndOfSequence;
    if (!hasUnit)
        report.problem = "no start code in " + std::to_string(size) + " bytes";
    else if (!m_isKnown && report.problem.empty())
        report.problem = "nothing that belongs to H.264";
    return report;
}

void H264Scan::examineNal(const std::uint8_t *data, std::size_t size, UnitReport *report)
{
    if (data[0] & 0x80)
        return;
    const unsigned type = data[0] & 0x1f;
    if (type >= FirstPartition && type <= LastPartition) {
        report->problem = "slices in partitions";
        return;
    }
    m_isKnown = m_isKnown || (type >= Slice && type <= LastKnown);
    switch (type) {
    case Slice:
    case KeySlice:
        report->hasPicture = true;
        report->isKey = type == KeySlice || m_isRecovery;
        if (report->problem.empty())
            examineSlice(data, size, report);
        break;
    case SideInformation:
        m_isRecovery = m_isRecovery || hasRecoveryPoint(data + 1, unitSize(data, size) - 1);
        break;
    case SequenceParameterSet:
        report->parameters |= 1;
        readSequenceParameters(data + 1, size - 1, report);
        break;
    case PictureParameterSet:
        report->parameters |= 2;
        readPictureParameters(data + 1, size - 1);
        break;
    default:
        break;
    }
}

void H264Scan::readSequenceParameters(const std::uint8_t *data, std::size_t size,
                                      UnitReport *report)
{
    const H264SequenceParameters parameters = H264SequenceParameters::read(data, size);
    const std::string problem = parameters.isValid
                                        ? sizeProblem(parameters.width, parameters.height)
                                        : "sequence parameters that make no sense";
    if (problem.empty())
        m_sequences[parameters.id] = parameters;
    else if (report->problem.empty())
        report->problem = problem;
}

void H264Scan::readPictureParameters(const std::uint8_t *data, std::size_t size)
{
    BitReader bits(data, size, BitReader::Escapes::LeftOut);
    const std::uint32_t id = bits.number();
    const std::uint32_t sequenceId = bits.number();
    if (bits.isComplete() && id < m_pictures.size() && sequenceId < m_sequences.size())
        m_pictures[id] = { true, sequenceId };
}

void H264Scan::examineSlice(const std::uint8_t *data, std::size_t size, UnitReport *report)
{
    constexpr int planeBits = 2;
    BitReader bits(data + 1, size - 1, BitReader::Escapes::LeftOut);
    bits.number(); // first macroblock
    bits.number(); // kind of slice
    const std::uint32_t id = bits.number();
    if (!bits.isComplete() || id >= m_pictures.size()) {
        report->problem = "a slice is cut off";
        return;
    }
    const PictureParameters &picture = m_pictures[id];
    const H264SequenceParameters &sequence = m_sequences[picture.sequenceId];
    if (!picture.isValid || !sequence.isValid) {
        if (report->isKey)
            report->problem = "parameter sets are missing";
        return;
    }
    report->reorders = sequence.reorders;
    if (sequence.separatePlanes)
        bits.skip(planeBits);
    const std::uint32_t number = bits.bits(int(sequence.frameNumberBits));
    if (!bits.isComplete())
        report->problem = "a slice is cut off";
    else if ((data[0] & 0x1f) == KeySlice) {
        m_reference = 0;
        m_hasReference = true;
    } else {
        followFrameNumber(number, sequence, data[0] & 0x60, report);
    }
}

void H264Scan::followFrameNumber(std::uint32_t number, const H264SequenceParameters &sequence,
                                 bool isReference, UnitReport *report)
{
    const std::uint32_t mask = (1U << sequence.frameNumberBits) - 1;
    const bool follows = number == m_reference || number == ((m_reference + 1) & mask);
    const bool mayFollow = follows || number == 1 || sequence.allowsGaps || !m_hasReference;
    if (!mayFollow)
        report->gap = "pictures are missing: frame number " + std::to_string(number) +
                      " comes after " + std::to_string(m_reference);
    if (isReference)
        m_reference = number;
    else if (!follows)
        m_reference = (number - 1) & mask;
    m_hasReference = m_hasReference || isReference;
}

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#include "h264parameters.h"

#include "bitreader.h"

#include <algorithm>
#include <iterator>

namespace Veltra {
namespace Ocelle {

namespace {
constexpr std::uint32_t Baseline = 66;

bool isHighProfile(std::uint32_t profile)
{
    constexpr std::uint32_t profiles[] = {
        100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134
    };
    return std::find(std::begin(profiles), std::end(profiles), profile) != std::end(profiles);
}

void skipScalingList(BitReader *bits, int size)
{
    std::int32_t last = 8;
    std::int32_t next = 8;
    for (int i = 0; i < size && bits->isComplete(); ++i) {
        if (next != 0)
            next = std::int32_t((std::uint32_t(last) + std::uint32_t(bits->signedNumber())) & 0xff);
        last = next == 0 ? last : next;
    }
}

void readHighProfile(BitReader *bits, H264SequenceParameters *parameters)
{
    constexpr std::uint32_t fullChroma = 3; // 4:4:4
    const std::uint32_t chroma = bits->number();
    if (chroma == fullChroma)
        parameters->separatePlanes = bits->flag();
    bits->number(); // bits of luma
    bits->number(); // bits of chroma
    bits->skip(1);
    if (!bits->flag())
        return;
    constexpr int smallLists = 6;
    const int lists = chroma == fullChroma ? 12 : 8;
    for (int i = 0; i < lists; ++i) {
        if (bits->flag())
            skipScalingList(bits, i < smallLists ? 16 : 64);
    }
}

// Returns the kind of picture order.
std::uint32_t readPictureOrder(BitReader *bits)
{
    constexpr std::uint32_t maxCycle = 255;
    const std::uint32_t kind = bits->number();
    if (kind == 0) {
        bits->number();
    } else if (kind == 1) {
        bits->skip(1);
        bits->signedNumber();
        bits->signedNumber();
        const std::uint32_t cycle = std::min(bits->number(), maxCycle);
        for (std::uint32_t i = 0; i < cycle && bits->isComplete(); ++i)
            bits->signedNumber();
    }
    return kind;
}

void skipBufferModel(BitReader *bits)
{
    constexpr std::uint32_t maxCount = 31;
    const std::uint32_t count = std::min(bits->number(), maxCount) + 1;
    bits->skip(8);
    for (std::uint32_t i = 0; i < count && bits->isComplete(); ++i) {
        bits->number();
        bits->number();
        bits->skip(1);
    }
    bits->skip(20);
}

// Whether the usability information rules reordering in (1) or out (0) or says nothing (-1).
int readReordering(BitReader *bits)
{
    constexpr std::uint32_t explicitAspect = 255;
    if (bits->flag() && bits->bits(8) == explicitAspect)
        bits->skip(32);
    if (bits->flag()) // overscan
        bits->skip(1);
    if (bits->flag()) { // video signal
        bits->skip(4);
        if (bits->flag())
            bits->skip(24);
    }
    if (bits->flag()) { // chroma location
        bits->number();
        bits->number();
    }
    if (bits->flag()) // timing
        bits->skip(65);
    const bool first = bits->flag();
    if (first)
        skipBufferModel(bits);
    const bool second = bits->flag();
    if (second)
        skipBufferModel(bits);
    if (first || second)
        bits->skip(1);
    bits->skip(1);
    if (!bits->flag())
        return -1;
    bits->skip(1);
    for (int i = 0; i < 4; ++i)
        bits->number();
    const bool reorders = bits->number() > 0;
    return bits->isComplete() ? int(reorders) : -1;
}
} // namespace

H264SequenceParameters H264SequenceParameters::read(const std::uint8_t *data, std::size_t size)
{
    constexpr std::uint32_t macroblock = 16;    // pixels
    constexpr std::uint32_t maxBitsBelow4 = 12; // of a frame number
    constexpr std::uint32_t decodingOrder = 2;
    H264SequenceParameters result;
    BitReader bits(data, size, BitReader::Escapes::LeftOut);
    result.profile = bits.bits(8);
    const std::uint32_t constraints = bits.bits(8);
    bits.skip(8); // level
    result.id = bits.number();
    if (isHighProfile(result.profile))
        readHighProfile(&bits, &result);
    const std::uint32_t bitsAbove4 = bits.number();
    result.frameNumberBits = bitsAbove4 + 4;
    const std::uint32_t order = readPictureOrder(&bits);
    bits.number(); // pictures referred to
    result.allowsGaps = bits.flag();
    const std::uint64_t columns = std::uint64_t(bits.number()) + 1;
    const std::uint64_t rows = std::uint64_t(bits.number()) + 1;
    const bool hasFields = !bits.flag();
    result.width = columns * macroblock;
    result.height = rows * macroblock * (hasFields ? 2 : 1);
    if (hasFields)
        bits.skip(1);
    bits.skip(1);
    if (bits.flag()) { // cropping
        for (int i = 0; i < 4; ++i)
            bits.number();
    }
    const bool hasUsability = bits.flag();
    result.isValid = bits.isComplete() && result.id <= MaxId && bitsAbove4 <= maxBitsBelow4 &&
                     order <= decodingOrder;
    if (order == decodingOrder)
        return result;
    const bool isIntraOnly =
            result.profile != Baseline && isHighProfile(result.profile) && (constraints & 0x10);
    const int stated = hasUsability ? readReordering(&bits) : -1;
    result.reorders = stated >= 0 ? stated > 0 : result.profile != Baseline && !isIntraOnly;
    return result;
}

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#include "jpegscan.h"

#include <cstring>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::uint8_t StartOfImage = 0xD8;
constexpr std::uint8_t EndOfImage = 0xD9;
constexpr std::uint8_t StartOfScan = 0xDA;

bool isRestart(std::uint8_t marker)
{
    return marker >= 0xD0 && marker <= 0xD7;
}

bool hasNoSegment(std::uint8_t marker)
{
    return isRestart(marker) || marker == 0x01;
}

bool isFrameHeader(std::uint8_t marker)
{
    const bool isOther = marker == 0xC4 || marker == 0xC8 || marker == 0xCC; // tables, reserved
    return marker >= 0xC0 && marker <= 0xCF && !isOther;
}

std::int32_t bigEndian(const std::uint8_t *bytes)
{
    return bytes[0] << 8 | bytes[1];
}

/*! Where the next marker after coded data begins; \a size where there is none. */
std::size_t skipCodedData(const std::uint8_t *data, std::size_t at, std::size_t size)
{
    while (at + 1 < size) {
        const void *const found = std::memchr(data + at, 0xFF, size - at - 1);
        if (!found)
            return size;
        at = std::size_t(static_cast<const std::uint8_t *>(found) - data);
        const std::uint8_t next = data[at + 1];
        if (next == 0xFF) {
            ++at;
            continue;
        }
        if (next != 0 && !isRestart(next))
            return at;
        at += 2;
    }
    return size;
}

} // namespace

JpegScan JpegScan::of(const std::uint8_t *data, std::size_t size)
{
    JpegScan scan;
    if (size < 2 || data[0] != 0xFF || data[1] != StartOfImage)
        return scan;
    std::size_t at = 2;
    bool hasData = false;
    const auto endedEarly = [&] { return hasData ? State::NoEnd : State::NoFrame; };
    while (true) {
        if (at + 1 >= size) {
            scan.state = endedEarly();
            return scan;
        }
        if (data[at] != 0xFF) { // bytes between segments: as decoders do, look for the next marker
            ++at;
            continue;
        }
        const std::uint8_t marker = data[at + 1];
        if (marker == 0xFF || marker == 0) { // fill byte, or not a marker
            ++at;
            continue;
        }
        at += 2;
        if (marker == EndOfImage) {
            scan.state = hasData ? State::Complete : State::NoFrame;
            scan.length = hasData ? at : 0;
            return scan;
        }
        if (hasNoSegment(marker))
            continue;
        if (at + 2 > size) {
            scan.state = endedEarly();
            return scan;
        }
        const std::size_t length = std::size_t(bigEndian(data + at));
        if (marker == StartOfImage || length < 2) {
            scan.state = State::Malformed;
            return scan;
        }
        if (length > size - at) {
            scan.state = hasData ? State::NoEnd : State::Malformed;
            return scan;
        }
        if (isFrameHeader(marker) && length >= 7 && scan.width == 0) {
            scan.height = bigEndian(data + at + 3);
            scan.width = bigEndian(data + at + 5);
        }
        at += length;
        if (marker == StartOfScan) {
            hasData = true;
            at = skipCodedData(data, at, size);
        }
    }
}

} // namespace Ocelle
} // namespace Veltra

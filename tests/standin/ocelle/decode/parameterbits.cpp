// SPDX-License-Identifier: BSD-3-Clause
#include "parameterbits.h"

#include <bitreader.h>
#include <nalunits.h>

using namespace Veltra::Ocelle;

namespace {
// Copies the parameters of libx264's High profile up to the usability information.
Bytes cutParameters(const std::uint8_t *data, std::size_t size)
{
    BitReader from(data, size, BitReader::Escapes::LeftOut);
    BitWriter to;
    const auto copyBits = [&](int count) {
        const std::uint32_t value = from.bits(count);
        to.bits(count, value);
        return value;
    };
    const auto copyNumber = [&] {
        const std::uint32_t value = from.number();
        to.number(value);
        return value;
    };
    copyBits(24);
    copyNumber();          // id
    copyNumber();          // chroma
    copyNumber();          // bits
    copyNumber();          //
    copyBits(2);           // no scaling lists
    copyNumber();          // bits of frame numbers
    if (copyNumber() == 0) // order
        copyNumber();
    copyNumber();
    copyBits(1);
    copyNumber();
    copyNumber();
    copyBits(2); // no fields
    if (copyBits(1)) {
        for (int i = 0; i < 4; ++i)
            copyNumber();
    }
    to.bits(1, 0);
    to.finish();
    return to.unit({ 0x67 });
}
} // namespace

void BitWriter::bits(int count, std::uint64_t value)
{
    for (int i = count - 1; i >= 0; --i) {
        if (m_free == 0) {
            m_bytes.push_back(0);
            m_free = 8;
        }
        --m_free;
        m_bytes.back() = std::uint8_t(m_bytes.back() | (value >> i & 1) << m_free);
    }
}

void BitWriter::number(std::uint32_t value)
{
    int length = 0;
    while ((std::uint64_t(value) + 1) >> (length + 1))
        ++length;
    bits(length, 0);
    bits(length + 1, std::uint64_t(value) + 1);
}

void BitWriter::signedNumber(std::int32_t value)
{
    number(value > 0 ? std::uint32_t(value) * 2 - 1 : std::uint32_t(-value) * 2);
}

void BitWriter::finish()
{
    bits(1, 1);
    bits(m_free, 0);
}

Bytes BitWriter::unit(const Bytes &header) const
{
    Bytes result { 0, 0, 0, 1 };
    result.insert(result.end(), header.begin(), header.end());
    int zeros = 0;
    for (const std::uint8_t byte : m_bytes) {
        if (zeros >= 2 && byte <= 3) {
            result.push_back(3);
            zeros = 0;
        }
        result.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return result;
}

Bytes sequenceParameters(const SequenceWish &wish)
{
    BitWriter to;
    to.bits(8, wish.profile);
    to.bits(8, wish.constraints);
    to.bits(8, 40); // level
    to.number(0);
    if (wish.profile >= 100) {
        to.number(1);
        to.number(0);
        to.number(0);
        to.bits(2, 0);
    }
    to.number(0); // 4 bits of frame numbers
    to.number(wish.order);
    if (wish.order == 0)
        to.number(0);
    to.number(4);
    to.bits(1, wish.allowsGaps);
    to.number(wish.width / 16 - 1);
    to.number(wish.height / 16 - 1);
    to.bits(3, 4 | 2); // no fields, no cropping
    to.bits(1, wish.reordered >= 0);
    if (wish.reordered >= 0) {
        to.bits(8, 0);
        to.bits(2, 3); // restrictions, vectors beyond the picture
        for (int i = 0; i < 4; ++i)
            to.number(0);
        to.number(std::uint32_t(wish.reordered));
        to.number(4);
    }
    to.finish();
    return to.unit({ 0x67 });
}

std::vector<MediaUnit> withoutUsability(const std::vector<MediaUnit> &units)
{
    std::vector<MediaUnit> result = units;
    for (MediaUnit &unit : result) {
        Bytes changed;
        NalUnits from(unit.data.data(), unit.data.size());
        while (from.next()) {
            const std::uint8_t *const data = from.data();
            const std::size_t rest = from.sizeToEnd();
            from.findNext();
            const std::uint8_t *end = NalUnits::afterStartCode(data, data + rest);
            end = end ? end - 3 : data + rest;
            const bool isSequence = (data[0] & 0x1f) == 7;
            const Bytes cut = isSequence ? cutParameters(data + 1, std::size_t(end - data) - 1)
                                         : Bytes { 0, 0, 1 };
            changed.insert(changed.end(), cut.begin(), cut.end());
            if (!isSequence)
                changed.insert(changed.end(), data, end);
        }
        unit.data = changed;
    }
    return result;
}

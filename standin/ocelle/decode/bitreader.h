// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*!
 * Reads the bits of a header, most significant first. Of H.264 and H.265 the bytes that keep a
 * payload free of start codes are left out.
 *
 * Threads: one at a time.
 * Owner:   the bytes are borrowed.
 * Errors:  beyond the end all bits are 0 and isComplete() is false.
 */
class BitReader
{
public:
    enum class Escapes { Kept, LeftOut };

    BitReader(const std::uint8_t *data, std::size_t size, Escapes escapes)
        : m_data(data)
        , m_size(size)
        , m_leavesOut(escapes == Escapes::LeftOut)
    {
    }

    /*! Whether everything read so far was there and made sense. */
    bool isComplete() const { return m_isComplete; }

    bool flag() { return bit() != 0; }

    /*! \a count bits, at most 32, as a number. */
    std::uint32_t bits(int count)
    {
        std::uint32_t value = 0;
        for (int i = 0; i < count; ++i)
            value = value << 1 | bit();
        return value;
    }

    void skip(int count)
    {
        for (int i = 0; i < count; ++i)
            bit();
    }

    /*! An Exp-Golomb number. */
    std::uint32_t number()
    {
        constexpr int maxZeros = 31;
        int zeros = 0;
        while (m_isComplete && bit() == 0) {
            if (++zeros > maxZeros) {
                m_isComplete = false;
                return 0;
            }
        }
        const std::uint32_t rest = bits(zeros);
        return ((1U << zeros) - 1) + rest;
    }

    /*! A signed one. */
    std::int32_t signedNumber()
    {
        const std::uint32_t code = number();
        const auto magnitude = std::int32_t((code >> 1) + (code & 1));
        return code & 1 ? magnitude : -magnitude;
    }

private:
    std::uint32_t bit()
    {
        if (m_bitsLeft == 0 && !nextByte())
            return 0;
        --m_bitsLeft;
        return std::uint32_t(m_byte >> m_bitsLeft) & 1U;
    }

    bool nextByte()
    {
        constexpr std::uint8_t escape = 3;
        if (m_leavesOut && m_zeroBytes >= 2 && m_position < m_size &&
            m_data[m_position] == escape) {
            ++m_position;
            m_zeroBytes = 0;
        }
        if (m_position >= m_size) {
            m_isComplete = false;
            return false;
        }
        m_byte = m_data[m_position++];
        m_zeroBytes = m_byte == 0 ? m_zeroBytes + 1 : 0;
        m_bitsLeft = 8;
        return true;
    }

    const std::uint8_t *const m_data;
    const std::size_t m_size;
    const bool m_leavesOut;
    std::size_t m_position = 0;
    int m_zeroBytes = 0; // before m_position
    std::uint8_t m_byte = 0;
    int m_bitsLeft = 0; // of m_byte
    bool m_isComplete = true;
};

} // namespace Ocelle
} // namespace Veltra

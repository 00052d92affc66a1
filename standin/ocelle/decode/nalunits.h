// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*!
 * The first byte of the last unit where that is \a unitSize bytes long, as ends of streams are;
 * else 0.
 */
inline unsigned lastUnitType(const std::uint8_t *data, std::size_t size, std::size_t unitSize)
{
    constexpr std::size_t startCode = 3; // bytes
    while (size > 0 && data[size - 1] == 0)
        --size;
    if (size < startCode + unitSize)
        return 0;
    const std::uint8_t *const last = data + size - unitSize;
    return last[-3] == 0 && last[-2] == 0 && last[-1] == 1 ? last[0] : 0;
}

/*!
 * Walks over the units between the start codes of H.264 and H.265.
 *
 * Threads: one at a time.
 * Owner:   the bytes are borrowed.
 */
class NalUnits
{
public:
    NalUnits(const std::uint8_t *data, std::size_t size)
        : m_end(data + size)
        , m_next(afterStartCode(data, m_end))
    {
    }

    /*! The next unit, without its start code; false after the last one. */
    bool next()
    {
        if (!m_next)
            return false;
        m_data = m_next;
        m_next = nullptr;
        return true;
    }
    /*! Looks for the unit after this one, which takes as long as this one is. */
    void findNext() { m_next = afterStartCode(m_data, m_end); }

    const std::uint8_t *data() const { return m_data; }
    /*! To the end of the data, other units included. */
    std::size_t sizeToEnd() const { return std::size_t(m_end - m_data); }

    /*! Past the first start code from \a from on; null where there is none. */
    static const std::uint8_t *afterStartCode(const std::uint8_t *from, const std::uint8_t *end)
    {
        while (end - from > 3) {
            if (from[2] > 1)
                from += 3;
            else if (from[0] == 0 && from[1] == 0 && from[2] == 1)
                return from + 3;
            else
                ++from;
        }
        return nullptr;
    }

private:
    const std::uint8_t *const m_end;
    const std::uint8_t *m_next;
    const std::uint8_t *m_data = nullptr;
};

} // namespace Ocelle
} // namespace Veltra

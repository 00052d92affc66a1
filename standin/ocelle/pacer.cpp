// SPDX-License-Identifier: BSD-3-Clause
#include "pacer.h"

namespace Veltra {
namespace Ocelle {

Pacer::TimePoint Pacer::schedule(Duration offset, TimePoint ready, Duration work)
{
    if (!m_started) {
        m_started = true;
        m_start = ready - offset; // the first picture at once
    }
    const TimePoint due = m_start + offset;
    const Duration delay = ready - due;
    const bool tooSlow = delay > m_period && work > m_period;
    if (!tooSlow && delay <= m_catchUp)
        return due;
    m_start += delay;
    return ready;
}

} // namespace Ocelle
} // namespace Veltra

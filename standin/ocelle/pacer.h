// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <chrono>

namespace Veltra {
namespace Ocelle {

/*!
 * Places pictures on a steady clock, always counted from the first one so that no error adds up.
 *
 * A source that is held up for a while catches up by leaving out pictures. One that cannot keep its
 * rate at all, or that could only catch up with more work than allowed, moves its beat instead.
 *
 * Threads: the one that captures.
 */
class Pacer
{
public:
    using Clock = std::chrono::steady_clock; // CLOCK_MONOTONIC
    using Duration = std::chrono::nanoseconds;
    using TimePoint = std::chrono::time_point<Clock, Duration>;

    /*! \a catchUp is the longest delay that is caught up with. */
    Pacer(Duration period, Duration catchUp)
        : m_period(period)
        , m_catchUp(catchUp)
    {
    }

    /*!
     * When to deliver the picture that comes \a offset after the first one. It was ready at
     * \a ready, after \a work of getting it ready.
     */
    TimePoint schedule(Duration offset, TimePoint ready, Duration work);

    /*!
     * Whether a picture due at \a due is past delivering at \a now: the following one is due. The
     * first picture never is.
     */
    bool isLate(TimePoint due, TimePoint now) const
    {
        return due != m_start && now > due + m_period;
    }

private:
    const Duration m_period;
    const Duration m_catchUp;
    bool m_started = false;
    TimePoint m_start {};
};

} // namespace Ocelle
} // namespace Veltra

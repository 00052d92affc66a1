// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <chrono>
#include <cstdint>
#include <thread>

/*! A camera's beat: wait() returns 30 times a second, with no drift. For one thread. */
class Beat
{
public:
    void wait()
    {
        if (m_count == 0)
            m_start = Clock::now();
        std::this_thread::sleep_until(m_start + std::chrono::nanoseconds(std::nano::den) *
                                                        m_count++ / PerSecond);
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr int PerSecond = 30;

    std::int64_t m_count = 0;
    Clock::time_point m_start;
};

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <condition_variable>
#include <mutex>

/*! A counter that threads wait for; made of what thread sanitizers understand. */
class Gate
{
public:
    void release(int count = 1)
    {
        // Notified under the lock: whoever waits may destroy the gate next.
        std::lock_guard<std::mutex> lock(m_mutex);
        m_count += count;
        m_condition.notify_all();
    }
    void acquire()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condition.wait(lock, [this] { return m_count > 0; });
        --m_count;
    }

private:
    std::mutex m_mutex; // guards m_count
    std::condition_variable m_condition;
    int m_count = 0;
};

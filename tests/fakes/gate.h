// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <condition_variable>
#include <mutex>

/*!
 * Holds calls up until the test lets them go on. Open at first.
 *
 * Threads: any thread. Opening lets everybody through who waits.
 */
class Gate
{
public:
    ~Gate();

    void close();
    void open();

    /*! Waits while the gate is closed. */
    void pass();
    /*! How many threads wait now. */
    int waiting() const;

private:
    mutable std::mutex m_mutex; // guards the members below
    std::condition_variable m_opened;
    bool m_isOpen = true;
    int m_waiting = 0;
};

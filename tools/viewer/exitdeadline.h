// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace Viewer {

/*!
 * Ends the process if its own end takes too long: an encoder or a disk may keep it for ever.
 *
 * Threads: built and destroyed on the application thread; it waits on one of its own.
 * Errors:  told on standard error, with which the process ends as failed.
 */
class ExitDeadline
{
public:
    /*! Called off where this is destroyed before the time is over. */
    explicit ExitDeadline(std::chrono::milliseconds time);
    ~ExitDeadline();
    ExitDeadline(const ExitDeadline &) = delete;
    ExitDeadline &operator=(const ExitDeadline &) = delete;

private:
    void wait(std::chrono::milliseconds time); // on its own thread

    std::mutex m_mutex; // guards m_isOver
    std::condition_variable m_over;
    bool m_isOver = false;
    std::thread m_thread; // begins when all of the above is there
};

} // namespace Viewer

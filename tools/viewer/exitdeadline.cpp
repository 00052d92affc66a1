// SPDX-License-Identifier: BSD-3-Clause
#include "exitdeadline.h"

#include "commandline.h"
#include "console.h"

#include <cstdlib>

namespace Viewer {

ExitDeadline::ExitDeadline(std::chrono::milliseconds time)
    : m_thread([this, time] { wait(time); })
{
}

ExitDeadline::~ExitDeadline()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOver = true;
    }
    m_over.notify_one();
    m_thread.join();
}

void ExitDeadline::wait(std::chrono::milliseconds time)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_over.wait_for(lock, time, [this] { return m_isOver; }))
        return;
    Tool::printError(QStringLiteral("what was recorded could not be completed, since an encoder or "
                                    "a disk does not answer; it stays in FILE.part"));
    std::_Exit(Tool::Failure); // nothing else would wait for less
}

} // namespace Viewer

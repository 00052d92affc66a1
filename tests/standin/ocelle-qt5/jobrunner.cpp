// SPDX-License-Identifier: BSD-3-Clause
#include "jobrunner.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

void JobRunner::run(std::function<void()> job)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_job = std::move(job);
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    m_done.acquire();
}

void JobRunner::customEvent(QEvent *)
{
    std::function<void()> job;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        job = std::exchange(m_job, nullptr);
    }
    job();
    m_done.release();
}

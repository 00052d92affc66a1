// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "gate.h"

#include <QObject>

#include <functional>
#include <mutex>

/*!
 * Runs jobs on the thread it lives on, through that thread's event loop.
 *
 * Threads: run() on any other, one at a time.
 */
class JobRunner : public QObject
{
    Q_OBJECT
public:
    void run(std::function<void()> job); // and waits for it

protected:
    void customEvent(QEvent *event) override;

private:
    std::mutex m_mutex; // guards m_job
    std::function<void()> m_job;
    Gate m_done;
};

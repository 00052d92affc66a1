// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "jobrunner.h"
#include "recordingsurface.h"

#include <QThread>

#include <functional>

/*!
 * A thread with an event loop, and a surface that lives and is destroyed there.
 *
 * Threads: all of it is called on the test's.
 */
class SurfaceThread
{
public:
    SurfaceThread();
    ~SurfaceThread(); // destroys the surface first

    RecordingSurface *surface() const { return m_surface; } // null once destroyed
    QThread *thread() { return &m_thread; }

    void run(const std::function<void()> &work); // there, and waits for it
    void destroySurface();

private:
    QThread m_thread;
    JobRunner m_runner; // lives on m_thread
    RecordingSurface *m_surface = nullptr;
};

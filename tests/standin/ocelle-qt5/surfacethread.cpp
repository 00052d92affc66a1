// SPDX-License-Identifier: BSD-3-Clause
#include "surfacethread.h"

#include <QSemaphore>

#include <utility>

SurfaceThread::SurfaceThread()
{
    m_runner.moveToThread(&m_thread);
    m_thread.start();
    run([this] { m_surface = new RecordingSurface; });
}

SurfaceThread::~SurfaceThread()
{
    destroySurface();
    m_thread.quit();
    m_thread.wait();
}

void SurfaceThread::run(const std::function<void()> &work)
{
    m_runner.run(work);
}

void SurfaceThread::destroySurface()
{
    run([this] { delete std::exchange(m_surface, nullptr); });
}

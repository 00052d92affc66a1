#include "surfacethread.h"

#include <QSemaphore>

#include <utility>

SurfaceThread::SurfaceThread()
{
    m_worker.moveToThread(&m_thread);
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
    QSemaphore done;
    QMetaObject::invokeMethod(&m_worker, [&] {
        work();
        done.release();
    });
    done.acquire();
}

void SurfaceThread::destroySurface()
{
    run([this] { delete std::exchange(m_surface, nullptr); });
}

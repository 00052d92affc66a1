#include "ocelleworkerthread.h"

#include <QCoreApplication>

#include <utility>

OcelleWorkerThread::OcelleWorkerThread(const QString &name, OcelleStatusRelay::Handler onStatus)
    : m_relay(std::move(onStatus))
{
    m_thread.setObjectName(name);
}

void OcelleWorkerThread::start(QObject *worker)
{
    m_worker = worker;
    worker->moveToThread(&m_thread);
    m_thread.start(QThread::InheritPriority);
}

bool OcelleWorkerThread::isRunning() const
{
    return m_thread.isRunning();
}

void OcelleWorkerThread::quit()
{
    m_relay.release();
    // The end of a local object is a signal that can be queued behind the worker's own calls.
    QObject last;
    QObject::connect(
            &last, &QObject::destroyed, m_worker, [this] { m_thread.quit(); },
            Qt::QueuedConnection);
}

void OcelleWorkerThread::waitServingEvents()
{
    while (!m_thread.wait(1)) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1000);
        if (!QCoreApplication::instance()) // it is gone already; nobody else serves the relay
            QCoreApplication::sendPostedEvents(&m_relay);
    }
}

void OcelleWorkerThread::deliverStatus(int status)
{
    m_relay.deliver(status);
}

// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleworkerthread.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>

#include <utility>

OcelleWorkerThread::OcelleWorkerThread(const QString &name, OcelleStatusRelay::Handler onStatus)
    : m_relay(std::move(onStatus))
{
    m_thread.setObjectName(name);
}

void OcelleWorkerThread::start(QObject *worker)
{
    worker->moveToThread(&m_thread);
    m_last.moveToThread(&m_thread);
    m_thread.start(QThread::InheritPriority);
}

bool OcelleWorkerThread::isRunning() const
{
    return m_thread.isRunning();
}

void OcelleWorkerThread::quit()
{
    m_relay.release();
    QCoreApplication::postEvent(&m_last, new QEvent(QEvent::User));
}

void OcelleWorkerThread::waitServingEvents()
{
    while (!m_thread.wait(1)) {
        if (!QCoreApplication::instance()) {
            // Gone already, and without it no thread is given events: neither would a status reach
            // the relay nor the worker get to quit.
            QCoreApplication::removePostedEvents(&m_relay);
            m_thread.quit();
            continue;
        }
        serveEvents();
    }
}

void OcelleWorkerThread::serveEvents()
{
    if (!QCoreApplication::instance())
        return;
    // While an event is handled further up the stack, the dispatcher takes those posted before that for
    // seen, a status among them. Waking it has it look again.
    if (QAbstractEventDispatcher *const dispatcher = QAbstractEventDispatcher::instance())
        dispatcher->wakeUp();
    QCoreApplication::processEvents(QEventLoop::AllEvents, 1000);
}

void OcelleWorkerThread::deliverStatus(int status)
{
    m_relay.deliver(status);
}

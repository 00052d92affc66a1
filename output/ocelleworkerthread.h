// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocellestatusrelay.h"

#include <QObject>
#include <QString>
#include <QThread>

/*!
 * The thread of one session's worker, with the way back for the worker's statuses.
 *
 * Threads: grouped below.
 * Owner:   the session; the thread has finished when this goes. The worker is borrowed.
 */
class OcelleWorkerThread
{
public:
    // Application thread
    /*! \a onStatus is called on the application thread, while the worker waits. */
    OcelleWorkerThread(const QString &name, OcelleStatusRelay::Handler onStatus);

    /*! Moves \a worker to the thread and starts it. */
    void start(QObject *worker);
    bool isRunning() const;

    /*!
     * Has the thread quit after the calls queued to the worker so far. A worker whose status is
     * being handled right now goes on: the service may be taken down from a slot.
     */
    void quit();
    /*! Serves the application thread's events, the worker's statuses too, until the thread ends. */
    void waitServingEvents();
    /*! Serves the application thread's events that are there. */
    static void serveEvents();

    // Worker thread
    /*! Returns once the status has been handled on the application thread. */
    void deliverStatus(int status);

private:
    /*! Ends its thread on any event: the last one behind the calls queued to the worker. */
    class Last : public QObject
    {
    protected:
        void customEvent(QEvent *) override { thread()->quit(); }
    };

    OcelleStatusRelay m_relay;
    QThread m_thread;
    Last m_last; // lives in that thread
};

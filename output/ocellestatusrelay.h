// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>

#include <functional>
#include <memory>

/*!
 * Brings a worker's status to the application thread and keeps the worker waiting until it has
 * been handled there: a blocking queued call that the application thread can cut short.
 *
 * A plain blocking queued connection would hang where a slot, called on behalf of a status, takes
 * the whole service down: the service waits for the worker, which waits for the slot. release()
 * lets the worker go on from inside the handler.
 *
 * Threads: grouped below; lives on the application thread.
 * Owner:   the session, which stops its worker before it deletes the relay. A handler may delete
 *          the relay.
 */
class OcelleStatusRelay : public QObject
{
    Q_OBJECT
public:
    using Handler = std::function<void(int status)>;

    explicit OcelleStatusRelay(Handler handler);

    // Worker thread
    /*! Returns once the handler has returned, has been released, or will never run. */
    void deliver(int status);

    // Application thread
    /*! Lets a worker go on whose status is being handled right now. */
    void release();

protected:
    void customEvent(QEvent *event) override;

private:
    class Delivery;

    const Handler m_handler;             // application thread
    std::shared_ptr<Delivery> m_handled; // application thread; the one being handled
};

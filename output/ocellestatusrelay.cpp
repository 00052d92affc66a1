// SPDX-License-Identifier: BSD-3-Clause
#include "ocellestatusrelay.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QSemaphore>

#include <utility>

/*! What a waiting worker and the application thread share. */
class OcelleStatusRelay::Delivery
{
public:
    explicit Delivery(int status)
        : m_status(status)
    {
    }

    int status() const { return m_status; }
    void wait() { m_done.acquire(); }
    void finish() { m_done.release(); }

private:
    const int m_status;
    QSemaphore m_done;
};

namespace {

/*! Ends the wait when it goes, so that an event that is thrown away unhandled hangs nobody. */
template <typename Delivery>
class DeliveryEvent : public QEvent
{
public:
    explicit DeliveryEvent(std::shared_ptr<Delivery> delivery)
        : QEvent(QEvent::User)
        , m_delivery(std::move(delivery))
    {
    }
    ~DeliveryEvent() override { m_delivery->finish(); }

    const std::shared_ptr<Delivery> &delivery() const { return m_delivery; }

private:
    const std::shared_ptr<Delivery> m_delivery;
};

} // namespace

OcelleStatusRelay::OcelleStatusRelay(Handler handler)
    : m_handler(std::move(handler))
{
}

void OcelleStatusRelay::deliver(int status)
{
    const auto delivery = std::make_shared<Delivery>(status);
    QCoreApplication::postEvent(this, new DeliveryEvent<Delivery>(delivery));
    delivery->wait();
}

void OcelleStatusRelay::release()
{
    if (m_handled)
        m_handled->finish();
}

void OcelleStatusRelay::customEvent(QEvent *event)
{
    // The handler may delete this relay, so it is called through a copy.
    const std::shared_ptr<Delivery> delivery =
            static_cast<DeliveryEvent<Delivery> *>(event)->delivery();
    const Handler handler = m_handler;
    const QPointer<OcelleStatusRelay> self(this);
    const std::shared_ptr<Delivery> outer = m_handled; // of the event loop around this one
    m_handled = delivery;
    handler(delivery->status());
    if (self)
        m_handled = outer;
}

// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "librarythread.h"
#include "ocellestatusrelay.h"

#include <QtTest>

#include <atomic>
#include <memory>

namespace {

void log(const QString &what)
{
    CallLog::instance().add(QStringLiteral("relay"), what);
}

/*! Delivers \a status on a thread of its own, and logs when that has returned. */
class Delivery
{
public:
    Delivery(OcelleStatusRelay &relay, int status)
        : m_thread("Worker", [this, &relay, status] {
            relay.deliver(status);
            log(QStringLiteral("delivered(%1)").arg(status));
            m_returned = true;
        })
    {
    }

    bool hasReturned() const { return m_returned; }
    void join() { m_thread.join(); }

private:
    std::atomic<bool> m_returned { false };
    LibraryThread m_thread;
};

} // namespace

class TestStatusRelay : public QObject
{
    Q_OBJECT
private slots:
    void init() { CallLog::instance().clear(); }

    void deliver_returnsOnceItIsHandledOnTheRelaysThread()
    {
        OcelleStatusRelay relay([](int status) { log(QStringLiteral("handle(%1)").arg(status)); });
        LibraryThread worker("Worker", [&relay] {
            for (int status = 1; status <= 3; ++status) {
                relay.deliver(status);
                log(QStringLiteral("delivered(%1)").arg(status));
            }
        });
        QTRY_COMPARE(CallLog::instance().count("relay: delivered(3)"), 1);
        QCOMPARE(
                CallLog::instance().texts(),
                (QStringList { "relay: handle(1)", "relay: delivered(1)", "relay: handle(2)",
                               "relay: delivered(2)", "relay: handle(3)", "relay: delivered(3)" }));
        for (const Call &call : CallLog::instance().calls())
            QCOMPARE(call.thread == std::this_thread::get_id(), call.what.startsWith("handle"));
    }

    void release_letsTheWorkerGoOnFromWithinTheHandler()
    {
        std::unique_ptr<Delivery> delivery;
        bool wentOn = false;
        OcelleStatusRelay relay([&](int) {
            relay.release();
            delivery->join();
            wentOn = delivery->hasReturned();
        });
        delivery = std::make_unique<Delivery>(relay, 1);
        QTRY_VERIFY(wentOn);
    }

    void release_outsideOfAHandler_doesNothing()
    {
        std::unique_ptr<Delivery> delivery;
        bool handled = false;
        bool wentOn = true;
        OcelleStatusRelay relay([&](int) {
            wentOn = delivery->hasReturned();
            handled = true;
        });
        relay.release();
        for (int round = 0; round < 2; ++round) {
            handled = false;
            delivery = std::make_unique<Delivery>(relay, round);
            relay.release();
            QTRY_VERIFY(handled);
            QVERIFY(!wentOn);
            delivery->join();
            relay.release();
        }
    }

    void release_isForTheInnermost()
    {
        std::unique_ptr<Delivery> outer;
        std::unique_ptr<Delivery> inner;
        bool done = false;
        OcelleStatusRelay relay([&](int status) {
            if (status == 2) {
                relay.release();
                inner->join();
                QVERIFY(!outer->hasReturned());
                return;
            }
            inner = std::make_unique<Delivery>(relay, 2);
            QTRY_VERIFY(inner->hasReturned()); // in an event loop
            QVERIFY(!outer->hasReturned());
            relay.release();
            outer->join();
            done = true;
        });
        outer = std::make_unique<Delivery>(relay, 1);
        QTRY_VERIFY(done);
    }

    void handler_mayDeleteTheRelay()
    {
        std::unique_ptr<OcelleStatusRelay> relay;
        bool isWhole = false;
        const auto value = std::make_shared<int>(7);
        relay = std::make_unique<OcelleStatusRelay>([&relay, &isWhole, value](int) {
            relay.reset();
            isWhole = value.use_count() > 1 && *value == 7; // so is what it was made with
        });
        Delivery delivery(*relay, 1);
        QTRY_VERIFY(delivery.hasReturned());
        QVERIFY(!relay);
        QVERIFY(isWhole);
    }

    void deliveryThatIsThrownAway_hangsNobody()
    {
        OcelleStatusRelay relay([](int) { QFAIL("handled"); });
        Delivery delivery(relay, 1);
        while (!delivery.hasReturned()) {
            QCoreApplication::removePostedEvents(&relay);
            std::this_thread::yield();
        }
    }
};

QTEST_GUILESS_MAIN(TestStatusRelay)
#include "tst_ocellestatusrelay.moc"

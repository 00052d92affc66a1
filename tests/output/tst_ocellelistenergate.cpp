// SPDX-License-Identifier: BSD-3-Clause
#include "gate.h"
#include "librarythread.h"
#include "ocellelistenergate.h"

#include <QTimer>
#include <QtTest>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace {

/*! What a codec calls; hands on what it is told to do inside. */
class Listener : public OcelleListenerGate
{
public:
    static Listener *create()
    {
        auto *const listener = new Listener;
        keep(std::unique_ptr<OcelleListenerGate>(listener));
        return listener;
    }

    void call(const std::function<void()> &inside = {})
    {
        const Call call { this };
        if (!call)
            return;
        if (inside)
            inside();
        ++calls;
    }

    std::atomic<int> calls { 0 }; // that were let in and have returned
};

} // namespace

class TestListenerGate : public QObject
{
    Q_OBJECT
private slots:
    void calls_areLetInUntilItIsClosed()
    {
        Listener *const listener = Listener::create();
        listener->call();
        LibraryThread::run("FakeCodec", [listener] { listener->call(); });
        QCOMPARE(listener->calls.load(), 2);
        listener->close();
        listener->call();
        LibraryThread::run("FakeCodec", [listener] { listener->call(); });
        QCOMPARE(listener->calls.load(), 2);
    }

    void close_mayComeTwice()
    {
        Listener *const listener = Listener::create();
        listener->close();
        listener->close();
        listener->call();
        QCOMPARE(listener->calls.load(), 0);
    }

    void close_waitsForCallsOfOtherThreadsServingEvents()
    {
        Listener *const listener = Listener::create();
        Gate gate;
        gate.close();
        LibraryThread first("FakeCodec", [&] { listener->call([&gate] { gate.pass(); }); });
        LibraryThread second("FakeCodec", [&] { listener->call([&gate] { gate.pass(); }); });
        QTRY_COMPARE(gate.waiting(), 2);
        QTimer::singleShot(20, [&gate] { gate.open(); }); // so without events there is no end
        listener->close();
        QCOMPARE(listener->calls.load(), 2);
    }

    void close_servesASlotThatACallWaitsFor()
    {
        Listener *const listener = Listener::create();
        QObject receiver;
        std::atomic<bool> isInside { false };
        bool isServed = false;
        LibraryThread library("FakeCodec", [&] {
            listener->call([&] {
                isInside = true;
                QMetaObject::invokeMethod(
                        &receiver, [&isServed] { isServed = true; }, Qt::BlockingQueuedConnection);
            });
        });
        while (!isInside)
            std::this_thread::yield();
        listener->close();
        QVERIFY(isServed);
        QCOMPARE(listener->calls.load(), 1);
    }

    void close_mayComeFromWithinACall()
    {
        Listener *const listener = Listener::create();
        listener->call([listener] { listener->call([listener] { listener->close(); }); });
        QCOMPARE(listener->calls.load(), 2); // those were in already
        listener->call();
        QCOMPARE(listener->calls.load(), 2);
    }

    void closeFromWithinACall_waitsForTheOthersOnly()
    {
        Listener *const listener = Listener::create();
        Listener *const other = Listener::create();
        Gate gate;
        gate.close();
        LibraryThread library("FakeCodec", [&] { listener->call([&gate] { gate.pass(); }); });
        QTRY_COMPARE(gate.waiting(), 1);
        QTimer::singleShot(20, [&gate] { gate.open(); });
        int whenClosed = -1;
        // A call of another gate does not stand for one of this.
        other->call([&] {
            listener->call([&] {
                listener->close();
                whenClosed = listener->calls;
            });
        });
        QCOMPARE(whenClosed, 1);
        QCOMPARE(listener->calls.load(), 2);
        QCOMPARE(other->calls.load(), 1);
    }

    void callsOfManyThreads_areOverOnceItIsClosed()
    {
        for (int round = 0; round < 50; ++round) {
            Listener *const listener = Listener::create();
            auto session = std::make_unique<int>(0);
            std::atomic<bool> ends { false };
            std::atomic<int> started { 0 };
            const auto body = [&] {
                for (++started; !ends;)
                    listener->call([&session] { QVERIFY(*session == 0); });
            };
            LibraryThread first("FakeCodec", body);
            LibraryThread second("FakeCodec", body);
            while (started < 2)
                std::this_thread::yield();
            listener->close();
            session.reset(); // who is still inside would find nothing
            ends = true;
        }
    }
};

QTEST_GUILESS_MAIN(TestListenerGate)
#include "tst_ocellelistenergate.moc"

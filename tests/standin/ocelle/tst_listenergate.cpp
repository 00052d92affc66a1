// SPDX-License-Identifier: BSD-3-Clause
#include "listenergate.h"

#include <QtTest>

#include <atomic>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

struct Listener
{
    std::atomic<int> calls { 0 };
};

} // namespace

class TestListenerGate : public QObject
{
    Q_OBJECT
private slots:
    void call_reachesTheListener_andNobodyAfterNull();
    void set_waitsForTheCallOfAnotherThread();
    void set_returnsAtOnce_fromWithinTheCall();
    void noCallIsUnderWay_onceSetHasReturned();
};

void TestListenerGate::call_reachesTheListener_andNobodyAfterNull()
{
    ListenerGate<Listener> gate;
    Listener listener;
    const auto count = [](Listener &called) { ++called.calls; };
    gate.call(count);
    gate.set(&listener);
    gate.call(count);
    gate.set(nullptr);
    gate.call(count);
    QCOMPARE(listener.calls.load(), 1);
}

void TestListenerGate::set_waitsForTheCallOfAnotherThread()
{
    ListenerGate<Listener> gate;
    Listener listener;
    gate.set(&listener);
    std::atomic<bool> entered { false };
    std::atomic<bool> mayLeave { false };
    std::atomic<bool> wasSet { false };
    std::thread caller([&] {
        gate.call([&](Listener &) {
            entered = true;
            while (!mayLeave)
                std::this_thread::yield();
            QVERIFY(!wasSet);
        });
    });
    QTRY_VERIFY(entered);
    QVERIFY(!gate.isCalling()); // another thread is
    std::thread setter([&] {
        gate.set(nullptr);
        wasSet = true;
    });
    mayLeave = true;
    setter.join();
    caller.join();
    QVERIFY(wasSet);
}

void TestListenerGate::set_returnsAtOnce_fromWithinTheCall()
{
    ListenerGate<Listener> gate;
    Listener first;
    Listener second;
    gate.set(&first);
    gate.call([&](Listener &called) {
        QVERIFY(gate.isCalling());
        ++called.calls;
        gate.set(&second);
    });
    QVERIFY(!gate.isCalling());
    gate.call([](Listener &called) { ++called.calls; });
    QCOMPARE(first.calls.load(), 1);
    QCOMPARE(second.calls.load(), 1);
}

void TestListenerGate::noCallIsUnderWay_onceSetHasReturned()
{
    ListenerGate<Listener> gate;
    std::atomic<bool> quit { false };
    std::thread caller([&] {
        while (!quit)
            gate.call([](Listener &called) { ++called.calls; });
    });
    for (int round = 0; round < 2000; ++round) {
        auto listener = std::make_unique<Listener>();
        gate.set(listener.get());
        gate.set(nullptr);
        listener.reset(); // a use of it after this is for the sanitizers to see
    }
    quit = true;
    caller.join();
    QVERIFY(!gate.isCalling());
}

QTEST_GUILESS_MAIN(TestListenerGate)
#include "tst_listenergate.moc"

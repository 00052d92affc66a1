// SPDX-License-Identifier: BSD-3-Clause
#include "decodeworkerfixture.h"
#include "eventcounter.h"
#include "messagelog.h"

#include <QtTest>

using namespace Statuses;

namespace {

const QString Decoding("warning veltra.palaver.decoder.ocelle: ");

} // namespace

/*! What waits for the decoder, and how it comes to it. */
class TestDecodeWorkerQueue : public QObject
{
    Q_OBJECT
private slots:
    void enqueue_refusesWhatIsBeyondTheDepth()
    {
        DecodeWorkerFixture f;
        f.enqueue(20);
        QVERIFY(!f.worker.enqueue(testFrame(21)));
        QCOMPARE(f.worker.dequeue().meta().timestamp, quint64(1)); // the oldest
        QVERIFY(f.worker.enqueue(testFrame(22)));
        QVERIFY(!f.worker.enqueue(testFrame(23)));
        f.worker.setDepth(21);
        QCOMPARE(f.worker.depth(), 21);
        QVERIFY(f.worker.enqueue(testFrame(24)));
        QVERIFY(!f.worker.enqueue(testFrame(25)));
        f.worker.setDepth(0);
        QVERIFY(!f.worker.enqueue(testFrame(26)));
        QCOMPARE(f.hints, QList<unsigned int>());
    }

    void burst_isOneEvent()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        EventCounter events(&f.worker, QEvent::User);
        f.enqueue(20);
        f.work();
        QCOMPARE(events.count, 1);
        QCOMPARE(f.calls().filter("decode(").size(), 20);
        f.enqueue(1, 21);
        f.work();
        QCOMPARE(events.count, 2);
    }

    void event_ofTheOneTypeDecodes()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.enqueue(1);
        QEvent other(static_cast<QEvent::Type>(1001));
        QCoreApplication::sendEvent(&f.worker, &other);
        QVERIFY(f.calls().filter("decode(").isEmpty());
        QEvent event(static_cast<QEvent::Type>(1000));
        QVERIFY(QCoreApplication::sendEvent(&f.worker, &event));
        QCOMPARE(f.calls().filter("decode(").size(), 1);
    }

    void needData_comesWhenTheQueueFallsBelowTheMark()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.worker.setThreshold(3);
        QCOMPARE(f.hints, QList<unsigned int> { 20 });
        f.hints.clear();
        f.enqueue(5);
        f.work();
        QCOMPARE(f.worker.threshold(), 3);
        QCOMPARE(f.hints, QList<unsigned int> { 18 });
        QCOMPARE(f.calls().filter("decode(").size(), 5);
    }

    void setThreshold_tellsAtOnce_whereItIsAboveTheQueue()
    {
        DecodeWorkerFixture f;
        f.enqueue(2);
        f.worker.setThreshold(2);
        QCOMPARE(f.hints, QList<unsigned int>());
        f.worker.setThreshold(5);
        QCOMPARE(f.hints, QList<unsigned int> { 18 });
    }

    void needData_hasNoRoomWhereTheDepthIsLessThanTheQueue()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.enqueue(3);
        f.worker.setDepth(1);
        f.worker.setThreshold(4);
        QCOMPARE(f.hints, QList<unsigned int> { 0 });
        f.worker.setThreshold(3);
        f.work();
        QCOMPARE(f.hints, (QList<unsigned int> { 0, 0 })); // two are left
    }

    void needData_mayBeAnsweredFromItsSlot()
    {
        DecodeWorkerFixture f;
        quint64 time = 100;
        connect(&f.worker, &OcelleDecodeWorker::needData, this, [&](unsigned int room) {
            for (; room > 0 && time < 110; --room)
                QVERIFY(f.worker.enqueue(testFrame(time++)));
        });
        f.startWorker();
        f.worker.setThreshold(2);
        f.work();
        QCOMPARE(f.calls().filter("decode(").size(), 10);
        QCOMPARE(f.calls().last(), QString("decoder 1: decode(109)"));
    }

    void refusedFrame_isReportedAndTheNextTried()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.script->decodeFails = true;
        MessageLog messages;
        f.enqueue(2);
        f.work();
        QCOMPARE(f.calls().filter("decode(").size(), 2);
        QCOMPARE(f.recorder.errors, (QStringList { "3 Decoder error", "3 Decoder error" }));
        const QStringList warnings = messages.messages(Decoding);
        QCOMPARE(warnings.size(), 2);
        QString expected;
        QDebug(&expected) << "The decoder rejected the frame" << testFrame(1);
        QCOMPARE(warnings.first(), Decoding + expected.trimmed());
        QCOMPARE(f.statuses.last(), Active);
        QCOMPARE(f.script->blocksReleased.load(), 2);
    }
};

QTEST_GUILESS_MAIN(TestDecodeWorkerQueue)
#include "tst_ocelledecodeworkerqueue.moc"

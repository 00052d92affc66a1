// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encodeworkerfixture.h"
#include "eventcounter.h"
#include "messagelog.h"
#include "testpicture.h"

#include <QtTest>

#include <memory>

using namespace Statuses;

namespace {

const QString Decoding("warning veltra.palaver.decoder.ocelle: ");

} // namespace

/*! What becomes of the pictures that a worker is given. */
class TestEncodeWorkerQueue : public QObject
{
    Q_OBJECT
private slots:
    void enqueue_refusesWhatIsBeyondTheDepth()
    {
        EncodeWorkerFixture f;
        for (int i = 0; i < 20; ++i)
            QVERIFY(f.worker.enqueue(testPicture(i)));
        const MessageLog messages;
        QVERIFY(!f.worker.enqueue(testPicture(20)));
        QCOMPARE(messages.messages(), QStringList());
        f.worker.setDepth(21);
        QCOMPARE(f.worker.depth(), 21);
        QVERIFY(f.worker.enqueue(testPicture(20)));
        QVERIFY(!f.worker.enqueue(testPicture(21)));
        f.worker.setDepth(0);
        QVERIFY(!f.worker.enqueue(testPicture(21)));
    }

    void enqueue_acceptsAgainWhenOneIsTaken()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.work();
        QList<bool> answers;
        f.script->onEncode = [&](FakeVideoEncoder &) {
            if (answers.isEmpty()) // the first of twenty is with the encoder
                answers << f.worker.enqueue(testPicture(20)) << f.worker.enqueue(testPicture(21));
        };
        for (int i = 0; i < 20; ++i)
            QVERIFY(f.worker.enqueue(testPicture(i)));
        f.work();
        QCOMPARE(answers, (QList<bool> { true, false }));
        QTRY_VERIFY(f.calls().contains("encoder 1: encode(20)"));
        f.script->onEncode = nullptr;
    }

    void onlyTheFirstFrame_postsAnEvent()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.work();
        EventCounter events(&f.worker, 1000);
        for (int i = 0; i < 5; ++i)
            QVERIFY(f.worker.enqueue(testPicture(i)));
        f.work();
        QCOMPARE(events.count, 1);
        QVERIFY(f.worker.enqueue(testPicture(5)));
        f.work();
        QCOMPARE(events.count, 2);
        QCOMPARE(f.calls().filter("encode(").size(), 6);
    }

    void framesBeforeAnyStart_areDropped()
    {
        EncodeWorkerFixture f;
        const MessageLog messages;
        const auto track = std::make_shared<BufferTrack>();
        QVERIFY(f.worker.enqueue(trackedPicture(track, 1)));
        QVERIFY(f.worker.enqueue(trackedPicture(track, 2)));
        f.work();
        const QStringList dropped = messages.messages();
        QCOMPARE(dropped.size(), 2);
        for (const QString &message : dropped)
            QVERIFY2(message.startsWith(Decoding + "Dropping frame QVideoFrame(QSize(64, 48)"),
                     qPrintable(message));
        QCOMPARE(track->buffers.load(), 0);
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void rejectedFrame_isReportedAndTheNextIsTried()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.worker.enqueue(testPicture(0));
        f.work();
        const MessageLog messages;
        f.script->encodeFails = true;
        f.worker.enqueue(testPicture(1));
        f.worker.enqueue(testPicture(2));
        f.work();
        QCOMPARE(f.recorder.errors, (QStringList { "4 Encoder error", "4 Encoder error" }));
        const QStringList warnings = messages.messages("warning");
        QCOMPARE(warnings.size(), 2);
        QVERIFY(warnings.first().startsWith(Decoding +
                                            "The encoder rejected the frame QVideoFrame(QSize("));
        // The error comes before the warning
        QCOMPARE(messages.messages().first(),
                 QString("critical veltra.palaver.encoder.ocelle: QPVEncoder::EncoderError "
                         "\"Encoder error\""));
        f.script->encodeFails = false;
        f.worker.enqueue(testPicture(3));
        f.work();
        QCOMPARE(f.calls().last(), QString("encoder 1: encode(3)"));
    }

    void failedConfiguration_isReportedForEachFrame()
    {
        EncodeWorkerFixture f;
        f.script->initializeFails = true;
        f.startWorker();
        f.worker.enqueue(testPicture(1));
        f.worker.enqueue(testPicture(2));
        f.work();
        QCOMPARE(f.recorder.errors, (QStringList { "4 Encoder error", "4 Encoder error" }));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        f.script->initializeFails = false;
        f.worker.enqueue(testPicture(3));
        f.work();
        QCOMPARE(int(f.worker.status()), Active);
    }

    void framesThatKeepComing_doNotHoldUpSettingsAndRequests()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.work();
        qint64 time = 0;
        f.script->onEncode = [&](FakeVideoEncoder &) {
            if (time < 200)
                f.worker.enqueue(testPicture(++time)); // the queue is never empty
            if (time == 5)
                f.worker.changeSettings(encoderSettings(2000));
            if (time == 10)
                f.startWorker();
        };
        f.worker.enqueue(testPicture(0));
        QTRY_VERIFY(f.calls().contains("encoder 2: encode(200)"));
        QVERIFY(f.calls().contains("encoder 1: setBitrate(2000)"));
        QVERIFY(f.calls().filter("encoder 1: encode(").size() < 20);
        QCOMPARE(f.calls().filter("encode(").size(), 201); // none lost on the way
        f.script->onEncode = nullptr;
    }

    void setThreshold_asksForDataWhenTheQueueIsShorter()
    {
        EncodeWorkerFixture f;
        f.worker.enqueue(testPicture(1));
        f.worker.enqueue(testPicture(2));
        f.worker.setThreshold(2);
        QCOMPARE(f.hints, QList<unsigned int>());
        f.worker.setThreshold(5);
        QCOMPARE(f.worker.threshold(), 5);
        QCOMPARE(f.hints, QList<unsigned int> { 18 });
        f.worker.setDepth(1); // shorter than what is queued: there is no room at all
        f.worker.setThreshold(6);
        QCOMPARE(f.hints, (QList<unsigned int> { 18, 0 }));
    }

    void needData_isEmittedEachTimeTheQueueCrossesTheThreshold()
    {
        EncodeWorkerFixture f;
        for (int i = 0; i < 5; ++i)
            f.worker.enqueue(testPicture(i));
        f.worker.setThreshold(5);
        QCOMPARE(f.hints, QList<unsigned int>());
        f.work(); // takes five, of which the first goes below five
        QCOMPARE(f.hints, QList<unsigned int> { 16 });
        for (int i = 0; i < 6; ++i)
            f.worker.enqueue(testPicture(i));
        f.work();
        QCOMPARE(f.hints, (QList<unsigned int> { 16, 16 }));
    }

    void needData_neverComesWithTheThresholdZero()
    {
        EncodeWorkerFixture f;
        f.worker.setThreshold(0);
        for (int i = 0; i < 5; ++i)
            f.worker.enqueue(testPicture(i));
        f.work();
        QCOMPARE(f.hints, QList<unsigned int>());
    }

    void slotOfNeedData_mayEnqueue()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.work();
        int more = 3;
        connect(&f.worker, &OcelleEncodeWorker::needData, [&] {
            if (more-- > 0)
                QVERIFY(f.worker.enqueue(testPicture(100 + more)));
        });
        f.worker.setThreshold(1);
        QTRY_COMPARE(f.calls().filter("encode(").size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestEncodeWorkerQueue)
#include "tst_ocelleencodeworkerqueue.moc"

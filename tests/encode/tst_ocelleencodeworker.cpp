// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encodeworkerfixture.h"
#include "librarythread.h"
#include "testpicture.h"

#include <QThread>
#include <QtTest>

#include <memory>
#include <vector>

using namespace Statuses;

/*! Starting and stopping. */
class TestEncodeWorker : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasTheDefaults()
    {
        EncodeWorkerFixture f;
        QCOMPARE(f.worker.parent(), nullptr);
        QCOMPARE(f.worker.depth(), 20);
        QCOMPARE(f.worker.threshold(), 0);
        QVERIFY(!f.worker.running());
        QCOMPARE(int(f.worker.status()), Unloaded);
        const QMetaObject *meta = f.worker.metaObject();
        for (const char *method : { "statusChanged(QPVEncoder::Status)", "needData(uint)",
                                    "onStatusChanged(QPVEncoder::Status)", "applyState()" })
            QVERIFY2(meta->indexOfMethod(QMetaObject::normalizedSignature(method)) >= 0, method);
        QVERIFY(QMetaType::type("QPVEncoder::Status") != QMetaType::UnknownType);
    }

    void start_takesEffectOnTheWorkersThread()
    {
        EncodeWorkerFixture f;
        QVERIFY(f.startWorker());
        QVERIFY(f.worker.running());
        QCOMPARE(int(f.worker.status()), Unloaded);
        f.work();
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        QCOMPARE(int(f.worker.status()), Starting);
        QCOMPARE(f.calls(), QStringList());
    }

    void start_encodesWhatIsQueuedAlready()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        QVERIFY(f.worker.enqueue(testPicture(1)));
        QVERIFY(f.worker.enqueue(testPicture(2)));
        f.work();
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting, Active }));
        QCOMPARE(f.calls().mid(4),
                 (QStringList { "encoder 1: encode(1)", "encoder 1: encode(2)" }));
    }

    void startOfNothing_isAnErrorOnce()
    {
        EncodeWorkerFixture f;
        QVERIFY(f.worker.start(nullptr, encoderSettings()));
        f.work();
        f.work();
        QCOMPARE(f.recorder.errors, QStringList { "4 Encoder error" });
        QCOMPARE(f.statuses, QList<int>());
        QVERIFY(f.worker.running()); // the application decides whether to stop
        f.startWorker();
        f.work();
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
    }

    void requestWithoutAnEncoder_isAnError()
    {
        EncodeWorkerFixture f;
        f.worker.requestState(true);
        f.work();
        QCOMPARE(f.recorder.errors, QStringList { "4 Encoder error" });
    }

    void flush_dropsWhatIsQueuedAndRefusesMore()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.worker.enqueue(testPicture(0));
        f.work();
        CallLog::instance().clear();
        const auto track = std::make_shared<BufferTrack>();
        for (int i = 1; i < 5; ++i)
            QVERIFY(f.worker.enqueue(trackedPicture(track, i)));
        f.worker.flush();
        QVERIFY(!f.worker.running());
        QVERIFY(!f.worker.enqueue(testPicture(5)));
        f.work();
        QCOMPARE(f.calls(), QStringList { "encoder 1: destroyed" });
        QCOMPARE(f.statuses.mid(3), (QList<int> { Stopping, Unloaded }));
        QCOMPARE(track->buffers.load(), 0);
        QVERIFY(!f.worker.enqueue(testPicture(6))); // until the next start
        f.startWorker();
        f.work();
        QVERIFY(f.worker.enqueue(testPicture(7)));
        f.work();
        QCOMPARE(f.calls().last(), QString("encoder 2: encode(7)"));
    }

    void flushBeforeTheStartsTurn_leavesNothingBehind()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        const auto track = std::make_shared<BufferTrack>();
        f.worker.enqueue(trackedPicture(track, 1));
        f.worker.flush();
        f.work();
        QCOMPARE(f.statuses, QList<int>());
        QCOMPARE(f.calls(), QStringList { "encoder 1: destroyed" }); // others may want one
        QCOMPARE(track->buffers.load(), 0);
        f.startWorker();
        f.work();
        QCOMPARE(f.calls().filter("encode("), QStringList());
        f.worker.flush();
        f.worker.enqueue(trackedPicture(track, 2));
        f.startWorker(); // before the worker has seen the flush
        f.work();
        QCOMPARE(f.calls().filter("encode("), QStringList());
        QCOMPARE(int(f.worker.status()), Starting);
    }

    void drain_encodesWhatIsQueuedFirst()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.worker.enqueue(testPicture(1));
        f.worker.enqueue(testPicture(2));
        f.worker.drain();
        QVERIFY(f.worker.enqueue(testPicture(3))); // still taken
        f.work();
        QCOMPARE(f.calls().mid(4),
                 (QStringList { "encoder 1: encode(1)", "encoder 1: encode(2)",
                                "encoder 1: encode(3)", "encoder 1: destroyed" }));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting, Active, Stopping, Unloaded }));
    }

    void flushDuringADrain_dropsTheRest()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.script->onEncode = [&f](FakeVideoEncoder &) { f.worker.flush(); };
        const auto track = std::make_shared<BufferTrack>();
        for (int i = 1; i < 4; ++i)
            f.worker.enqueue(trackedPicture(track, i));
        f.worker.drain();
        f.work();
        QCOMPARE(f.calls().filter("encode("), QStringList { "encoder 1: encode(1)" });
        QCOMPARE(track->buffers.load(), 0);
        f.script->onEncode = nullptr;
        f.startWorker();
        f.work();
        QCOMPARE(f.calls().filter("encode(").size(), 1);
    }

    void secondStart_drainsTheFirstEncoderBeforeItLoadsTheNext()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.worker.enqueue(testPicture(1));
        f.startWorker();
        f.work();
        QCOMPARE(f.calls().mid(4),
                 (QStringList { "encoder 1: encode(1)", "encoder 1: destroyed" }));
        QCOMPARE(f.statuses,
                 (QList<int> { Loaded, Starting, Active, Stopping, Unloaded, Loaded, Starting }));
        f.worker.enqueue(testPicture(2));
        f.work();
        QCOMPARE(f.calls().last(), QString("encoder 2: encode(2)"));
    }

    void startBeforeTheFirstStartsTurn_replacesIt()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.startWorker();
        f.work();
        QCOMPARE(f.calls(), QStringList { "encoder 1: destroyed" });
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        f.worker.enqueue(testPicture(2));
        f.work();
        QCOMPARE(f.calls().last(), QString("encoder 2: encode(2)"));
    }

    void onStatusChanged_passesEveryStatusOn()
    {
        EncodeWorkerFixture f;
        for (int status = 0; status <= 6; ++status)
            f.worker.onStatusChanged(static_cast<QPVEncoder::Status>(status));
        QCOMPARE(f.statuses, (QList<int> { 0, 1, 2, 3, 4, 5, 6 }));
    }

    void eos_doesNothing()
    {
        EncodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.worker.eos();
        f.work();
        QVERIFY(f.worker.running());
        QCOMPARE(int(f.worker.status()), Starting);
    }

    void eventsOfOtherTypes_goToTheBaseClass()
    {
        EncodeWorkerFixture f;
        QEvent event(QEvent::Close); // QObject knows nothing of it
        QVERIFY(!QCoreApplication::sendEvent(&f.worker, &event));
        QEvent known(static_cast<QEvent::Type>(1000));
        QVERIFY(QCoreApplication::sendEvent(&f.worker, &known));
    }

    void destruction_letsGoOfEverything()
    {
        const auto track = std::make_shared<BufferTrack>();
        {
            EncodeWorkerFixture f;
            f.startWorker();
            f.work();
            f.startWorker();
            f.worker.enqueue(trackedPicture(track));
            CallLog::instance().clear();
        }
        const QStringList calls = CallLog::instance().texts("encoder");
        QVERIFY(calls.contains("encoder 1: destroyed") && calls.contains("encoder 2: destroyed"));
        QCOMPARE(track->buffers.load(), 0);
    }

    void requestsFromManyThreads_endInTheLastState()
    {
        EncodeWorkerFixture f;
        QThread thread;
        f.worker.disconnect(); // the fixture records on one thread
        f.worker.moveToThread(&thread);
        thread.start();
        {
            std::vector<std::unique_ptr<LibraryThread>> threads;
            for (int i = 0; i < 3; ++i) {
                threads.push_back(std::make_unique<LibraryThread>("Requests", [&f, i] {
                    for (int round = 0; round < 100; ++round) {
                        f.worker.enqueue(testPicture(round));
                        f.worker.changeSettings(encoderSettings(1000 + round));
                        f.worker.setThreshold(round % 4);
                        if (i == 0)
                            f.worker.start(std::make_shared<FakeVideoEncoder>(round, f.script),
                                           encoderSettings());
                        if (i == 1 && round % 3 == 0)
                            f.worker.flush();
                        if (i == 2 && round % 5 == 0)
                            f.worker.drain();
                    }
                }));
            }
        }
        f.worker.flush();
        QTRY_COMPARE(int(f.worker.status()), Unloaded);
        QTRY_COMPARE(CallLog::instance().texts().filter(": destroyed").size(), 100);
        thread.quit();
        QVERIFY(thread.wait(10000));
    }
};

QTEST_GUILESS_MAIN(TestEncodeWorker)
#include "tst_ocelleencodeworker.moc"

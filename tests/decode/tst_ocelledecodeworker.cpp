// SPDX-License-Identifier: BSD-3-Clause
#include "decodeworkerfixture.h"
#include "eventcounter.h"
#include "messagelog.h"

#include <QtTest>

using namespace Statuses;

namespace {

const QString Decoding("warning veltra.palaver.decoder.ocelle: ");

} // namespace

class TestDecodeWorker : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasTheDefaults()
    {
        DecodeWorkerFixture f;
        QVERIFY(!f.worker.parent());
        QCOMPARE(f.worker.depth(), 20);
        QCOMPARE(f.worker.threshold(), 0);
        QVERIFY(!f.worker.running());
        QCOMPARE(int(f.worker.status()), Unloaded);
        const QMetaObject *meta = f.worker.metaObject();
        QStringList methods;
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            methods.append(meta->method(i).methodSignature());
        QCOMPARE(methods, (QStringList { "statusChanged(QPVDecoder::Status)", "needData(uint)",
                                         "onStatusChanged(QPVDecoder::Status)", "applyState()" }));
    }

    void start_takesEffectOnTheWorkersThread()
    {
        DecodeWorkerFixture f;
        QVERIFY(f.startWorker());
        QVERIFY(f.worker.running());
        QCOMPARE(int(f.worker.status()), Unloaded);
        QCOMPARE(f.calls(), QStringList());
        f.work();
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        QCOMPARE(f.calls(), QStringList("decoder 1: initialize"));
    }

    void start_decodesWhatIsQueuedAlready()
    {
        DecodeWorkerFixture f;
        f.enqueue(2); // before anything is asked for
        f.startWorker();
        f.enqueue(1, 3);
        f.applyState();
        f.work();
        QCOMPARE(f.calls(), (QStringList { "decoder 1: initialize", "decoder 1: decode(1)",
                                           "decoder 1: decode(2)", "decoder 1: decode(3)" }));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting, Active }));
    }

    void start_postsAnEventOnceTheDecoderRuns()
    {
        DecodeWorkerFixture f;
        EventCounter events(&f.worker, QEvent::User);
        f.startWorker();
        f.work();
        QCOMPARE(events.count, 1); // for what may be queued
        f.worker.flush();
        f.script->initializeFails = true;
        f.startWorker();
        f.work();
        QCOMPARE(f.statuses.count(Loaded), 2);
        QCOMPARE(events.count, 1); // nobody to decode it
    }

    void requestState_isTheLastWordOnWhetherToRun()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.worker.requestState(false);
        QVERIFY(!f.worker.running());
        f.work();
        QCOMPARE(f.calls(), QStringList());
        f.worker.requestState(true);
        QVERIFY(f.worker.running());
        QCOMPARE(f.calls(), QStringList()); // the worker's thread does it
        f.work();
        QCOMPARE(f.calls(), QStringList("decoder 1: initialize")); // what was handed over before
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void requestState_withoutADecoder_isAnError()
    {
        DecodeWorkerFixture f;
        f.worker.requestState(true);
        QVERIFY(f.worker.running());
        f.work();
        QCOMPARE(f.recorder.errors, QStringList("3 Decoder error"));
        QCOMPARE(f.statuses, QList<int>());
    }

    void startOnTheWorkersThread_takesWhatIsPendingAtOnce()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.worker.kill(); // has frames refused
        QVERIFY(!f.worker.enqueue(testFrame()));
        EventCounter events(&f.worker, QEvent::User);
        f.worker.start();
        QCOMPARE(f.calls(), QStringList("decoder 1: initialize"));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        QCOMPARE(f.recorder.errors, QStringList());
        QCOMPARE(events.count, 0);
        QCoreApplication::sendPostedEvents(&f.worker, QEvent::User);
        QCOMPARE(events.count, 1);
        QVERIFY(f.worker.enqueue(testFrame()));
        f.worker.start(); // nothing is pending any more
        QCOMPARE(f.recorder.errors, QStringList("3 Decoder error"));
        QCOMPARE(f.statuses.mid(2), QList<int> { Unloaded });
        QCOMPARE(f.calls().size(), 1);
    }

    void startOfNothing_isAnError()
    {
        DecodeWorkerFixture f;
        QVERIFY(f.worker.start(nullptr, streamSettings()));
        f.work();
        QVERIFY(f.recorder.errors.contains("3 Decoder error"));
        QCOMPARE(f.statuses, QList<int>());
        QVERIFY(f.worker.running()); // the application decides whether to stop
        f.startWorker();
        f.work();
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
    }

    void startThatFails_isAnErrorAndMayBeTriedAgain()
    {
        DecodeWorkerFixture f;
        f.script->initializeFails = true;
        QVERIFY(f.startWorker());
        f.applyState();
        QCOMPARE(f.recorder.errors, QStringList("3 Decoder error"));
        QCOMPARE(f.statuses, QList<int> { Loaded });
        QVERIFY(f.worker.running());
        f.work(); // a second attempt has nothing to start with, and says so
        QCOMPARE(f.statuses, (QList<int> { Loaded, Unloaded }));
        QCOMPARE(QSet<QString>(f.recorder.errors.begin(), f.recorder.errors.end()),
                 QSet<QString> { "3 Decoder error" });
        f.script->initializeFails = false;
        f.startWorker();
        f.work();
        QCOMPARE(f.statuses.mid(2), (QList<int> { Loaded, Starting }));
        QVERIFY(f.calls().contains("decoder 1: destroyed"));
    }

    void decoderThatIsNotTaken_goesBeforeTheErrorIsTold()
    {
        DecodeWorkerFixture f;
        f.script->initializeFails = true;
        f.startWorker();
        f.applyState(); // loads the first, which stays
        CallLog::instance().clear();
        f.startWorker();
        f.applyState();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "decoder 2: destroyed", "control: error(3 Decoder error)" }));
    }

    void flush_discardsWhatIsQueuedAndRefusesMore()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.enqueue(5);
        f.worker.flush();
        QVERIFY(!f.worker.running());
        QVERIFY(!f.worker.enqueue(testFrame(6)));
        f.work();
        QCOMPARE(f.calls(), (QStringList { "decoder 1: initialize", "decoder 1: flush()",
                                           "decoder 1: stop()", "decoder 1: destroyed" }));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting, Stopping, Unloaded }));
        QVERIFY(!f.worker.dequeue().isValid());
        QVERIFY(f.worker.enqueue(testFrame(7)));
    }

    void drain_decodesAFullQueueFirst()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.enqueue(20);
        f.worker.drain();
        QVERIFY(!f.worker.running());
        QVERIFY(!f.worker.enqueue(testFrame(21)));
        f.applyState();
        QCOMPARE(f.calls().filter("decode(").size(), 20);
        QCOMPARE(f.calls().mid(20), (QStringList { "decoder 1: decode(20)", "decoder 1: drain()",
                                                   "decoder 1: stop()", "decoder 1: destroyed" }));
        f.work();
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting, Active, Stopping, Unloaded }));
    }

    void flushBeforeTheWorkerCameToStart_decodesNothing()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.enqueue(3);
        f.worker.flush();
        f.work();
        QCOMPARE(f.calls(), QStringList());
        QCOMPARE(f.statuses, QList<int>());
        f.startWorker();
        f.work();
        QCOMPARE(f.calls(), (QStringList { "decoder 1: destroyed", "decoder 2: initialize" }));
    }

    void startFlushStart_inOneGo_decodesNothingOfTheFirst()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.enqueue(3);
        f.worker.flush();
        f.startWorker();
        QVERIFY(!f.worker.enqueue(testFrame(4))); // the flush is still to come
        f.work();
        QCOMPARE(f.calls(), (QStringList { "decoder 1: destroyed", "decoder 2: initialize" }));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        f.enqueue(1, 5);
        f.work();
        QCOMPARE(f.calls().last(), QString("decoder 2: decode(5)"));
    }

    void anotherStart_endsTheOneBefore()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.enqueue(2);
        f.startWorker();
        f.work();
        QCOMPARE(f.calls(),
                 (QStringList { "decoder 1: initialize", "decoder 1: decode(1)",
                                "decoder 1: decode(2)", "decoder 1: drain()", "decoder 1: stop()",
                                "decoder 1: destroyed", "decoder 2: initialize" }));
        QCOMPARE(f.statuses,
                 (QList<int> { Loaded, Starting, Active, Stopping, Unloaded, Loaded, Starting }));
    }

    void loadedAndStopping_areOnlyPassedOn_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("calls");
        for (const int status : { 0, 2, 3, Loaded, 5, Stopping })
            QTest::newRow(qPrintable(QString::number(status))) << status << 0;
        for (const int status : { Unloaded, Starting, Active })
            QTest::newRow(qPrintable(QString::number(status))) << status << 1;
    }

    void loadedAndStopping_areOnlyPassedOn()
    {
        QFETCH(int, status);
        QFETCH(int, calls);
        DecodeWorkerFixture f;
        f.work();
        EventCounter events(&f.worker, QEvent::MetaCall);
        QMetaObject::invokeMethod(&f.worker, "onStatusChanged", Qt::DirectConnection,
                                  Q_ARG(QPVDecoder::Status, QPVDecoder::Status(status)));
        f.work();
        QCOMPARE(events.count, calls);
        QCOMPARE(f.statuses, QList<int> { status });
    }

    void kill_dropsAtOnceAndTakesNoMore()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        f.enqueue(2);
        f.worker.silence();
        f.worker.kill();
        QCOMPARE(f.calls(), (QStringList { "decoder 1: initialize", "decoder 1: destroyed" }));
        QVERIFY(!f.worker.enqueue(testFrame(3)));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        QCOMPARE(int(f.worker.status()), Unloaded);
        f.worker.setThreshold(9);
        QCOMPARE(f.hints, QList<unsigned int>());
    }

    void eos_onlyWarns()
    {
        DecodeWorkerFixture f;
        f.startWorker();
        f.work();
        MessageLog messages;
        f.worker.eos();
        f.work();
        QCOMPARE(messages.messages(), QStringList(Decoding + "EOS is not handled yet."));
        QCOMPARE(f.statuses.last(), Starting);
    }
};

QTEST_GUILESS_MAIN(TestDecodeWorker)
#include "tst_ocelledecodeworker.moc"

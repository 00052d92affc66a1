// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "codecworkerfixture.h"
#include "decodeservicefixture.h"
#include "eventcounter.h"
#include "messagelog.h"
#include "ocelledecodeworker.h"

#include <QtTest>

#include <memory>

using namespace Statuses;

namespace {

const QString Decoding("warning veltra.palaver.decoder.ocelle: ");

/*! A worker that the test drives. Its decoders are "decoder 1" and so on. */
class WorkerFixture : public CodecWorkerFixture<DecodeServiceFixture, OcelleDecodeWorker>
{
public:
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> makeDecoder()
    {
        return std::make_shared<FakeVideoDecoder>(nextNumber(), script);
    }
    bool startWorker() { return worker.start(makeDecoder(), streamSettings()); }
    /*! Does all there is to do, what comes up meanwhile too. */
    void work()
    {
        for (int round = 0; round < 3; ++round)
            QCoreApplication::processEvents();
    }
    void applyState() { QMetaObject::invokeMethod(&worker, "applyState"); } // at once
    void enqueue(int count, quint64 first = 1)
    {
        for (int i = 0; i < count; ++i)
            QVERIFY(worker.enqueue(testFrame(first + static_cast<quint64>(i))));
    }
    /*! Calls to the decoders, short of their settings. */
    QStringList calls() const
    {
        QStringList calls = CallLog::instance().texts("decoder");
        return calls.replaceInStrings(QRegularExpression(R"(\(codec.*\)|, type 0, xy)"), "");
    }
};

} // namespace

class TestDecodeWorker : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasTheDefaults()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
        f.enqueue(2); // before anything is asked for
        f.startWorker();
        f.enqueue(1, 3);
        f.applyState();
        f.work();
        QCOMPARE(f.calls(), (QStringList { "decoder 1: initialize", "decoder 1: decode(1)",
                                           "decoder 1: decode(2)", "decoder 1: decode(3)" }));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting, Active }));
    }

    void startOfNothing_isAnError()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
        f.script->initializeFails = true;
        f.startWorker();
        f.applyState(); // loads the first, which stays
        CallLog::instance().clear();
        f.startWorker();
        f.applyState();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "decoder 2: destroyed", "control: error(3 Decoder error)" }));
    }

    void enqueue_refusesWhatIsBeyondTheDepth()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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

    void flush_discardsWhatIsQueuedAndRefusesMore()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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

    void needData_comesWhenTheQueueFallsBelowTheMark()
    {
        WorkerFixture f;
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
        WorkerFixture f;
        f.enqueue(2);
        f.worker.setThreshold(2);
        QCOMPARE(f.hints, QList<unsigned int>());
        f.worker.setThreshold(5);
        QCOMPARE(f.hints, QList<unsigned int> { 18 });
    }

    void needData_hasNoRoomWhereTheDepthIsLessThanTheQueue()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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

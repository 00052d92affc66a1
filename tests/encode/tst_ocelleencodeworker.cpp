#include "calllog.h"
#include "encodeservicefixture.h"
#include "librarythread.h"
#include "messagelog.h"
#include "ocelleencodeworker.h"
#include "testpicture.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace Statuses;

namespace {

const QString Decoding("warning veltra.palaver.decoder.ocelle: ");

/*!
 * A worker on the test's own thread, which therefore decides when it works, beside a service's
 * session, which reports its errors. Its encoders are "encoder 1" and so on.
 */
class WorkerFixture : public EncodeServiceFixture
{
public:
    WorkerFixture()
        : worker(session())
    {
        CallLog::instance().clear();
        QObject::connect(&worker, &OcelleEncodeWorker::statusChanged,
                         [this](QPVEncoder::Status status) { statuses.append(status); });
        QObject::connect(&worker, &OcelleEncodeWorker::needData,
                         [this](unsigned int hint) { hints.append(hint); });
    }

    std::shared_ptr<Veltra::Ocelle::VideoEncoder> makeEncoder()
    {
        return std::make_shared<FakeVideoEncoder>(++m_made, script);
    }
    bool startWorker() { return worker.start(makeEncoder(), encoderSettings()); }
    void work() { QCoreApplication::processEvents(); }
    QStringList calls() const { return CallLog::instance().texts("encoder"); }

    OcelleEncodeWorker worker;
    QList<int> statuses;
    QList<unsigned int> hints;

private:
    int m_made = 0;
};

/*! How many events of \a type an object gets. */
class EventCounter : public QObject
{
public:
    EventCounter(QObject *watched, int type)
        : m_type(type)
    {
        watched->installEventFilter(this);
    }
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == m_type;
        return false;
    }
    int count = 0;

private:
    const int m_type;
};

} // namespace

class TestEncodeWorker : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasTheDefaults()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
        f.worker.requestState(true);
        f.work();
        QCOMPARE(f.recorder.errors, QStringList { "4 Encoder error" });
    }

    void enqueue_refusesWhatIsBeyondTheDepth()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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

    void flush_dropsWhatIsQueuedAndRefusesMore()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
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

    void framesThatKeepComing_doNotHoldUpSettingsAndRequests()
    {
        WorkerFixture f;
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

    void flushDuringADrain_dropsTheRest()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
        f.startWorker();
        f.startWorker();
        f.work();
        QCOMPARE(f.calls(), QStringList { "encoder 1: destroyed" });
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        f.worker.enqueue(testPicture(2));
        f.work();
        QCOMPARE(f.calls().last(), QString("encoder 2: encode(2)"));
    }

    void changeSettings_whileNotStarted_changesNothing()
    {
        WorkerFixture f;
        EventCounter events(&f.worker, 1001);
        QVERIFY(f.worker.changeSettings(encoderSettings(1)));
        f.startWorker();
        QVERIFY(f.worker.changeSettings(encoderSettings(2)));
        f.worker.enqueue(testPicture(0));
        f.work();
        QCOMPARE(events.count, 0);
        QVERIFY(f.calls().contains("encoder 1: initialize(codec 3, 64x48, stride 64, lines 48, "
                                   "500000 bit/s, 25 fps)"));
    }

    void changeSettings_reachesAStartingAndAnActiveEncoderByEvent()
    {
        WorkerFixture f;
        EventCounter events(&f.worker, 1001);
        f.startWorker();
        f.work();
        QVERIFY(f.worker.changeSettings(encoderSettings(1000)));
        f.work();
        QCOMPARE(events.count, 1);
        QCOMPARE(f.calls(), QStringList());
        f.worker.enqueue(testPicture(0));
        f.work();
        QVERIFY(f.calls().filter("1000 bit/s").size() == 1);
        QVERIFY(f.worker.changeSettings(encoderSettings(2000)));
        f.work();
        QCOMPARE(events.count, 2);
        QCOMPARE(f.calls().last(), QString("encoder 1: setBitrate(2000)"));
    }

    void changeSettings_ofAnEncoderThatIsBeingStopped_isNoError()
    {
        WorkerFixture f;
        f.startWorker();
        f.worker.enqueue(testPicture(0));
        f.work();
        f.worker.flush();
        QVERIFY(f.worker.changeSettings(encoderSettings(2000)));
        f.work();
        QCOMPARE(f.recorder.errors, QStringList());
        QCOMPARE(f.calls().filter("setBitrate"), QStringList());
    }

    void changedSettings_ofAnEncoderThatHasGone_areNotTheNextOnes()
    {
        WorkerFixture f;
        bool changed = false;
        connect(&f.worker, &OcelleEncodeWorker::statusChanged, [&](QPVEncoder::Status status) {
            if (status != Starting || changed)
                return;
            // The start's second step is queued already, ahead of the settings
            changed = true;
            QVERIFY(f.worker.changeSettings(encoderSettings(1111)));
            f.worker.flush();
        });
        f.startWorker();
        f.work();
        QVERIFY(changed);
        QCOMPARE(f.recorder.errors, QStringList());
        changed = false;
        f.startWorker();
        connect(&f.worker, &OcelleEncodeWorker::statusChanged, [&](QPVEncoder::Status status) {
            if (status == Stopping && !f.worker.running())
                f.worker.start(f.makeEncoder(), encoderSettings(2222));
        });
        QTRY_VERIFY(f.statuses.count(Starting) >= 3);
        f.worker.enqueue(testPicture(0));
        QTRY_COMPARE(f.calls().filter("bit/s").size(), 1);
        QVERIFY(f.calls().filter("bit/s").first().contains("2222 bit/s"));
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void settingsEvent_thatTheEncoderRefuses_isAnError()
    {
        WorkerFixture f;
        QCoreApplication::postEvent(
                &f.worker, new OcelleEncodeWorker::ChangeSettingsEvent(encoderSettings(1)));
        f.work();
        QCOMPARE(f.recorder.errors, QStringList { "4 Encoder error" });
    }

    void changeStartSettings_isForAStartThatIsStillToCome()
    {
        WorkerFixture f;
        QVERIFY(!f.worker.changeStartSettings(encoderSettings(1)));
        f.startWorker();
        QVideoEncoderSettings settings = encoderSettings(2000);
        settings.setCodec("video/vp8"); // the encoder is one for H.264 already
        QVERIFY(f.worker.changeStartSettings(settings));
        f.worker.enqueue(testPicture(0));
        f.work();
        QVERIFY(f.calls().contains("encoder 1: initialize(codec 3, 64x48, stride 64, lines 48, "
                                   "2000 bit/s, 25 fps)"));
        QVERIFY(!f.worker.changeStartSettings(encoderSettings(3)));
        f.worker.flush();
        QVERIFY(!f.worker.changeStartSettings(encoderSettings(4)));
    }

    void setThreshold_asksForDataWhenTheQueueIsShorter()
    {
        WorkerFixture f;
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
        WorkerFixture f;
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
        WorkerFixture f;
        f.worker.setThreshold(0);
        for (int i = 0; i < 5; ++i)
            f.worker.enqueue(testPicture(i));
        f.work();
        QCOMPARE(f.hints, QList<unsigned int>());
    }

    void slotOfNeedData_mayEnqueue()
    {
        WorkerFixture f;
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

    void onStatusChanged_passesEveryStatusOn()
    {
        WorkerFixture f;
        for (int status = 0; status <= 6; ++status)
            f.worker.onStatusChanged(static_cast<QPVEncoder::Status>(status));
        QCOMPARE(f.statuses, (QList<int> { 0, 1, 2, 3, 4, 5, 6 }));
    }

    void eos_doesNothing()
    {
        WorkerFixture f;
        f.startWorker();
        f.work();
        f.worker.eos();
        f.work();
        QVERIFY(f.worker.running());
        QCOMPARE(int(f.worker.status()), Starting);
    }

    void eventsOfOtherTypes_goToTheBaseClass()
    {
        WorkerFixture f;
        QEvent event(QEvent::Close); // QObject knows nothing of it
        QVERIFY(!QCoreApplication::sendEvent(&f.worker, &event));
        QEvent known(static_cast<QEvent::Type>(1000));
        QVERIFY(QCoreApplication::sendEvent(&f.worker, &known));
    }

    void destruction_letsGoOfEverything()
    {
        const auto track = std::make_shared<BufferTrack>();
        {
            WorkerFixture f;
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
        WorkerFixture f;
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

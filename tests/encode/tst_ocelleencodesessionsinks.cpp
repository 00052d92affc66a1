// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encodeservicefixture.h"
#include "librarythread.h"
#include "messagelog.h"
#include "recordingsink.h"
#include "testpicture.h"

#include <QtTest>

#include <atomic>

using namespace Statuses;

namespace {

const QString Format("(video/h264 64x48@25)");

QStringList calls(const QString &object = QString())
{
    return CallLog::instance().texts(object);
}

/*! Two sinks that outlive the service. */
class SinksFixture
{
public:
    RecordingSink sink;
    RecordingSink other { "other" };
    OtherSink otherKind;
    EncodeServiceFixture service;
    EncodeServiceFixture *operator->() { return &service; }

    bool deliver(unsigned long time)
    {
        bool delivered = false;
        const auto encoder = service.platform.codecs.encoder();
        LibraryThread::run("FakeEncoder", [&] { delivered = encoder->deliver("x", time); });
        return delivered;
    }
};

} // namespace

class TestEncodeSessionSinks : public QObject
{
    Q_OBJECT
private slots:
    void sink_isAskedAtStartAndStartedWithTheEncoder()
    {
        SinksFixture f;
        QVERIFY(f->source->addSink(&f.sink));
        QCOMPARE(calls("sink"), QStringList());
        QVERIFY(f->control->start(surfaceFormat()));
        QCOMPARE(calls("sink"), QStringList { "sink: isFormatSupported" + Format });
        QVERIFY(f->waitForStatus(Starting));
        QCOMPARE(calls("sink").mid(1),
                 (QStringList { "sink: isFormatSupported" + Format, "sink: start" + Format }));
        QVERIFY(f->control->encode(testPicture()));
        QVERIFY(f->waitForStatus(Active));
        QVERIFY(f.deliver(5));
        f->control->stop();
        QVERIFY(f->waitForStatus(Unloaded));
        QCOMPARE(calls("sink").mid(3),
                 (QStringList { "sink: present(5)", "sink: finish()", "sink: stop()" }));
        QTRY_COMPARE(f->recorder.frames().size(), 1);
    }

    void frame_goesToTheSinkBeforeTheSignal()
    {
        SinksFixture f;
        f->source->addSink(&f.sink);
        QVERIFY(f->activate());
        CallLog::instance().clear();
        QVERIFY(f.deliver(5));
        QCOMPARE(calls(), (QStringList { "sink: present(5)", "control: encodedVideoFrame(5)" }));
    }

    void sinkIsFinished_beforeTheApplicationHears()
    {
        SinksFixture f;
        f->source->addSink(&f.sink);
        QVERIFY(f->activate());
        CallLog::instance().clear();
        f->control->stop();
        QVERIFY(f->waitForStatus(Unloaded));
        QCOMPARE(calls(),
                 (QStringList { "control: statusChanged(4)", "encoder 1: destroyed",
                                "sink: finish()", "sink: stop()", "control: statusChanged(1)" }));
    }

    void sinkThatRefusesTheFormat_isAFormatErrorAtStart()
    {
        SinksFixture f;
        f.sink.supportsFormat = false;
        QVERIFY(f->source->addSink(&f.sink));
        CallLog::instance().clear();
        QVERIFY(!f->control->start(surfaceFormat()));
        QCOMPARE(f->recorder.errors,
                 QStringList { "2 videosink does not accept encoded video format" });
        QCOMPARE(calls("codecs"), QStringList());
        QCOMPARE(f->settings->videoSettings().resolution(), QSize(64, 48)); // kept
    }

    void sinkThatDoesNotStart_isLoggedOnly_data()
    {
        QTest::addColumn<bool>("refusesFormat");
        QTest::newRow("format") << true;
        QTest::newRow("start") << false;
    }

    void sinkThatDoesNotStart_isLoggedOnly()
    {
        QFETCH(bool, refusesFormat);
        SinksFixture f;
        f->source->addSink(&f.sink);
        QVERIFY(f->control->start(surfaceFormat()));
        (refusesFormat ? f.sink.supportsFormat : f.sink.starts) = false;
        const MessageLog messages;
        QVERIFY(f->waitForStatus(Starting));
        QCOMPARE(messages.messages("critical"),
                 QStringList("critical veltra.palaver.encoder.ocelle: videosink does not start"));
        QCOMPARE(f->recorder.errors, QStringList());
        QCOMPARE(calls("sink").contains("sink: start" + Format), !refusesFormat);
    }

    void addSinkOfAnotherKind_leavesNone()
    {
        SinksFixture f;
        QVERIFY(!f->source->addSink(&f.otherKind));
        QVERIFY(f->source->addSink(&f.sink));
        QVERIFY(!f->source->addSink(&f.otherKind));
        QCOMPARE(calls("sink"), (QStringList { "sink: stop()", "sink: release()" }));
        QVERIFY(!f->source->removeSink(&f.sink));
        QVERIFY(!f->source->removeSink(&f.otherKind));
    }

    void addSinkOfNone_removesTheSink()
    {
        SinksFixture f;
        QVERIFY(!f->source->addSink(nullptr));
        QVERIFY(f->source->addSink(&f.sink));
        QVERIFY(!f->source->addSink(nullptr));
        QCOMPARE(calls("sink"), (QStringList { "sink: stop()", "sink: release()" }));
        QVERIFY(!f->source->removeSink(&f.sink));
    }

    void addSink_replacesAnotherOne()
    {
        SinksFixture f;
        QVERIFY(f->source->addSink(&f.sink));
        QVERIFY(f->source->addSink(&f.other));
        QCOMPARE(calls("sink"), (QStringList { "sink: stop()", "sink: release()" }));
        QVERIFY(f->source->addSink(&f.other)); // the same: no call
        QCOMPARE(calls("other"), QStringList());
    }

    void addSinkWhileActive_startsIt()
    {
        SinksFixture f;
        QVERIFY(f->activate());
        QVERIFY(f->source->addSink(&f.sink));
        QCOMPARE(calls("sink"),
                 (QStringList { "sink: isFormatSupported" + Format, "sink: start" + Format }));
        QVERIFY(f->source->addSink(&f.other));
        QCOMPARE(calls("sink").mid(2), (QStringList { "sink: stop()", "sink: release()" }));
        QCOMPARE(calls("other"),
                 (QStringList { "other: isFormatSupported" + Format, "other: start" + Format }));
        const QStringList started = calls("other");
        QVERIFY(f->source->addSink(&f.other)); // the same: once more
        QCOMPARE(calls("other"), started + started);
        QCOMPARE(f->recorder.errors, QStringList());
    }

    void addSinkWhileActive_thatDoesNotStart_isASinkErrorButAttached_data()
    {
        sinkThatDoesNotStart_isLoggedOnly_data();
    }

    void addSinkWhileActive_thatDoesNotStart_isASinkErrorButAttached()
    {
        QFETCH(bool, refusesFormat);
        SinksFixture f;
        QVERIFY(f->activate());
        (refusesFormat ? f.sink.supportsFormat : f.sink.starts) = false;
        QVERIFY(f->source->addSink(&f.sink));
        QCOMPARE(f->recorder.errors, QStringList { "3 Couldn't start videoSink" });
        QVERIFY(f->source->removeSink(&f.sink));
    }

    void addSinkWhileStarting_waitsForTheNextStart()
    {
        SinksFixture f;
        QVERIFY(f->start());
        QVERIFY(f->source->addSink(&f.sink));
        QVERIFY(f->control->encode(testPicture()));
        QVERIFY(f->waitForStatus(Active));
        QCOMPARE(calls("sink"), QStringList());
    }

    void removeSink_makesNoCallOnIt()
    {
        SinksFixture f;
        QVERIFY(!f->source->removeSink(&f.sink));
        QVERIFY(!f->source->removeSink(nullptr));
        QVERIFY(f->source->addSink(&f.sink));
        QVERIFY(!f->source->removeSink(&f.other));
        QVERIFY(f->source->removeSink(&f.sink));
        QVERIFY(!f->source->removeSink(&f.sink));
        QVERIFY(f->activate());
        QVERIFY(f.deliver(1));
        QCOMPARE(calls("sink"), QStringList());
        QTRY_COMPARE(f->recorder.frames().size(), 1);
    }

    void removeSink_waitsForAFrameThatIsBeingPresented()
    {
        SinksFixture f;
        f->source->addSink(&f.sink);
        QVERIFY(f->activate());
        Gate presenting;
        presenting.close();
        std::atomic<bool> presented { false };
        f.sink.onPresent = [&] {
            presenting.pass();
            presented = true;
        };
        const auto encoder = f->platform.codecs.encoder();
        LibraryThread library("FakeEncoder", [&] { encoder->deliver("x", 1); });
        QTRY_COMPARE(presenting.waiting(), 1);
        std::atomic<bool> presentedAtReturn { false };
        LibraryThread remover("Remover", [&] {
            f->source->removeSink(&f.sink);
            presentedAtReturn = presented.load();
        });
        presenting.open();
        remover.join();
        QVERIFY(presentedAtReturn);
        library.join();
    }

    void sinkMayUseTheControlsFromItsCalls_data()
    {
        QTest::addColumn<QString>("call");
        for (const char *call : { "format", "start", "present", "finish", "stop" })
            QTest::newRow(call) << QString(call);
    }

    void sinkMayUseTheControlsFromItsCalls()
    {
        QFETCH(QString, call);
        SinksFixture f;
        int round = 0;
        const auto useAll = [&] {
            if (round++ > 0)
                return;
            f->control->encode(testPicture(1));
            f->settings->setVideoSettings(encoderSettings(300000 + round));
            f->settings->videoSettings();
            f->control->status();
            f->source->removeSink(&f.other);
            f->source->addSink(&f.sink);
            f->session()->setError(QPVEncoder::NoError, QString());
        };
        if (call == "format")
            f.sink.onFormat = useAll;
        else if (call == "start")
            f.sink.onStart = useAll;
        else if (call == "present")
            f.sink.onPresent = useAll;
        else if (call == "finish")
            f.sink.onFinish = useAll;
        else
            f.sink.onStop = useAll;
        QVERIFY(f->source->addSink(&f.sink));
        QVERIFY(f->activate());
        QVERIFY(f.deliver(1));
        f->control->stop();
        QVERIFY(f->waitForStatus(Unloaded));
        QVERIFY(round > 0);
        QCOMPARE(f.sink.callsAtOnce.load(), 1);
    }

    void sinkMayStopAndRestartFromPresent()
    {
        SinksFixture f;
        f->source->addSink(&f.sink);
        QVERIFY(f->activate());
        f.sink.onPresent = [&] {
            f->control->stop();
            f->control->start(surfaceFormat());
        };
        QVERIFY(f.deliver(1));
        QVERIFY(f->waitForStatus(Starting));
        QCOMPARE(f->recorder.statuses,
                 (QList<int> { Loaded, Starting, Active, Stopping, Unloaded, Loaded, Starting }));
        f.sink.onPresent = [&] { f->settings->setVideoSettings(encoderSettings(1, "rotate", 90)); };
        QVERIFY(f->control->encode(testPicture()));
        QVERIFY(f->waitForStatus(Active));
        QVERIFY(f.deliver(2));
        QVERIFY(f->waitForStatus(Starting));
    }

    void sinkMayLeaveFromAnyOfItsCalls_data() { sinkMayUseTheControlsFromItsCalls_data(); }

    void sinkMayLeaveFromAnyOfItsCalls()
    {
        QFETCH(QString, call);
        SinksFixture f;
        const auto leave = [&] { f->source->removeSink(&f.sink); };
        if (call == "format")
            f.sink.onFormat = leave;
        else if (call == "start")
            f.sink.onStart = leave;
        else if (call == "present")
            f.sink.onPresent = leave;
        else if (call == "finish")
            f.sink.onFinish = leave;
        else
            f.sink.onStop = leave;
        QVERIFY(f->source->addSink(&f.sink));
        QVERIFY(f->activate());
        QVERIFY(f.deliver(1));
        QVERIFY(f.deliver(2));
        f->control->stop();
        QVERIFY(f->waitForStatus(Unloaded));
        const QString lastCall = calls("sink").last();
        const QString expected = call == "format" ? "isFormatSupported" : call;
        QVERIFY2(lastCall.startsWith("sink: " + expected), qPrintable(lastCall));
        QVERIFY(!f->source->removeSink(&f.sink));
    }

    void sinkThatReplacesItself_fromPresent()
    {
        SinksFixture f;
        f->source->addSink(&f.sink);
        QVERIFY(f->activate());
        f.sink.onPresent = [&] { f->source->addSink(&f.other); };
        QVERIFY(f.deliver(1));
        QVERIFY(f.deliver(2));
        QCOMPARE(calls("sink").mid(3),
                 (QStringList { "sink: present(1)", "sink: stop()", "sink: release()" }));
        QCOMPARE(calls("other"), (QStringList { "other: isFormatSupported" + Format,
                                                "other: start" + Format, "other: present(2)" }));
    }

    void directSlotOfAFrame_mayUseTheControls()
    {
        SinksFixture f;
        f->source->addSink(&f.sink);
        QVERIFY(f->activate());
        int slotCalls = 0;
        connect(
                f->control, &QPVEncodeControl::encodedVideoFrame, this,
                [&](const QPVEncodedVideoFrame &) {
                    if (slotCalls++ > 0)
                        return;
                    f->settings->setVideoSettings(encoderSettings(1, "rotate", 90));
                    f->source->addSink(&f.other);
                    f->control->start(surfaceFormat());
                    f->control->encode(testPicture());
                },
                Qt::DirectConnection);
        QVERIFY(f.deliver(1));
        QVERIFY(f->waitForStatus(Starting));
        QCOMPARE(calls("sink").last(), QString("sink: release()"));
        f->control->disconnect(this);
    }

    void replacingSinks_whileFramesFlow_neverOverlapsTheirCalls()
    {
        SinksFixture f;
        QVERIFY(f->activate());
        std::atomic<bool> ends { false };
        const auto encoder = f->platform.codecs.encoder();
        LibraryThread library("FakeEncoder", [&] {
            for (unsigned long time = 1; !ends; ++time)
                encoder->deliver("x", time);
        });
        for (int i = 0; i < 200; ++i)
            f->source->addSink(i % 2 ? &f.sink : &f.other);
        ends = true;
        library.join();
        QCOMPARE(f.sink.callsAtOnce.load(), 1);
        QCOMPARE(f.other.callsAtOnce.load(), 1);
        // No frame before the start, none after the stop
        bool started = false;
        for (const QString &call : calls("sink")) {
            if (call.contains("start("))
                started = true;
            else if (call.contains("stop()"))
                started = false;
            else if (call.contains("present("))
                QVERIFY(started);
        }
    }
};

QTEST_GUILESS_MAIN(TestEncodeSessionSinks)
#include "tst_ocelleencodesessionsinks.moc"

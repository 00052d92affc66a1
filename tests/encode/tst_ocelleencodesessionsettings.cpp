// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encodeservicefixture.h"
#include "messagelog.h"
#include "recordingsink.h"
#include "testpicture.h"

#include <QtTest>

#include <memory>

using namespace Statuses;

namespace {

const QString Encoding("veltra.palaver.encoder.ocelle: ");
const QString RestartLine("debug " + Encoding + "encoding options changed, restarting");

/*! What the sink is told from the start to the end of a run, whatever restarts in between. */
QStringList oneRun()
{
    return { "sink: isFormatSupported(video/h264 64x48@25)",
             "sink: isFormatSupported(video/h264 64x48@25)", "sink: start(video/h264 64x48@25)" };
}

QStringList ended(QStringList run)
{
    return run << "sink: finish()"
               << "sink: stop()";
}

QStringList calls(const QString &object = QString())
{
    return CallLog::instance().texts(object);
}

class SinkFixture : public EncodeServiceFixture
{
public:
    SinkFixture() { source->addSink(&sink); }
    ~SinkFixture() { service.reset(); }

    void turn(int degrees)
    {
        settings->setVideoSettings(encoderSettings(500000, "rotate", degrees));
    }
    /*! Offers pictures, which are refused while there is no encoder, until one has had \a call. */
    bool encodeUntilCalled(const QString &call)
    {
        qint64 time = 0;
        return QTest::qWaitFor([&] {
            control->encode(testPicture(++time));
            return !calls("encoder").filter(call).isEmpty();
        });
    }
    QStringList sinkCalls() const { return calls("sink"); }

    RecordingSink sink;
};

} // namespace

class TestEncodeSessionSettings : public QObject
{
    Q_OBJECT
private slots:
    void equalSettings_doNothing()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        CallLog::instance().clear();
        const MessageLog messages;
        f.settings->setVideoSettings(f.settings->videoSettings());
        QCOMPARE(messages.messages(), QStringList());
        QVERIFY(f.control->encode(testPicture(1)));
        QVERIFY(f.waitForCall("encoder 1: encode(1)"));
        QCOMPARE(calls("encoder"), QStringList { "encoder 1: encode(1)" });
    }

    void bitRate_reachesARunningEncoderWithoutARestart()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        const MessageLog messages;
        f.settings->setVideoSettings(encoderSettings(800000));
        QVERIFY(f.waitForCall("encoder 1: setBitrate(800000)"));
        QCOMPARE(messages.messages(), QStringList("debug " + Encoding));
        QCOMPARE(int(f.control->status()), Active);
        QCOMPARE(f.settings->videoSettings().bitRate(), 800000);
    }

    void onlyTurningAndMirroring_restartARunningEncoder_data()
    {
        QTest::addColumn<QVideoEncoderSettings>("before");
        QTest::addColumn<QVideoEncoderSettings>("after");
        QTest::addColumn<bool>("restarts");
        const auto with = [](const char *option, const QVariant &value) {
            return encoderSettings(500000, option, value);
        };
        QTest::newRow("90 to 450") << with("rotate", 90) << with("rotate", 450) << true;
        QTest::newRow("0 to 360") << with("rotate", 0) << with("rotate", 360) << true;
        QTest::newRow("none to 0") << encoderSettings() << with("rotate", 0) << false;
        QTest::newRow("text to 0") << with("rotate", "left") << with("rotate", 0) << false;
        QTest::newRow("mirrorH") << encoderSettings() << with("mirrorH", true) << true;
        QTest::newRow("mirrorH to false") << encoderSettings() << with("mirrorH", false) << false;
        QTest::newRow("mirrorV") << encoderSettings() << with("mirrorV", true) << true;
        QTest::newRow("mirrorV off") << with("mirrorV", true) << encoderSettings() << true;
        QTest::newRow("another option") << encoderSettings() << with("x", true) << false;
        QVideoEncoderSettings other = encoderSettings();
        other.setCodec("video/vp8");
        QTest::newRow("codec") << encoderSettings() << other << false;
        other = encoderSettings();
        other.setResolution(32, 32);
        QTest::newRow("resolution") << encoderSettings() << other << false;
        other = encoderSettings();
        other.setFrameRate(5);
        QTest::newRow("frame rate") << encoderSettings() << other << false;
        other = encoderSettings();
        other.setQuality(QMultimedia::VeryHighQuality);
        QTest::newRow("quality") << encoderSettings() << other << false;
        other = encoderSettings();
        other.setEncodingMode(QMultimedia::TwoPassEncoding);
        QTest::newRow("mode") << encoderSettings() << other << false;
    }

    void onlyTurningAndMirroring_restartARunningEncoder()
    {
        QFETCH(QVideoEncoderSettings, before);
        QFETCH(QVideoEncoderSettings, after);
        QFETCH(bool, restarts);
        EncodeServiceFixture f;
        f.settings->setVideoSettings(before);
        QVERIFY(f.activate());
        const MessageLog messages;
        f.settings->setVideoSettings(after);
        QStringList expected { "debug " + Encoding };
        if (restarts)
            expected.append(RestartLine);
        QCOMPARE(messages.messages("debug").mid(0, expected.size()), expected);
        QCOMPARE(messages.messages().contains(RestartLine), restarts);
        QCOMPARE(f.settings->videoSettings(), after);
        if (restarts) {
            QVERIFY(f.waitForStatus(Starting));
            QCOMPARE(f.recorder.statuses, (QList<int> { Loaded, Starting, Active, Stopping,
                                                        Unloaded, Loaded, Starting }));
        } else {
            QVERIFY(f.waitForCall(QString("encoder 1: setBitrate(500000)")));
            QCOMPARE(f.recorder.statuses, (QList<int> { Loaded, Starting, Active }));
        }
    }

    void stoppedEncoder_isNotRestarted()
    {
        EncodeServiceFixture f;
        const MessageLog messages;
        const QVideoEncoderSettings mirrored = encoderSettings(500000, "mirrorV", true);
        f.settings->setVideoSettings(mirrored);
        QCOMPARE(f.settings->videoSettings(), mirrored);
        QCOMPARE(messages.messages(), QStringList("debug " + Encoding));
        QVERIFY(f.activate());
        QVERIFY(calls("encoder").contains("encoder 1: setParameter(4, true)"));
        f.control->stop();
        f.settings->setVideoSettings(encoderSettings());
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(messages.messages().filter("restarting"), QStringList());
        QCOMPARE(f.platform.codecs.heldEncoders(), 0);
    }

    void restart_keepsTheSinkAndUsesTheNewSettings()
    {
        SinkFixture f;
        QVERIFY(f.activate());
        f.turn(90);
        QVERIFY(f.waitForStatus(Starting));
        QVERIFY(f.control->encode(testPicture(1)));
        QVERIFY(f.waitForStatus(Active));
        QVERIFY(calls("encoder 2").contains("encoder 2: setParameter(2, 90)"));
        QCOMPARE(f.sinkCalls(), oneRun());
        QCOMPARE(f.platform.codecs.heldEncoders(), 1);
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(f.sinkCalls(), ended(oneRun()));
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void restart_losesOnlyQueuedPictures()
    {
        SinkFixture f;
        QVERIFY(f.activate());
        f.script->encodeGate.close();
        for (int i = 1; i <= 3; ++i)
            QVERIFY(f.control->encode(testPicture(i)));
        QTRY_COMPARE(f.script->encodeGate.waiting(), 1);
        f.turn(90);
        QVERIFY(!f.control->encode(testPicture(4)));
        f.script->encodeGate.open();
        QVERIFY(f.waitForStatus(Starting));
        QVERIFY(f.control->encode(testPicture(5)));
        QVERIFY(f.waitForStatus(Active));
        QCOMPARE(calls("encoder").filter(": encode("),
                 (QStringList { "encoder 1: encode(0)", "encoder 1: encode(1)",
                                "encoder 2: encode(5)" }));
    }

    void restart_withoutAnEncoder_isAResourceErrorUntilTheNextStart()
    {
        SinkFixture f;
        QVERIFY(f.activate());
        f.script->createFails = true;
        f.turn(90);
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(f.recorder.errors, QStringList { "1 Couldn't acquire encoder" });
        QCOMPARE(f.sinkCalls(), oneRun()); // the application decides
        f.script->createFails = false;
        QVERIFY(f.activate());
        QVERIFY(!f.sinkCalls().contains("sink: finish()"));
        f.control->stop();
        QVERIFY(f.waitForCall("sink: stop()"));
    }

    void stopAfterAFailedRestart_finishesTheSink()
    {
        SinkFixture f;
        QVERIFY(f.activate());
        f.script->createFails = true;
        f.turn(90);
        QVERIFY(f.waitForStatus(Unloaded));
        f.control->stop();
        QVERIFY(f.waitForCall("sink: stop()"));
        QCOMPARE(f.sinkCalls(), ended(oneRun()));
    }

    void settingsRightAfterStart_areUsedByIt()
    {
        SinkFixture f;
        QVERIFY(f.control->start(surfaceFormat()));
        QVideoEncoderSettings settings = encoderSettings(123456, "rotate", 90);
        f.settings->setVideoSettings(settings);
        QVERIFY(f.waitForStatus(Starting));
        QVERIFY(f.control->encode(testPicture()));
        QVERIFY(f.waitForStatus(Active));
        // As one start or as a restart: the encoder that runs is turned, the sink started once
        const QStringList lines = calls("encoder").filter("setParameter(2, 90)");
        QCOMPARE(lines.size(), 1);
        QCOMPARE(calls("encoder").filter("123456 bit/s").size(), 1);
        QCOMPARE(f.sinkCalls(), oneRun());
    }

    void settingsFromASlotOfEachStatus_endInARunningEncoder_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("loaded") << Loaded;
        QTest::newRow("starting") << Starting;
        QTest::newRow("active") << Active;
    }

    void settingsFromASlotOfEachStatus_endInARunningEncoder()
    {
        QFETCH(int, status);
        SinkFixture f;
        int turns = 0;
        connect(f.control, &QPVEncodeControl::statusChanged, this, [&](QPVEncoder::Status now) {
            if (now == status && turns++ == 0)
                f.turn(90);
            if (now == Starting)
                f.control->encode(testPicture(turns));
        });
        QVERIFY(f.control->start(surfaceFormat()));
        QTRY_VERIFY(!calls("encoder").filter("setParameter(2, 90)").isEmpty());
        QVERIFY(f.waitForStatus(Active));
        QCOMPARE(f.sinkCalls(), oneRun());
        QCOMPARE(f.platform.codecs.heldEncoders(), 1);
        f.control->disconnect(this);
    }

    void settingsWhileRestarting_areTakenOver_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("stopping") << Stopping;
        QTest::newRow("unloaded") << Unloaded;
        QTest::newRow("loaded") << Loaded;
        QTest::newRow("starting") << Starting;
    }

    void settingsWhileRestarting_areTakenOver()
    {
        QFETCH(int, status);
        SinkFixture f;
        QVERIFY(f.activate());
        int turns = 0;
        connect(f.control, &QPVEncodeControl::statusChanged, this, [&](QPVEncoder::Status now) {
            if (now == status && turns++ == 0)
                f.settings->setVideoSettings(encoderSettings(654321, "rotate", 180));
        });
        f.turn(90);
        QVERIFY(f.encodeUntilCalled("setParameter(2, 180)"));
        QVERIFY(f.waitForStatus(Active));
        QCOMPARE(calls("encoder").filter("654321 bit/s").size(), 1);
        QCOMPARE(f.sinkCalls(), oneRun());
        QCOMPARE(f.recorder.errors, QStringList());
        f.control->disconnect(this);
    }

    void stopWhileRestarting_endsTheRun_data() { settingsWhileRestarting_areTakenOver_data(); }

    void stopWhileRestarting_endsTheRun()
    {
        QFETCH(int, status);
        SinkFixture f;
        QVERIFY(f.activate());
        connect(f.control, &QPVEncodeControl::statusChanged, this, [&](QPVEncoder::Status now) {
            if (now == status)
                f.control->stop();
        });
        f.turn(90);
        QVERIFY(f.waitForCall("sink: stop()"));
        QTRY_COMPARE(f.platform.codecs.heldEncoders(), 0);
        QTRY_COMPARE(int(f.control->status()), Unloaded);
        QCOMPARE(f.sinkCalls(), ended(oneRun()));
        QVERIFY(!f.control->encode(testPicture()));
        f.control->disconnect(this);
        QVERIFY(f.activate()); // and another run is a whole one
        QCOMPARE(f.sinkCalls(), ended(oneRun()) + oneRun());
    }

    void startWhileRestarting_isTheRestart()
    {
        SinkFixture f;
        QVERIFY(f.activate());
        f.turn(90);
        QVERIFY(f.control->start(surfaceFormat()));
        QVERIFY(f.waitForStatus(Starting));
        QVERIFY(f.control->encode(testPicture()));
        QVERIFY(f.waitForStatus(Active));
        QVERIFY(calls().contains("encoder 2: setParameter(2, 90)"));
        QCOMPARE(f.platform.codecs.heldEncoders(), 1);
        QVERIFY(!f.sinkCalls().contains("sink: finish()"));
        QCOMPARE(f.sinkCalls().filter("start(").size(), 1);
    }

    void sinkAttachedWhileRestarting_isStarted()
    {
        RecordingSink sink;
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        connect(f.control, &QPVEncodeControl::statusChanged, this, [&](QPVEncoder::Status now) {
            if (now == Unloaded)
                f.source->addSink(&sink);
        });
        f.settings->setVideoSettings(encoderSettings(500000, "mirrorH", true));
        QVERIFY(f.waitForStatus(Starting));
        QCOMPARE(calls("sink"), oneRun().mid(1));
        f.control->disconnect(this);
    }

    void manyChangesInARow_leaveOneRunningEncoder()
    {
        SinkFixture f;
        QVERIFY(f.activate());
        for (int round = 0; round < 50; ++round) {
            f.turn(90 * (round % 4));
            f.control->encode(testPicture(round));
            QCoreApplication::processEvents();
            if (round % 10 == 9)
                QVERIFY(f.control->start(surfaceFormat()));
        }
        f.turn(45);
        QVERIFY(f.encodeUntilCalled("setParameter(2, 45)"));
        QCOMPARE(f.platform.codecs.heldEncoders(), 1);
        QCOMPARE(f.recorder.errors, QStringList());
    }
};

QTEST_GUILESS_MAIN(TestEncodeSessionSettings)
#include "tst_ocelleencodesessionsettings.moc"

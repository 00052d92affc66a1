// SPDX-License-Identifier: BSD-3-Clause
#include "encodeworkerfixture.h"
#include "eventcounter.h"
#include "testpicture.h"

#include <QtTest>

using namespace Statuses;

/*! Settings that change after a start was asked for. */
class TestEncodeWorkerSettings : public QObject
{
    Q_OBJECT
private slots:
    void changeSettings_whileNotStarted_changesNothing()
    {
        EncodeWorkerFixture f;
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
        EncodeWorkerFixture f;
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
        EncodeWorkerFixture f;
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
        EncodeWorkerFixture f;
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
        EncodeWorkerFixture f;
        QCoreApplication::postEvent(
                &f.worker, new OcelleEncodeWorker::ChangeSettingsEvent(encoderSettings(1)));
        f.work();
        QCOMPARE(f.recorder.errors, QStringList { "4 Encoder error" });
    }

    void changeStartSettings_isForAStartThatIsStillToCome()
    {
        EncodeWorkerFixture f;
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
};

QTEST_GUILESS_MAIN(TestEncodeWorkerSettings)
#include "tst_ocelleencodeworkersettings.moc"

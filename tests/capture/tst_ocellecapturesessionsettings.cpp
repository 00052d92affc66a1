// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "messagelog.h"

#include <QtTest>

using namespace Veltra::Ocelle;
using namespace Statuses;

namespace {

QString startCall(const char *arguments)
{
    return QString("camera back: startCapture(%1, 255)").arg(arguments);
}

} // namespace

/*! What a session offers, takes and chooses as viewfinder settings. */
class TestCaptureSessionSettings : public QObject
{
    Q_OBJECT
private slots:
    void supportedSettings_areEmptyUntilTheCameraIsOpen()
    {
        CaptureSessionFixture f;
        f.script->openGate.close();
        QVERIFY(f.session->supportedViewfinderSettings().isEmpty());
        f.session->requestState(QCamera::LoadedState);
        QTRY_COMPARE(f.script->openGate.waiting(), 1);
        QVERIFY(f.session->supportedViewfinderSettings().isEmpty());
        QCOMPARE(CallLog::instance().texts("camera"), QStringList());
    }

    void supportedSettings_areAskedForOnce_andForgottenWhenUnloaded()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::LoadedState));
        QCOMPARE(CallLog::instance().count("manager: getCameraCapabilities(back)"), 1);
        QCOMPARE(f.session->supportedViewfinderSettings().size(), 6);
        QVERIFY(f.reach(QCamera::ActiveState));
        QVERIFY(f.reach(QCamera::LoadedState));
        QCOMPARE(f.session->supportedViewfinderSettings().size(), 6);
        QCOMPARE(CallLog::instance().count("manager: getCameraCapabilities(back)"), 1);
        QVERIFY(f.reach(QCamera::UnloadedState));
        QVERIFY(f.session->supportedViewfinderSettings().isEmpty());
        f.script->setFormats({ PixelFormat::NV12 });
        QVERIFY(f.reach(QCamera::LoadedState));
        QCOMPARE(f.session->supportedViewfinderSettings().size(), 3);
    }

    void supportedSettings_areFilledBeforeTheLoadedStatusIsTold()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::LoadedState));
        QVERIFY(CallLog::instance().indexOf("manager: getCameraCapabilities(back)") <
                CallLog::instance().indexOf("control: statusChanged(4)"));
    }

    void supportedSettings_thatCouldNotBeListed_areAskedForAgain()
    {
        CaptureSessionFixture f;
        f.script->capabilitiesFail = true;
        QVERIFY(f.reach(QCamera::LoadedState));
        QVERIFY(f.session->supportedViewfinderSettings().isEmpty());
        f.script->capabilitiesFail = false;
        QCOMPARE(f.session->supportedViewfinderSettings().size(), 6);
    }

    void setSettings_isLoggedWithResolutionAndMinimumRate()
    {
        CaptureSessionFixture f;
        MessageLog log;
        f.session->setViewfinderSettings(viewfinderSettings(QSize(640, 480), 29.5));
        QCOMPARE(log.messages().size(), 1);
        const QString line = log.messages().first();
        QVERIFY2(line.startsWith("debug veltra.palaver.capture: "), qPrintable(line));
        QVERIFY2(line.contains("QSize(640, 480)"), qPrintable(line));
        QVERIFY2(line.contains("29.5"), qPrintable(line));
    }

    void setSettings_whileUnloadedOrLoaded_onlyStores()
    {
        CaptureSessionFixture f;
        const QCameraViewfinderSettings first = viewfinderSettings(QSize(640, 480));
        f.session->setViewfinderSettings(first);
        QCOMPARE(f.session->viewfinderSettings(), first);
        QVERIFY(f.reach(QCamera::LoadedState));
        f.recorder.clear();
        const QCameraViewfinderSettings second = viewfinderSettings(QSize(1280, 720));
        f.session->setViewfinderSettings(second);
        QCOMPARE(f.session->viewfinderSettings(), second);
        QCOMPARE(f.recorder.states, QList<int>());
        QVERIFY(f.reach(QCamera::ActiveState));
        QCOMPARE(CallLog::instance().count(startCall("1280x720@30")), 1);
    }

    void setSettings_whileActive_stopsAndStartsAgain()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::ActiveState));
        f.recorder.clear();
        CallLog::instance().clear();
        f.session->setViewfinderSettings(viewfinderSettings(QSize(1280, 720), 60));
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Stopping, Standby, Starting, Active }));
        QCOMPARE(f.recorder.states, (QList<int> { 1, 2 }));
        QCOMPARE(CallLog::instance().texts("manager"), QStringList()); // not opened anew
        QCOMPARE(CallLog::instance().count(startCall("1280x720@60")), 1);
    }

    void setSettings_equalToThoseStored_doesNothing()
    {
        CaptureSessionFixture f;
        f.session->setViewfinderSettings(viewfinderSettings(QSize(1280, 720), 60, 60));
        QVERIFY(f.reach(QCamera::ActiveState));
        f.recorder.clear();
        CallLog::instance().clear();
        f.session->setViewfinderSettings(f.session->viewfinderSettings());
        QCoreApplication::processEvents();
        QCOMPARE(CallLog::instance().texts(), QStringList());
        QCOMPARE(f.session->requestedState(), QCamera::ActiveState);
    }

    void chosenSettings_areStored_soTheFirstRequestIsAChangeAgain()
    {
        CaptureSessionFixture f;
        const QCameraViewfinderSettings request = viewfinderSettings(QSize(1280, 720));
        f.session->setViewfinderSettings(request);
        QVERIFY(f.reach(QCamera::ActiveState));
        QCOMPARE(f.session->viewfinderSettings(), f.session->supportedViewfinderSettings().at(1));
        f.recorder.clear();
        f.session->setViewfinderSettings(request);
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Stopping, Standby, Starting, Active }));
    }

    void choice_takesTheFirstEntryThatAnswers_data()
    {
        QTest::addColumn<QCameraViewfinderSettings>("request");
        QTest::addColumn<QString>("arguments"); // of startCapture, none where nothing answers
        const QSize none;
        const QSize hd(1280, 720);
        QTest::newRow("nothing asked") << QCameraViewfinderSettings() << "640x480@30";
        QTest::newRow("resolution") << viewfinderSettings(hd) << "1280x720@30";
        QTest::newRow("resolution not offered") << viewfinderSettings(QSize(641, 480)) << "";
        QTest::newRow("minimum rate") << viewfinderSettings(none, 60) << "1280x720@60";
        QTest::newRow("minimum rate 29 is not 30") << viewfinderSettings(none, 29) << "";
        QTest::newRow("maximum rate") << viewfinderSettings(none, 0, 60) << "1280x720@60";
        QTest::newRow("maximum rate not offered") << viewfinderSettings(none, 0, 61) << "";
        QTest::newRow("rates that differ") << viewfinderSettings(none, 30, 60) << "";
        QTest::newRow("resolution and rate") << viewfinderSettings(hd, 60, 60) << "1280x720@60";
        QTest::newRow("resolution without that rate")
                << viewfinderSettings(QSize(640, 480), 60) << "";
        QTest::newRow("rate that is as good as 30")
                << viewfinderSettings(none, 30.0001) << "640x480@30";
        QTest::newRow("rate that is not") << viewfinderSettings(none, 30.001) << "";
        QTest::newRow("rate that is as good as none")
                << viewfinderSettings(none, 0.000009) << "640x480@30";
        QTest::newRow("rate that is not quite none") << viewfinderSettings(none, 0.00002) << "";
        QTest::newRow("negative rate") << viewfinderSettings(none, -30) << "";

        QCameraViewfinderSettings settings;
        settings.setResolution(1280, 0);
        QTest::newRow("width alone counts for nothing") << settings << "640x480@30";
        settings.setResolution(-1, 720);
        QTest::newRow("height alone counts for nothing") << settings << "640x480@30";

        settings = QCameraViewfinderSettings();
        settings.setPixelAspectRatio(1, 1);
        QTest::newRow("square pixels are not offered") << settings << "";
        settings.setPixelAspectRatio(1280, 720);
        QTest::newRow("the resolution as aspect ratio") << settings << "1280x720@30";
        settings.setPixelAspectRatio(0, 720);
        QTest::newRow("half an aspect ratio counts for nothing") << settings << "640x480@30";

        settings = QCameraViewfinderSettings();
        settings.setPixelFormat(QVideoFrame::Format_YUV420P);
        QTest::newRow("a pixel format is not looked at") << settings << "640x480@30";
        settings.setPixelFormat(QVideoFrame::Format_Jpeg);
        QTest::newRow("nor is one that is not offered") << settings << "640x480@30";
    }

    void choice_takesTheFirstEntryThatAnswers()
    {
        QFETCH(QCameraViewfinderSettings, request);
        QFETCH(QString, arguments);
        CaptureSessionFixture f;
        f.session->setViewfinderSettings(request);
        f.session->requestState(QCamera::ActiveState);
        QTRY_COMPARE(f.recorder.errors.size(), 1);
        if (arguments.isEmpty()) {
            QCOMPARE(f.recorder.errors, QStringList("1 Couldn't find supported camera settings"));
            QCOMPARE(f.session->viewfinderSettings(), request);
            QCOMPARE(f.recorder.statuses, (QList<int> { Loading, Loaded }));
            QCOMPARE(f.session->requestedState(), QCamera::LoadedState);
            QCOMPARE(f.recorder.states, QList<int> { 2 }); // the fall-back is not told
        } else {
            QCOMPARE(f.recorder.errors, QStringList("0 "));
            QCOMPARE(CallLog::instance().texts("camera").filter("startCapture"),
                     QStringList(startCall(qPrintable(arguments))));
            // Of the first pixel format that is listed
            QCOMPARE(f.session->viewfinderSettings().pixelFormat(), QVideoFrame::Format_NV12);
            QVERIFY(f.session->supportedViewfinderSettings().contains(
                    f.session->viewfinderSettings()));
        }
    }

    void choice_withoutAnyOffer_failsToo()
    {
        CaptureSessionFixture f;
        f.script->capabilitiesFail = true;
        MessageLog log;
        f.session->requestState(QCamera::ActiveState);
        QTRY_COMPARE(f.recorder.errors, QStringList("1 Couldn't find supported camera settings"));
        QCOMPARE(f.session->status(), QCamera::LoadedStatus);
        QCOMPARE(log.messages("critical"),
                 QStringList("critical veltra.palaver.capture: "
                             "\"Couldn't find supported camera settings\" 1"));
    }

    void applySettings_tellsWhetherOneWasTaken()
    {
        CaptureSessionFixture f;
        QVERIFY(!f.session->applyViewfinderSettings());
        QVERIFY(f.reach(QCamera::LoadedState));
        QVERIFY(f.session->applyViewfinderSettings());
        QCOMPARE(f.session->viewfinderSettings(), f.session->supportedViewfinderSettings().first());
        f.session->setViewfinderSettings(viewfinderSettings(QSize(1, 1)));
        QVERIFY(!f.session->applyViewfinderSettings());
        QCOMPARE(f.session->viewfinderSettings(), viewfinderSettings(QSize(1, 1)));
    }

    void settingsAreSafeToReadAndChange_whileTheCameraComesAndGoes()
    {
        CaptureSessionFixture f(CameraFacing::Front);
        for (int cycle = 0; cycle < 20; ++cycle) {
            f.session->setViewfinderSettings(
                    viewfinderSettings(cycle % 2 ? QSize(640, 480) : QSize(1280, 720)));
            f.session->requestState(QCamera::ActiveState);
            while (f.session->status() != QCamera::ActiveStatus) {
                const int count = f.session->supportedViewfinderSettings().size();
                QVERIFY(count == 0 || count == 6);
                const QSize size = f.session->viewfinderSettings().resolution();
                QVERIFY(size == QSize(640, 480) || size == QSize(1280, 720));
                f.session->mirrorOutput();
                QCoreApplication::processEvents();
            }
            f.session->requestState(QCamera::UnloadedState);
            while (f.session->status() != QCamera::UnloadedStatus) {
                f.session->mirrorOutput();
                f.session->supportedViewfinderSettings();
                QCoreApplication::processEvents();
            }
        }
        QVERIFY(f.reach(QCamera::UnloadedState));
        QCOMPARE(f.platform.cameras.heldCameras(), 0);
    }
};

QTEST_GUILESS_MAIN(TestCaptureSessionSettings)
#include "tst_ocellecapturesessionsettings.moc"

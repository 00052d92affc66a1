// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "fakecamera.h"
#include "librarythread.h"
#include "memberpointers.h"
#include "messagelog.h"
#include "ocellecapturecontrol.h"

#include <QLoggingCategory>
#include <QThread>
#include <QtTest>

using namespace Veltra::Ocelle;
using namespace Statuses;

namespace {

/*! The log without the questions about the camera, whose number is nobody's business. */
QStringList callsWithoutQuestions()
{
    QStringList calls;
    for (const QString &text : CallLog::instance().texts()) {
        if (!text.contains(": get"))
            calls.append(text);
    }
    return calls;
}

} // namespace

class TestCaptureSession : public QObject
{
    Q_OBJECT
private slots:
    void construction_isUnloadedWithAControlAndAThread()
    {
        FakePlatform platform;
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        QObject parent;
        auto *session = new OcelleCaptureSession(&provider, &parent);
        QCOMPARE(session->parent(), &parent);
        QVERIFY(session->captureControl());
        QCOMPARE(session->requestedState(), QCamera::UnloadedState);
        QCOMPARE(session->status(), QCamera::UnloadedStatus);
        QVERIFY(session->viewfinderSettings().isNull());
        QVERIFY(session->supportedViewfinderSettings().isEmpty());
        QVERIFY(QMetaType::type("QCamera::Status") != QMetaType::UnknownType);
        session->shutdown();
    }

    void start_climbsStepByStep_oneCallAfterTheOther()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::ActiveState));
        QTRY_COMPARE(f.recorder.errors, QStringList("0 "));
        QCOMPARE(callsWithoutQuestions(),
                 (QStringList { "control: stateChanged(2)", "control: statusChanged(2)",
                                "manager: openCamera(back)", "camera back: setListener(listener)",
                                "control: statusChanged(4)", "control: statusChanged(6)",
                                "camera back: startCapture(640x480@30, 255)",
                                "control: statusChanged(8)", "control: error(0, )" }));
    }

    void stopAndUnload_comeDownStepByStep()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::ActiveState));
        f.recorder.clear();
        QVERIFY(f.reach(QCamera::LoadedState));
        QCOMPARE(f.recorder.statuses, (QList<int> { Stopping, Standby }));
        QVERIFY(f.reach(QCamera::ActiveState));
        QVERIFY(f.reach(QCamera::UnloadedState));
        QCOMPARE(f.recorder.statuses, (QList<int> { Stopping, Standby, Starting, Active, Stopping,
                                                    Unloading, Unloaded }));
        QCOMPARE(f.recorder.states, (QList<int> { 1, 2, 0 }));
        QCOMPARE(f.platform.cameras.heldCameras(), 0);
    }

    void cameraCalls_comeFromTheWorkersThread_signalsFromTheApplications()
    {
        CaptureSessionFixture f;
        QString objectName;
        QThread::Priority priority = QThread::IdlePriority;
        CallLog::instance().setObserver([&](const Call &call) {
            if (call.what.startsWith("openCamera")) {
                objectName = QThread::currentThread()->objectName();
                priority = QThread::currentThread()->priority();
            }
        });
        QVERIFY(f.reach(QCamera::ActiveState));
        QVERIFY(f.reach(QCamera::LoadedState));
        QVERIFY(f.reach(QCamera::UnloadedState));
        QCOMPARE(objectName, QString("CaptureWorker"));
        QCOMPARE(priority, QThread::InheritPriority);
        for (const Call &call : CallLog::instance().calls()) {
            if (call.object == "control" && !call.what.startsWith("error"))
                QVERIFY2(call.thread == std::this_thread::get_id(), qPrintable(call.text()));
            else if (!call.what.startsWith("get")) // questions come from anywhere
                QCOMPARE(call.text() + " on " + call.threadName, call.text() + " on CaptureWorker");
        }
    }

    void worker_waitsUntilEachStatusIsHandled()
    {
        CaptureSessionFixture f;
        connect(f.session->captureControl(), &QCameraControl::statusChanged,
                [](QCamera::Status status) {
                    const QStringList calls = CallLog::instance().texts();
                    if (status == QCamera::LoadingStatus)
                        QCOMPARE(calls.filter("openCamera"), QStringList());
                    if (status == QCamera::StartingStatus)
                        QCOMPARE(calls.filter("startCapture"), QStringList());
                });
        QVERIFY(f.reach(QCamera::ActiveState));
    }

    void requestState_alreadyRequested_tellsNothing()
    {
        CaptureSessionFixture f;
        f.session->requestState(QCamera::UnloadedState);
        f.session->requestState(QCamera::ActiveState);
        f.session->requestState(QCamera::ActiveState);
        QCOMPARE(f.recorder.states, QList<int> { QCamera::ActiveState });
    }

    void restartViaState_onlyWhereMoreIsRequested()
    {
        CaptureSessionFixture f;
        f.session->restartViaState(QCamera::UnloadedState);
        QVERIFY(f.reach(QCamera::LoadedState));
        f.session->restartViaState(QCamera::LoadedState);
        f.session->restartViaState(QCamera::ActiveState);
        QCOMPARE(f.recorder.states, QList<int> { QCamera::LoadedState });
        f.session->restartViaState(QCamera::UnloadedState);
        QCOMPARE(f.recorder.states, (QList<int> { 1, 0, 1 }));
    }

    void setDevice_whileUnloaded_changesNoState()
    {
        CaptureSessionFixture f;
        f.session->setDevice("other");
        QCOMPARE(f.recorder.states, QList<int>());
        f.platform.cameras.add("other");
        QVERIFY(f.reach(QCamera::LoadedState));
        QCOMPARE(CallLog::instance().texts("manager").first(),
                 QString("manager: openCamera(other)"));
    }

    void setDevice_whileLoaded_closesAndOpensEvenTheSameCamera()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::LoadedState));
        f.recorder.clear();
        f.session->setDevice("back");
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Unloading, Unloaded, Loading, Loaded }));
        QCOMPARE(f.recorder.states, (QList<int> { 0, 1 }));
        QCOMPARE(f.platform.cameras.heldCameras(), 1);
    }

    void setDevice_whileActive_reopensAndStartsAgain()
    {
        CaptureSessionFixture f;
        f.platform.cameras.add("front", CameraFacing::Front);
        QVERIFY(f.reach(QCamera::ActiveState));
        f.recorder.clear();
        f.session->setDevice("front");
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Stopping, Unloading, Unloaded, Loading,
                                                        Loaded, Starting, Active }));
        QCOMPARE(f.recorder.states, (QList<int> { 0, 2 }));
        QCOMPARE(CallLog::instance().texts("camera back").last(),
                 QString("camera back: destroyed"));
        QVERIFY(f.session->mirrorOutput());
    }

    void requestWhileLoading_goesOnWhenTheCameraIsOpen()
    {
        CaptureSessionFixture f;
        f.script->openGate.close();
        f.session->requestState(QCamera::LoadedState);
        QTRY_COMPARE(f.script->openGate.waiting(), 1);
        QCOMPARE(f.session->status(), QCamera::LoadingStatus);
        f.session->requestState(QCamera::ActiveState);
        f.script->openGate.open();
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Loading, Loaded, Starting, Active }));
        QCOMPARE(CallLog::instance().count("manager: openCamera(back)"), 1);
    }

    void requestWhileStarting_isServedOnceStarted()
    {
        CaptureSessionFixture f;
        f.script->startGate.close();
        f.session->requestState(QCamera::ActiveState);
        QTRY_COMPARE(f.script->startGate.waiting(), 1);
        QCOMPARE(f.session->status(), QCamera::StartingStatus);
        f.session->requestState(QCamera::UnloadedState);
        f.script->startGate.open();
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Loading, Loaded, Starting, Active, Stopping,
                                                        Unloading, Unloaded }));
    }

    void failedOpen_reportsOnceAndEndsUnloaded()
    {
        CaptureSessionFixture f;
        f.script->openFails = true;
        f.session->requestState(QCamera::ActiveState);
        QTRY_COMPARE(f.recorder.errors, QStringList("1 Camera does not open"));
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Loading, Unloaded }));
        QCOMPARE(f.session->requestedState(), QCamera::UnloadedState);
        QCOMPARE(f.recorder.states, QList<int> { 2 }); // the fall-back is not told
        f.script->openFails = false;
        QVERIFY(f.reach(QCamera::ActiveState));
        QCOMPARE(f.recorder.states, (QList<int> { 2, 2 }));
    }

    void failedStart_reportsAndEndsLoaded()
    {
        CaptureSessionFixture f;
        f.script->startFails = true;
        f.session->requestState(QCamera::ActiveState);
        QTRY_COMPARE(f.recorder.errors, QStringList("1 Camera does not start"));
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Loading, Loaded, Starting, Loaded }));
        QCOMPARE(f.session->requestedState(), QCamera::LoadedState);
        QCOMPARE(f.recorder.states, QList<int> { 2 });
    }

    void failedStart_doesNotUndoALowerRequestMadeMeanwhile()
    {
        CaptureSessionFixture f;
        f.script->startGate.close();
        f.script->startFails = true;
        f.session->requestState(QCamera::ActiveState);
        QTRY_COMPARE(f.script->startGate.waiting(), 1);
        f.session->requestState(QCamera::UnloadedState);
        f.script->startGate.open();
        QTRY_COMPARE(f.recorder.statuses,
                     (QList<int> { Loading, Loaded, Starting, Loaded, Unloading, Unloaded }));
        QCOMPARE(f.session->requestedState(), QCamera::UnloadedState);
        QCOMPARE(f.recorder.errors, QStringList("1 Camera does not start"));
        QCOMPARE(CallLog::instance().texts().filter("startCapture").size(), 1);
    }

    void failedOpen_lowersARequestRaisedMeanwhile()
    {
        CaptureSessionFixture f;
        f.script->openGate.close();
        f.script->openFails = true;
        f.session->requestState(QCamera::LoadedState);
        QTRY_COMPARE(f.script->openGate.waiting(), 1);
        f.session->requestState(QCamera::ActiveState);
        f.script->openGate.open();
        QTRY_COMPARE(f.recorder.errors, QStringList("1 Camera does not open"));
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Loading, Unloaded }));
        QCOMPARE(f.session->requestedState(), QCamera::UnloadedState);
        QCOMPARE(CallLog::instance().count("manager: openCamera(back)"), 1);
    }

    void libraryError_isLoggedAndReportedOnTheLibrarysThread_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << QByteArray("lens stuck") << "lens stuck";
        QTest::newRow("empty") << QByteArray("") << "";
        QTest::newRow("UTF-8") << QByteArray("Linse kl\xc3\xa4mmt")
                               << QString::fromUtf8("Linse kl\xc3\xa4mmt");
        QTest::newRow("up to its first NUL") << QByteArray("lens\0stuck", 10) << "lens";
    }

    void libraryError_isLoggedAndReportedOnTheLibrarysThread()
    {
        QFETCH(QByteArray, message);
        QFETCH(QString, text);
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::ActiveState));
        QTRY_COMPARE(f.recorder.errors.size(), 1); // of the start: none
        f.recorder.clear();
        CallLog::instance().clear();
        MessageLog log;
        LibraryThread::run("CameraLibrary",
                           [&] { f.platform.cameras.openedCamera()->fail(message.toStdString()); });
        QCOMPARE(CallLog::instance().texts(),
                 QStringList("control: error(1, Hardware error " + text + ")"));
        QCOMPARE(CallLog::instance().threadNames("control"), QStringList("CameraLibrary"));
        QCOMPARE(log.messages(),
                 (QStringList { "warning veltra.palaver.capture: Capture error \"" + text + "\"",
                                "critical veltra.palaver.capture: \"Hardware error " + text +
                                        "\" 1" }));
        QTRY_COMPARE(f.recorder.errors, QStringList("1 Hardware error " + text));
        QCOMPARE(f.recorder.statuses, QList<int>()); // an error changes no status
        QCOMPARE(f.session->requestedState(), QCamera::ActiveState);
    }

    void setError_logsTextAndCode_butNotNoError()
    {
        CaptureSessionFixture f;
        MessageLog log;
        f.session->setError(3, "not supported");
        f.session->setError(0, "fine");
        QCOMPARE(f.recorder.errors, (QStringList { "3 not supported", "0 fine" }));
        QCOMPARE(log.messages(),
                 QStringList("critical veltra.palaver.capture: \"not supported\" 3"));
    }

    void errors_areReportedAlsoWhereLoggingIsOff()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::LoadedState));
        QLoggingCategory::setFilterRules("veltra.palaver.capture=false");
        MessageLog log;
        f.platform.cameras.openedCamera()->fail("lens stuck");
        QLoggingCategory::setFilterRules(QString());
        QCOMPARE(f.recorder.errors, QStringList("1 Hardware error lens stuck"));
        QCOMPARE(log.messages(), QStringList());
    }

    void parameterChanges_areIgnored()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::LoadedState));
        f.recorder.clear();
        CallLog::instance().clear();
        MessageLog log;
        f.platform.cameras.openedCamera()->listener()->onCameraParameterChanged(CameraParameter(1),
                                                                                "value");
        QCoreApplication::processEvents();
        QCOMPARE(CallLog::instance().texts(), QStringList());
        QCOMPARE(log.messages(), QStringList());
    }

    void metaObject_hasItsSignalAndSlotsInOrder()
    {
        const QMetaObject &meta = OcelleCaptureSession::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleCaptureSession");
        QCOMPARE(meta.superClass(), &OcelleVideoSession::staticMetaObject);
        QStringList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            methods.append(
                    QString("%1 %2 %3")
                            .arg(method.methodType() == QMetaMethod::Signal ? "signal" : "slot",
                                 QString(method.methodSignature()),
                                 QString(method.parameterNames().join(' '))));
        }
        QCOMPARE(methods, (QStringList { "signal error(int,QString) error errorString",
                                         "slot setDevice(QString) device",
                                         "slot onStatusChanged(QCamera::Status) status" }));
    }

    void virtualOperations_followThoseOfTheVideoSession()
    {
        const int mirror = slotOf(&OcelleVideoSession::mirrorOutput);
        QCOMPARE(slotOf(&OcelleCaptureSession::mirrorOutput), mirror);
        QCOMPARE(slotOf(&OcelleCaptureSession::onCameraFrame), mirror + 1);
        QCOMPARE(slotOf(&OcelleCaptureSession::onCameraParameterChanged), mirror + 2);
        QCOMPARE(slotOf(&OcelleCaptureSession::onCameraError), mirror + 3);
    }
};

QTEST_GUILESS_MAIN(TestCaptureSession)
#include "tst_ocellecapturesession.moc"

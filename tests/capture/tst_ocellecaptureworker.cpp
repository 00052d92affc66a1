// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "fakecamera.h"
#include "messagelog.h"
#include "ocellecaptureworker.h"

#include <QtTest>

using namespace Veltra::Ocelle;
using namespace Statuses;

namespace {

/*! Counts the queued calls that reach an object. */
class CallCounter : public QObject
{
public:
    explicit CallCounter(QObject *object) { object->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::MetaCall)
            ++count;
        return false;
    }

    int count = 0;
};

/*!
 * A worker on the test's own thread: nothing happens but in events. Its session, if it has one,
 * has a worker of its own as well, which stays idle or is used to load the session's list.
 */
class WorkerFixture
{
public:
    explicit WorkerFixture(OcelleCaptureSession *session, FakePlatform &platform)
        : worker(session, &platform.cameras)
        , counter(&worker)
    {
        worker.setDevice("back");
        QObject::connect(&worker, &OcelleCaptureWorker::statusChanged, [this](QCamera::Status s) {
            statuses.append(s);
            CallLog::instance().add("worker", QString("statusChanged(%1)").arg(s));
        });
    }

    /*! Serves events until none is left. */
    void settle()
    {
        int before;
        do {
            before = counter.count;
            QCoreApplication::processEvents();
        } while (counter.count != before);
    }

    OcelleCaptureWorker worker;
    CallCounter counter;
    QList<int> statuses;
};

} // namespace

class TestCaptureWorker : public QObject
{
    Q_OBJECT
private slots:
    void construction_wantsAndHasNothing()
    {
        FakePlatform platform;
        OcelleCaptureWorker worker(nullptr, &platform.cameras);
        QVERIFY(!worker.parent());
        QCOMPARE(worker.requestedState(), QCamera::UnloadedState);
        QCOMPARE(worker.status(), QCamera::UnloadedStatus);
        QCOMPARE(worker.facing(), QCamera::UnspecifiedPosition);
        QVERIFY(worker.supportedViewfinderSettings().isEmpty());
        QCOMPARE(CallLog::instance().texts(), QStringList());
    }

    void requestState_onlyNotesTheWish_andQueuesTheWork()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        WorkerFixture f(nullptr, platform);
        f.worker.requestState(QCamera::LoadedState);
        QCOMPARE(f.worker.requestedState(), QCamera::LoadedState);
        QCOMPARE(f.worker.status(), QCamera::UnloadedStatus);
        QCOMPARE(CallLog::instance().texts(), QStringList());
        f.settle();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "worker: statusChanged(2)", "manager: openCamera(back)",
                                "camera back: setListener(null)", "worker: statusChanged(4)" }));
    }

    void requestState_alreadyRequested_postsOneCallAllTheSame()
    {
        FakePlatform platform;
        WorkerFixture f(nullptr, platform);
        f.worker.requestState(QCamera::UnloadedState);
        f.settle();
        QCOMPARE(f.counter.count, 1);
        QCOMPARE(f.statuses, QList<int>());
    }

    void statuses_thatEndATransition_postTheNextStep()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        WorkerFixture f(nullptr, platform);
        f.worker.requestState(QCamera::LoadedState);
        f.settle();
        QCOMPARE(f.counter.count, 2); // the request, Loaded
        f.worker.requestState(QCamera::UnloadedState);
        f.settle();
        QCOMPARE(f.counter.count, 4); // the request, Unloaded
        QCOMPARE(f.statuses, (QList<int> { Loading, Loaded, Unloading, Unloaded }));
    }

    void setDevice_onlyKeepsTheIdForTheNextLoad()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        platform.cameras.add("front");
        WorkerFixture f(nullptr, platform);
        f.worker.requestState(QCamera::LoadedState);
        f.settle();
        CallLog::instance().clear();
        f.worker.setDevice("front");
        f.settle();
        QCOMPARE(CallLog::instance().texts(), QStringList());
        f.worker.requestState(QCamera::UnloadedState);
        f.worker.requestState(QCamera::LoadedState);
        f.settle();
        QCOMPARE(CallLog::instance().texts("manager"), QStringList("manager: openCamera(front)"));
    }

    void lowerThenHigherRequest_passesThroughTheFloor()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        WorkerFixture f(nullptr, platform);
        f.worker.requestState(QCamera::LoadedState);
        f.settle();
        f.statuses.clear();
        f.worker.requestState(QCamera::UnloadedState);
        f.worker.requestState(QCamera::LoadedState);
        f.settle();
        QCOMPARE(f.statuses, (QList<int> { Unloading, Unloaded, Loading, Loaded }));
        QCOMPARE(platform.cameras.heldCameras(), 1);
    }

    void lowerThenHigherRequest_beforeAnythingRan_justGoesUp()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        WorkerFixture f(nullptr, platform);
        f.worker.requestState(QCamera::LoadedState);
        f.worker.requestState(QCamera::UnloadedState);
        f.worker.requestState(QCamera::LoadedState);
        f.settle();
        QCOMPARE(f.statuses, (QList<int> { Loading, Loaded }));
        QCOMPARE(CallLog::instance().count("manager: openCamera(back)"), 1);
    }

    void load_givesTheSessionToTheCameraAsListener()
    {
        CaptureSessionFixture s;
        WorkerFixture f(s.session.get(), s.platform);
        QVERIFY(f.worker.load());
        QCOMPARE(s.platform.cameras.openedCamera()->listener(),
                 static_cast<CameraListener *>(s.session.get()));
    }

    void load_failing_lowersTheRequestAndReportsOnce()
    {
        CaptureSessionFixture s;
        WorkerFixture f(s.session.get(), s.platform);
        s.script->openFails = true;
        MessageLog log;
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        QCOMPARE(f.worker.requestedState(), QCamera::UnloadedState);
        QCOMPARE(f.statuses, (QList<int> { Loading, Unloaded }));
        QCOMPARE(s.recorder.errors, QStringList("1 Camera does not open"));
        QCOMPARE(s.recorder.states, QList<int>());
        QCOMPARE(log.messages(),
                 QStringList("critical veltra.palaver.capture: \"Camera does not open\" 1"));
        QCOMPARE(CallLog::instance().count("manager: openCamera(back)"), 1);
    }

    void load_failingWithoutASession_lowersTheRequest()
    {
        FakePlatform platform;
        WorkerFixture f(nullptr, platform);
        f.worker.requestState(QCamera::LoadedState);
        f.settle();
        QCOMPARE(f.worker.requestedState(), QCamera::UnloadedState);
        QVERIFY(!f.worker.load());
    }

    void start_withoutMatchingSettings_staysLoadedAndReports()
    {
        CaptureSessionFixture s; // whose own worker is unloaded: it has no list
        WorkerFixture f(s.session.get(), s.platform);
        MessageLog log;
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        QCOMPARE(f.statuses, (QList<int> { Loading, Loaded }));
        QCOMPARE(f.worker.requestedState(), QCamera::LoadedState);
        QCOMPARE(s.recorder.errors, QStringList("1 Couldn't find supported camera settings"));
        QCOMPARE(log.messages(), QStringList("critical veltra.palaver.capture: "
                                             "\"Couldn't find supported camera settings\" 1"));
        QVERIFY(!f.worker.start());
    }

    void start_refused_staysLoadedAndReports_butReturnsTrue()
    {
        CaptureSessionFixture s;
        QVERIFY(s.reach(QCamera::LoadedState));
        WorkerFixture f(s.session.get(), s.platform);
        s.script->startFails = true;
        MessageLog log;
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        QCOMPARE(f.statuses, (QList<int> { Loading, Loaded, Starting, Loaded }));
        QCOMPARE(f.worker.requestedState(), QCamera::LoadedState);
        QCOMPARE(s.recorder.errors, QStringList("1 Camera does not start"));
        QCOMPARE(log.messages(),
                 QStringList("critical veltra.palaver.capture: \"Camera does not start\" 1"));
        QVERIFY(f.worker.start());
    }

    void start_reportsNoErrorOnSuccess_whichIsNotLogged()
    {
        CaptureSessionFixture s;
        QVERIFY(s.reach(QCamera::LoadedState));
        WorkerFixture f(s.session.get(), s.platform);
        MessageLog log;
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        QCOMPARE(f.statuses, (QList<int> { Loading, Loaded, Starting, Active }));
        QCOMPARE(s.recorder.errors, QStringList("0 "));
        QCOMPARE(log.messages(), QStringList());
        QCOMPARE(CallLog::instance().count("camera back: startCapture(640x480@30, 255)"), 1);
        QCOMPARE(f.counter.count, 3); // the request, Loaded, Active
    }

    void floorLoaded_stopsAndStartsWithoutClosing()
    {
        CaptureSessionFixture s;
        QVERIFY(s.reach(QCamera::LoadedState));
        WorkerFixture f(s.session.get(), s.platform);
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        f.statuses.clear();
        f.worker.requestState(QCamera::LoadedState);
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        QCOMPARE(f.statuses, (QList<int> { Stopping, Standby, Starting, Active }));
    }

    void floorUnloaded_closesAndReopens()
    {
        CaptureSessionFixture s;
        QVERIFY(s.reach(QCamera::LoadedState));
        WorkerFixture f(s.session.get(), s.platform);
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        f.statuses.clear();
        f.worker.requestState(QCamera::UnloadedState);
        f.worker.requestState(QCamera::LoadedState); // does not raise the floor
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        QCOMPARE(f.statuses,
                 (QList<int> { Stopping, Unloading, Unloaded, Loading, Loaded, Starting, Active }));
    }

    void floor_isRaisedAgainByTheNextClimb()
    {
        CaptureSessionFixture s;
        QVERIFY(s.reach(QCamera::LoadedState));
        WorkerFixture f(s.session.get(), s.platform);
        f.worker.requestState(QCamera::ActiveState);
        f.settle();
        f.statuses.clear();
        // Of a floor of Unloaded nothing may be left by now: this only stops.
        f.worker.requestState(QCamera::LoadedState);
        f.settle();
        QCOMPARE(f.statuses, (QList<int> { Stopping, Standby }));
    }

    void stopAndUnload_areTheDevices()
    {
        CaptureSessionFixture s;
        QVERIFY(s.reach(QCamera::LoadedState));
        WorkerFixture f(s.session.get(), s.platform);
        f.worker.load();
        f.worker.start();
        f.statuses.clear();
        f.worker.stop();
        QCOMPARE(f.statuses, (QList<int> { Stopping, Standby }));
        f.worker.unload();
        QCOMPARE(f.statuses, (QList<int> { Stopping, Standby, Unloading, Unloaded }));
    }

    void destruction_stopsAndDropsTheCamera()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        {
            WorkerFixture f(nullptr, platform);
            f.worker.load();
            CallLog::instance().clear();
        }
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "camera back: stopCapture()", "camera back: destroyed" }));
    }

    void metaObject_hasItsSignalAndSlotsInOrder()
    {
        const QMetaObject &meta = OcelleCaptureWorker::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleCaptureWorker");
        QStringList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            methods.append(
                    QString("%1 %2 %3")
                            .arg(method.methodType() == QMetaMethod::Signal ? "signal" : "slot",
                                 QString(method.methodSignature()),
                                 QString(method.parameterNames().join(' '))));
        }
        QCOMPARE(methods, (QStringList { "signal statusChanged(QCamera::Status) status",
                                         "slot applyState() ",
                                         "slot onStatusChanged(QCamera::Status) status" }));
    }
};

QTEST_GUILESS_MAIN(TestCaptureWorker)
#include "tst_ocellecaptureworker.moc"

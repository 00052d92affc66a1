// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "fakecamera.h"
#include "fakegraphicbuffer.h"
#include "fakesurface.h"
#include "librarythread.h"

#include <QCameraControl>
#include <QCameraViewfinderSettingsControl2>
#include <QMediaService>
#include <QTimer>
#include <QVideoDeviceSelectorControl>
#include <QVideoRendererControl>
#include <QtTest>

#include <palaver/qpvrawvideosourcecontrol.h>

using namespace Veltra::Ocelle;
using namespace Statuses;

namespace {

/*! A service of the provider's with both surfaces, over a camera that streams. */
class ServiceFixture
{
public:
    ServiceFixture()
        : script(platform.cameras.add("back"))
        , provider(&platform.cameras, &platform.codecs)
        , service(provider.create("veltra.palaver.camera"))
        , camera(service->requestControl<QCameraControl *>())
    {
        script->streams = true;
        service->requestControl<QVideoRendererControl *>()->setSurface(&viewfinder);
        service->requestControl<QPVRawVideoSourceControl *>()->setSurface(&raw);
    }
    ~ServiceFixture()
    {
        openGates();
        release();
    }

    void openGates()
    {
        for (Gate *gate : { &script->openGate, &script->startGate, &script->stopGate, &closeGate })
            gate->open();
    }

    void release()
    {
        QMediaService *released = service;
        service = nullptr;
        provider.release(released);
    }

    /*! Brings the camera to \a state and then, or on the way to it, into \a status for good. */
    bool hold(int status)
    {
        switch (status) {
        case Loading:
            return request(QCamera::ActiveState, &script->openGate, status);
        case Loaded:
            return request(QCamera::LoadedState, nullptr, status);
        case Starting:
            return request(QCamera::ActiveState, &script->startGate, status);
        case Active:
            return request(QCamera::ActiveState, nullptr, status);
        case Stopping:
            return hold(Active) && request(QCamera::LoadedState, &script->stopGate, status);
        case Standby:
            return hold(Active) && request(QCamera::LoadedState, nullptr, status);
        case Unloading:
            CallLog::instance().setObserver([this](const Call &call) {
                if (call.text() == "camera back: destroyed")
                    closeGate.pass();
            });
            return hold(Loaded) && request(QCamera::UnloadedState, &closeGate, status);
        default:
            return true;
        }
    }

    /*! Nothing of the camera, its pictures or the outputs is left. */
    bool isEverythingGone() const
    {
        return platform.cameras.heldCameras() == 0 && FakeVideoOutput::alive() == 0 &&
               GraphicBuffer::alive() == 0;
    }

    FakePlatform platform;
    Gate closeGate; // holds the camera's destruction up
    std::shared_ptr<FakeCameraScript> script;
    OcelleProvider provider;
    FakeSurface viewfinder;
    FakeSurface raw;
    QMediaService *service; // ours until release()
    QCameraControl *const camera;

private:
    bool request(QCamera::State state, Gate *gate, int status)
    {
        if (gate)
            gate->close();
        camera->setState(state);
        return QTest::qWaitFor(
                [&] { return camera->status() == status && (!gate || gate->waiting() == 1); });
    }
};

/*! As qWaitFor(), but without its naps, which add up over many cycles. */
template <typename Predicate>
void serveEventsUntil(Predicate predicate)
{
    while (!predicate()) {
        QCoreApplication::processEvents();
        std::this_thread::yield();
    }
}

void addStatuses()
{
    QTest::addColumn<int>("status");
    QTest::newRow("Unloaded") << Unloaded;
    QTest::newRow("Loading") << Loading;
    QTest::newRow("Loaded") << Loaded;
    QTest::newRow("Starting") << Starting;
    QTest::newRow("Active") << Active;
    QTest::newRow("Stopping") << Stopping;
    QTest::newRow("Standby") << Standby;
    QTest::newRow("Unloading") << Unloading;
}

} // namespace

/*! Taking a service down, whatever the camera is doing. A hang shows as a timeout. */
class TestCaptureSessionShutdown : public QObject
{
    Q_OBJECT
private slots:
    void release_inEveryStatus_servesEventsAndEnds_data() { addStatuses(); }

    void release_inEveryStatus_servesEventsAndEnds()
    {
        QFETCH(int, status);
        ServiceFixture f;
        QVERIFY(f.hold(status));
        // Nothing but the events served while release() waits opens the gates.
        QTimer::singleShot(0, &f.viewfinder, [&] { f.openGates(); });
        f.release();
        QVERIFY(f.isEverythingGone());
    }

    void release_insideTheRunningEventLoop_ends_data() { addStatuses(); }

    void release_insideTheRunningEventLoop_ends()
    {
        QFETCH(int, status);
        ServiceFixture f;
        QVERIFY(f.hold(status));
        bool released = false;
        QTimer::singleShot(0, [&] {
            QTimer::singleShot(0, &f.viewfinder, [&] { f.openGates(); });
            f.release();
            released = true;
            QCoreApplication::quit();
        });
        QCoreApplication::exec();
        QVERIFY(released);
        QVERIFY(f.isEverythingGone());
    }

    void release_afterTheEventLoopHasReturned_ends_data() { addStatuses(); }

    void release_afterTheEventLoopHasReturned_ends()
    {
        QFETCH(int, status);
        ServiceFixture f;
        QVERIFY(f.hold(status));
        QTimer::singleShot(0, [] { QCoreApplication::quit(); });
        QCoreApplication::exec();
        LibraryThread opener("Opener", [&] { f.openGates(); });
        f.release();
        QVERIFY(f.isEverythingGone());
    }

    void release_inASlotOfStatusChanged_isSafe_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("Loading") << Loading;
        QTest::newRow("Loaded") << Loaded;
        QTest::newRow("Starting") << Starting;
        QTest::newRow("Active") << Active;
        QTest::newRow("Stopping") << Stopping;
        QTest::newRow("Standby") << Standby;
        QTest::newRow("Unloading") << Unloading;
        QTest::newRow("Unloaded") << Unloaded;
    }

    void release_inASlotOfStatusChanged_isSafe()
    {
        QFETCH(int, status);
        ServiceFixture f;
        connect(f.camera, &QCameraControl::statusChanged, &f.viewfinder,
                [&f, status](QCamera::Status now) {
                    if (now == status && f.service)
                        f.release();
                });
        f.camera->setState(QCamera::ActiveState);
        if (status == Stopping || status == Standby || status == Unloading || status == Unloaded) {
            QTRY_COMPARE(f.camera->status(), QCamera::ActiveStatus);
            f.camera->setState(QCamera::LoadedState);
        }
        if (status == Unloading || status == Unloaded) {
            QTRY_COMPARE(f.camera->status(), QCamera::StandbyStatus);
            f.camera->setState(QCamera::UnloadedState);
        }
        QTRY_VERIFY(!f.service);
        QVERIFY(f.isEverythingGone());
    }

    void release_inASlotOfStateChanged_isSafe()
    {
        ServiceFixture f;
        connect(f.camera, &QCameraControl::stateChanged, &f.viewfinder, [&f] {
            if (f.service)
                f.release();
        });
        f.camera->setState(QCamera::ActiveState);
        QVERIFY(!f.service);
        QVERIFY(f.isEverythingGone());
    }

    void release_inTheMiddleOfARestart_isSafe_data()
    {
        QTest::addColumn<bool>("byDevice");
        QTest::newRow("another camera") << true;
        QTest::newRow("other settings") << false;
    }

    void release_inTheMiddleOfARestart_isSafe()
    {
        QFETCH(bool, byDevice);
        ServiceFixture f;
        f.platform.cameras.add("second");
        f.platform.cameras.notifyAdded("second");
        QVERIFY(f.hold(Active));
        connect(f.camera, &QCameraControl::stateChanged, &f.viewfinder, [&f] {
            if (f.service)
                f.release();
        });
        if (byDevice) {
            f.service->requestControl<QVideoDeviceSelectorControl *>()->setSelectedDevice(1);
        } else {
            f.service->requestControl<QCameraViewfinderSettingsControl2 *>()->setViewfinderSettings(
                    viewfinderSettings(QSize(1280, 720)));
        }
        QVERIFY(!f.service);
        QVERIFY(f.isEverythingGone());
    }

    void release_inASlotOfError_isSafe_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("open") << "Camera does not open";
        QTest::newRow("start") << "Camera does not start";
        QTest::newRow("settings") << "Couldn't find supported camera settings";
        QTest::newRow("none") << "";
        QTest::newRow("library") << "Hardware error gone";
    }

    void release_inASlotOfError_isSafe()
    {
        QFETCH(QString, text);
        ServiceFixture f;
        f.script->openFails = text.endsWith("open");
        f.script->startFails = text.endsWith("start");
        f.script->capabilitiesFail = text.endsWith("settings");
        connect(f.camera, &QCameraControl::error, &f.viewfinder,
                [&f, text](int, const QString &reported) {
                    if (reported == text && f.service)
                        f.release();
                });
        f.camera->setState(QCamera::ActiveState);
        if (text.startsWith("Hardware")) {
            QTRY_COMPARE(f.camera->status(), QCamera::ActiveStatus);
            LibraryThread::run("CameraLibrary",
                               [&] { f.platform.cameras.openedCamera()->fail("gone"); });
        }
        QTRY_VERIFY(!f.service);
        QVERIFY(f.isEverythingGone());
    }

    void release_whileAPictureIsBeingPresented_waitsForIt()
    {
        ServiceFixture f;
        QVERIFY(f.hold(Active));
        const auto output = FakeVideoOutput::at(1);
        output->bufferGate.close();
        QTRY_COMPARE(output->bufferGate.waiting(), 1);
        LibraryThread opener("Opener", [&] { output->bufferGate.open(); });
        f.release();
        QVERIFY(f.isEverythingGone());
        QCOMPARE(CallLog::instance().texts("output 1").last(), QString("output 1: destroyed"));
    }

    void release_tellsTheWayDown()
    {
        ServiceFixture f;
        QVERIFY(f.hold(Active));
        QCoreApplication::processEvents();
        CaptureRecorder recorder(f.camera);
        f.release();
        QCOMPARE(recorder.states, QList<int> { QCamera::UnloadedState });
        QCOMPARE(recorder.statuses, (QList<int> { Stopping, Unloading, Unloaded }));
    }

    void hundredCycles_leaveNothingBehind()
    {
        ServiceFixture f;
        for (int cycle = 0; cycle < 100; ++cycle) {
            f.camera->setState(QCamera::ActiveState);
            serveEventsUntil([&] { return f.camera->status() == QCamera::ActiveStatus; });
            const auto camera = f.platform.cameras.openedCamera();
            serveEventsUntil([&] { return camera->streamed() > 0; });
            const bool standby = cycle % 2;
            f.camera->setState(standby ? QCamera::LoadedState : QCamera::UnloadedState);
            const auto end = standby ? QCamera::StandbyStatus : QCamera::UnloadedStatus;
            serveEventsUntil([&] { return f.camera->status() == end; });
        }
        QCOMPARE(CallLog::instance().texts("camera").filter("startCapture").size(), 100);
        QCOMPARE(CallLog::instance().count("camera back: stopCapture()"), 100);
        f.release();
        QVERIFY(f.isEverythingGone());
        QCOMPARE(CallLog::instance().count("camera back: destroyed"),
                 CallLog::instance().count("manager: openCamera(back)"));
    }

    void hundredServices_comeAndGo()
    {
        FakePlatform platform;
        platform.cameras.add("back")->streams = true;
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        for (int i = 0; i < 100; ++i) {
            QMediaService *service = provider.create("veltra.palaver.camera");
            auto *camera = service->requestControl<QCameraControl *>();
            camera->setState(i % 2 ? QCamera::ActiveState : QCamera::LoadedState);
            if (i % 3 == 0)
                serveEventsUntil([&] { return camera->status() > QCamera::UnloadingStatus; });
            provider.release(service);
            QCOMPARE(platform.cameras.heldCameras(), 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestCaptureSessionShutdown)
#include "tst_ocellecapturesessionshutdown.moc"

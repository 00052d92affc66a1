// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "fakecamera.h"
#include "fakesurface.h"
#include "ocellecaptureservice.h"

#include <QCameraControl>
#include <QCameraInfoControl>
#include <QCameraViewfinderSettingsControl2>
#include <QVideoDeviceSelectorControl>
#include <QVideoRendererControl>
#include <QtTest>

#include <palaver/qpvrawvideosourcecontrol.h>

using namespace Veltra::Ocelle;
using namespace Statuses;

namespace {

const char *const controlIds[] = {
    "org.qt-project.qt.videodeviceselectorcontrol/5.0",
    "org.qt-project.qt.cameracontrol/5.0",
    "org.qt-project.qt.videorenderercontrol/5.0",
    "org.qt-project.qt.camerainfocontrol/5.3",
    "veltra.palaver.rawvideosourcecontrol/1.0",
    "org.qt-project.qt.cameraviewfindersettingscontrol2/5.5",
};

/*! A service over the scripted cameras "back" and "front". */
class ServiceFixture
{
public:
    explicit ServiceFixture(bool withCameras = true)
    {
        if (withCameras) {
            platform.cameras.add("back");
            platform.cameras.add("front", CameraFacing::Front);
        }
        provider.reset(new OcelleProvider(&platform.cameras, &platform.codecs));
        CallLog::instance().clear();
        service.reset(new OcelleCaptureService(provider.get(), nullptr));
    }

    template <typename Control>
    Control *control(const char *id)
    {
        return qobject_cast<Control *>(service->requestControl(id));
    }
    QCameraControl *camera() { return control<QCameraControl>(controlIds[1]); }

    FakePlatform platform;
    std::unique_ptr<OcelleProvider> provider;
    std::unique_ptr<OcelleCaptureService> service;
};

} // namespace

class TestCaptureService : public QObject
{
    Q_OBJECT
private slots:
    void controls_areFoundByTheirIds_data()
    {
        QTest::addColumn<QByteArray>("id");
        QTest::addColumn<QByteArray>("className");
        const char *const classNames[] = {
            "OcelleSelector",    "OcelleCaptureControl",        "OcelleVideoRendererControl",
            "OcelleInfoControl", "OcelleRawVideoSourceControl", "QCameraViewfinderSettingsControl2"
        }; // the last has no meta-object of its own
        for (int i = 0; i < 6; ++i)
            QTest::newRow(classNames[i]) << QByteArray(controlIds[i]) << QByteArray(classNames[i]);
    }

    void controls_areFoundByTheirIds()
    {
        QFETCH(QByteArray, id);
        QFETCH(QByteArray, className);
        ServiceFixture f;
        QMediaControl *control = f.service->requestControl(id.constData());
        QVERIFY(control);
        QCOMPARE(QByteArray(control->metaObject()->className()), className);
        QCOMPARE(f.service->requestControl(id.constData()), control);
        f.service->releaseControl(control); // which does nothing
        QCOMPARE(f.service->requestControl(id.constData()), control);
    }

    void controls_areFoundByQtsTypes()
    {
        ServiceFixture f;
        QMediaService *service = f.service.get();
        QVERIFY(service->requestControl<QVideoDeviceSelectorControl *>());
        QVERIFY(service->requestControl<QCameraControl *>());
        QVERIFY(service->requestControl<QVideoRendererControl *>());
        QVERIFY(service->requestControl<QCameraInfoControl *>());
        QVERIFY(service->requestControl<QPVRawVideoSourceControl *>());
        QVERIFY(service->requestControl<QCameraViewfinderSettingsControl2 *>());
    }

    void unknownIds_areAnsweredWithNull_data()
    {
        QTest::addColumn<QByteArray>("id");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("other version") << QByteArray("org.qt-project.qt.cameracontrol/5.1");
        QTest::newRow("other case") << QByteArray("org.qt-project.qt.CameraControl/5.0");
        QTest::newRow("beginning of one") << QByteArray("org.qt-project.qt.cameracontrol");
        QTest::newRow("old settings control")
                << QByteArray("org.qt-project.qt.cameraviewfindersettingscontrol/5.0");
    }

    void unknownIds_areAnsweredWithNull()
    {
        QFETCH(QByteArray, id);
        ServiceFixture f;
        QVERIFY(!f.service->requestControl(id.constData()));
    }

    void nullId_andNullControl_areHarmless()
    {
        ServiceFixture f;
        QVERIFY(!f.service->requestControl(static_cast<const char *>(nullptr)));
        f.service->releaseControl(nullptr);
    }

    void construction_selectsTheDefaultCamera_andTouchesNoCamera()
    {
        ServiceFixture f;
        QCOMPARE(CallLog::instance().texts(), QStringList());
        QCOMPARE(f.camera()->state(), QCamera::UnloadedState);
        QCOMPARE(f.camera()->status(), QCamera::UnloadedStatus);
        QCOMPARE(f.control<QVideoDeviceSelectorControl>(controlIds[0])->selectedDevice(), 1);
        f.camera()->setState(QCamera::LoadedState);
        QTRY_COMPARE(f.camera()->status(), QCamera::LoadedStatus);
        QCOMPARE(CallLog::instance().count("manager: openCamera(front)"), 1);
    }

    void construction_withoutCameras_selectsNone()
    {
        ServiceFixture f(false);
        CaptureRecorder recorder(f.camera());
        f.camera()->setState(QCamera::ActiveState);
        QTRY_COMPARE(recorder.errors, QStringList("1 Camera does not open"));
        QCOMPARE(CallLog::instance().texts("manager"), QStringList("manager: openCamera()"));
    }

    void selection_restartsTheSessionAtOnce()
    {
        ServiceFixture f;
        CaptureRecorder recorder(f.camera());
        f.camera()->setState(QCamera::ActiveState);
        QTRY_COMPARE(recorder.statuses.value(3), Active);
        recorder.clear();
        f.control<QVideoDeviceSelectorControl>(controlIds[0])->setSelectedDevice(0);
        QCOMPARE(recorder.states, (QList<int> { 0, 2 })); // before the call returns
        QTRY_COMPARE(recorder.statuses, (QList<int> { Stopping, Unloading, Unloaded, Loading,
                                                      Loaded, Starting, Active }));
        QCOMPARE(CallLog::instance().count("manager: openCamera(back)"), 1);
    }

    void selection_pastTheEnd_failsToOpen()
    {
        ServiceFixture f;
        CaptureRecorder recorder(f.camera());
        f.camera()->setState(QCamera::LoadedState);
        QTRY_COMPARE(f.camera()->status(), QCamera::LoadedStatus);
        f.control<QVideoDeviceSelectorControl>(controlIds[0])->setSelectedDevice(9);
        QTRY_COMPARE(recorder.errors, QStringList("1 Camera does not open"));
        QCOMPARE(f.camera()->state(), QCamera::UnloadedState);
    }

    void unplugging_theActiveCamera_goesOnWithTheDefault()
    {
        ServiceFixture f;
        CaptureRecorder recorder(f.camera());
        f.camera()->setState(QCamera::ActiveState);
        QTRY_COMPARE(f.camera()->status(), QCamera::ActiveStatus);
        f.platform.cameras.remove("front");
        f.platform.cameras.notifyRemoved("front");
        QTRY_COMPARE(CallLog::instance().texts("camera back").filter("startCapture").size(), 1);
        QTRY_COMPARE(f.camera()->status(), QCamera::ActiveStatus);
        QCOMPARE(CallLog::instance().texts("camera front").last(),
                 QString("camera front: destroyed"));
    }

    void surfaces_getThePictures_mirroredForTheFrontCamera()
    {
        ServiceFixture f;
        FakeSurface viewfinder;
        FakeSurface raw;
        f.control<QVideoRendererControl>(controlIds[2])->setSurface(&viewfinder);
        f.control<QPVRawVideoSourceControl>(controlIds[4])->setSurface(&raw);
        f.camera()->setState(QCamera::ActiveState);
        QTRY_COMPARE(f.camera()->status(), QCamera::ActiveStatus);
        f.platform.cameras.openedCamera()->deliver(3);
        for (int number : { 1, 2 }) {
            QCOMPARE(FakeVideoOutput::at(number)->buffers(), QVector<int> { 3 });
            QVERIFY(FakeVideoOutput::at(number)->isMirrored());
        }
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &viewfinder);
        QCOMPARE(FakeVideoOutput::at(2)->surface(), &raw);
    }

    void controls_haveTheirParents()
    {
        ServiceFixture f;
        QCOMPARE(f.service->requestControl(controlIds[0])->parent(), f.service.get());
        for (int i : { 1, 2, 3, 4 })
            QVERIFY(!f.service->requestControl(controlIds[i])->parent());
        QObject *session = f.service->requestControl(controlIds[5])->parent();
        QVERIFY(qobject_cast<OcelleCaptureSession *>(session));
        QCOMPARE(session->parent(), f.service.get());
    }

    void destruction_shutsDown_thenDeletesFromTheLastToTheFirst()
    {
        ServiceFixture f;
        QStringList destroyed;
        const auto watch = [&](QObject *object, const QString &name) {
            connect(object, &QObject::destroyed, [&destroyed, name] {
                destroyed.append(name);
                CallLog::instance().add("destroyed", name);
            });
        };
        watch(f.service.get(), "service");
        const QStringList names { "selector", "capture", "renderer", "info", "raw", "settings" };
        for (int i = 0; i < names.size(); ++i)
            watch(f.service->requestControl(controlIds[i]), names.at(i));
        watch(f.service->requestControl(controlIds[5])->parent(), "session");
        f.camera()->setState(QCamera::ActiveState);
        QTRY_COMPARE(f.camera()->status(), QCamera::ActiveStatus);
        f.service.reset();
        QCOMPARE(destroyed, (QStringList { "settings", "raw", "info", "renderer", "selector",
                                           "capture", "session", "service" }));
        const int closed = CallLog::instance().indexOf("camera front: destroyed");
        QVERIFY(closed >= 0);
        QVERIFY(closed < CallLog::instance().indexOf("destroyed: settings"));
        QCOMPARE(f.platform.cameras.heldCameras(), 0);
    }

    void services_areIndependent()
    {
        ServiceFixture f;
        OcelleCaptureService other(f.provider.get(), nullptr);
        auto *otherCamera = static_cast<QMediaService &>(other).requestControl<QCameraControl *>();
        QVERIFY(otherCamera != f.camera());
        f.camera()->setState(QCamera::ActiveState);
        otherCamera->setState(QCamera::LoadedState);
        QTRY_COMPARE(f.camera()->status(), QCamera::ActiveStatus);
        QTRY_COMPARE(otherCamera->status(), QCamera::LoadedStatus);
        QCOMPARE(f.platform.cameras.heldCameras(), 2);
        f.service.reset();
        QCOMPARE(otherCamera->status(), QCamera::LoadedStatus);
    }

    void metaObject_namesTheClass()
    {
        QCOMPARE(OcelleCaptureService::staticMetaObject.className(), "OcelleCaptureService");
        QCOMPARE(OcelleCaptureService::staticMetaObject.superClass(),
                 &QMediaService::staticMetaObject);
    }
};

QTEST_GUILESS_MAIN(TestCaptureService)
#include "tst_ocellecaptureservice.moc"

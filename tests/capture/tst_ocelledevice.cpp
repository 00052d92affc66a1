// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "fakecamera.h"
#include "ocelledevice.h"

#include <QtTest>

using namespace Veltra::Ocelle;
using namespace Statuses;

namespace {

/*! A device over one scripted camera, its statuses recorded. */
class DeviceFixture
{
public:
    DeviceFixture()
        : script(platform.cameras.add("back"))
        , device(new OcelleDevice(&platform.cameras))
    {
        QObject::connect(
                device.get(), &OcelleDevice::statusChanged, [this](QCamera::Status status) {
                    statuses.append(status);
                    CallLog::instance().add("device", QString("statusChanged(%1)").arg(status));
                });
    }

    void clear()
    {
        statuses.clear();
        CallLog::instance().clear();
    }

    FakePlatform platform;
    std::shared_ptr<FakeCameraScript> script;
    QList<int> statuses;
    std::unique_ptr<OcelleDevice> device;
};

/*! A listener that is only an address. */
class Listener : public CameraListener
{
public:
    void onCameraFrame(std::shared_ptr<GraphicBuffer>) override {}
    void onCameraError(const std::string &) override {}
    void onCameraParameterChanged(CameraParameter, const std::string &) override {}
};

const QCameraViewfinderSettings vga = viewfinderSettings(QSize(640, 480), 30, 30);

} // namespace

class TestDevice : public QObject
{
    Q_OBJECT
private slots:
    void construction_isUnloadedAndCallsNothing()
    {
        DeviceFixture f;
        QVERIFY(!f.device->parent());
        QCOMPARE(f.device->status(), QCamera::UnloadedStatus);
        QVERIFY(!f.device->captureStarted());
        QCOMPARE(CallLog::instance().texts(), QStringList());
    }

    void load_opensTheCameraAndSetsTheListener()
    {
        DeviceFixture f;
        Listener listener;
        QVERIFY(f.device->load("back", &listener));
        QCOMPARE(
                CallLog::instance().texts(),
                (QStringList { "device: statusChanged(2)", "manager: openCamera(back)",
                               "camera back: setListener(listener)", "device: statusChanged(4)" }));
        QCOMPARE(f.platform.cameras.openedCamera()->listener(), &listener);
        QCOMPARE(f.device->status(), QCamera::LoadedStatus);
    }

    void load_passesTheIdAsUtf8()
    {
        DeviceFixture f;
        f.platform.cameras.add("K\xc3\xa4mera/\xe2\x82\xac");
        QVERIFY(f.device->load(QString::fromUtf8("K\xc3\xa4mera/\xe2\x82\xac"), nullptr));
        QCOMPARE(CallLog::instance().count(
                         QString::fromUtf8("manager: openCamera(K\xc3\xa4mera/\xe2\x82\xac)")),
                 1);
    }

    void load_failingToOpen_endsUnloaded()
    {
        DeviceFixture f;
        f.script->openFails = true;
        QVERIFY(!f.device->load("back", nullptr));
        QCOMPARE(f.statuses, (QList<int> { Loading, Unloaded }));
        QCOMPARE(f.device->status(), QCamera::UnloadedStatus);
    }

    void load_whileLoaded_isRefusedAndForcesUnloaded_keepingTheCamera()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.clear();
        QVERIFY(!f.device->load("back", nullptr));
        QCOMPARE(f.statuses, QList<int> { Unloaded });
        QCOMPARE(f.platform.cameras.heldCameras(), 1);
        QCOMPARE(CallLog::instance().texts("manager"), QStringList());
    }

    void load_afterARefusedLoad_replacesTheCameraStillHeld()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.device->load("back", nullptr);
        f.clear();
        QVERIFY(f.device->load("back", nullptr));
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "device: statusChanged(2)", "manager: openCamera(back)",
                                "camera back: destroyed", "camera back: setListener(null)",
                                "device: statusChanged(4)" }));
        QCOMPARE(f.platform.cameras.heldCameras(), 1);
    }

    void start_capturesWithSizeRateAndTheConstant()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.clear();
        QVERIFY(f.device->start(vga));
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "device: statusChanged(6)",
                                "camera back: startCapture(640x480@30, 255)",
                                "device: statusChanged(8)" }));
        QVERIFY(f.device->captureStarted());
    }

    void start_cutsTheRateOffTowardsZero_data()
    {
        QTest::addColumn<qreal>("rate");
        QTest::addColumn<QString>("call");
        QTest::newRow("29.97") << 29.97 << "camera back: startCapture(640x480@29, 255)";
        QTest::newRow("59.999") << 59.999 << "camera back: startCapture(640x480@59, 255)";
        QTest::newRow("0.9") << 0.9 << "camera back: startCapture(640x480@0, 255)";
        QTest::newRow("none") << 0.0 << "camera back: startCapture(640x480@0, 255)";
    }

    void start_cutsTheRateOffTowardsZero()
    {
        QFETCH(qreal, rate);
        QFETCH(QString, call);
        DeviceFixture f;
        f.device->load("back", nullptr);
        // The minimum counts, whatever the maximum says.
        f.device->start(viewfinderSettings(QSize(640, 480), rate, 120));
        QCOMPARE(CallLog::instance().count(call), 1);
    }

    void start_refusedByTheCamera_endsLoaded()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.script->startFails = true;
        f.clear();
        QVERIFY(!f.device->start(vga));
        QCOMPARE(f.statuses, (QList<int> { Starting, Loaded }));
    }

    void start_refusedFromStandby_endsLoadedToo()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.device->start(vga);
        f.device->stop();
        f.script->startFails = true;
        f.clear();
        QVERIFY(!f.device->start(vga));
        QCOMPARE(f.statuses, (QList<int> { Starting, Loaded }));
    }

    void start_inAWrongStatus_onlySetsLoaded_data()
    {
        QTest::addColumn<int>("status");
        for (int status : { Unloaded, Loading, Unloading, Starting, Stopping, Active })
            QTest::newRow(qPrintable(QString::number(status))) << status;
    }

    void start_inAWrongStatus_onlySetsLoaded()
    {
        QFETCH(int, status);
        DeviceFixture f;
        f.device->setStatus(QCamera::Status(status));
        f.clear();
        QVERIFY(!f.device->start(vga));
        QCOMPARE(CallLog::instance().texts(), QStringList("device: statusChanged(4)"));
    }

    void stop_goesToStandbyByWayOfStopping()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.device->start(vga);
        f.clear();
        f.device->stop();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "device: statusChanged(7)", "camera back: stopCapture()",
                                "device: statusChanged(5)" }));
        QVERIFY(!f.device->captureStarted());
    }

    void stop_withoutACamera_onlySetsStandby()
    {
        DeviceFixture f;
        f.device->setStatus(QCamera::ActiveStatus);
        f.clear();
        f.device->stop();
        QCOMPARE(CallLog::instance().texts(), QStringList("device: statusChanged(5)"));
    }

    void stop_whereNothingRuns_doesNothing_data()
    {
        QTest::addColumn<int>("status");
        for (int status : { Unloaded, Loading, Unloading, Loaded, Standby })
            QTest::newRow(qPrintable(QString::number(status))) << status;
    }

    void stop_whereNothingRuns_doesNothing()
    {
        QFETCH(int, status);
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.device->setStatus(QCamera::Status(status));
        f.clear();
        f.device->stop();
        QCOMPARE(CallLog::instance().texts(), QStringList());
        QCOMPARE(int(f.device->status()), status);
    }

    void close_whileActive_stopsThenDropsTheCamera()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.device->start(vga);
        f.clear();
        f.device->close();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "device: statusChanged(7)", "camera back: stopCapture()",
                                "device: statusChanged(3)", "camera back: destroyed",
                                "device: statusChanged(1)" }));
        QVERIFY(!f.device->captureStarted());
    }

    void close_whileLoaded_dropsTheCameraWithoutStopping()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.clear();
        f.device->close();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "device: statusChanged(3)", "camera back: destroyed",
                                "device: statusChanged(1)" }));
    }

    void close_whileUnloaded_stillTellsBothStatuses()
    {
        DeviceFixture f;
        f.device->close();
        QCOMPARE(f.statuses, (QList<int> { Unloading, Unloaded }));
    }

    void fullCycle_walksThroughItsStatuses()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.device->start(vga);
        f.device->stop();
        f.device->start(vga);
        f.device->close();
        QCOMPARE(f.statuses, (QList<int> { Loading, Loaded, Starting, Active, Stopping, Standby,
                                           Starting, Active, Stopping, Unloading, Unloaded }));
    }

    void destruction_stopsAHeldCameraWhateverTheStatus_withoutASignal()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.clear();
        f.device.reset();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "camera back: stopCapture()", "camera back: destroyed" }));
    }

    void destruction_withoutACamera_callsNothing()
    {
        DeviceFixture f;
        f.device.reset();
        QCOMPARE(CallLog::instance().texts(), QStringList());
    }

    void setStatus_tellsOnlyChanges()
    {
        DeviceFixture f;
        f.device->setStatus(QCamera::UnloadedStatus);
        QCOMPARE(f.statuses, QList<int>());
        f.device->setStatus(QCamera::ActiveStatus);
        f.device->setStatus(QCamera::ActiveStatus);
        QCOMPARE(f.statuses, QList<int> { Active });
    }

    void metaObject_hasOneSignal()
    {
        const QMetaObject &meta = OcelleDevice::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleDevice");
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
        const QMetaMethod signal = meta.method(meta.methodOffset());
        QCOMPARE(signal.methodType(), QMetaMethod::Signal);
        QCOMPARE(signal.methodSignature(), QByteArray("statusChanged(QCamera::Status)"));
        QCOMPARE(signal.parameterNames(), QList<QByteArray> { "status" });
    }
};

QTEST_GUILESS_MAIN(TestDevice)
#include "tst_ocelledevice.moc"

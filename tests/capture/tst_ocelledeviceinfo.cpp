// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "librarythread.h"
#include "ocelledevice.h"

#include <QtTest>

using namespace Veltra::Ocelle;

namespace {

/*! A device over one scripted camera. */
class DeviceFixture
{
public:
    DeviceFixture()
        : script(platform.cameras.add("back"))
        , device(new OcelleDevice(&platform.cameras))
    {
    }

    FakePlatform platform;
    std::shared_ptr<FakeCameraScript> script;
    std::unique_ptr<OcelleDevice> device;
};

} // namespace

/*! What a device tells of its camera. */
class TestDeviceInfo : public QObject
{
    Q_OBJECT
private slots:
    void facing_readsTheCamerasInfo_data()
    {
        QTest::addColumn<int>("facing");
        QTest::addColumn<int>("position");
        QTest::newRow("1 is front") << 1 << int(QCamera::FrontFace);
        QTest::newRow("0 is back") << 0 << int(QCamera::BackFace);
        QTest::newRow("2 is back") << 2 << int(QCamera::BackFace);
        QTest::newRow("-1 is back") << -1 << int(QCamera::BackFace);
    }

    void facing_readsTheCamerasInfo()
    {
        QFETCH(int, facing);
        QFETCH(int, position);
        DeviceFixture f;
        CameraInfo info = f.script->info();
        info.facing = CameraFacing(facing);
        f.script->setInfo(info);
        f.device->load("back", nullptr);
        QCOMPARE(int(f.device->facing()), position);
        QCOMPARE(CallLog::instance().texts().last(), QString("camera back: getInfo()"));
    }

    void facing_isUnspecifiedWithoutCameraOrInfo()
    {
        DeviceFixture f;
        QCOMPARE(f.device->facing(), QCamera::UnspecifiedPosition);
        f.device->load("back", nullptr);
        f.script->infoFails = true;
        QCOMPARE(f.device->facing(), QCamera::UnspecifiedPosition);
    }

    void supportedSettings_areGroupedByFormatInTheLibrarysOrder()
    {
        DeviceFixture f;
        f.script->setFormats({ PixelFormat::YU12, PixelFormat::NV21 });
        f.device->load("back", nullptr);
        const QList<QCameraViewfinderSettings> list = f.device->supportedViewfinderSettings();
        QStringList entries;
        for (const QCameraViewfinderSettings &settings : list) {
            entries.append(QString("%1 %2x%3 %4x%5 %6-%7")
                                   .arg(settings.pixelFormat())
                                   .arg(settings.resolution().width())
                                   .arg(settings.resolution().height())
                                   .arg(settings.pixelAspectRatio().width())
                                   .arg(settings.pixelAspectRatio().height())
                                   .arg(settings.minimumFrameRate())
                                   .arg(settings.maximumFrameRate()));
        }
        QCOMPARE(entries,
                 (QStringList { "18 640x480 640x480 30-30", "18 1280x720 1280x720 30-30",
                                "18 1280x720 1280x720 60-60", "23 640x480 640x480 30-30",
                                "23 1280x720 1280x720 30-30", "23 1280x720 1280x720 60-60" }));
    }

    void supportedSettings_askInOrderIntoEmptyRecords()
    {
        DeviceFixture f;
        f.device->load("back", nullptr);
        CallLog::instance().clear();
        f.device->supportedViewfinderSettings();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "camera back: getInfo()", "camera back: getSupportedPixelFormats()",
                                "manager: getCameraCapabilities(back)" }));
    }

    void supportedSettings_readTheRateAsUnsigned()
    {
        DeviceFixture f;
        f.script->setFormats({ PixelFormat::NV12 });
        f.script->setCapabilities({ { 640, 480, 0x80000000U } });
        f.device->load("back", nullptr);
        QCOMPARE(f.device->supportedViewfinderSettings().first().maximumFrameRate(), 2147483648.0);
    }

    void supportedSettings_areEmpty_whereAnyQuestionFails()
    {
        DeviceFixture f;
        QVERIFY(f.device->supportedViewfinderSettings().isEmpty()); // no camera
        f.device->load("back", nullptr);
        f.script->capabilitiesFail = true;
        QVERIFY(f.device->supportedViewfinderSettings().isEmpty());
        f.script->capabilitiesFail = false;
        f.script->infoFails = true;
        CallLog::instance().clear();
        QVERIFY(f.device->supportedViewfinderSettings().isEmpty());
        QCOMPARE(CallLog::instance().texts(), QStringList("camera back: getInfo()"));
    }

    void camera_isNotLetGoWhileAnotherThreadAsksIt_data()
    {
        QTest::addColumn<bool>("settings");
        QTest::newRow("which way it looks") << false;
        QTest::newRow("what it can deliver") << true;
    }

    void camera_isNotLetGoWhileAnotherThreadAsksIt()
    {
        QFETCH(bool, settings);
        DeviceFixture f;
        f.device->load("back", nullptr);
        f.script->infoGate.close();
        QCamera::Position position = QCamera::UnspecifiedPosition;
        int count = 0;
        LibraryThread asker("Asker", [&] {
            if (settings)
                count = f.device->supportedViewfinderSettings().size();
            else
                position = f.device->facing();
        });
        QTRY_COMPARE(f.script->infoGate.waiting(), 1);
        LibraryThread closer("Closer", [&] { f.device->close(); });
        QTRY_COMPARE(f.device->status(), QCamera::UnloadingStatus);
        CallLog::instance().add("gate", "opened");
        f.script->infoGate.open();
        asker.join();
        closer.join();
        QCOMPARE(f.device->status(), QCamera::UnloadedStatus);
        QCOMPARE(count, settings ? 6 : 0);
        QCOMPARE(position, settings ? QCamera::UnspecifiedPosition : QCamera::BackFace);
        const QVector<Call> calls = CallLog::instance().calls();
        QCOMPARE(calls.last().text(), QString("camera back: destroyed"));
        QCOMPARE(calls.last().threadName, QString("Closer")); // never the one that only asked
    }

    void pixelFormats_areTranslated_data()
    {
        QTest::addColumn<quint32>("format");
        QTest::addColumn<int>("qtFormat");
        QTest::newRow("YUV420Planar") << 1U << 18;
        QTest::newRow("YUV420SemiPlanar") << 2U << 22;
        QTest::newRow("NV21") << 0x3132564EU << 23;
        QTest::newRow("YU12") << 0x32315559U << 18;
        QTest::newRow("NV12") << 0x3231564EU << 22;
        QTest::newRow("0") << 0U << 0;
        QTest::newRow("3") << 3U << 0;
        QTest::newRow("all bits") << 0xFFFFFFFFU << 0;
    }

    void pixelFormats_areTranslated()
    {
        QFETCH(quint32, format);
        QFETCH(int, qtFormat);
        DeviceFixture f;
        QCOMPARE(int(f.device->toQtPixelFormat(PixelFormat(format))), qtFormat);
        f.script->setFormats({ PixelFormat(format) });
        f.device->load("back", nullptr);
        QCOMPARE(int(f.device->supportedViewfinderSettings().first().pixelFormat()), qtFormat);
    }
};

QTEST_GUILESS_MAIN(TestDeviceInfo)
#include "tst_ocelledeviceinfo.moc"

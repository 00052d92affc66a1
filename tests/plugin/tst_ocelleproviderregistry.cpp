// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakeplatform.h"
#include "librarythread.h"
#include "ocelleprovider.h"

#include <QSignalSpy>
#include <QtTest>

#include <atomic>

using namespace Veltra::Ocelle;

namespace {

const QByteArray cameras("veltra.palaver.camera");

using Ids = QList<QByteArray>;

/*! Hundreds of cameras would not make the storm fiercer, only slower. */
Ids addCameras(FakeCameraManager &manager, int count)
{
    Ids ids;
    for (int i = 0; i < count; ++i) {
        ids.append("camera" + QByteArray::number(i));
        manager.add(ids.last().toStdString(), CameraFacing::Back, 90);
    }
    return ids;
}

} // namespace

/*! The provider's view of the cameras. */
class TestProviderRegistry : public QObject
{
    Q_OBJECT
private slots:
    void withoutCameras_answersAreNeutral_andEachRefreshIsTold()
    {
        FakePlatform platform;
        OcelleProvider provider;
        QSignalSpy changed(&provider, &OcelleProvider::devicesChanged);
        QVERIFY(provider.devices(cameras).isEmpty());
        QVERIFY(provider.defaultDevice(cameras).isEmpty());
        provider.updateCameraList();
        provider.updateCameraList();
        QCOMPARE(changed.size(), 2);
        QCOMPARE(changed.first(), QVariantList { cameras });
    }

    void refresh_asksForTheCountBeforeEachCamera_intoEmptyRecords()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        platform.cameras.add("front");
        OcelleProvider provider;
        CallLog::instance().clear();
        provider.updateCameraList();
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "manager: getNumberOfCameras()", "manager: getCameraInfo(0)",
                                "manager: getNumberOfCameras()", "manager: getCameraInfo(1)",
                                "manager: getNumberOfCameras()" }));
        QCOMPARE(provider.devices(cameras), (Ids { "back", "front" }));
    }

    void refresh_followsACountThatChangesMeanwhile()
    {
        FakePlatform platform;
        platform.cameras.add("first");
        platform.cameras.add("second");
        OcelleProvider provider;
        CallLog::instance().setObserver([&](const Call &call) {
            if (call.what == "getCameraInfo(1)")
                platform.cameras.remove("second"); // just before it is asked about
        });
        provider.updateCameraList();
        QCOMPARE(provider.devices(cameras), Ids { "first" });
        CallLog::instance().setObserver([&](const Call &call) {
            if (call.what == "getCameraInfo(0)")
                platform.cameras.add("third");
        });
        provider.updateCameraList();
        QCOMPARE(provider.devices(cameras), (Ids { "first", "third" }));
    }

    void cameraWithoutInfo_isLeftOut()
    {
        FakePlatform platform;
        platform.cameras.add("first")->listInfoFails = true;
        platform.cameras.add("second", CameraFacing::Front);
        OcelleProvider provider;
        QCOMPARE(provider.devices(cameras), Ids { "second" });
        QVERIFY(provider.deviceDescription(cameras, "first").isNull());
        QCOMPARE(provider.defaultDevice(cameras), QByteArray("second"));
    }

    void repeatedId_isListedTwice_withTheLastRecord()
    {
        FakePlatform platform;
        platform.cameras.add("twice", CameraFacing::Back, 90, "First");
        platform.cameras.add("twice", CameraFacing::Front, 180, "Second");
        OcelleProvider provider;
        QCOMPARE(provider.devices(cameras), (Ids { "twice", "twice" }));
        QCOMPARE(provider.deviceDescription(cameras, "twice"), QString("Second"));
        QCOMPARE(provider.cameraOrientation("twice"), 180);
        QCOMPARE(provider.cameraPosition("twice"), QCamera::FrontFace);
    }

    void ids_areTakenByteForByte()
    {
        FakePlatform platform;
        const std::string id("a\0b\xc3\xa4", 5);
        platform.cameras.add(id);
        OcelleProvider provider;
        QCOMPARE(provider.devices(cameras), Ids { QByteArray("a\0b\xc3\xa4", 5) });
        QCOMPARE(provider.cameraPosition(QByteArray("a\0b\xc3\xa4", 5)), QCamera::BackFace);
        QCOMPARE(provider.cameraPosition("a"), QCamera::UnspecifiedPosition);
    }

    void devices_areListedOnlyForTheirOwnKey_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<int>("count");
        QTest::newRow("camera") << cameras << 1;
        QTest::newRow("Qt's camera") << QByteArray("org.qt-project.qt.camera") << 0;
        QTest::newRow("encoder") << QByteArray("veltra.palaver.encoder") << 0;
        QTest::newRow("decoder") << QByteArray("veltra.palaver.decoder") << 0;
        QTest::newRow("other case") << QByteArray("Veltra.palaver.camera") << 0;
        QTest::newRow("empty") << QByteArray() << 0;
    }

    void devices_areListedOnlyForTheirOwnKey()
    {
        QFETCH(QByteArray, key);
        QFETCH(int, count);
        FakePlatform platform;
        platform.cameras.add("back");
        OcelleProvider provider;
        QCOMPARE(provider.devices(key).size(), count);
    }

    void defaultDevice_isTheFirstFrontCamera_elseTheFirst_data()
    {
        QTest::addColumn<QString>("facings"); // f front, b back
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("back, front") << "bf" << QByteArray("1");
        QTest::newRow("back, back") << "bb" << QByteArray("0");
        QTest::newRow("two in front") << "bff" << QByteArray("1");
        QTest::newRow("front first") << "fb" << QByteArray("0");
        QTest::newRow("none") << "" << QByteArray();
    }

    void defaultDevice_isTheFirstFrontCamera_elseTheFirst()
    {
        QFETCH(QString, facings);
        QFETCH(QByteArray, expected);
        FakePlatform platform;
        for (int i = 0; i < facings.size(); ++i) {
            platform.cameras.add(std::to_string(i),
                                 facings.at(i) == 'f' ? CameraFacing::Front : CameraFacing::Back);
        }
        OcelleProvider provider;
        for (const char *key : { "veltra.palaver.camera", "veltra.palaver.encoder",
                                 "veltra.palaver.decoder", "anything", "" })
            QCOMPARE(provider.defaultDevice(key), expected); // a camera whatever the service
    }

    void defaultDevice_honoursAnOverriddenPosition()
    {
        class Provider : public OcelleProvider
        {
        public:
            using OcelleProvider::OcelleProvider;
            QCamera::Position cameraPosition(const QByteArray &device) const override
            {
                return device == "second" ? QCamera::FrontFace : QCamera::BackFace;
            }
        };
        FakePlatform platform;
        platform.cameras.add("first", CameraFacing::Front);
        platform.cameras.add("second");
        Provider provider(&platform.cameras, &platform.codecs);
        QCOMPARE(provider.defaultDevice(cameras), QByteArray("second"));
    }

    void positions_followTheFacing_data()
    {
        QTest::addColumn<int>("facing");
        QTest::addColumn<int>("position");
        QTest::newRow("1 is front") << 1 << 2;
        QTest::newRow("0 is back") << 0 << 1;
        QTest::newRow("2 is back") << 2 << 1;
        QTest::newRow("-1 is back") << -1 << 1;
    }

    void positions_followTheFacing()
    {
        QFETCH(int, facing);
        QFETCH(int, position);
        FakePlatform platform;
        platform.cameras.add("camera", CameraFacing(facing));
        OcelleProvider provider;
        QCOMPARE(int(provider.cameraPosition("camera")), position);
        QCOMPARE(int(provider.cameraPosition("Camera")), 0);
    }

    void orientations_are360LessTheMounting_notReduced_data()
    {
        QTest::addColumn<int>("mounting");
        QTest::addColumn<int>("orientation");
        QTest::newRow("0") << 0 << 360;
        QTest::newRow("90") << 90 << 270;
        QTest::newRow("270") << 270 << 90;
        QTest::newRow("360") << 360 << 0;
        QTest::newRow("450") << 450 << -90;
        QTest::newRow("-90") << -90 << 450;
    }

    void orientations_are360LessTheMounting_notReduced()
    {
        QFETCH(int, mounting);
        QFETCH(int, orientation);
        FakePlatform platform;
        platform.cameras.add("camera", CameraFacing::Back, mounting);
        OcelleProvider provider;
        QCOMPARE(provider.cameraOrientation("camera"), orientation);
        QCOMPARE(provider.cameraOrientation("unknown"), 0);
    }

    void descriptions_areTheNames_whateverTheService()
    {
        FakePlatform platform;
        platform.cameras.add("camera", CameraFacing::Back, 0, "K\xc3\xa4mera \xe2\x82\xac");
        OcelleProvider provider;
        for (const char *key : { "veltra.palaver.camera", "veltra.palaver.encoder", "", "x" }) {
            QCOMPARE(provider.deviceDescription(key, "camera"),
                     QString::fromUtf8("K\xc3\xa4mera \xe2\x82\xac"));
            QVERIFY(provider.deviceDescription(key, "unknown").isNull());
        }
    }

    void hotPlug_withAnyId_refreshesOnceAndTellsOnce_onTheLibrarysThread()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        OcelleProvider provider;
        connect(&provider, &OcelleProvider::devicesChanged, [&](const QByteArray &service) {
            CallLog::instance().add("provider", "devicesChanged(" + service + ")");
            // The new list is there already, and asking for it here is no deadlock.
            QCOMPARE(provider.devices(service), (Ids { "back", "front" }));
        });
        platform.cameras.add("front");
        const QStringList expected {
            "manager: getNumberOfCameras()", "manager: getCameraInfo(0)",
            "manager: getNumberOfCameras()", "manager: getCameraInfo(1)",
            "manager: getNumberOfCameras()", "provider: devicesChanged(veltra.palaver.camera)"
        };
        for (bool added : { true, false }) {
            CallLog::instance().clear();
            LibraryThread::run("HotPlug", [&] {
                added ? platform.cameras.notifyAdded("unheard of")
                      : platform.cameras.notifyRemoved("back");
            });
            QCOMPARE(CallLog::instance().texts(), expected);
            QCOMPARE(CallLog::instance().threadNames(QString()), QStringList("HotPlug"));
        }
    }

    void destruction_onlyLetsTheManagerGo()
    {
        FakePlatform platform;
        {
            OcelleProvider provider;
            QVERIFY(platform.cameras.listener());
            CallLog::instance().clear();
        }
        QVERIFY(!platform.cameras.listener());
        QCOMPARE(CallLog::instance().texts(), QStringList("manager: setListener(null)"));
    }

    void hotPlugStorm_readersAlwaysSeeTheWholeList()
    {
        FakePlatform platform;
        const Ids all = addCameras(platform.cameras, 8);
        platform.cameras.add("front", CameraFacing::Front);
        OcelleProvider provider;
        std::atomic<int> told { 0 };
        connect(&provider, &OcelleProvider::devicesChanged, [&] { ++told; });
        constexpr int Refreshes = 300;
        std::atomic<int> running { 3 };
        const auto storm = [&] {
            for (int i = 0; i < Refreshes; ++i)
                i % 2 ? platform.cameras.notifyAdded("any") : platform.cameras.notifyRemoved("any");
            --running;
        };
        std::atomic<int> wrong { 0 };
        const auto read = [&] {
            while (running > 0) {
                bool right = provider.devices(cameras) == all + Ids { "front" };
                right = right && provider.defaultDevice(cameras) == "front";
                right = right && provider.deviceDescription(cameras, "camera7") == "Camera camera7";
                right = right && provider.cameraOrientation("camera0") == 270;
                right = right && provider.cameraPosition("camera3") == QCamera::BackFace;
                if (!right)
                    ++wrong;
            }
        };
        {
            LibraryThread reader("Reader", read);
            LibraryThread a("HotPlugA", storm);
            LibraryThread b("HotPlugB", storm);
            LibraryThread c("HotPlugC", storm);
            read();
        }
        QCOMPARE(wrong.load(), 0);
        QCOMPARE(told.load(), 3 * Refreshes);
    }

    void hotPlugStorm_endsWithTheLastList()
    {
        FakePlatform platform;
        const Ids fixed = addCameras(platform.cameras, 4);
        OcelleProvider provider;
        std::atomic<int> running { 2 };
        const auto plugAndUnplug = [&](const std::string &id) {
            for (int i = 0; i < 200; ++i) {
                platform.cameras.add(id);
                platform.cameras.notifyAdded(id);
                platform.cameras.remove(id);
                platform.cameras.notifyRemoved(id);
            }
            platform.cameras.add(id);
            platform.cameras.notifyAdded(id);
            --running;
        };
        std::atomic<int> wrong { 0 };
        {
            LibraryThread a("HotPlugA", [&] { plugAndUnplug("x"); });
            LibraryThread b("HotPlugB", [&] { plugAndUnplug("y"); });
            while (running > 0) {
                if (provider.devices(cameras).mid(0, 4) != fixed)
                    ++wrong;
            }
        }
        QCOMPARE(wrong.load(), 0);
        Ids ids = provider.devices(cameras);
        std::sort(ids.begin(), ids.end());
        QCOMPARE(ids, fixed + (Ids { "x", "y" }));
        QCOMPARE(provider.deviceDescription(cameras, "y"), QString("Camera y"));
    }
};

QTEST_GUILESS_MAIN(TestProviderRegistry)
#include "tst_ocelleproviderregistry.moc"

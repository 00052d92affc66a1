// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakeplatform.h"
#include "librarythread.h"
#include "ocelleprovider.h"
#include "ocelleselector.h"

#include <QtTest>

using namespace Veltra::Ocelle;

namespace {

/*! A selector over the scripted cameras, its signals recorded in their order. */
class SelectorFixture
{
public:
    explicit SelectorFixture(const QStringList &ids)
    {
        for (const QString &id : ids) {
            const bool front = id.startsWith("front");
            platform.cameras.add(id.toStdString(),
                                 front ? CameraFacing::Front : CameraFacing::Back);
        }
        provider.reset(new OcelleProvider(&platform.cameras, &platform.codecs));
        selector.reset(new OcelleSelector(provider.get(), nullptr));
        using Selector = QVideoDeviceSelectorControl;
        QObject::connect(selector.get(), &Selector::devicesChanged,
                         [this] { emitted.append("devicesChanged"); });
        QObject::connect(selector.get(),
                         QOverload<int>::of(&QVideoDeviceSelectorControl::selectedDeviceChanged),
                         [this](int index) { emitted.append(QString::number(index)); });
        QObject::connect(selector.get(),
                         QOverload<const QString &>::of(&Selector::selectedDeviceChanged),
                         [this](const QString &id) { emitted.append('"' + id + '"'); });
    }

    FakePlatform platform;
    std::unique_ptr<OcelleProvider> provider;
    std::unique_ptr<OcelleSelector> selector;
    QStringList emitted;
};

/*! Loses its default camera, the front one, right after it was first asked for it. */
class LosingProvider : public OcelleProvider
{
public:
    explicit LosingProvider(FakePlatform &platform)
        : OcelleProvider(&platform.cameras, &platform.codecs)
        , m_platform(platform)
    {
    }

    QByteArray defaultDevice(const QByteArray &service) const override
    {
        const QByteArray id = OcelleProvider::defaultDevice(service);
        if (id == "front") {
            m_platform.cameras.remove("front");
            LibraryThread::run("HotPlug", [&] { m_platform.cameras.notifyRemoved("front"); });
        }
        return id;
    }

private:
    FakePlatform &m_platform;
};

} // namespace

class TestSelector : public QObject
{
    Q_OBJECT
private slots:
    void construction_selectsTheDefaultCamera()
    {
        SelectorFixture f({ "back", "front" });
        QCOMPARE(f.selector->selectedDevice(), 1);
        QCOMPARE(f.selector->defaultDevice(), 1);
    }

    void withoutCameras_everythingIsEmpty()
    {
        SelectorFixture f({});
        QCOMPARE(f.selector->deviceCount(), 0);
        QCOMPARE(f.selector->selectedDevice(), -1);
        QCOMPARE(f.selector->defaultDevice(), -1);
        QVERIFY(f.selector->deviceName(0).isNull());
        QVERIFY(f.selector->deviceDescription(0).isNull());
        QVERIFY(f.selector->getCameraIdByIndex(0).isNull());
        QVERIFY(f.selector->deviceName(f.selector->selectedDevice()).isNull());
    }

    void noDevice_hasNoNameOrDescription()
    {
        SelectorFixture f({ "back", "front" });
        QVERIFY(f.selector->deviceName(-1).isNull());
        QVERIFY(f.selector->deviceDescription(-1).isNull());
    }

    void cameraLostWhileTheSelectionIsMade_isNotMissed()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        platform.cameras.add("front", CameraFacing::Front);
        LosingProvider provider(platform);
        OcelleSelector selector(&provider, nullptr);
        QTRY_COMPARE(selector.selectedDevice(), 0);
        QCOMPARE(selector.deviceName(0), QString("back"));
    }

    void devices_areThoseOfTheProvider()
    {
        SelectorFixture f({ "back", "front" });
        QCOMPARE(f.selector->deviceCount(), 2);
        QCOMPARE(f.selector->deviceName(0), QString("back"));
        QCOMPARE(f.selector->deviceName(1), QString("front"));
        QCOMPARE(f.selector->deviceDescription(1), QString("Camera front"));
        QVERIFY(f.selector->deviceName(2).isNull());
        QVERIFY(f.selector->deviceDescription(2).isNull());
        QCOMPARE(f.selector->getCameraIdByIndex(1), QByteArray("front"));
        QVERIFY(f.selector->getCameraIdByIndex(-1).isNull());
        QVERIFY(f.selector->getCameraIdByIndex(2).isNull());
        QCOMPARE(f.selector->getCameraIndexById("front"), 1);
        QCOMPARE(f.selector->getCameraIndexById("Front"), -1);
    }

    void nothingIsCachedButTheSelection()
    {
        SelectorFixture f({ "back" });
        f.platform.cameras.add("second");
        f.provider->blockSignals(true);
        f.provider->updateCameraList();
        QCOMPARE(f.selector->deviceCount(), 2);
        QCOMPARE(f.selector->deviceName(1), QString("second"));
        QCOMPARE(f.emitted, QStringList());
    }

    void repeatedId_isFoundAtItsFirstPlace()
    {
        SelectorFixture f({ "back", "twice", "twice" });
        QCOMPARE(f.selector->deviceCount(), 3);
        QCOMPARE(f.selector->getCameraIndexById("twice"), 1);
        f.selector->setSelectedDevice(2);
        QCOMPARE(f.selector->selectedDevice(), 1);
    }

    void setSelectedDevice_tellsTheNameThenTheIndex()
    {
        SelectorFixture f({ "back", "front" });
        f.selector->setSelectedDevice(0);
        QCOMPARE(f.selector->selectedDevice(), 0);
        QCOMPARE(f.emitted, (QStringList { "\"back\"", "0" }));
    }

    void setSelectedDevice_alreadySelected_tellsNothing()
    {
        SelectorFixture f({ "back", "front" });
        f.selector->setSelectedDevice(1);
        QCOMPARE(f.emitted, QStringList());
    }

    void setSelectedDevice_outOfRange_clearsTheSelection_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("past the end") << 2;
        QTest::newRow("far past the end") << 1000;
        QTest::newRow("none") << -1;
    }

    void setSelectedDevice_outOfRange_clearsTheSelection()
    {
        QFETCH(int, index);
        SelectorFixture f({ "back", "front" });
        f.selector->setSelectedDevice(index);
        QCOMPARE(f.selector->selectedDevice(), -1);
        QCOMPARE(f.emitted, (QStringList { "\"\"", QString::number(index) }));
        f.emitted.clear();
        f.selector->setSelectedDevice(index);
        QCOMPARE(f.emitted, QStringList());
    }

    void unpluggingTheSelectedCamera_fallsBackToTheDefault()
    {
        SelectorFixture f({ "back", "front" });
        f.platform.cameras.remove("front");
        f.platform.cameras.notifyRemoved("front");
        QCOMPARE(f.emitted, (QStringList { "devicesChanged", "-1", "\"back\"" }));
        QCOMPARE(f.selector->selectedDevice(), 0);
    }

    void unpluggingTheLastCamera_leavesNoSelection()
    {
        SelectorFixture f({ "back" });
        f.platform.cameras.remove("back");
        f.platform.cameras.notifyRemoved("back");
        QCOMPARE(f.emitted, (QStringList { "devicesChanged", "-1", "\"\"" }));
        QCOMPARE(f.selector->selectedDevice(), -1);
    }

    void pluggingInTheFirstCamera_selectsIt()
    {
        SelectorFixture f({});
        f.platform.cameras.add("front", CameraFacing::Front);
        f.platform.cameras.notifyAdded("front");
        QCOMPARE(f.emitted, (QStringList { "devicesChanged", "-1", "\"front\"" }));
        QCOMPARE(f.selector->selectedDevice(), 0);
    }

    void pluggingInAnotherCamera_keepsTheSelection()
    {
        SelectorFixture f({ "back" });
        f.platform.cameras.add("front", CameraFacing::Front); // the default from now on
        f.platform.cameras.notifyAdded("front");
        QCOMPARE(f.emitted, QStringList("devicesChanged"));
        QCOMPARE(f.selector->selectedDevice(), 0);
        QCOMPARE(f.selector->defaultDevice(), 1);
    }

    void theSelection_isTheCamera_notItsPlace()
    {
        SelectorFixture f({ "a", "b", "c" });
        f.selector->setSelectedDevice(2);
        f.emitted.clear();
        f.platform.cameras.remove("a");
        f.platform.cameras.notifyRemoved("a");
        QCOMPARE(f.emitted, QStringList("devicesChanged"));
        QCOMPARE(f.selector->selectedDevice(), 1);
    }

    void otherServices_areIgnored_data()
    {
        QTest::addColumn<QByteArray>("service");
        QTest::newRow("encoder") << QByteArray("veltra.palaver.encoder");
        QTest::newRow("decoder") << QByteArray("veltra.palaver.decoder");
        QTest::newRow("Qt's camera") << QByteArray("org.qt-project.qt.camera");
        QTest::newRow("other case") << QByteArray("Veltra.palaver.camera");
        QTest::newRow("none") << QByteArray();
    }

    void otherServices_areIgnored()
    {
        QFETCH(QByteArray, service);
        SelectorFixture f({ "back" });
        emit f.provider->devicesChanged(service);
        QCOMPARE(f.emitted, QStringList());
        emit f.provider->devicesChanged("veltra.palaver.camera");
        QCOMPARE(f.emitted, QStringList("devicesChanged"));
    }

    void hotPlug_onALibraryThread_arrivesOnTheSelectorsThread()
    {
        SelectorFixture f({ "back", "front" });
        f.platform.cameras.remove("front");
        std::thread::id thread;
        QObject::connect(f.selector.get(), &QVideoDeviceSelectorControl::devicesChanged,
                         [&] { thread = std::this_thread::get_id(); });
        LibraryThread::run("HotPlug", [&] { f.platform.cameras.notifyRemoved("front"); });
        QCOMPARE(f.emitted, QStringList()); // on its way
        QTRY_COMPARE(f.emitted, (QStringList { "devicesChanged", "-1", "\"back\"" }));
        QVERIFY(thread == std::this_thread::get_id());
    }

    void deletion_inASlot_isSafe_data()
    {
        QTest::addColumn<QString>("signal");
        QTest::newRow("devicesChanged") << "devicesChanged";
        QTest::newRow("index") << "-1";
        QTest::newRow("name") << "\"back\"";
    }

    void deletion_inASlot_isSafe()
    {
        QFETCH(QString, signal);
        SelectorFixture f({ "back", "front" });
        const auto removeIf = [&](const QString &emitted) {
            if (emitted == signal)
                f.selector.reset();
        };
        using Selector = QVideoDeviceSelectorControl;
        QObject::connect(f.selector.get(), &Selector::devicesChanged,
                         [&] { removeIf("devicesChanged"); });
        QObject::connect(f.selector.get(), QOverload<int>::of(&Selector::selectedDeviceChanged),
                         [&](int index) { removeIf(QString::number(index)); });
        QObject::connect(f.selector.get(),
                         QOverload<const QString &>::of(&Selector::selectedDeviceChanged),
                         [&](const QString &id) { removeIf('"' + id + '"'); });
        f.platform.cameras.remove("front");
        f.platform.cameras.notifyRemoved("front");
        QVERIFY(!f.selector);
        QCOMPARE(f.emitted.last(), signal);
    }

    void metaObject_hasItsSlotsInOrder()
    {
        const QMetaObject &meta = OcelleSelector::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleSelector");
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
        const QMetaMethod select = meta.method(meta.methodOffset());
        QCOMPARE(select.methodType(), QMetaMethod::Slot);
        QCOMPARE(select.methodSignature(), QByteArray("setSelectedDevice(int)"));
        QCOMPARE(select.parameterNames(), QList<QByteArray> { "index" });
        const QMetaMethod changed = meta.method(meta.methodOffset() + 1);
        QCOMPARE(changed.methodType(), QMetaMethod::Slot);
        QCOMPARE(changed.methodSignature(), QByteArray("onDevicesChanged(QByteArray)"));
        QCOMPARE(changed.parameterNames(), QList<QByteArray> { "service" });
    }
};

QTEST_GUILESS_MAIN(TestSelector)
#include "tst_ocelleselector.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakeplatform.h"
#include "memberpointers.h"
#include "ocelleserviceplugin.h"

#include <QMediaService>
#include <QPointer>
#include <QtTest>

using namespace Veltra::Ocelle;

extern "C" QObject *qt_plugin_instance();

class TestServicePlugin : public QObject
{
    Q_OBJECT
private slots:
    void instance_isOneForAll_untilItIsDeleted()
    {
        FakePlatform platform;
        QPointer<QObject> first = qt_plugin_instance();
        QVERIFY(qobject_cast<OcelleServicePlugin *>(first.data()));
        QVERIFY(!first->parent());
        QCOMPARE(qt_plugin_instance(), first.data());
        QCOMPARE(CallLog::instance().count("factory: OcelleManager()"), 1);
        delete first.data();
        QPointer<QObject> second = qt_plugin_instance();
        QVERIFY(second);
        QCOMPARE(qt_plugin_instance(), second.data());
        QCOMPARE(CallLog::instance().count("factory: OcelleManager()"), 2);
        delete second.data();
    }

    void construction_connectsToTheLibraryAtOnce_destructionLetsGo()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        {
            OcelleServicePlugin plugin;
            QVERIFY(platform.cameras.listener());
            QCOMPARE(plugin.devices("veltra.palaver.camera"), QList<QByteArray> { "back" });
            CallLog::instance().clear();
        }
        QCOMPARE(CallLog::instance().texts(), QStringList("manager: setListener(null)"));
    }

    void deviceQuestions_areForwarded()
    {
        FakePlatform platform;
        platform.cameras.add("back", CameraFacing::Back, 90, "Main");
        platform.cameras.add("front", CameraFacing::Front, 270, "Selfie");
        OcelleServicePlugin plugin;
        const QByteArray key("veltra.palaver.camera");
        QCOMPARE(plugin.devices(key), (QList<QByteArray> { "back", "front" }));
        QCOMPARE(plugin.defaultDevice(key), QByteArray("front"));
        QCOMPARE(plugin.deviceDescription(key, "front"), QString("Selfie"));
        QCOMPARE(plugin.cameraPosition("back"), QCamera::BackFace);
        QCOMPARE(plugin.cameraOrientation("back"), 270);
        QVERIFY(plugin.deviceDescription(key, "side").isNull());
    }

    void codecQuestions_areForwarded()
    {
        FakePlatform platform;
        platform.codecs.add("venc", CodecType::H264, true, 3, true);
        platform.codecs.add("vdec", CodecType::VP8, false, 2, false);
        OcelleServicePlugin plugin;
        QCOMPARE(plugin.devices("veltra.palaver.encoder"), QList<QByteArray> { "venc" });
        QCOMPARE(plugin.devices("veltra.palaver.decoder"), QList<QByteArray> { "vdec" });
        QCOMPARE(plugin.codecType("venc"), QString("video/h264"));
        QVERIFY(plugin.codecIsEncoder("venc"));
        QVERIFY(!plugin.codecIsEncoder("vdec"));
        QVERIFY(plugin.codecIsHardwareAccelerated("venc"));
        QVERIFY(!plugin.codecIsHardwareAccelerated("vdec"));
        QCOMPARE(plugin.codecMaxInstances("venc"), 3);
    }

    void serviceFactory_isForwarded()
    {
        FakePlatform platform;
        OcelleServicePlugin plugin;
        QPointer<QMediaService> service = plugin.create("veltra.palaver.camera");
        QVERIFY(service);
        QCOMPARE(service->metaObject()->className(), "OcelleCaptureService");
        plugin.release(service);
        QVERIFY(!service);
        plugin.release(nullptr);
        QVERIFY(!plugin.create("org.qt-project.qt.camera"));
        QCOMPARE(int(plugin.supportedFeatures("veltra.palaver.decoder")), 8);
        QCOMPARE(int(plugin.supportedFeatures("veltra.palaver.encoder")), 0);
    }

    void metacast_findsEveryInterface_data()
    {
        QTest::addColumn<QByteArray>("className");
        QTest::addColumn<QByteArray>("id");
        QTest::newRow("devices") << QByteArray("QMediaServiceSupportedDevicesInterface")
                                 << QByteArray(
                                            "org.qt-project.qt.mediaservicesupporteddevices/5.0");
        QTest::newRow("default device")
                << QByteArray("QMediaServiceDefaultDeviceInterface")
                << QByteArray("org.qt-project.qt.mediaservicedefaultdevice/5.3");
        QTest::newRow("features") << QByteArray("QMediaServiceFeaturesInterface")
                                  << QByteArray("org.qt-project.qt.mediaservicefeatures/5.0");
        QTest::newRow("camera info") << QByteArray("QMediaServiceCameraInfoInterface")
                                     << QByteArray("org.qt-project.qt.mediaservicecamerainfo/5.3");
        QTest::newRow("codec info") << QByteArray("QPVMediaServiceCodecInfoInterface")
                                    << QByteArray("veltra.palaver.mediaservicecodecinfo/1.0");
    }

    void metacast_findsEveryInterface()
    {
        QFETCH(QByteArray, className);
        QFETCH(QByteArray, id);
        FakePlatform platform;
        OcelleServicePlugin plugin;
        void *const found = plugin.qt_metacast(className.constData());
        QVERIFY(found);
        QCOMPARE(plugin.qt_metacast(id.constData()), found);
    }

    void metacast_givesTheMatchingBases()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        platform.codecs.add("venc", CodecType::H265, true);
        OcelleServicePlugin plugin;
        QObject *object = &plugin;
        QCOMPARE(plugin.qt_metacast("OcelleServicePlugin"), static_cast<void *>(&plugin));
        QCOMPARE(qobject_cast<QMediaServiceSupportedDevicesInterface *>(object),
                 static_cast<QMediaServiceSupportedDevicesInterface *>(&plugin));
        QCOMPARE(qobject_cast<QMediaServiceDefaultDeviceInterface *>(object),
                 static_cast<QMediaServiceDefaultDeviceInterface *>(&plugin));
        QCOMPARE(qobject_cast<QMediaServiceFeaturesInterface *>(object),
                 static_cast<QMediaServiceFeaturesInterface *>(&plugin));
        QCOMPARE(qobject_cast<QMediaServiceCameraInfoInterface *>(object),
                 static_cast<QMediaServiceCameraInfoInterface *>(&plugin));
        auto *codecs = qobject_cast<QPVMediaServiceCodecInfoInterface *>(object);
        QCOMPARE(codecs, static_cast<QPVMediaServiceCodecInfoInterface *>(&plugin));
        QCOMPARE(codecs->codecType("venc"), QString("video/h265"));
    }

    void metacast_passesTheRestOn_butNotTheListener()
    {
        FakePlatform platform;
        OcelleServicePlugin plugin;
        QVERIFY(!plugin.qt_metacast(nullptr));
        QVERIFY(!plugin.qt_metacast("Veltra::Ocelle::CameraManagerListener"));
        QVERIFY(!plugin.qt_metacast("OcelleProvider"));
        QVERIFY(!plugin.qt_metacast("nonsense"));
        QCOMPARE(plugin.qt_metacast("QMediaServiceProviderPlugin"),
                 static_cast<void *>(static_cast<QMediaServiceProviderPlugin *>(&plugin)));
        QVERIFY(plugin.qt_metacast("org.qt-project.qt.mediaserviceproviderfactory/5.0"));
        QVERIFY(plugin.qt_metacast("QObject"));
    }

    void metaObject_hasNothingOfItsOwn()
    {
        const QMetaObject &meta = OcelleServicePlugin::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleServicePlugin");
        QCOMPARE(meta.superClass(), &QMediaServiceProviderPlugin::staticMetaObject);
        QCOMPARE(meta.methodCount(), QMediaServiceProviderPlugin::staticMetaObject.methodCount());
        QCOMPARE(meta.propertyCount(),
                 QMediaServiceProviderPlugin::staticMetaObject.propertyCount());
    }

    void virtualOperations_areInOrder()
    {
        using Plugin = OcelleServicePlugin;
        const int first = slotOf(&QMediaServiceProviderPlugin::create);
        const QVector<int> slotNumbers {
            slotOf(&Plugin::create),
            slotOf(&Plugin::release),
            slotOf(&Plugin::supportedFeatures),
            slotOf(&Plugin::defaultDevice),
            slotOf(&Plugin::devices),
            slotOf(&Plugin::deviceDescription),
            slotOf(&Plugin::cameraPosition),
            slotOf(&Plugin::cameraOrientation),
            slotOf(&Plugin::codecType),
            slotOf(&Plugin::codecIsEncoder),
            slotOf(&Plugin::codecIsHardwareAccelerated),
            slotOf(&Plugin::codecMaxInstances),
        };
        for (int i = 0; i < slotNumbers.size(); ++i)
            QCOMPARE(slotNumbers.at(i), first + i);
    }
};

QTEST_GUILESS_MAIN(TestServicePlugin)
#include "tst_ocelleserviceplugin.moc"

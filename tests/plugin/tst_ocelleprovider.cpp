// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakeplatform.h"
#include "memberpointers.h"
#include "messagelog.h"
#include "ocelleprovider.h"

#include <QMediaService>
#include <QPointer>
#include <QtTest>

using namespace Veltra::Ocelle;

namespace {

const QByteArray encoders("veltra.palaver.encoder");
const QByteArray decoders("veltra.palaver.decoder");

} // namespace

/*! The provider as a factory and as the list of codecs; the cameras have a test of their own. */
class TestProvider : public QObject
{
    Q_OBJECT
private slots:
    void construction_usesTheManagersGivenToIt()
    {
        FakePlatform platform;
        FakeCameraManager cameras;
        FakeCodecManager codecs;
        OcelleProvider provider(&cameras, &codecs);
        QCOMPARE(provider.cameraManager(), static_cast<CameraManager *>(&cameras));
        QCOMPARE(provider.codecManager(), static_cast<CodecManager *>(&codecs));
        QCOMPARE(CallLog::instance().texts("factory"), QStringList());
    }

    void construction_asksTheFactories_thenListensThenReads()
    {
        FakePlatform platform;
        OcelleProvider provider;
        QCOMPARE(provider.cameraManager(), static_cast<CameraManager *>(&platform.cameras));
        QCOMPARE(provider.codecManager(), static_cast<CodecManager *>(&platform.codecs));
        QStringList calls = CallLog::instance().texts();
        QCOMPARE(QSet<QString>({ calls.takeFirst(), calls.takeFirst() }),
                 (QSet<QString> { "factory: OcelleManager()", "factory: OcelleCodecManager()" }));
        QCOMPARE(calls,
                 (QStringList { "manager: setListener(listener)", "manager: getNumberOfCameras()",
                                "codecs: getVideoCodecs()" }));
    }

    void create_makesTheServiceOfTheKey_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QByteArray>("className"); // none where there is no service
        QTest::newRow("camera") << "veltra.palaver.camera" << QByteArray("OcelleCaptureService");
        QTest::newRow("decoder") << "veltra.palaver.decoder" << QByteArray("OcelleDecodeService");
        QTest::newRow("encoder") << "veltra.palaver.encoder" << QByteArray("OcelleEncodeService");
        QTest::newRow("camera in upper case") << "VELTRA.PALAVER.CAMERA" << QByteArray();
        QTest::newRow("mixed case") << "veltra.palaver.Camera" << QByteArray();
        QTest::newRow("Qt's camera") << "org.qt-project.qt.camera" << QByteArray();
        QTest::newRow("with a blank") << "veltra.palaver.camera " << QByteArray();
        QTest::newRow("beginning") << "veltra.palaver" << QByteArray();
        QTest::newRow("empty") << "" << QByteArray();
        QTest::newRow("null") << QString() << QByteArray();
    }

    void create_makesTheServiceOfTheKey()
    {
        QFETCH(QString, key);
        QFETCH(QByteArray, className);
        FakePlatform platform;
        OcelleProvider provider;
        MessageLog log;
        QPointer<QMediaService> service = provider.create(key);
        QCOMPARE(service != nullptr, !className.isEmpty());
        if (!service)
            return;
        QCOMPARE(QByteArray(service->metaObject()->className()), className);
        QVERIFY(!service->parent());
        QPointer<QMediaService> another = provider.create(key);
        QVERIFY(another && another != service);
        provider.release(service);
        QVERIFY(!service);
        QVERIFY(another);
        provider.release(another);
        QCOMPARE(log.messages(), QStringList());
    }

    void release_ofNull_isIgnored()
    {
        FakePlatform platform;
        OcelleProvider provider;
        CallLog::instance().clear();
        provider.release(nullptr);
        QCOMPARE(CallLog::instance().texts(), QStringList());
    }

    void features_areThoseOfTheKey_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<int>("features");
        QTest::newRow("Qt's camera") << QByteArray("org.qt-project.qt.camera") << 8;
        QTest::newRow("camera") << QByteArray("veltra.palaver.camera") << 8;
        QTest::newRow("decoder") << decoders << 8;
        QTest::newRow("encoder") << encoders << 0;
        QTest::newRow("other case") << QByteArray("Veltra.palaver.camera") << 0;
        QTest::newRow("with a NUL") << QByteArray("veltra.palaver.camera\0x", 23) << 0;
        QTest::newRow("empty") << QByteArray() << 0;
    }

    void features_areThoseOfTheKey()
    {
        QFETCH(QByteArray, key);
        QFETCH(int, features);
        FakePlatform platform;
        OcelleProvider provider;
        QCOMPARE(int(provider.supportedFeatures(key)), features);
    }

    void metacast_findsEveryInterface_byNameAndId()
    {
        FakePlatform platform;
        OcelleProvider provider;
        const auto check = [&](const char *name, const char *id, void *base) {
            QCOMPARE(provider.qt_metacast(name), base);
            QCOMPARE(provider.qt_metacast(id), base);
        };
        check("QMediaServiceSupportedDevicesInterface",
              "org.qt-project.qt.mediaservicesupporteddevices/5.0",
              static_cast<QMediaServiceSupportedDevicesInterface *>(&provider));
        check("QMediaServiceDefaultDeviceInterface",
              "org.qt-project.qt.mediaservicedefaultdevice/5.3",
              static_cast<QMediaServiceDefaultDeviceInterface *>(&provider));
        check("QMediaServiceFeaturesInterface", "org.qt-project.qt.mediaservicefeatures/5.0",
              static_cast<QMediaServiceFeaturesInterface *>(&provider));
        check("QMediaServiceCameraInfoInterface", "org.qt-project.qt.mediaservicecamerainfo/5.3",
              static_cast<QMediaServiceCameraInfoInterface *>(&provider));
        check("QPVMediaServiceCodecInfoInterface", "veltra.palaver.mediaservicecodecinfo/1.0",
              static_cast<QPVMediaServiceCodecInfoInterface *>(&provider));
        QCOMPARE(provider.qt_metacast("OcelleProvider"), static_cast<void *>(&provider));
    }

    void metacast_findsThePrivateListener()
    {
        FakePlatform platform;
        OcelleProvider provider;
        void *const listener = provider.qt_metacast("Veltra::Ocelle::CameraManagerListener");
        QVERIFY(listener);
        QCOMPARE(listener, static_cast<void *>(platform.cameras.listener()));
        QVERIFY((!std::is_convertible<OcelleProvider *, CameraManagerListener *>::value));
    }

    void metacast_passesTheRestOn()
    {
        FakePlatform platform;
        OcelleProvider provider;
        QVERIFY(!provider.qt_metacast(nullptr));
        QVERIFY(!provider.qt_metacast("OcelleServicePlugin"));
        QVERIFY(!provider.qt_metacast("CameraManagerListener"));
        QVERIFY(provider.qt_metacast("QMediaServiceProviderPlugin"));
        QVERIFY(provider.qt_metacast("QMediaServiceProviderFactoryInterface") ||
                provider.qt_metacast("org.qt-project.qt.mediaserviceproviderfactory/5.0"));
        QVERIFY(provider.qt_metacast("QObject"));
    }

    void metaObject_hasOneSignal()
    {
        const QMetaObject &meta = OcelleProvider::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleProvider");
        QCOMPARE(meta.superClass(), &QMediaServiceProviderPlugin::staticMetaObject);
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
        const QMetaMethod signal = meta.method(meta.methodOffset());
        QCOMPARE(signal.methodType(), QMetaMethod::Signal);
        QCOMPARE(signal.methodSignature(), QByteArray("devicesChanged(QByteArray)"));
        QCOMPARE(signal.parameterNames(), QList<QByteArray> { "service" });
        QCOMPARE(meta.propertyCount(),
                 QMediaServiceProviderPlugin::staticMetaObject.propertyCount());
    }

    void virtualOperations_areInOrder()
    {
        using Provider = OcelleProvider;
        const int first = slotOf(&QMediaServiceProviderPlugin::create);
        const QVector<int> slotNumbers {
            slotOf(&Provider::create),
            slotOf(&Provider::release),
            slotOf(&Provider::devices),
            slotOf(&Provider::defaultDevice),
            slotOf(&Provider::supportedFeatures),
            slotOf(&Provider::deviceDescription),
            slotOf(&Provider::cameraPosition),
            slotOf(&Provider::cameraOrientation),
            slotOf(&Provider::codecType),
            slotOf(&Provider::codecIsEncoder),
            slotOf(&Provider::codecIsHardwareAccelerated),
            slotOf(&Provider::codecMaxInstances),
        };
        for (int i = 0; i < slotNumbers.size(); ++i)
            QCOMPARE(slotNumbers.at(i), first + i);
    }

    void codecs_areListedInByteOrder_byKind()
    {
        FakePlatform platform;
        platform.codecs.add("b-enc", CodecType::H264, true);
        platform.codecs.add("c-dec", CodecType::VP8, false);
        platform.codecs.add("a-enc", CodecType::VP9, true);
        platform.codecs.add("\xc3\xa4-enc", CodecType::VP9, true);
        platform.codecs.add("Z-enc", CodecType::VP9, true);
        OcelleProvider provider;
        const QList<QByteArray> expected { "Z-enc", "a-enc", "b-enc", "\xc3\xa4-enc" };
        QCOMPARE(provider.devices(encoders), expected);
        QCOMPARE(provider.listCodecIds(true), expected);
        QCOMPARE(provider.devices(decoders), QList<QByteArray> { "c-dec" });
        QCOMPARE(provider.listCodecIds(false), QList<QByteArray> { "c-dec" });
    }

    void codecTypes_areMimeTypes_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("mimeType");
        QTest::newRow("VP8") << 1 << "video/vp8";
        QTest::newRow("VP9") << 2 << "video/vp9";
        QTest::newRow("H.264") << 3 << "video/h264";
        QTest::newRow("H.265") << 4 << "video/h265";
        QTest::newRow("0") << 0 << QString();
        QTest::newRow("5") << 5 << QString();
        QTest::newRow("-1") << -1 << QString();
    }

    void codecTypes_areMimeTypes()
    {
        QFETCH(int, type);
        QFETCH(QString, mimeType);
        FakePlatform platform;
        platform.codecs.add("codec", CodecType(type), true);
        OcelleProvider provider;
        QCOMPARE(provider.codecType("codec"), mimeType);
        QCOMPARE(provider.codecType("codec").isNull(), mimeType.isNull());
        QCOMPARE(provider.devices(encoders), QList<QByteArray> { "codec" });
    }

    void codecs_ofOneName_areTheLastOne()
    {
        FakePlatform platform;
        platform.codecs.add("codec", CodecType::VP8, true, 1, false);
        platform.codecs.add("codec", CodecType::H265, false, 7, true);
        OcelleProvider provider;
        QVERIFY(provider.devices(encoders).isEmpty());
        QCOMPARE(provider.devices(decoders), QList<QByteArray> { "codec" });
        QCOMPARE(provider.codecType("codec"), QString("video/h265"));
        QVERIFY(!provider.codecIsEncoder("codec"));
        QVERIFY(provider.codecIsHardwareAccelerated("codec"));
        QCOMPARE(provider.codecMaxInstances("codec"), 7);
    }

    void unknownCodecs_getNeutralAnswers_andAreNotAdded_data()
    {
        QTest::addColumn<QByteArray>("id");
        QTest::newRow("unknown") << QByteArray("other");
        QTest::newRow("other case") << QByteArray("Codec");
        QTest::newRow("part") << QByteArray("cod");
        QTest::newRow("empty") << QByteArray();
    }

    void unknownCodecs_getNeutralAnswers_andAreNotAdded()
    {
        QFETCH(QByteArray, id);
        FakePlatform platform;
        platform.codecs.add("codec", CodecType::H264, true, 4, true);
        OcelleProvider provider;
        QVERIFY(provider.codecType(id).isNull());
        QVERIFY(!provider.codecIsEncoder(id));
        QVERIFY(!provider.codecIsHardwareAccelerated(id));
        QCOMPARE(provider.codecMaxInstances(id), 0);
        QCOMPARE(provider.devices(encoders), QList<QByteArray> { "codec" });
        QVERIFY(provider.devices(decoders).isEmpty());
    }

    void codecs_areReadOnce()
    {
        FakePlatform platform;
        OcelleProvider provider;
        platform.codecs.add("late", CodecType::H264, true);
        platform.cameras.notifyAdded("back");
        QVERIFY(provider.devices(encoders).isEmpty());
        QVERIFY(provider.devices(decoders).isEmpty());
        QCOMPARE(CallLog::instance().count("codecs: getVideoCodecs()"), 1);
    }
};

QTEST_GUILESS_MAIN(TestProvider)
#include "tst_ocelleprovider.moc"

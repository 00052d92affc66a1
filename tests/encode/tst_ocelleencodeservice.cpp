// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encodeservicefixture.h"

#include <QMediaControl>
#include <QPointer>
#include <QtTest>

class TestEncodeService : public QObject
{
    Q_OBJECT
private slots:
    void provider_makesTheServiceForItsKey()
    {
        FakePlatform platform;
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        QMediaService *service = provider.create("veltra.palaver.encoder");
        QVERIFY(qobject_cast<OcelleEncodeService *>(service));
        QPointer<QMediaService> watched(service);
        provider.release(service);
        QVERIFY(watched.isNull());
        QCOMPARE(provider.create("veltra.palaver.Encoder"), nullptr);
    }

    void requestControl_knowsThreeNamesExactly_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("type");
        QTest::newRow("encode") << QByteArray("veltra.palaver.encodecontrol/1.0")
                                << QByteArray("OcelleEncodeControl");
        QTest::newRow("settings") << QByteArray("org.qt-project.qt.videoencodersettingscontrol/5.0")
                                  << QByteArray("OcelleEncoderSettingsControl");
        QTest::newRow("source") << QByteArray("veltra.palaver.encodedvideosourcecontrol/1.0")
                                << QByteArray("OcelleEncodedVideoSourceControl");
        QTest::newRow("another case")
                << QByteArray("veltra.palaver.EncodeControl/1.0") << QByteArray();
        QTest::newRow("another version")
                << QByteArray("veltra.palaver.encodecontrol/1.1") << QByteArray();
        QTest::newRow("of another service")
                << QByteArray("veltra.palaver.decodecontrol/1.0") << QByteArray();
        QTest::newRow("empty") << QByteArray("") << QByteArray();
        QTest::newRow("null") << QByteArray() << QByteArray();
    }

    void requestControl_knowsThreeNamesExactly()
    {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, type);
        EncodeServiceFixture f;
        const char *asked = name.isNull() ? nullptr : name.constData();
        QMediaControl *control = f.service->requestControl(asked);
        QCOMPARE(QByteArray(control ? control->metaObject()->className() : ""), type);
        QCOMPARE(f.service->requestControl(asked), control); // the same, however often
    }

    void releasedControls_stay()
    {
        EncodeServiceFixture f;
        f.service->releaseControl(f.control);
        f.service->releaseControl(nullptr);
        QCOMPARE(f.service->requestControl(QPVEncodeControl_iid), f.control);
        QCOMPARE(int(f.control->status()), Statuses::Unloaded);
    }

    void controls_goWithTheService()
    {
        EncodeServiceFixture f;
        const QPointer<QObject> controls[] = { f.control, f.settings, f.source };
        f.service.reset();
        for (const QPointer<QObject> &control : controls)
            QVERIFY(control.isNull());
    }

    void parent_takesTheServiceDown()
    {
        FakePlatform platform;
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        QObject parent;
        QPointer<QObject> service(new OcelleEncodeService(&provider, &parent));
        QCOMPARE(service->parent(), &parent);
        delete service;
    }

    void twoServices_workSideBySide()
    {
        EncodeServiceFixture f;
        const std::unique_ptr<OcelleEncodeService> second(
                new OcelleEncodeService(&f.provider, nullptr));
        QVERIFY(f.activate());
        auto *control =
                static_cast<QPVEncodeControl *>(second->requestControl(QPVEncodeControl_iid));
        QVERIFY(control != f.control);
        QCOMPARE(int(control->status()), Statuses::Unloaded);
        QCOMPARE(CallLog::instance().count("codecs: prepare()"), 2);
    }
};

QTEST_GUILESS_MAIN(TestEncodeService)
#include "tst_ocelleencodeservice.moc"

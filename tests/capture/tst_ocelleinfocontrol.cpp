// SPDX-License-Identifier: BSD-3-Clause
#include "fakeplatform.h"
#include "ocelleinfocontrol.h"
#include "ocelleprovider.h"

#include <QtTest>

using namespace Veltra::Ocelle;

class TestInfoControl : public QObject
{
    Q_OBJECT
private slots:
    void positionAndOrientation_areTheProviders_data()
    {
        QTest::addColumn<QString>("device");
        QTest::addColumn<int>("position");
        QTest::addColumn<int>("orientation");
        QTest::newRow("back, upright") << "back" << int(QCamera::BackFace) << 360;
        QTest::newRow("front, turned") << "front" << int(QCamera::FrontFace) << 90;
        QTest::newRow("name beyond ASCII")
                << QString::fromUtf8("K\xc3\xa4mera") << int(QCamera::BackFace) << 270;
        QTest::newRow("unknown") << "side" << int(QCamera::UnspecifiedPosition) << 0;
        QTest::newRow("null") << QString() << int(QCamera::UnspecifiedPosition) << 0;
    }

    void positionAndOrientation_areTheProviders()
    {
        QFETCH(QString, device);
        QFETCH(int, position);
        QFETCH(int, orientation);
        FakePlatform platform;
        platform.cameras.add("back");
        platform.cameras.add("front", CameraFacing::Front, 270);
        platform.cameras.add("K\xc3\xa4mera", CameraFacing::Back, 90);
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        OcelleInfoControl control(&provider);
        QCOMPARE(int(control.cameraPosition(device)), position);
        QCOMPARE(control.cameraOrientation(device), orientation);
    }

    void metaObject_namesTheClass()
    {
        const QMetaObject &meta = OcelleInfoControl::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleInfoControl");
        QCOMPARE(meta.superClass(), &QCameraInfoControl::staticMetaObject);
        QCOMPARE(meta.methodCount(), QCameraInfoControl::staticMetaObject.methodCount());
    }

    void construction_hasNoParent()
    {
        FakePlatform platform;
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        OcelleInfoControl control(&provider);
        QVERIFY(!control.parent());
    }
};

QTEST_GUILESS_MAIN(TestInfoControl)
#include "tst_ocelleinfocontrol.moc"

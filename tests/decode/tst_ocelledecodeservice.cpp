// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "decodeservicefixture.h"
#include "ocelledecodecontrol.h"
#include "ocellevideorenderercontrol.h"

#include <QPointer>
#include <QtTest>

class TestDecodeService : public QObject
{
    Q_OBJECT
private slots:
    void requestControl_givesTheSameTwo()
    {
        DecodeServiceFixture f;
        for (int round = 0; round < 2; ++round) {
            QCOMPARE(f.service->requestControl("veltra.palaver.decodecontrol/1.0"), f.control);
            QCOMPARE(f.service->requestControl("org.qt-project.qt.videorenderercontrol/5.0"),
                     f.renderer);
        }
        QVERIFY(qobject_cast<OcelleVideoRendererControl *>(f.renderer));
        QCOMPARE(f.renderer->parent(), f.service.get());
        QCOMPARE(f.session()->parent(), f.service.get());
        f.service->releaseControl(f.renderer);
        f.service->releaseControl(nullptr);
        QCOMPARE(f.service->requestControl(QVideoRendererControl_iid), f.renderer);
    }

    void requestControl_knowsNoOther_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char *name : { "", "nonsense", "veltra.palaver.decodecontrol/1.1",
                                  "veltra.palaver.encodecontrol/1.0", "org.qt-project.qt.camera" })
            QTest::newRow(*name ? name : "empty") << QByteArray(name);
    }

    void requestControl_knowsNoOther()
    {
        QFETCH(QByteArray, name);
        DecodeServiceFixture f;
        QVERIFY(!f.service->requestControl(name.constData()));
        QVERIFY(!f.service->requestControl(nullptr));
    }

    void withoutACodecManager_nothingIsSupportedAndNothingStarts()
    {
        FakePlatform platform;
        OcelleProvider provider(&platform.cameras, nullptr);
        OcelleDecodeSession session(&provider, nullptr);
        DecodeRecorder recorder(session.decodeControl());
        QCOMPARE(session.supportedCodecs(true), QStringList());
        QVERIFY(!session.isFormatSupported(streamSettings()));
        QVERIFY(!session.startDecoder(streamSettings()));
        QCOMPARE(recorder.errors, QStringList("1 Couldn't acquire decoder"));
        QVERIFY(!session.decode(testFrame()));
    }

    void construction_asksThePlatformForNoDecoder()
    {
        DecodeServiceFixture f;
        QVERIFY(CallLog::instance().texts("codecs").filter("ecoder").isEmpty());
        QCOMPARE(FakeVideoOutput::count(), 0);
    }

    void destruction_takesTheOutputDownBeforeTheSession()
    {
        FakeSurface surface;
        DecodeServiceFixture f;
        f.renderer->setSurface(&surface);
        QVERIFY(f.activate());
        QPointer<QObject> session(f.session());
        bool outlived = false;
        const auto output = f.session()->findChild<QObject *>("", Qt::FindDirectChildrenOnly);
        QVERIFY(output);
        QCOMPARE(FakeVideoOutput::alive(), 1);
        connect(f.renderer, &QObject::destroyed, this, [&] { outlived = !session.isNull(); });
        f.service.reset();
        QVERIFY(outlived);
        QVERIFY(session.isNull());
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QCOMPARE(CallLog::instance().count("output 1: destroyed"), 1);
    }
};

QTEST_GUILESS_MAIN(TestDecodeService)
#include "tst_ocelledecodeservice.moc"

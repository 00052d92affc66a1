// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakecamera.h"
#include "fakegraphicbuffer.h"
#include "fakeplatform.h"
#include "fakesurface.h"
#include "librarythread.h"
#include "ocelleprovider.h"

#include <QCameraControl>
#include <QMediaService>
#include <QVideoRendererControl>
#include <QtTest>

using namespace Veltra::Ocelle;

/*! A service that is released only when the application object has gone. A hang is a timeout. */
class TestCaptureServiceLeftOver : public QObject
{
    Q_OBJECT
private slots:
    void release_withoutAnApplication_endsAndClosesTheCamera_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<int>("status");
        QTest::newRow("never used") << 0 << 1;
        QTest::newRow("while it opens") << 2 << 2;
        QTest::newRow("loaded") << 1 << 4;
        QTest::newRow("while it starts") << 2 << 6;
        QTest::newRow("active") << 2 << 8;
    }

    void release_withoutAnApplication_endsAndClosesTheCamera()
    {
        QFETCH(int, state);
        QFETCH(int, status);
        FakePlatform platform;
        const auto script = platform.cameras.add("back");
        script->streams = true;
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        FakeSurface surface;
        QMediaService *service = nullptr;
        {
            int argc = 0;
            QCoreApplication application(argc, nullptr);
            service = provider.create("veltra.palaver.camera");
            service->requestControl<QVideoRendererControl *>()->setSurface(&surface);
            auto *camera = service->requestControl<QCameraControl *>();
            if (status == QCamera::LoadingStatus)
                script->openGate.close();
            if (status == QCamera::StartingStatus)
                script->startGate.close();
            camera->setState(QCamera::State(state));
            QTRY_COMPARE(int(camera->status()), status);
        }
        LibraryThread opener("Opener", [&] {
            script->openGate.open();
            script->startGate.open();
        });
        provider.release(service);
        QCOMPARE(platform.cameras.heldCameras(), 0);
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QCOMPARE(GraphicBuffer::alive(), 0);
    }
};

QTEST_APPLESS_MAIN(TestCaptureServiceLeftOver)
#include "tst_ocellecaptureserviceleftover.moc"

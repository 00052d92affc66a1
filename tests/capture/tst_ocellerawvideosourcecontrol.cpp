// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "fakecamera.h"
#include "fakesurface.h"
#include "librarythread.h"
#include "ocellerawvideosourcecontrol.h"
#include "ocellevideooutput.h"

#include <QtTest>

using namespace Veltra::Ocelle;

class TestRawVideoSourceControl : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasNeitherParentNorSurfaceNorOutput()
    {
        CaptureSessionFixture f;
        OcelleRawVideoSourceControl control(f.session.get());
        QVERIFY(!control.parent());
        QVERIFY(!control.surface());
        control.setSurface(nullptr);
        QCOMPARE(FakeVideoOutput::count(), 0);
    }

    void firstSurface_makesAnOutputOfTheControl_thenAttachesIt()
    {
        CaptureSessionFixture f;
        OcelleRawVideoSourceControl control(f.session.get());
        FakeSurface surface;
        control.setSurface(&surface);
        QCOMPARE(control.surface(), &surface);
        QCOMPARE(CallLog::instance().texts("output"),
                 (QStringList { "output 1: created", "output 1: setVideoSurface(surface)",
                                "output 1: setMirrored(0)" }));
        QCOMPARE(control.findChildren<OcelleVideoOutput *>().size(), 1);
    }

    void sameSurfaceAgain_changesNothing()
    {
        CaptureSessionFixture f;
        OcelleRawVideoSourceControl control(f.session.get());
        FakeSurface surface;
        control.setSurface(&surface);
        CallLog::instance().clear();
        control.setSurface(&surface);
        QCOMPARE(CallLog::instance().texts(), QStringList());
    }

    void null_keepsTheOutputOnThePreviousSurface()
    {
        CaptureSessionFixture f;
        OcelleRawVideoSourceControl control(f.session.get());
        FakeSurface surface;
        control.setSurface(&surface);
        QVERIFY(f.reach(QCamera::ActiveState));
        CallLog::instance().clear();
        control.setSurface(nullptr);
        QVERIFY(!control.surface());
        QCOMPARE(CallLog::instance().texts(), QStringList());
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &surface);
        f.platform.cameras.openedCamera()->deliver(4);
        QCOMPARE(FakeVideoOutput::at(1)->buffers(), QVector<int> { 4 });
    }

    void anotherSurface_isGivenToTheSameOutput_alsoAfterNull()
    {
        CaptureSessionFixture f;
        OcelleRawVideoSourceControl control(f.session.get());
        FakeSurface a;
        FakeSurface b;
        control.setSurface(&a);
        CallLog::instance().clear();
        control.setSurface(&b);
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &b);
        control.setSurface(nullptr);
        control.setSurface(&a);
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &a);
        QCOMPARE(FakeVideoOutput::count(), 1);
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "output 1: setVideoSurface(surface)",
                                "output 1: setVideoSurface(surface)" }));
    }

    void destroyedSurface_readsAsNull()
    {
        CaptureSessionFixture f;
        OcelleRawVideoSourceControl control(f.session.get());
        {
            FakeSurface surface;
            control.setSurface(&surface);
        }
        QVERIFY(!control.surface());
        FakeSurface next;
        control.setSurface(&next);
        QCOMPARE(FakeVideoOutput::count(), 1);
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &next);
    }

    void destruction_detachesTheSink_thenDeletesIt()
    {
        CaptureSessionFixture f;
        FakeSurface surface;
        {
            OcelleRawVideoSourceControl control(f.session.get());
            control.setSurface(&surface);
            CallLog::instance().clear();
        }
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "output 1: stop()", "output 1: destroyed" }));
        QVERIFY(f.reach(QCamera::ActiveState)); // touches a sink that is still attached
        f.platform.cameras.openedCamera()->deliver(1);
        QCOMPARE(FakeVideoOutput::at(1)->buffers(), QVector<int>());
    }

    void destruction_withoutOutput_leavesAnotherSinkAlone()
    {
        CaptureSessionFixture f;
        OcelleVideoOutput sink(nullptr);
        f.session->setVideoSink(&sink);
        CallLog::instance().clear();
        {
            OcelleRawVideoSourceControl control(f.session.get());
        }
        QCOMPARE(CallLog::instance().texts(), QStringList());
        f.session->setVideoSink(nullptr);
    }

    void metaObject_namesTheClass()
    {
        const QMetaObject &meta = OcelleRawVideoSourceControl::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleRawVideoSourceControl");
        QCOMPARE(meta.superClass(), &QPVRawVideoSourceControl::staticMetaObject);
    }
};

QTEST_GUILESS_MAIN(TestRawVideoSourceControl)
#include "tst_ocellerawvideosourcecontrol.moc"

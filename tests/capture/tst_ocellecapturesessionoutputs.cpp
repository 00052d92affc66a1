// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "captureservicefixture.h"
#include "fakecamera.h"
#include "fakegraphicbuffer.h"
#include "librarythread.h"
#include "ocellevideooutput.h"

#include <QtTest>

using namespace Veltra::Ocelle;
using namespace Statuses;

namespace {

/*! The log without the questions about the camera, whose number is nobody's business. */
QStringList callsWithoutQuestions()
{
    QStringList calls;
    for (const QString &text : CallLog::instance().texts()) {
        if (!text.contains(": get"))
            calls.append(text);
    }
    return calls;
}

/*! The fixture with an output on either side of the session. */
class OutputsFixture : public CaptureSessionFixture
{
public:
    explicit OutputsFixture(CameraFacing facing = CameraFacing::Back)
        : CaptureSessionFixture(facing)
    {
        session->setVideoOutput(&output);
        session->setVideoSink(&sink);
        CallLog::instance().clear();
    }
    ~OutputsFixture() { session->shutdown(); }

    OcelleVideoOutput output { nullptr }; // output 1
    OcelleVideoOutput sink { nullptr };   // output 2
};

} // namespace

/*! What a session does with its two outputs, the viewfinder's and the raw video sink. */
class TestCaptureSessionOutputs : public QObject
{
    Q_OBJECT
private slots:
    void everyPicture_goesToBothOutputs_onTheLibrarysThread()
    {
        OutputsFixture f;
        QVERIFY(f.reach(QCamera::ActiveState));
        CallLog::instance().clear();
        LibraryThread::run("CameraLibrary", [&] {
            f.platform.cameras.openedCamera()->deliver(1);
            f.platform.cameras.openedCamera()->deliver(2);
        });
        QCOMPARE(CallLog::instance().texts("output"),
                 (QStringList { "output 1: onGraphicBuffer(1)", "output 2: onGraphicBuffer(1)",
                                "output 1: onGraphicBuffer(2)", "output 2: onGraphicBuffer(2)" }));
        QCOMPARE(CallLog::instance().threadNames("output"), QStringList("CameraLibrary"));
        QCOMPARE(GraphicBuffer::alive(), 0);
    }

    void pictures_areSharedWithEachOutput_notMoved()
    {
        OutputsFixture f;
        QVERIFY(f.reach(QCamera::ActiveState));
        f.platform.cameras.openedCamera()->deliver(1);
        QVERIFY(FakeVideoOutput::at(1)->bufferOwners().first() >= 2);
        QVERIFY(FakeVideoOutput::at(2)->bufferOwners().first() >= 1);
    }

    void pictures_withoutOutputs_areDropped()
    {
        CaptureSessionFixture f;
        QVERIFY(f.reach(QCamera::ActiveState));
        f.platform.cameras.openedCamera()->deliver(1);
        QCOMPARE(GraphicBuffer::alive(), 0);
        QCOMPARE(CallLog::instance().texts("output"), QStringList());
    }

    void outputs_areMirroredByTheFacingWhenCaptureStarts_data()
    {
        QTest::addColumn<int>("facing");
        QTest::addColumn<bool>("mirrored");
        QTest::newRow("front") << 1 << true;
        QTest::newRow("back") << 0 << false;
        QTest::newRow("else") << 2 << false;
    }

    void outputs_areMirroredByTheFacingWhenCaptureStarts()
    {
        QFETCH(int, facing);
        QFETCH(bool, mirrored);
        OutputsFixture f { CameraFacing(facing) };
        QVERIFY(!FakeVideoOutput::at(1)->isMirrored()); // no camera yet
        QVERIFY(f.reach(QCamera::LoadedState));
        QCOMPARE(CallLog::instance().texts().filter("setMirrored"), QStringList());
        QVERIFY(f.reach(QCamera::ActiveState));
        QCOMPARE(FakeVideoOutput::at(1)->isMirrored(), mirrored);
        QCOMPARE(FakeVideoOutput::at(2)->isMirrored(), mirrored);
        QVERIFY(CallLog::instance().indexOf(QString("output 2: setMirrored(%1)").arg(mirrored)) <
                CallLog::instance().indexOf("control: statusChanged(6)"));
    }

    void mirrorOutput_isFalseWithoutACameraOrItsInfo()
    {
        CaptureSessionFixture f(CameraFacing::Front);
        QVERIFY(!f.session->mirrorOutput());
        QVERIFY(f.reach(QCamera::LoadedState));
        QVERIFY(f.session->mirrorOutput());
        f.script->infoFails = true;
        QVERIFY(!f.session->mirrorOutput());
    }

    void outputs_areStoppedWhenTheCameraIsAtRest()
    {
        OutputsFixture f;
        QVERIFY(f.reach(QCamera::LoadedState));
        const QStringList atLoaded = callsWithoutQuestions();
        const int loaded = atLoaded.indexOf("control: statusChanged(4)");
        QCOMPARE(atLoaded.mid(loaded - 2, 2),
                 (QStringList { "output 1: stop()", "output 2: stop()" }));

        QVERIFY(f.reach(QCamera::ActiveState));
        CallLog::instance().clear();
        QVERIFY(f.reach(QCamera::LoadedState));
        QCOMPARE(callsWithoutQuestions(),
                 (QStringList { "control: stateChanged(1)", "control: statusChanged(7)",
                                "camera back: stopCapture()", "output 1: stop()",
                                "output 2: stop()", "control: statusChanged(5)" }));

        CallLog::instance().clear();
        QVERIFY(f.reach(QCamera::UnloadedState));
        QCOMPARE(callsWithoutQuestions(),
                 (QStringList { "control: stateChanged(0)", "control: statusChanged(3)",
                                "camera back: destroyed", "output 1: stop()", "output 2: stop()",
                                "control: statusChanged(1)" }));
    }

    void setVideoSink_stopsThePrevious_andMirrorsTheNext()
    {
        CaptureSessionFixture f(CameraFacing::Front);
        QVERIFY(f.reach(QCamera::LoadedState));
        OcelleVideoOutput first(nullptr);
        OcelleVideoOutput second(nullptr);
        f.session->setVideoSink(&first);
        QVERIFY(FakeVideoOutput::at(1)->isMirrored());
        CallLog::instance().clear();
        f.session->setVideoSink(&second);
        QCOMPARE(CallLog::instance().texts("output"),
                 (QStringList { "output 1: stop()", "output 2: setMirrored(1)" }));
        CallLog::instance().clear();
        f.session->setVideoSink(nullptr);
        f.session->setVideoSink(nullptr);
        QCOMPARE(CallLog::instance().texts(), QStringList("output 2: stop()"));
    }

    void shutdown_unloadsAndDetachesBothOutputs()
    {
        OutputsFixture f;
        f.script->streams = true;
        QVERIFY(f.reach(QCamera::ActiveState));
        f.session->shutdown();
        QCOMPARE(f.session->status(), QCamera::UnloadedStatus);
        QCOMPARE(f.recorder.statuses.last(), Unloaded);
        QCOMPARE(f.recorder.states.last(), int(QCamera::UnloadedState));
        QCOMPARE(f.platform.cameras.heldCameras(), 0);
        QCOMPARE(CallLog::instance().texts("output").last(), QString("output 2: stop()"));
        const int delivered = FakeVideoOutput::at(1)->buffers().size();
        static_cast<CameraListener *>(f.session.get())->onCameraFrame(GraphicBuffer::create(9));
        QCOMPARE(FakeVideoOutput::at(1)->buffers().size(), delivered);
    }
};

QTEST_GUILESS_MAIN(TestCaptureSessionOutputs)
#include "tst_ocellecapturesessionoutputs.moc"

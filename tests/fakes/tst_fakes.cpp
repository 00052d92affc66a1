// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakecamera.h"
#include "fakedecoderscript.h"
#include "fakegraphicbuffer.h"
#include "fakeplatform.h"
#include "fakevideodecoder.h"
#include "librarythread.h"
#include "messagelog.h"

#include <QLoggingCategory>
#include <QtTest>

#include <ocelle/videooutputqt5.h>

#include <cstdlib>

using namespace Veltra::Ocelle;

Q_LOGGING_CATEGORY(lcTest, "ocelle.tests.fakes")

namespace {

/*! Keeps what a camera tells. */
class Listener : public CameraListener
{
public:
    void onCameraFrame(std::shared_ptr<GraphicBuffer> buffer) override
    {
        CallLog::instance().add("listener", QString("frame %1").arg(buffer->number));
    }
    void onCameraError(const std::string &message) override
    {
        CallLog::instance().add("listener", "error " + QString::fromStdString(message));
    }
    void onCameraParameterChanged(CameraParameter, const std::string &) override {}
};

} // namespace

class TestFakes : public QObject
{
    Q_OBJECT
private slots:
    void factories_giveTheManagersOfTheLivingPlatform()
    {
        {
            FakePlatform platform;
            QCOMPARE(OcelleManager(), static_cast<CameraManager *>(&platform.cameras));
            QCOMPARE(OcelleCodecManager(), static_cast<CodecManager *>(&platform.codecs));
        }
        QVERIFY(!OcelleManager());
    }

    void calls_areRecordedWithObjectArgumentsAndThread()
    {
        FakePlatform platform;
        platform.cameras.add("back");
        auto camera = platform.cameras.openCamera("back");
        LibraryThread::run("Elsewhere", [&] { camera->startCapture({ 640, 480, 30 }, 255); });
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "manager: openCamera(back)",
                                "camera back: startCapture(640x480@30, 255)" }));
        QCOMPARE(CallLog::instance().threadNames("camera"), QStringList("Elsewhere"));
        QVERIFY(CallLog::instance().calls().first().thread == std::this_thread::get_id());
        camera.reset();
        QCOMPARE(CallLog::instance().texts().last(), QString("camera back: destroyed"));
        QCOMPARE(platform.cameras.heldCameras(), 0);
    }

    void scripts_failWhatTheyAreToldTo()
    {
        FakePlatform platform;
        auto script = platform.cameras.add("back");
        CameraInfo info {};
        std::vector<CameraCapability> capabilities;
        script->listInfoFails = true;
        script->capabilitiesFail = true;
        QVERIFY(!platform.cameras.getCameraInfo(0, info));
        QVERIFY(!platform.cameras.getCameraCapabilities(script->info(), capabilities));
        script->openFails = true;
        QVERIFY(!platform.cameras.openCamera("back"));
        script->openFails = false;
        auto camera = platform.cameras.openCamera("back");
        script->startFails = true;
        script->infoFails = true;
        QVERIFY(!camera->startCapture({ 640, 480, 30 }, 255));
        QVERIFY(!camera->captureStarted());
        QVERIFY(!camera->getInfo(info));
    }

    void gate_holdsACallUntilItOpens()
    {
        FakePlatform platform;
        auto script = platform.cameras.add("back");
        script->openGate.close();
        std::shared_ptr<Camera> camera;
        LibraryThread thread("Opener", [&] { camera = platform.cameras.openCamera("back"); });
        QTRY_COMPARE(script->openGate.waiting(), 1);
        script->openGate.open();
        thread.join();
        QVERIFY(camera);
    }

    void stream_deliversFromItsOwnThreadUntilStopped()
    {
        FakePlatform platform;
        platform.cameras.add("back")->streams = true;
        auto camera = platform.cameras.openCamera("back");
        Listener listener;
        camera->setListener(&listener);
        QVERIFY(camera->startCapture({ 640, 480, 30 }, 255));
        QTRY_VERIFY(CallLog::instance().count("listener: frame 3") == 1);
        camera->stopCapture();
        const int streamed = platform.cameras.openedCamera()->streamed();
        QCOMPARE(CallLog::instance().texts("listener").size(), streamed);
        QCOMPARE(CallLog::instance().threadNames("listener"), QStringList("FakeCamera"));
        QCOMPARE(GraphicBuffer::alive(), 0);
        platform.cameras.openedCamera()->fail("broken");
        QCOMPARE(CallLog::instance().texts("listener").last(), QString("listener: error broken"));
    }

    void observer_runsInsideTheCall_afterItIsRecorded()
    {
        FakePlatform platform;
        QStringList seen;
        CallLog::instance().setObserver([&](const Call &call) {
            seen.append(call.text());
            QCOMPARE(CallLog::instance().texts().last(), call.text());
        });
        platform.cameras.getNumberOfCameras();
        QCOMPARE(seen, QStringList("manager: getNumberOfCameras()"));
    }

    void output_recordOutlivesTheOutput()
    {
        FakePlatform platform;
        {
            VideoOutputQt5 output;
            output.setMirrored(true);
            output.onGraphicBuffer(GraphicBuffer::create(7));
            QCOMPARE(FakeVideoOutput::alive(), 1);
        }
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QVERIFY(FakeVideoOutput::at(1)->isMirrored());
        QCOMPARE(FakeVideoOutput::at(1)->buffers(), QVector<int> { 7 });
        QVERIFY(!FakeVideoOutput::at(2));
        QCOMPARE(CallLog::instance().texts("output 1").last(), QString("output 1: destroyed"));
    }

    void decoder_releasesEveryBlockOnce()
    {
        FakePlatform platform;
        QVERIFY(!platform.codecs.createVideoDecoder(CodecType::H264, 0)); // no script yet
        const auto script = platform.codecs.giveDecoders();
        auto decoder = platform.codecs.createVideoDecoder(CodecType::H264, 0);
        const auto decode = [&decoder] {
            auto *block = static_cast<unsigned char *>(std::malloc(1));
            block[0] = 'x';
            return decoder->decode(block, 1, 5, FrameType::Delta, std::free, block);
        };
        QVERIFY(decode());
        QCOMPARE(script->blocksReleased.load(), 1);
        script->keepsBlocks = true;
        script->decodeFails = true;
        QVERIFY(!decode());
        QVERIFY(!decode());
        QCOMPARE(script->blocksReleased.load(), 1);
        platform.codecs.decoder()->releaseBlocks();
        QCOMPARE(script->blocksReleased.load(), 3);
        QVERIFY(!decode());
        decoder.reset();
        QCOMPARE(script->blocksReleased.load(), 4);
        QCOMPARE(script->foreignBlocks.load(), 0);
        QCOMPARE(CallLog::instance().count("decoder 1: decode(5, type 1, x)"), 4);
        QCOMPARE(platform.codecs.heldDecoders(), 0);
    }

    void messageLog_catchesTypeCategoryAndText()
    {
        MessageLog log;
        qCWarning(lcTest) << "trouble" << 1;
        QCOMPARE(log.messages(), QStringList("warning ocelle.tests.fakes: trouble 1"));
    }

    void messageLog_holdsUpWhoeverLogs()
    {
        MessageLog log;
        log.gate.close();
        LibraryThread thread("Logs", [] { qCWarning(lcTest) << "held"; });
        QTRY_COMPARE(log.gate.waiting(), 1);
        const QStringList messages = log.messages();
        log.gate.open();
        thread.join();
        QCOMPARE(messages, QStringList("warning ocelle.tests.fakes: held"));
    }
};

QTEST_GUILESS_MAIN(TestFakes)
#include "tst_fakes.moc"

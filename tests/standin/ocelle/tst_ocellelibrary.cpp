// SPDX-License-Identifier: BSD-3-Clause
#include "camerastatistics.h"
#include "recordinglistener.h"
#include "stderrcapture.h"

#include <QProcess>
#include <QtTest>

#include <ocelle/cameramanager.h>
#include <ocelle/codecmanager.h>
#include <ocelle/videodecoder.h>
#include <ocelle/videoencoder.h>

#include <algorithm>
#include <thread>

using namespace Veltra::Ocelle;

/*! The library as applications get it: by its exported functions alone. */
class TestOcelleLibrary : public QObject
{
    Q_OBJECT
private slots:
    void manager_isOneForTheProcess();
    void manager_readsTheEnvironmentOnce();
    void camera_deliversThroughTheInterface();
    void statistics_tellOfOpenedCameras();
    void codecManager_supportsWhatItLists();
    void process_endsWhileACameraIsStreaming();
};

void TestOcelleLibrary::manager_isOneForTheProcess()
{
    CameraManager *first = nullptr;
    std::thread([&first] { first = OcelleManager(); }).join();
    QVERIFY(first);
    QCOMPARE(OcelleManager(), first);
    QCOMPARE(OcelleCodecManager(), OcelleCodecManager());
}

void TestOcelleLibrary::manager_readsTheEnvironmentOnce()
{
    CameraManager *const manager = OcelleManager();
    QCOMPARE(manager->getNumberOfCameras(), 2);
    qputenv("OCELLE_CAMERAS", "");
    QCOMPARE(OcelleManager()->getNumberOfCameras(), 2);
    qunsetenv("OCELLE_CAMERAS");
}

void TestOcelleLibrary::camera_deliversThroughTheInterface()
{
    CameraManager *const manager = OcelleManager();
    CameraInfo info;
    QVERIFY(manager->getCameraInfo(0, info));
    QVERIFY(info.id == "pattern:back");
    std::vector<CameraCapability> capabilities;
    QVERIFY(manager->getCameraCapabilities(info, capabilities));
    const std::shared_ptr<Camera> camera = manager->openCamera(info.id);
    QVERIFY(camera);
    RecordingListener listener;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture(capabilities.front(), 255));
    QTRY_VERIFY(listener.frames() >= 3);
    camera->stopCapture();
    camera->reserved8();
    manager->reserved3();
}

void TestOcelleLibrary::statistics_tellOfOpenedCameras()
{
    const auto find = [](const std::string &id) {
        for (const CameraStatistics &statistics : cameraStatistics()) {
            if (statistics.id == id)
                return statistics.captured;
        }
        return std::uint64_t(0);
    };
    const std::uint64_t before = find("pattern:front");
    const std::shared_ptr<Camera> camera = OcelleManager()->openCamera("pattern:front");
    RecordingListener listener;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture({ 320, 240, 60 }, 255));
    QTRY_VERIFY(listener.frames() >= 3);
    camera->stopCapture();
    QVERIFY(find("pattern:front") >= before + 3);
}

void TestOcelleLibrary::codecManager_supportsWhatItLists()
{
    CodecManager *const manager = OcelleCodecManager();
    QVERIFY(manager->prepare());
    QVERIFY(manager->prepare());
    const std::vector<VideoCodecInfo> codecs = manager->getVideoCodecs();
    const auto lists = [&codecs](CodecType type, bool isEncoder) {
        return std::any_of(codecs.begin(), codecs.end(), [=](const VideoCodecInfo &codec) {
            return codec.type == type && codec.isEncoder == isEncoder;
        });
    };
    const StderrCapture quiet; // of what cannot be created
    for (const CodecType type :
         { CodecType::VP8, CodecType::VP9, CodecType::H264, CodecType::H265, CodecType::Unknown }) {
        QCOMPARE(manager->isEncoderSupported(type, true), lists(type, true));
        QCOMPARE(manager->isDecoderSupported(type, false), lists(type, false));
        if (!lists(type, true))
            QVERIFY(!manager->createVideoEncoder(type, 0));
        if (!lists(type, false))
            QVERIFY(!manager->createVideoDecoder(type, 0));
    }
    QVERIFY(!lists(CodecType::Unknown, true) && !lists(CodecType::Unknown, false));
}

void TestOcelleLibrary::process_endsWhileACameraIsStreaming()
{
    for (int round = 0; round < 5; ++round) {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(EXITING_PROGRAM, QStringList());
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
    }
}

QTEST_GUILESS_MAIN(TestOcelleLibrary)
#include "tst_ocellelibrary.moc"

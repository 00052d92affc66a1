// SPDX-License-Identifier: BSD-3-Clause
#include "stderrcapture.h"
#include "vmtest.h"

#include <QProcess>
#include <QtTest>

#include <sys/fsuid.h>

#include <algorithm>
#include <atomic>

using namespace Veltra::Ocelle;

/*! Which devices are cameras, what they offer, and who may have them. */
class TestV4l2Device : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(isInVm()); }
    void cleanup();

    void source_listsTheCaptureNodesOnly();
    void source_offersWhatTheDeviceTells();
    void cachesThatAreDropped_areNoReplug();
    void secondOpen_isRefusedWithAReason_whileItStreams();
    void deviceOfAnotherProgram_isRefused_namingIt();
    void forbiddenDevice_isRefused_namingTheGroup();
    void twoCameras_streamAtOnce();
    void camerasThatSwapTheirNodes_keepTheirIds();
};

void TestV4l2Device::cleanup()
{
    makeReady();
}

void TestV4l2Device::source_listsTheCaptureNodesOnly()
{
    const auto source = makeSource();
    QCOMPARE(idsOf(*source),
             (QStringList { QString::fromStdString(FirstId), QString::fromStdString(SecondId) }));
}

void TestV4l2Device::source_offersWhatTheDeviceTells()
{
    const auto source = makeSource();
    const CameraDescription camera = source->cameras().front();
    QCOMPARE(camera.info.name, std::string("vivid"));
    QVERIFY(camera.formats.front() == PixelFormat::NV12);
    QCOMPARE(camera.capabilities.front().width, 640);
    QCOMPARE(camera.capabilities.front().height, 480);
    const auto has = [&camera](const CameraCapability &wanted) {
        return std::any_of(camera.capabilities.begin(), camera.capabilities.end(),
                           [&wanted](const CameraCapability &one) {
                               return one.width == wanted.width && one.height == wanted.height &&
                                      one.frameRate == wanted.frameRate;
                           });
    };
    QVERIFY(has(Small));
    QVERIFY2(has({ 1280, 720, 10 }) && has({ 3840, 2160, 1 }), "large sizes have lower rates");
    QVERIFY(!has({ 3840, 2160, 30 }));
}

void TestV4l2Device::cachesThatAreDropped_areNoReplug()
{
    std::atomic<int> changes { 0 };
    const auto source = makeSource([&changes] { ++changes; });
    const auto camera = source->open(FirstId);
    QVERIFY(camera);
    RecordingListener listener;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture(Small, 255));
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > 0, 30000);
    QFile caches("/proc/sys/vm/drop_caches");
    QVERIFY(caches.open(QIODevice::WriteOnly));
    QVERIFY(caches.write("2") == 1 && caches.flush());
    // Events make the source look again.
    QVERIFY(VividDevice::announce());
    const int before = listener.frames();
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > before + 30 || !listener.errors().empty(), 30000);
    QCOMPARE(listener.errors(), std::vector<std::string>());
    QVERIFY(camera->captureStarted());
    QCOMPARE(changes.load(), 0);
}

void TestV4l2Device::secondOpen_isRefusedWithAReason_whileItStreams()
{
    const auto source = makeSource();
    const auto camera = source->open(FirstId);
    QVERIFY(camera);
    RecordingListener listener;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture(Small, 255));
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > 0, 30000);
    {
        StderrCapture output;
        QVERIFY(!source->open(FirstId));
        const QString line = output.lines().join('\n');
        QVERIFY2(line.contains("does not open: it is in use by this program"), qPrintable(line));
    }
    QVERIFY(source->open(SecondId));
    camera->stopCapture();
    QVERIFY(source->open(FirstId));
}

void TestV4l2Device::deviceOfAnotherProgram_isRefused_namingIt()
{
    const QString node = QString::fromStdString(VividDevice::nodeOf(0));
    const auto source = makeSource();
    const auto early = source->open(FirstId);
    QVERIFY(early);
    QProcess other;
    other.setProcessChannelMode(QProcess::MergedChannels);
    other.start("v4l2-ctl", { "--device", node, "--stream-mmap" });
    QByteArray progress;
    const auto isStreaming = [&] {
        progress += other.readAll();
        return progress.contains("<<");
    };
    QTRY_VERIFY_WITH_TIMEOUT(isStreaming(), 30000);
    const QString reason =
            QStringLiteral(": it is in use by \"v4l2-ctl\" (process %1); stop it there first")
                    .arg(other.processId());
    {
        StderrCapture output;
        QVERIFY(!source->open(FirstId));
        QCOMPARE(output.lines(),
                 QStringList { "ocelle: Camera \"vivid\" (" + node + ") does not open" + reason });
    }
    // It was free when it was opened.
    RecordingListener listener;
    early->setListener(&listener);
    QVERIFY(early->startCapture(Small, 255));
    QTRY_COMPARE_WITH_TIMEOUT(listener.errors().size(), std::size_t(1), 30000);
    const QString error = QString::fromStdString(listener.errors().front());
    QVERIFY2(error.endsWith(reason), qPrintable(error));
    other.kill();
    QVERIFY(other.waitForFinished());
    QTRY_VERIFY_WITH_TIMEOUT(source->open(FirstId), 10000);
}

void TestV4l2Device::forbiddenDevice_isRefused_namingTheGroup()
{
    const auto source = makeSource();
    constexpr uid_t nobody = 65534;
    StderrCapture output;
    ::setfsuid(nobody); // of this thread only
    const auto camera = source->open(FirstId);
    ::setfsuid(0);
    QVERIFY(!camera);
    const QString line = output.lines().join('\n');
    // udev's own rules say which group.
    QVERIFY2(line.contains(") does not open: permission denied; members of the group \"video\""),
             qPrintable(line));
    QVERIFY(source->open(FirstId));
}

void TestV4l2Device::twoCameras_streamAtOnce()
{
    const auto source = makeSource();
    RecordingListener listeners[2];
    std::shared_ptr<Camera> cameras[2];
    for (int i = 0; i < 2; ++i) {
        cameras[i] = source->open(i ? SecondId : FirstId);
        QVERIFY(cameras[i]);
        cameras[i]->setListener(&listeners[i]);
        QVERIFY(cameras[i]->startCapture(Small, 255));
    }
    for (int i = 0; i < 2; ++i)
        QTRY_VERIFY_WITH_TIMEOUT(listeners[i].frames() > 10, 30000);
    for (int i = 0; i < 2; ++i) {
        cameras[i].reset();
        QVERIFY(listeners[i].errors().empty());
    }
}

void TestV4l2Device::camerasThatSwapTheirNodes_keepTheirIds()
{
    // The pictures tell which device it is: the second one's is all black.
    const auto brightness = [](const std::string &id) {
        const auto source = makeSource();
        const auto camera = source->open(id);
        RecordingListener listener;
        listener.buffersToKeep = 1;
        if (camera) {
            camera->setListener(&listener);
            camera->startCapture(Small, 255);
            [&listener] { QTRY_VERIFY_WITH_TIMEOUT(listener.frames() >= 3, 30000); }();
            camera->stopCapture();
        }
        const auto buffers = listener.buffers();
        const Bytes picture = buffers.empty() ? Bytes(2) : planar(*buffers.front());
        return *std::max_element(picture.begin(),
                                 picture.begin() + std::ptrdiff_t(picture.size() * 2 / 3));
    };
    const auto blacken = [] {
        VividDevice second(1);
        second.setStillPicture();
        return second.set("Test Pattern", 5);
    };
    QVERIFY(VividDevice::reload("n_devs=2 node_types=1,1 vid_cap_nr=0,1"));
    QVERIFY(blacken());
    const std::string before = VividDevice::nodeOf(0);
    QVERIFY(brightness(FirstId) > 150);
    QVERIFY(brightness(SecondId) < 20);

    std::atomic<int> changes { 0 };
    const auto source = makeSource([&changes] { ++changes; });
    QCOMPARE(idsOf(*source).size(), 2);
    QVERIFY(VividDevice::reload("n_devs=2 node_types=1,1 vid_cap_nr=1,0"));
    QVERIFY(VividDevice::nodeOf(0) != before);
    QCOMPARE(QString::fromStdString(VividDevice::nodeOf(1)), QString::fromStdString(before));
    QVERIFY(blacken());
    QTRY_VERIFY_WITH_TIMEOUT(changes > 0 && idsOf(*source).size() == 2, 30000);
    QVERIFY(brightness(FirstId) > 150);
    QVERIFY(brightness(SecondId) < 20);
    QVERIFY(VividDevice::reload("n_devs=2"));
}

QTEST_GUILESS_MAIN(TestV4l2Device)
#include "tst_v4l2device.moc"

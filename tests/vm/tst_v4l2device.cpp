#include "cameracounters.h"
#include "devicequery.h"
#include "recordinglistener.h"
#include "stderrcapture.h"
#include "udevvideonodes.h"
#include "v4l2format.h"
#include "v4l2producer.h"
#include "v4l2source.h"
#include "vividdevice.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <random>

using namespace Veltra::Ocelle;

namespace {

using Bytes = std::vector<std::uint8_t>;
const CameraCapability Small { 640, 360, 30 };

std::unique_ptr<V4l2Source> makeSource(const std::function<void()> &changed = {})
{
    auto source = std::make_unique<V4l2Source>(std::make_shared<KernelV4l2System>(),
                                               std::make_unique<UdevVideoNodes>());
    source->watch(changed ? changed : [] {});
    return source;
}

QStringList idsOf(V4l2Source &source)
{
    QStringList ids;
    for (const CameraDescription &camera : source.cameras())
        ids.append(QString::fromStdString(camera.info.id));
    return ids;
}

const std::string FirstId = "v4l2:platform-vivid.0:vivid-000-vid-cap";
const std::string SecondId = "v4l2:platform-vivid.0:vivid-001-vid-cap";

/*! Descriptors of this process that refer to a video node. */
int openVideoNodes()
{
    int count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(entry, error).string();
        count += target.rfind("/dev/video", 0) == 0;
    }
    return count;
}

int mappedVideoNodes()
{
    QFile maps("/proc/self/maps");
    return maps.open(QIODevice::ReadOnly) ? maps.readAll().count("/dev/video") : -1;
}

/*! The whole picture as planar 4:2:0, without what is beside its lines. */
Bytes planar(const GraphicBuffer &picture)
{
    Bytes all;
    const int chromaWidth = (picture.width + 1) / 2;
    const int chromaHeight = (picture.height + 1) / 2;
    const auto sample = [&](int plane, int line, int at) {
        const GraphicBuffer::Plane &from = picture.planes[std::size_t(plane)];
        return from.data[std::ptrdiff_t(line) * from.stride + at];
    };
    for (int line = 0; line < picture.height; ++line) {
        for (int x = 0; x < picture.width; ++x)
            all.push_back(sample(0, line, x));
    }
    const bool isPlanar = picture.format == PixelFormat::YU12;
    const int first = picture.format == PixelFormat::NV21 ? 1 : 0;
    for (int plane = 0; plane < 2; ++plane) {
        for (int line = 0; line < chromaHeight; ++line) {
            for (int x = 0; x < chromaWidth; ++x)
                all.push_back(isPlanar ? sample(1 + plane, line, x)
                                       : sample(1, line, 2 * x + (plane ^ first)));
        }
    }
    return all;
}

struct Difference
{
    double mean = 0;
    double share = 0; // of samples that are off by more than rounding explains
};

Difference compare(const Bytes &a, const Bytes &b)
{
    if (a.size() != b.size() || a.empty())
        return { 255, 1 };
    double sum = 0;
    double far = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const int off = std::abs(int(a[i]) - int(b[i]));
        sum += off;
        far += off > 3;
    }
    return { sum / double(a.size()), far / double(a.size()) };
}

/*! The \a number th picture of a producer; empty, with its error, where it ends before. */
std::shared_ptr<GraphicBuffer> take(V4l2Producer &producer, int number, QString &error)
{
    const std::atomic<bool> stop { false };
    std::shared_ptr<GraphicBuffer> picture;
    for (int i = 0; i < number; ++i) {
        if (!producer.next(stop)) {
            error = QString::fromStdString(producer.error());
            return {};
        }
        picture = producer.picture(std::uint64_t(i), 0);
    }
    return picture;
}

V4l2Producer::Target target(std::uint32_t fourcc, int width = 640, int height = 360)
{
    return { "test", "Test", VividDevice::nodeOf(0), { fourcc, width, height, { 1, 30 }, 30 } };
}

std::unique_ptr<V4l2Producer> makeProducer(std::uint32_t fourcc, int width = 640, int height = 360)
{
    V4l2Producer::Patience patience;
    patience.next = std::chrono::milliseconds(2000);
    return std::make_unique<V4l2Producer>(std::make_shared<KernelV4l2System>(),
                                          target(fourcc, width, height), patience);
}

int countFromEnvironment(const char *name, int otherwise)
{
    bool isNumber = false;
    const int count = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? count : otherwise;
}

} // namespace

class TestV4l2Device : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();

    void source_listsTheCaptureNodesOnly();
    void source_offersWhatTheDeviceTells();
    void pictures_areTheSameInEveryFormat_data();
    void pictures_areTheSameInEveryFormat();
    void pictures_moveAndAreNumberedAndTimed();
    void buffers_stayValidAfterStopCloseAndUnplug();
    void consumersThatHoldAllBuffers_costPicturesButNothingElse();
    void secondOpen_isRefusedWithAReason_whileItStreams();
    void twoCameras_streamAtOnce();
    void camerasThatSwapTheirNodes_keepTheirIds();
    void unplugging_isOneErrorAndPluggingInTheSameCamera();
    void injectedErrors_becomeSentences_data();
    void injectedErrors_becomeSentences();
    void damagedPictures_areDroppedAndCounted();
    void unpluggingAtAnyMoment_isAnErrorAtOnce();
    void startAndStop_leakNothing();
};

void TestV4l2Device::initTestCase()
{
    QVERIFY2(!VividDevice::nodeOf(0).empty(), "this runs inside the virtual machine only");
}

void TestV4l2Device::cleanup()
{
    QTRY_COMPARE(openVideoNodes(), 0);
    QCOMPARE(mappedVideoNodes(), 0);
    if (VividDevice::nodeOf(0).empty())
        QVERIFY(VividDevice::plug());
    QTRY_VERIFY_WITH_TIMEOUT(idsOf(*makeSource()).size() == 2, 30000);
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

void TestV4l2Device::pictures_areTheSameInEveryFormat_data()
{
    QTest::addColumn<quint32>("fourcc");
    QTest::addColumn<int>("pattern");
    for (const quint32 fourcc : { V4L2_PIX_FMT_NV21, V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_YUYV,
                                  V4L2_PIX_FMT_UYVY, V4L2_PIX_FMT_RGB24 }) {
        const std::string name = V4l2Format::name(fourcc);
        QTest::addRow("%s bars", name.c_str()) << fourcc << 0;
        QTest::addRow("%s grey ramp", name.c_str()) << fourcc << 20;
    }
}

void TestV4l2Device::pictures_areTheSameInEveryFormat()
{
    QFETCH(quint32, fourcc);
    QFETCH(int, pattern);
    VividDevice device;
    device.setStillPicture();
    QVERIFY(device.set("Test Pattern", pattern));
    QString error;
    const auto capture = [&error](std::uint32_t format) {
        const auto producer = makeProducer(format);
        const auto picture = take(*producer, 3, error);
        return picture ? planar(*picture) : Bytes();
    };
    const Bytes expected = capture(V4L2_PIX_FMT_NV12);
    QVERIFY2(!expected.empty(), qPrintable(error));
    const Bytes got = capture(fourcc);
    QVERIFY2(!got.empty(), qPrintable(error));
    const Difference difference = compare(expected, got);
    const QString text =
            QStringLiteral("mean %1, share %2").arg(difference.mean).arg(difference.share);
    // Where bars meet, chroma is averaged in different ways.
    QVERIFY2(difference.mean < 1.5 && difference.share < 0.02, qPrintable(text));
    // And it is a picture.
    const auto [least, most] = std::minmax_element(expected.begin(), expected.begin() + 640 * 360);
    QVERIFY(*most - *least > 100);
    QVERIFY(device.set("Test Pattern", 0) && device.set("OSD Text Mode", 0));
}

void TestV4l2Device::pictures_moveAndAreNumberedAndTimed()
{
    VividDevice device;
    QVERIFY(device.set("Horizontal Movement", 6)); // right, fast
    const auto source = makeSource();
    const auto camera = source->open(FirstId);
    QVERIFY(camera);
    RecordingListener listener;
    listener.buffersToKeep = 3;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture(Small, 255));
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() >= 60, 30000);
    camera->stopCapture();
    QVERIFY(listener.errors().empty());
    const auto buffers = listener.buffers();
    QVERIFY(compare(planar(*buffers[0]), planar(*buffers[1])).share > 0.001);
    const auto stamps = listener.stamps();
    for (std::size_t i = 1; i < stamps.size(); ++i) {
        QVERIFY(stamps[i].sequence > stamps[i - 1].sequence);
        QVERIFY(stamps[i].timestamp > stamps[i - 1].timestamp);
    }
    // An emulated driver is late for single pictures by several periods, but not for all.
    const auto pictures = std::int64_t(stamps.back().sequence - stamps.front().sequence);
    const std::int64_t time = stamps.back().timestamp - stamps.front().timestamp;
    QVERIFY2(std::llabs(time - pictures * 33333) < 400000,
             qPrintable(QStringLiteral("%1 us for %2 pictures").arg(time).arg(pictures)));
    QVERIFY(device.set("Horizontal Movement", 3)); // none
}

void TestV4l2Device::buffers_stayValidAfterStopCloseAndUnplug()
{
    const auto source = makeSource();
    auto camera = source->open(FirstId);
    QVERIFY(camera);
    RecordingListener listener;
    listener.buffersToKeep = 3;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture(Small, 255));
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() >= 8, 30000);
    std::vector<RecordingListener::Buffer> held = listener.buffers();
    listener.dropBuffers();
    QCOMPARE(held.size(), std::size_t(3));
    const Bytes before = planar(*held[0]);
    camera->stopCapture();
    QCOMPARE(planar(*held[0]), before);

    // The device is free again although its pictures are out.
    QVERIFY(camera->startCapture(Small, 255));
    const int delivered = listener.frames();
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > delivered + 3, 30000);
    listener.dropBuffers();
    QVERIFY(listener.errors().empty());
    QCOMPARE(planar(*held[0]), before);
    camera.reset();
    QCOMPARE(planar(*held[0]), before);
    QCOMPARE(mappedVideoNodes(), 3);
    QVERIFY(VividDevice::unplug());
    QCOMPARE(planar(*held[0]), before);
    held.clear();
    QCOMPARE(mappedVideoNodes(), 0);
}

void TestV4l2Device::consumersThatHoldAllBuffers_costPicturesButNothingElse()
{
    const auto source = makeSource();
    const auto camera = source->open(FirstId);
    QVERIFY(camera);
    RecordingListener listener;
    listener.buffersToKeep = 100;
    camera->setListener(&listener);
    const auto counters = CameraCounters::forCamera(FirstId);
    const std::uint64_t droppedBefore = counters->dropped;
    QVERIFY(camera->startCapture(Small, 255));
    const auto text = [&] {
        const std::vector<std::string> errors = listener.errors();
        return QStringLiteral("%1 delivered, %2 captured, %3 dropped, %4 late %5")
                .arg(listener.frames())
                .arg(counters->captured)
                .arg(counters->dropped - droppedBefore)
                .arg(counters->late)
                .arg(errors.empty() ? QString() : QString::fromStdString(errors.front()));
    };
    const bool isDropping = QTest::qWaitFor(
            [&] { return listener.frames() == 6 && counters->dropped > droppedBefore + 10; },
            30000);
    QVERIFY2(isDropping, qPrintable(text()));
    const int held = listener.frames();
    QCOMPARE(held, 6); // of eight, as two stay with the driver
    listener.buffersToKeep = 0;
    listener.dropBuffers();
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > held + 10, 30000);
    camera->stopCapture();
    QVERIFY(listener.errors().empty());
}

void TestV4l2Device::secondOpen_isRefusedWithAReason_whileItStreams()
{
    const auto source = makeSource();
    const auto camera = source->open(FirstId);
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

void TestV4l2Device::unplugging_isOneErrorAndPluggingInTheSameCamera()
{
    std::atomic<int> changes { 0 };
    const auto source = makeSource([&changes] { ++changes; });
    const QStringList ids = idsOf(*source);
    auto camera = source->open(FirstId);
    RecordingListener listener;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture(Small, 255));
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > 2, 30000);
    QVERIFY(VividDevice::unplug());
    QTRY_COMPARE_WITH_TIMEOUT(idsOf(*source).size(), 0, 30000);
    QTRY_COMPARE_WITH_TIMEOUT(listener.errors().size(), std::size_t(1), 30000);
    const QString error = QString::fromStdString(listener.errors().front());
    QVERIFY2(error.contains("\"vivid\"") && error.contains("unplugged"), qPrintable(error));
    QVERIFY(!camera->captureStarted());
    QVERIFY(!camera->startCapture(Small, 255));
    camera.reset();

    QVERIFY(VividDevice::plug());
    QTRY_COMPARE_WITH_TIMEOUT(idsOf(*source), ids, 30000);
    QVERIFY2(changes >= 2 && changes <= 4, qPrintable(QString::number(changes)));
    camera = source->open(FirstId);
    QVERIFY(camera);
    camera->setListener(&listener);
    const int before = listener.frames();
    QVERIFY(camera->startCapture(Small, 255));
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > before + 2, 30000);
    camera->stopCapture();
    QCOMPARE(listener.errors().size(), std::size_t(1));
}

void TestV4l2Device::injectedErrors_becomeSentences_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<bool>("beforeStart");
    QTest::addColumn<QString>("operation");
    QTest::newRow("no memory") << "Inject VIDIOC_REQBUFS Error" << true << "gives no memory";
    QTest::newRow("no queueing") << "Inject VIDIOC_QBUF Error" << true
                                 << "does not start streaming";
    QTest::newRow("no start") << "Inject VIDIOC_STREAMON Error" << true
                              << "does not start streaming";
    QTest::newRow("driver fails") << "Inject Fatal Streaming Error" << false << "stopped";
    QTest::newRow("disconnected") << "Disconnect" << false << "unplugged";
}

void TestV4l2Device::injectedErrors_becomeSentences()
{
    QFETCH(QString, control);
    QFETCH(bool, beforeStart);
    QFETCH(QString, operation);
    const auto source = makeSource();
    auto camera = source->open(FirstId);
    QVERIFY(camera);
    RecordingListener listener;
    camera->setListener(&listener);
    {
        VividDevice device;
        if (beforeStart)
            QVERIFY(device.set(control.toStdString(), 1));
        QVERIFY(camera->startCapture(Small, 255));
        if (!beforeStart) {
            QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > 2, 30000);
            QVERIFY(device.set(control.toStdString(), 1));
        }
        QTRY_VERIFY_WITH_TIMEOUT(!listener.errors().empty(), 30000);
    }
    camera->stopCapture();
    QCOMPARE(listener.errors().size(), std::size_t(1));
    const QString error = QString::fromStdString(listener.errors().front());
    QVERIFY2(error.contains("\"vivid\"") && error.contains("/dev/video") &&
                     error.contains(operation),
             qPrintable(error));
    qInfo("%s", qPrintable(error));

    // It was one incident: the next start works.
    camera.reset();
    QTRY_COMPARE(openVideoNodes(), 0);
    QTRY_VERIFY_WITH_TIMEOUT((camera = source->open(FirstId)) != nullptr, 10000);
    camera->setListener(&listener);
    const int before = listener.frames();
    QVERIFY(camera->startCapture(Small, 255));
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > before, 30000);
}

void TestV4l2Device::damagedPictures_areDroppedAndCounted()
{
    VividDevice device;
    QVERIFY(device.set("Percentage of Dropped Buffers", 30));
    const auto source = makeSource();
    const auto camera = source->open(FirstId);
    RecordingListener listener;
    camera->setListener(&listener);
    const auto counters = CameraCounters::forCamera(FirstId);
    const std::uint64_t capturedBefore = counters->captured;
    const std::uint64_t lostBefore = counters->dropped + counters->late;
    QVERIFY(camera->startCapture(Small, 255));
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > 10, 30000);
    QVERIFY(device.set("Inject V4L2_BUF_FLAG_ERROR", 1));
    const int before = listener.frames();
    QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > before + 20, 30000);
    camera->stopCapture();
    QVERIFY(device.set("Percentage of Dropped Buffers", 0));
    QVERIFY(listener.errors().empty());
    const std::uint64_t lost = counters->dropped + counters->late - lostBefore;
    QVERIFY2(lost > 2, qPrintable(QString::number(lost)));
    QCOMPARE(counters->captured - capturedBefore - lost, std::uint64_t(listener.frames()));
}

void TestV4l2Device::unpluggingAtAnyMoment_isAnErrorAtOnce()
{
    const int count = countFromEnvironment("OCELLE_UNPLUGS", 8);
    std::mt19937 random(4711);
    std::uniform_int_distribution<int> phase(0, 400);
    const auto source = makeSource();
    qint64 slowest = 0;
    int early = 0;
    for (int i = 0; i < count; ++i) {
        QTRY_COMPARE_WITH_TIMEOUT(idsOf(*source).size(), 2, 30000);
        auto camera = source->open(FirstId);
        QVERIFY(camera);
        RecordingListener listener;
        listener.buffersToKeep = 2;
        camera->setListener(&listener);
        QVERIFY(camera->startCapture(Small, 255));
        QTest::qWait(phase(random)); // the phase is what is tested
        early += listener.frames() == 0;
        QElapsedTimer timer;
        std::thread unplugger([] { VividDevice::unplug(); });
        // The driver waits for who uses it, so the time counts from when the node went.
        while (!VividDevice::nodeOf(0).empty())
            QThread::usleep(200);
        timer.start();
        while (listener.errors().empty() && timer.elapsed() < 10000)
            QThread::usleep(200);
        slowest = std::max(slowest, timer.elapsed());
        unplugger.join();
        QCOMPARE(listener.errors().size(), std::size_t(1));
        for (const auto &buffer : listener.buffers())
            QVERIFY(planar(*buffer).size() > 0);
        camera.reset();
        QCOMPARE(listener.errors().size(), std::size_t(1));
        listener.dropBuffers();
        QTRY_COMPARE(openVideoNodes(), 0);
        QCOMPARE(mappedVideoNodes(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(idsOf(*source).size(), 0, 30000);
        QVERIFY(VividDevice::plug());
        if (i % 20 == 19)
            qInfo("%d so far, slowest error after %lld ms", i + 1, slowest);
    }
    qInfo("%d unplugs, %d of them before the first picture; slowest error after %lld ms", count,
          early, slowest);
    QVERIFY(slowest < 500);
}

void TestV4l2Device::startAndStop_leakNothing()
{
    const int count = countFromEnvironment("OCELLE_STARTS", 40);
    const auto source = makeSource();
    RecordingListener listener;
    const auto camera = source->open(FirstId);
    QVERIFY(camera);
    camera->setListener(&listener);
    int streamed = 0;
    for (int i = 0; i < count; ++i) {
        const int before = listener.frames();
        QVERIFY(camera->startCapture(Small, 255));
        if (i % 4 == 0) {
            QTRY_VERIFY_WITH_TIMEOUT(listener.frames() > before, 30000);
            ++streamed;
        }
        camera->stopCapture();
        QVERIFY(!camera->captureStarted());
        QCOMPARE(openVideoNodes(), 0);
        QCOMPARE(mappedVideoNodes(), 0);
    }
    QVERIFY(listener.errors().empty());
    qInfo("%d starts, %d of them until the first picture", count, streamed);
}

QTEST_GUILESS_MAIN(TestV4l2Device)
#include "tst_v4l2device.moc"

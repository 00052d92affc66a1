// SPDX-License-Identifier: BSD-3-Clause
#include "cameracounters.h"
#include "v4l2format.h"
#include "v4l2producer.h"
#include "vmtest.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <cmath>

using namespace Veltra::Ocelle;

namespace {

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

} // namespace

/*! What the pictures show, and how long they stay. */
class TestV4l2Pictures : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(isInVm()); }
    void cleanup();

    void pictures_areTheSameInEveryFormat_data();
    void pictures_areTheSameInEveryFormat();
    void pictures_moveAndAreNumberedAndTimed();
    void buffers_stayValidAfterStopCloseAndUnplug();
    void consumersThatHoldAllBuffers_costPicturesButNothingElse();
    void damagedPictures_areDroppedAndCounted();
};

void TestV4l2Pictures::cleanup()
{
    makeReady();
}

void TestV4l2Pictures::pictures_areTheSameInEveryFormat_data()
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

void TestV4l2Pictures::pictures_areTheSameInEveryFormat()
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

void TestV4l2Pictures::pictures_moveAndAreNumberedAndTimed()
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

void TestV4l2Pictures::buffers_stayValidAfterStopCloseAndUnplug()
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

void TestV4l2Pictures::consumersThatHoldAllBuffers_costPicturesButNothingElse()
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

void TestV4l2Pictures::damagedPictures_areDroppedAndCounted()
{
    VividDevice device;
    QVERIFY(device.set("Percentage of Dropped Buffers", 30));
    const auto source = makeSource();
    const auto camera = source->open(FirstId);
    QVERIFY(camera);
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

QTEST_GUILESS_MAIN(TestV4l2Pictures)
#include "tst_v4l2pictures.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "bufferpool.h"
#include "camerastatistics.h"
#include "patternproducer.h"
#include "patternreader.h"
#include "patternsource.h"
#include "picturememory.h"
#include "recordinglistener.h"

#include <QtTest>

#include <time.h>

#include <atomic>
#include <cstdlib>
#include <new>

using namespace Veltra::Ocelle;

namespace {

thread_local std::uint64_t t_allocations = 0;

std::int64_t nowUs()
{
    timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

std::optional<PatternReading> read(const GraphicBuffer &picture)
{
    return readPattern(picture.planes[0].data, picture.planes[0].stride, picture.width,
                       picture.height);
}

} // namespace

// Counts what each thread of this program allocates.
void *operator new(std::size_t size)
{
    ++t_allocations;
    if (void *memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void *memory) noexcept
{
    std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

class TestPatternSource : public QObject
{
    Q_OBJECT
private slots:
    void cameras_areBackAndFront();
    void open_unknownCamera_isEmpty();
    void everyCapability_deliversReadablePictures_data();
    void everyCapability_deliversReadablePictures();
    void frontCamera_isNotMirrored_andDiffersFromTheBack();
    void firstPicture_comesAtOnce();
    void rate_doesNotDrift_data();
    void rate_doesNotDrift();
    void pictures_comeWholeSecondsApart_forEver();
    void pictures_needNoAllocation_onceRunning();
    void pictures_stayAsTheyWere_whileTheyAreHeld();
    void severalCameras_andOneOpenedTwice_deliverAtOnce();
    void buffers_outliveCameraAndSource();

private:
    std::unique_ptr<PatternSource> m_source = std::make_unique<PatternSource>(PixelFormat::NV12);
};

void TestPatternSource::cameras_areBackAndFront()
{
    const std::vector<CameraDescription> cameras = m_source->cameras();
    QCOMPARE(cameras.size(), std::size_t(2));
    QVERIFY(cameras[0].info.id == "pattern:back" && cameras[1].info.id == "pattern:front");
    QVERIFY(cameras[0].info.name == "Pattern camera (back)");
    QVERIFY(cameras[1].info.name == "Pattern camera (front)");
    QVERIFY(cameras[0].info.facing == CameraFacing::Back);
    QVERIFY(cameras[1].info.facing == CameraFacing::Front);
    for (const CameraDescription &camera : cameras) {
        QCOMPARE(camera.info.mountAngle, 0);
        QStringList capabilities;
        for (const CameraCapability &one : camera.capabilities)
            capabilities += QString("%1x%2@%3").arg(one.width).arg(one.height).arg(one.frameRate);
        QCOMPARE(capabilities,
                 QStringList({ "640x480@30", "640x480@60", "640x480@15", "1280x720@30",
                               "1280x720@60", "1280x720@15", "1920x1080@30", "1920x1080@60",
                               "1920x1080@15", "320x240@30", "320x240@60", "320x240@15" }));
        const std::shared_ptr<Camera> opened = m_source->open(camera.info.id);
        CameraInfo info;
        QVERIFY(opened->getInfo(info));
        QVERIFY(info.id == camera.info.id && info.name == camera.info.name);
        QVERIFY(opened->getSupportedPixelFormats() == camera.formats);
    }
}

void TestPatternSource::open_unknownCamera_isEmpty()
{
    QVERIFY(!m_source->open("pattern:top"));
    QVERIFY(!m_source->open(""));
}

void TestPatternSource::everyCapability_deliversReadablePictures_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("yu12");
    int index = 0;
    const CameraDescription description = m_source->cameras().front();
    for (const CameraCapability &one : description.capabilities) {
        for (const bool yu12 : { false, true })
            QTest::addRow("%dx%d@%u %s", one.width, one.height, one.frameRate,
                          yu12 ? "YU12" : "NV12")
                    << index << yu12;
        ++index;
    }
}

void TestPatternSource::everyCapability_deliversReadablePictures()
{
    QFETCH(int, index);
    QFETCH(bool, yu12);
    const PixelFormat format = yu12 ? PixelFormat::YU12 : PixelFormat::NV12;
    PatternSource source(format);
    const CameraCapability wanted = source.cameras().front().capabilities[std::size_t(index)];
    const std::shared_ptr<Camera> camera = source.open("pattern:back");
    QVERIFY(camera->getSupportedPixelFormats().front() == format);
    RecordingListener listener;
    listener.buffersToKeep = 4;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture(wanted, 255));
    QTRY_COMPARE(listener.buffers().size(), std::size_t(4));
    camera->stopCapture();
    for (const RecordingListener::Buffer &buffer : listener.buffers()) {
        QCOMPARE(buffer->width, wanted.width);
        QCOMPARE(buffer->height, wanted.height);
        QVERIFY(buffer->format == format);
        QCOMPARE(buffer->planeCount, yu12 ? 3 : 2);
        QVERIFY(buffer->live);
        const std::optional<PatternReading> reading = read(*buffer);
        QVERIFY(reading);
        QCOMPARE(std::uint64_t(reading->sequence), buffer->sequence);
    }
}

void TestPatternSource::frontCamera_isNotMirrored_andDiffersFromTheBack()
{
    std::vector<std::vector<std::uint8_t>> pictures;
    for (const char *id : { "pattern:back", "pattern:front" }) {
        const std::shared_ptr<Camera> camera = m_source->open(id);
        RecordingListener listener;
        listener.buffersToKeep = 1;
        camera->setListener(&listener);
        camera->startCapture({ 640, 480, 30 }, 255);
        QTRY_COMPARE(listener.buffers().size(), std::size_t(1));
        camera->stopCapture();
        const RecordingListener::Buffer buffer = listener.buffers().front();
        const std::optional<PatternReading> reading = read(*buffer);
        QVERIFY(reading && !reading->mirrored && reading->rotation == 0);
        const std::uint8_t *const luma = buffer->planes[0].data;
        pictures.emplace_back(luma, luma + std::ptrdiff_t(buffer->planes[0].stride) * 480);
    }
    QVERIFY(pictures[0] != pictures[1]);
}

void TestPatternSource::firstPicture_comesAtOnce()
{
    const std::shared_ptr<Camera> camera = m_source->open("pattern:back");
    std::int64_t best = 1000000;
    for (int round = 0; round < 20; ++round) { // the best of some: others use this machine too
        RecordingListener listener;
        std::atomic<std::int64_t> arrived { 0 };
        listener.onFrame = [&](RecordingListener::Buffer &) {
            if (arrived == 0)
                arrived = nowUs();
        };
        camera->setListener(&listener);
        const std::int64_t started = nowUs();
        camera->startCapture({ 640, 480, 15 }, 255);
        QTRY_VERIFY(arrived != 0);
        camera->stopCapture();
        camera->setListener(nullptr);
        best = std::min(best, arrived - started);
    }
    qInfo("first picture after %lld us", static_cast<long long>(best));
    QVERIFY2(best < 66000 / 4, qPrintable(QString("%1 us").arg(best))); // far from a period
}

void TestPatternSource::rate_doesNotDrift_data()
{
    QTest::addColumn<uint>("rate");
    QTest::newRow("15") << 15U;
    QTest::newRow("30") << 30U;
    QTest::newRow("60") << 60U;
}

void TestPatternSource::rate_doesNotDrift()
{
    QFETCH(uint, rate);
    const std::shared_ptr<Camera> camera = m_source->open("pattern:back");
    std::int64_t drift = 1000000;
    for (int attempt = 0; attempt < 5 && qAbs(drift) >= 2000;
         ++attempt) { // others use this machine
        RecordingListener listener;
        camera->setListener(&listener);
        QVERIFY(camera->startCapture({ 320, 240, rate }, 255));
        QTRY_VERIFY_WITH_TIMEOUT(listener.frames() >= int(rate) * 2, 20000);
        camera->stopCapture();
        camera->setListener(nullptr);
        drift = listener.drift(rate);
    }
    QVERIFY2(qAbs(drift) < 2000, qPrintable(QString("%1 us in a second").arg(drift)));
}

void TestPatternSource::pictures_comeWholeSecondsApart_forEver()
{
    const std::atomic<bool> stop { false };
    for (const std::uint32_t rate : { 15U, 30U, 60U }) {
        PatternProducer producer({ 320, 240, rate }, PixelFormat::NV12, "BACK");
        for (std::uint32_t i = 0; i < rate * 1000; ++i) {
            const std::chrono::nanoseconds offset = *producer.next(stop);
            if (i % rate == 0)
                QCOMPARE(offset.count(), i / rate * 1000000000LL);
        }
    }
}

void TestPatternSource::pictures_needNoAllocation_onceRunning()
{
    const std::shared_ptr<Camera> camera = m_source->open("pattern:back");
    struct Counter : CameraListener
    {
        void onCameraFrame(std::shared_ptr<GraphicBuffer> buffer) override
        {
            held.swap(buffer); // so that two buffers go round
            if (++pictures == 1)
                own = std::make_shared<int>(); // one allocation, to see that they are counted
            if (pictures == 5)
                atFifth = t_allocations;
            atLast = t_allocations;
        }
        void onCameraError(const std::string &) override {}
        void onCameraParameterChanged(CameraParameter, const std::string &) override {}

        std::shared_ptr<GraphicBuffer> held;
        std::shared_ptr<int> own;
        std::atomic<int> pictures { 0 };
        std::uint64_t atFifth = 0;
        std::uint64_t atLast = 0;
    } counter;
    camera->setListener(&counter);
    camera->startCapture({ 320, 240, 60 }, 255);
    QTRY_VERIFY(counter.pictures >= 40);
    camera->stopCapture();
    QVERIFY(counter.atFifth > 0);
    QCOMPARE(counter.atLast, counter.atFifth);
}

void TestPatternSource::pictures_stayAsTheyWere_whileTheyAreHeld()
{
    const std::shared_ptr<Camera> camera = m_source->open("pattern:back");
    RecordingListener listener;
    listener.buffersToKeep = BufferPool<PictureMemory>::Size - 1; // one is left to go round
    camera->setListener(&listener);
    camera->startCapture({ 320, 240, 60 }, 255);
    QTRY_VERIFY(listener.frames() >= 30);
    for (const RecordingListener::Buffer &buffer : listener.buffers()) {
        const std::optional<PatternReading> reading = read(*buffer);
        QVERIFY(reading);
        QCOMPARE(std::uint64_t(reading->sequence), buffer->sequence);
    }
    camera->stopCapture();
}

void TestPatternSource::severalCameras_andOneOpenedTwice_deliverAtOnce()
{
    struct Running
    {
        std::shared_ptr<Camera> camera;
        RecordingListener listener;
    };
    Running running[3];
    const char *const ids[] = { "pattern:back", "pattern:back", "pattern:front" };
    const CameraCapability capabilities[] = { { 640, 480, 30 },
                                              { 320, 240, 60 },
                                              { 320, 240, 15 } };
    for (int i = 0; i < 3; ++i) {
        running[i].camera = m_source->open(ids[i]);
        running[i].camera->setListener(&running[i].listener);
        QVERIFY(running[i].camera->startCapture(capabilities[i], 255));
    }
    for (Running &one : running)
        QTRY_VERIFY(one.listener.frames() >= 5);
    running[0].camera->stopCapture(); // in another order
    const int frames = running[0].listener.frames();
    const int others = running[1].listener.frames();
    QTRY_VERIFY(running[1].listener.frames() >= others + 5);
    QCOMPARE(running[0].listener.frames(), frames);
    QVERIFY(running[0].camera->startCapture(capabilities[1], 255));
    QTRY_VERIFY(running[0].listener.frames() > frames);
    for (int i : { 2, 0, 1 })
        running[i].camera.reset();
}

void TestPatternSource::buffers_outliveCameraAndSource()
{
    std::shared_ptr<Camera> camera = m_source->open("pattern:front");
    RecordingListener listener;
    listener.buffersToKeep = 2;
    camera->setListener(&listener);
    camera->startCapture({ 320, 240, 60 }, 255);
    QTRY_COMPARE(listener.buffers().size(), std::size_t(2));
    camera.reset();
    m_source = std::make_unique<PatternSource>(PixelFormat::NV12);
    for (const RecordingListener::Buffer &buffer : listener.buffers())
        QCOMPARE(std::uint64_t(read(*buffer)->sequence), buffer->sequence);
    listener.dropBuffers();
}

QTEST_GUILESS_MAIN(TestPatternSource)
#include "tst_patternsource.moc"

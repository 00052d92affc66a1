// SPDX-License-Identifier: BSD-3-Clause
#include "driverstream.h"
#include "scriptedcapture.h"

#include <QtTest>

#include <turbojpeg.h>

#include <cerrno>
#include <future>

using namespace Veltra::Ocelle;

namespace {

ScriptedCapture::Bytes jpeg()
{
    constexpr int width = ScriptedCapture::Width;
    constexpr int height = ScriptedCapture::Height;
    const ScriptedCapture::Bytes rgb(std::size_t(width * height * 3), 200);
    const tjhandle handle = tjInitCompress();
    unsigned char *data = nullptr;
    unsigned long size = 0;
    tjCompress2(handle, rgb.data(), width, 0, height, TJPF_RGB, &data, &size, TJSAMP_420, 90, 0);
    const ScriptedCapture::Bytes bytes(data, data + size);
    tjFree(data);
    tjDestroy(handle);
    return bytes;
}

} // namespace

/*! A camera that captures, and whatever its driver answers meanwhile. */
class TestV4l2Capture : public QObject, private ScriptedCapture
{
    Q_OBJECT
private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void pictures_comeUncopied_andTheirBuffersGoBack();
    void laterPictures_areDueBeforeTheyCome();
    void pictures_haveTheDriversTime_butNoneToCome();
    void slowFirstPicture_doesNotHoldBackTheOthers();
    void buffersHeld_stayValidAfterClose_andAreFreedByTheirHolder();
    void failingCall_isOneSentence_andTheNextStartWorks_data();
    void failingCall_isOneSentence_andTheNextStartWorks();
    void deviceWithTooFewBuffers_isRefused();
    void bufferThatIsOut_isNotDeliveredAgain();
    void bufferThatTheDriverWasNotGivenBack_isNotTaken();
    void deviceWithoutChoiceOfRates_captures();
    void goneWhileStreaming_isOneError_data();
    void goneWhileStreaming_isOneError();
    void cutJpegs_areDroppedAndCounted();
    void jpegsWithBytesAround_areDelivered();
};

void TestV4l2Capture::pictures_comeUncopied_andTheirBuffersGoBack()
{
    open(V4L2_PIX_FMT_NV12);
    m_listener->buffersToKeep = 1;
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(deliverUntilSeen(grey(77)));
    QCOMPARE(m_system->mappedNow(), 8);
    QCOMPARE(int(m_listener->buffers().front()->planes[0].data[100]), 77);
    QTRY_COMPARE(m_system->queuedNow(), std::size_t(7));
    m_listener->buffersToKeep = 0;
    m_listener->dropBuffers();
    QTRY_COMPARE(m_system->queuedNow(), std::size_t(8));
    m_camera->stopCapture();
    QVERIFY(!m_system->isStreaming());
    QCOMPARE(m_system->openNow(), 0);
    QVERIFY(m_listener->errors().empty());
}

void TestV4l2Capture::laterPictures_areDueBeforeTheyCome()
{
    m_system = std::make_shared<ScriptedV4l2System>();
    const std::atomic<bool> stop { false };
    V4l2Producer producer(m_system,
                          { Id, "Test", Node, { V4L2_PIX_FMT_NV12, Width, Height, { 1, 30 }, 30 } },
                          V4l2Producer::Patience());
    const auto next = [&] {
        const auto delivery =
                std::async(std::launch::async, [this] { return m_system->deliver(grey(1)); });
        const auto offset = producer.next(stop);
        producer.picture(0, 0);
        return offset.value_or(std::chrono::hours(1));
    };
    const auto before = std::chrono::steady_clock::now();
    const auto first = next();
    const auto second = next();
    const auto passed = std::chrono::steady_clock::now() - before;
    QVERIFY(second - first <= passed - Milliseconds(5));
    const auto third = next();
    QVERIFY(third > second);
}

void TestV4l2Capture::pictures_haveTheDriversTime_butNoneToCome()
{
    const auto now = [] {
        return std::chrono::duration_cast<std::chrono::microseconds>(
                std::chrono::steady_clock::now().time_since_epoch());
    };
    constexpr std::chrono::seconds age { 100 };
    open(V4L2_PIX_FMT_NV12);
    m_system->setAge(age);
    QVERIFY(m_camera->startCapture(Only, 255));
    auto began = now();
    QVERIFY(deliverUntilSeen(grey(1)));
    const std::chrono::microseconds early(m_listener->stamps().back().timestamp);
    QVERIFY(early >= began - age && early <= now() - age);

    // Some drivers tell when the picture would have ended.
    m_system->setAge(-age);
    began = now();
    QVERIFY(deliverUntilSeen(grey(1)));
    const std::chrono::microseconds late(m_listener->stamps().back().timestamp);
    QVERIFY(late >= began && late <= now());
}

void TestV4l2Capture::slowFirstPicture_doesNotHoldBackTheOthers()
{
    open(V4L2_PIX_FMT_NV12);
    constexpr int delay = 800; // ms
    m_system->slowDown(VIDIOC_DQBUF, Milliseconds(delay));
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(m_system->deliver(grey(1)));
    QTRY_COMPARE(m_listener->frames(), 1);
    m_system->slowDown(VIDIOC_DQBUF, Milliseconds(0));
    QElapsedTimer timer;
    qint64 quickest = delay;
    for (int i = 0; i < 5; ++i) {
        timer.start();
        QVERIFY(deliverUntilSeen(grey(2)));
        quickest = std::min(quickest, timer.elapsed());
    }
    QVERIFY2(quickest < delay / 2, qPrintable(QString::number(quickest)));
}

void TestV4l2Capture::buffersHeld_stayValidAfterClose_andAreFreedByTheirHolder()
{
    open(V4L2_PIX_FMT_NV12);
    m_listener->buffersToKeep = 3;
    QVERIFY(m_camera->startCapture(Only, 255));
    for (const std::uint8_t value : { 10, 20, 30 })
        QVERIFY(deliverUntilSeen(grey(value)));
    std::vector<RecordingListener::Buffer> held = m_listener->buffers();
    m_listener->dropBuffers();
    m_camera.reset();
    m_source.reset();
    QCOMPARE(m_system->openNow(), 0);
    QCOMPARE(m_system->mappedNow(), 3);
    const int queued = m_system->calls(VIDIOC_QBUF);
    for (std::size_t i = 0; i < held.size(); ++i) {
        QCOMPARE(std::size_t(held[i]->planes[0].data[0]), 10 * (i + 1));
        QCOMPARE(std::size_t(held[i]->planes[1].data[0]), 10 * (i + 1));
    }
    held.pop_back();
    QCOMPARE(m_system->mappedNow(), 2);
    std::thread([&held] { held.clear(); }).join();
    QCOMPARE(m_system->mappedNow(), 0);
    QCOMPARE(m_system->calls(VIDIOC_QBUF), queued);
}

void TestV4l2Capture::failingCall_isOneSentence_andTheNextStartWorks_data()
{
    QTest::addColumn<quint64>("request"); // 0 is opening
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("sentence");
    const auto add = [](const char *name, unsigned long request, int error, const char *sentence) {
        QTest::newRow(name) << quint64(request) << error << QString(sentence);
    };
    add("forbidden", 0, EACCES, "does not open: permission denied");
    add("kept from it", 0, EPERM,
        "does not open: it is kept from this program by its container or sandbox, which has to be "
        "given the device");
    add("too many files", 0, EMFILE, "does not open: Too many open files; close some");
    add("busy", VIDIOC_S_FMT, EBUSY,
        "does not take the format: another program uses it; close that first");
    add("no format", VIDIOC_S_FMT, EINVAL, "does not take the format: Invalid argument");
    add("no rate", VIDIOC_S_PARM, EIO,
        "does not take the rate: the device or its driver failed; start it anew, and if that does "
        "not help unplug it and plug it in again");
    add("no memory", VIDIOC_REQBUFS, ENOMEM,
        "gives no memory for pictures: Cannot allocate memory");
    add("no buffer", VIDIOC_QUERYBUF, EINVAL, "gives no memory for pictures: Invalid argument");
    add("no queue", VIDIOC_QBUF, EINVAL, "does not start streaming: Invalid argument");
    add("no bandwidth", VIDIOC_STREAMON, ENOSPC,
        "does not start streaming: the USB bus has no bandwidth left for it; choose a smaller size "
        "or rate, stop other cameras, or plug it into another port");
    add("driver fails", VIDIOC_DQBUF, EIO,
        "stopped: the device or its driver failed; start it anew, and if that does not help unplug "
        "it and plug it in again");
}

void TestV4l2Capture::failingCall_isOneSentence_andTheNextStartWorks()
{
    QFETCH(quint64, request);
    QFETCH(int, error);
    QFETCH(QString, sentence);
    open(V4L2_PIX_FMT_NV12);
    const auto fail = [&](int with) {
        if (request)
            m_system->failIoctl(request, with);
        else
            m_system->failOpening(with);
    };
    fail(error);
    QVERIFY(m_camera->startCapture(Only, 255));
    QTRY_VERIFY(!m_listener->errors().empty());
    QVERIFY(!m_camera->captureStarted());
    m_camera->stopCapture();
    QCOMPARE(m_system->openNow(), 0);
    QCOMPARE(m_system->mappedNow(), 0);
    QCOMPARE(m_listener->errors().size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(m_listener->errors().front()),
             QStringLiteral("Camera \"Test\" (%1) ").arg(Node) + sentence);

    fail(0);
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(deliverUntilSeen(grey(1)));
    m_camera->stopCapture();
    QCOMPARE(m_listener->errors().size(), std::size_t(1));
}

void TestV4l2Capture::deviceWithTooFewBuffers_isRefused()
{
    open(V4L2_PIX_FMT_NV12);
    m_system->setMostBuffers(3);
    QVERIFY(m_camera->startCapture(Only, 255));
    QTRY_VERIFY(!m_listener->errors().empty());
    QCOMPARE(QString::fromStdString(m_listener->errors().front()),
             QStringLiteral(
                     "Camera \"Test\" (%1) gives no memory for pictures: it has buffers for 3 "
                     "only, and streaming takes 4")
                     .arg(Node));
    m_camera->stopCapture();
    QCOMPARE(m_system->openNow(), 0);

    m_system->setMostBuffers(4);
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(deliverUntilSeen(grey(1)));
}

void TestV4l2Capture::bufferThatIsOut_isNotDeliveredAgain()
{
    open(V4L2_PIX_FMT_NV12);
    m_listener->buffersToKeep = 1;
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(deliverUntilSeen(grey(55)));
    QTRY_COMPARE(m_system->queuedNow(), std::size_t(7)); // all but the one that is held
    const int frames = m_listener->frames();
    m_system->deliverHeld();
    QTRY_VERIFY(!m_listener->errors().empty());
    m_camera->stopCapture();
    QCOMPARE(m_listener->frames(), frames);
    QCOMPARE(QString::fromStdString(m_listener->errors().front()),
             QStringLiteral(
                     "Camera \"Test\" (%1) stopped: its driver filled a buffer that it had not "
                     "been given back")
                     .arg(Node));
}

void TestV4l2Capture::bufferThatTheDriverWasNotGivenBack_isNotTaken()
{
    m_system = std::make_shared<ScriptedV4l2System>();
    DriverStream stream(std::make_unique<OpenDevice>(m_system, Node));
    QVERIFY(stream.start({ V4L2_PIX_FMT_NV12, Width, Height, { 1, 30 }, 30 }));
    QVERIFY(m_system->deliver(grey(1)));
    DriverStream::Picture picture {};
    QCOMPARE(stream.dequeue(picture), DriverStream::Dequeued::Picture);
    QVERIFY(stream.handOut(picture.index));
    stream.giveBack(picture.index); // to be requeued
    m_system->deliverHeld();
    QCOMPARE(stream.dequeue(picture), DriverStream::Dequeued::Failed);
    stream.stop();
}

void TestV4l2Capture::deviceWithoutChoiceOfRates_captures()
{
    for (const int error : { ENOTTY, EINVAL }) {
        open(V4L2_PIX_FMT_NV12);
        m_system->failIoctl(VIDIOC_S_PARM, error);
        QVERIFY(m_camera->startCapture(Only, 255));
        QVERIFY(deliverUntilSeen(grey(1)));
        QVERIFY(m_listener->errors().empty());
        m_camera.reset();
    }
}

void TestV4l2Capture::goneWhileStreaming_isOneError_data()
{
    QTest::addColumn<bool>("driverIsFirst");
    QTest::newRow("the driver tells first") << true;
    QTest::newRow("udev tells first") << false;
}

void TestV4l2Capture::goneWhileStreaming_isOneError()
{
    QFETCH(bool, driverIsFirst);
    open(V4L2_PIX_FMT_NV12);
    m_listener->buffersToKeep = 1;
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(deliverUntilSeen(grey(55)));
    const auto driver = [this] { m_system->breakDown(ENODEV); };
    const auto event = [this] { m_plugged->set({}); };
    driverIsFirst ? driver() : event();
    QTRY_COMPARE(m_listener->errors().size(), std::size_t(1));
    driverIsFirst ? event() : driver();
    QTRY_VERIFY(m_source->cameras().empty());
    QVERIFY(!m_camera->captureStarted());
    QTRY_VERIFY(!m_camera->startCapture(Only, 255)); // once it heard of the event
    m_camera->stopCapture();
    QCOMPARE(m_listener->errors().size(), std::size_t(1));
    const QString error = QString::fromStdString(m_listener->errors().front());
    QCOMPARE(error, QStringLiteral("Camera \"Test\" (%1) stopped: it was unplugged; plug it in "
                                   "again and open it anew")
                            .arg(Node));
    QCOMPARE(int(m_listener->buffers().front()->planes[0].data[0]), 55);
    m_listener->dropBuffers();

    // Plugged in again it is the same camera.
    m_system->breakDown(0);
    VideoNode again = webcam(Node);
    again.plugged = 2;
    m_plugged->set({ again });
    QTRY_VERIFY((m_camera = m_source->open(Id)) != nullptr);
    m_camera->setListener(m_listener.get());
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(deliverUntilSeen(grey(1)));
    QCOMPARE(m_listener->errors().size(), std::size_t(1));
}

void TestV4l2Capture::cutJpegs_areDroppedAndCounted()
{
    open(V4L2_PIX_FMT_MJPEG);
    QVERIFY(m_camera->startCapture(Only, 255));
    const Bytes whole = jpeg();
    const Bytes cut(whole.begin(), whole.begin() + std::ptrdiff_t(whole.size() * 3 / 4));
    QVERIFY(deliverUntilSeen(whole));
    const int frames = m_listener->frames();
    const std::uint64_t dropped = m_counters->dropped;
    for (int i = 0; i < 3; ++i) {
        const std::uint64_t captured = m_counters->captured;
        QVERIFY(m_system->deliver(cut));
        QTRY_VERIFY(m_counters->captured > captured);
    }
    QVERIFY(deliverUntilSeen(whole));
    m_camera->stopCapture();
    const std::uint64_t counted = m_counters->dropped + m_counters->late;
    QVERIFY(m_counters->dropped > dropped);
    QVERIFY(m_listener->frames() > frames);
    QVERIFY(counted >= 3);
    QCOMPARE(m_counters->captured - counted, std::uint64_t(m_listener->frames()));
    QVERIFY(m_listener->errors().empty());
}

void TestV4l2Capture::jpegsWithBytesAround_areDelivered()
{
    open(V4L2_PIX_FMT_MJPEG);
    m_listener->buffersToKeep = 1;
    QVERIFY(m_camera->startCapture(Only, 255));
    Bytes data = jpeg();
    data.insert(data.end(), 300, 0); // as some devices fill up their packets
    QVERIFY(deliverUntilSeen(data));
    // 200 of 0 to 255 is 188 of 16 to 235.
    QVERIFY(std::abs(int(m_listener->buffers().front()->planes[0].data[0]) - 188) <= 2);
    QVERIFY(m_listener->errors().empty());
}

QTEST_GUILESS_MAIN(TestV4l2Capture)
#include "tst_v4l2capture.moc"

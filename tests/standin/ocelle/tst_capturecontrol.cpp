// SPDX-License-Identifier: BSD-3-Clause
#include "recordinglistener.h"
#include "scriptedproducer.h"
#include "stderrcapture.h"
#include "streamingcamera.h"

#include <QtTest>

#include <thread>

using namespace Veltra::Ocelle;

/*! What goes wrong while a camera captures, and what becomes of its pictures then. */
class TestCaptureControl : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void failure_isReportedOnce_andEndsTheCapture();
    void failureToFill_isReportedOnce();
    void lackOfMemory_isReportedOnce_andTheNextStartWorks();
    void unplugged_reportsOnce_andDoesNotStartAgain();
    void unplugged_whileStopped_reportsNothing();
    void unplugged_thenStoppedAtOnce_neverReportsAfterStop();
    void unplugged_thenStopped_reportsBeforeStopReturns();
    void buffersHeld_areCountedAsDropped_andDeliveryGoesOnAfter();
    void blockedConsumer_makesLatePictures_countedInTheSequence();
    void buffers_outliveTheCamera();

private:
    void makeCamera();

    std::string m_id; // one for each function: its statistics begin at zero
    std::shared_ptr<ProducerScript> m_script;
    std::shared_ptr<CaptureControl> m_control;
    std::shared_ptr<Camera> m_camera;
};

void TestCaptureControl::init()
{
    m_id = std::string("test:") + QTest::currentTestFunction();
    m_script = std::make_shared<ProducerScript>();
    makeCamera();
}

void TestCaptureControl::makeCamera()
{
    m_control = scriptedControl(m_id, m_script);
    m_camera = std::make_shared<StreamingCamera>(m_control);
}

void TestCaptureControl::failure_isReportedOnce_andEndsTheCapture()
{
    m_script->endAfter = 3;
    m_script->error = "Camera broke";
    RecordingListener listener;
    std::atomic<bool> startedDuringError { true };
    listener.onError = [&] { startedDuringError = m_camera->captureStarted(); };
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(!listener.errors().empty());
    m_camera->stopCapture();
    QVERIFY(!startedDuringError);
    QCOMPARE(listener.errors(), std::vector<std::string> { "Camera broke" });
    QCOMPARE(statisticsOf(m_id).captured, std::uint64_t(3));
    const int frames = listener.frames();
    QVERIFY(frames > 0 && frames <= 3); // on a busy machine some may have been late

    m_script->endAfter = -1; // and it can be started again
    QVERIFY(m_camera->startCapture(Offered, 255));
    QTRY_VERIFY(listener.frames() >= frames + 3);
    m_camera->stopCapture();
    QCOMPARE(listener.errors().size(), std::size_t(1));
}

void TestCaptureControl::failureToFill_isReportedOnce()
{
    m_script->failToFill = true;
    m_script->error = "No such format";
    RecordingListener listener;
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(!listener.errors().empty());
    m_camera->stopCapture();
    QCOMPARE(listener.errors(), std::vector<std::string> { "No such format" });
    QCOMPARE(listener.frames(), 0);
}

void TestCaptureControl::lackOfMemory_isReportedOnce_andTheNextStartWorks()
{
    m_script->lackMemory = true;
    RecordingListener listener;
    m_camera->setListener(&listener);
    QVERIFY(m_camera->startCapture(Offered, 255));
    QTRY_VERIFY(!listener.errors().empty());
    QVERIFY(!m_camera->captureStarted());
    m_camera->stopCapture();
    QCOMPARE(listener.errors(),
             std::vector<std::string> {
                     "Camera \"Test\" has no memory left for its pictures: choose "
                     "a smaller size, or close other programs" });
    QCOMPARE(listener.frames(), 0);
    QCOMPARE(m_script->alive.load(), 0);

    m_script->lackMemory = false;
    QVERIFY(m_camera->startCapture(Offered, 255));
    QTRY_VERIFY(listener.frames() > 0);
    m_camera->stopCapture();
    QCOMPARE(listener.errors().size(), std::size_t(1));
}

void TestCaptureControl::unplugged_reportsOnce_andDoesNotStartAgain()
{
    m_script->period = std::chrono::hours(1); // it has to wake the capture from its sleep
    RecordingListener listener;
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_COMPARE(listener.frames(), 1);
    m_control->unplug();
    m_control->unplug();
    QTRY_VERIFY(!listener.errors().empty());
    QVERIFY(!m_camera->captureStarted());
    m_camera->stopCapture();
    QCOMPARE(listener.errors(), std::vector<std::string> { "Camera \"Test\" was unplugged" });
    StderrCapture capture;
    QVERIFY(!m_camera->startCapture(Offered, 255));
    QCOMPARE(capture.lines(), QStringList { "ocelle: camera \"Test\" was unplugged" });
}

void TestCaptureControl::unplugged_whileStopped_reportsNothing()
{
    RecordingListener listener;
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    m_camera->stopCapture();
    m_control->unplug();
    m_camera->stopCapture();
    QVERIFY(listener.errors().empty());
}

void TestCaptureControl::unplugged_thenStoppedAtOnce_neverReportsAfterStop()
{
    for (int round = 0; round < 200; ++round) {
        RecordingListener listener;
        m_camera->setListener(&listener);
        QVERIFY(m_camera->startCapture(Offered, 255));
        std::thread puller([control = m_control] { control->unplug(); });
        m_camera->stopCapture();
        const std::size_t errors = listener.errors().size();
        QVERIFY(errors <= 1);
        puller.join();
        QCOMPARE(m_script->alive.load(), 0);
        QCOMPARE(listener.errors().size(), errors);
        m_camera->setListener(nullptr);
        makeCamera();
    }
}

void TestCaptureControl::unplugged_thenStopped_reportsBeforeStopReturns()
{
    for (int round = 0; round < 200; ++round) {
        RecordingListener listener;
        m_camera->setListener(&listener);
        QVERIFY(m_camera->startCapture(Offered, 255));
        m_control->unplug();
        m_camera->stopCapture();
        QCOMPARE(listener.errors().size(), std::size_t(1));
        m_camera->setListener(nullptr);
        makeCamera();
    }
}

void TestCaptureControl::buffersHeld_areCountedAsDropped_andDeliveryGoesOnAfter()
{
    constexpr std::size_t poolSize = BufferPool<PictureMemory>::Size;
    RecordingListener listener;
    listener.buffersToKeep = 100;
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(statisticsOf(m_id).dropped >= 10);
    QCOMPARE(listener.frames(), int(poolSize));
    QCOMPARE(listener.buffers().size(), poolSize);
    for (const RecordingListener::Buffer &buffer : listener.buffers()) // as it was handed out
        QCOMPARE(std::uint64_t(buffer->planes[0].data[15]), buffer->sequence & 255);

    listener.dropBuffers();
    QTRY_VERIFY(listener.frames() > int(poolSize));
    m_camera->stopCapture();
    const auto stamps = listener.stamps();
    QVERIFY(stamps[poolSize].sequence >= poolSize + 10); // the dropped ones were counted
    const CameraStatistics statistics = statisticsOf(m_id);
    QCOMPARE(statistics.captured, statistics.dropped + statistics.late + stamps.size());
}

void TestCaptureControl::blockedConsumer_makesLatePictures_countedInTheSequence()
{
    m_script->period = std::chrono::milliseconds(2);
    RecordingListener listener;
    QElapsedTimer held;
    listener.onFrame = [&](RecordingListener::Buffer &) {
        if (listener.frames() != 1)
            return;
        held.start();
        while (held.elapsed() < 50) // takes 25 periods over one picture
            std::this_thread::yield();
    };
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(listener.frames() >= 5);
    m_camera->stopCapture();
    QVERIFY(statisticsOf(m_id).late >= 20);
    QVERIFY(listener.stamps()[1].sequence >= 20);
    QVERIFY(statisticsOf(m_id).dropped == 0);
}

void TestCaptureControl::buffers_outliveTheCamera()
{
    RecordingListener listener;
    listener.buffersToKeep = 3;
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_COMPARE(listener.buffers().size(), std::size_t(3));
    m_camera.reset();
    m_control.reset();
    for (const RecordingListener::Buffer &buffer : listener.buffers())
        QCOMPARE(std::uint64_t(buffer->planes[0].data[15]), buffer->sequence & 255);
    std::thread([&] { listener.dropBuffers(); }).join(); // and go on any thread
}

QTEST_GUILESS_MAIN(TestCaptureControl)
#include "tst_capturecontrol.moc"

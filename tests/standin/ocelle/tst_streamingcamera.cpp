// SPDX-License-Identifier: BSD-3-Clause
#include "recordinglistener.h"
#include "scriptedproducer.h"
#include "stderrcapture.h"
#include "streamingcamera.h"

#include <QtTest>

#include <condition_variable>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

const char Id[] = "test:streaming";

/*! Holds threads up until it is opened. */
class Barrier
{
public:
    void open()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOpen = true;
        m_opened.notify_all();
    }
    void pass()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_opened.wait(lock, [this] { return m_isOpen; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    bool m_isOpen = false;
};

} // namespace

class TestStreamingCamera : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void startCapture_deliversWithRisingSequenceAndTime();
    void startCapture_refusesWhatIsNotOffered();
    void startCapture_refusesASecondTime();
    void startCapture_isFalse_whereNoProducerCanBeMade();
    void stopCapture_waitsForTheCallback_andNoneFollows();
    void stopCapture_fromWithinTheCallback_isTheLastOne();
    void stopCapture_withoutCapture_doesNothing();
    void stopCapture_byTwoThreads_returnsToBoth();
    void restart_fromWithinTheCallback_goesOnWithANewCapture();
    void camera_canBeDroppedWithinItsCallback();
    void camera_droppedElsewhere_waitsForTheCallback();
    void setListener_null_endsCallbacksButNotTheCapture();
    void setListener_fromWithinTheCallback_doesNotDeadlock();
    void hundredCycles_deliverEachTime();
    void startStopFromManyThreads_endsStopped();

private:
    void makeCamera();

    std::shared_ptr<ProducerScript> m_script;
    std::shared_ptr<Camera> m_camera;
};

void TestStreamingCamera::init()
{
    m_script = std::make_shared<ProducerScript>();
    makeCamera();
}

void TestStreamingCamera::makeCamera()
{
    m_camera = std::make_shared<StreamingCamera>(scriptedControl(Id, m_script));
}

void TestStreamingCamera::startCapture_deliversWithRisingSequenceAndTime()
{
    const CameraStatistics before = statisticsOf(Id);
    RecordingListener listener;
    m_camera->setListener(&listener);
    QVERIFY(!m_camera->captureStarted());
    QVERIFY(m_camera->startCapture(Offered, 255));
    QVERIFY(m_camera->captureStarted());
    QTRY_VERIFY(listener.frames() >= 20);
    m_camera->stopCapture();
    QVERIFY(!m_camera->captureStarted());
    QCOMPARE(m_script->alive.load(), 0);

    const auto stamps = listener.stamps();
    QCOMPARE(stamps.front().sequence, std::uint64_t(0));
    for (std::size_t i = 1; i < stamps.size(); ++i) {
        QVERIFY(stamps[i].sequence > stamps[i - 1].sequence);
        QVERIFY(stamps[i].timestamp >= stamps[i - 1].timestamp);
    }
    const CameraStatistics after = statisticsOf(Id);
    QCOMPARE(after.captured - before.captured,
             after.dropped - before.dropped + after.late - before.late + stamps.size());
}

void TestStreamingCamera::startCapture_refusesWhatIsNotOffered()
{
    for (const CameraCapability wanted :
         { CameraCapability { 16, 16, 30 }, CameraCapability { 16, 8, 500 },
           CameraCapability { 8, 16, 500 } }) {
        StderrCapture capture;
        QVERIFY(!m_camera->startCapture(wanted, 255));
        const QStringList lines = capture.lines();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines[0].startsWith(QString("ocelle: camera \"Test\" does not offer %1x%2 at %3")
                                            .arg(wanted.width)
                                            .arg(wanted.height)
                                            .arg(wanted.frameRate)));
        QVERIFY(lines[0].endsWith("the nearest it offers is 16x16 at 500 frames per second"));
        QVERIFY(!m_camera->captureStarted());
    }
}

void TestStreamingCamera::startCapture_refusesASecondTime()
{
    RecordingListener listener;
    m_camera->setListener(&listener);
    QVERIFY(m_camera->startCapture(Offered, 255));
    StderrCapture capture;
    QVERIFY(!m_camera->startCapture(Offered, 255));
    QCOMPARE(capture.lines(), QStringList { "ocelle: camera \"Test\" is started already" });
    QVERIFY(m_camera->captureStarted());
    QTRY_VERIFY(listener.frames() >= 5); // the first one goes on
    m_camera->stopCapture();
}

void TestStreamingCamera::startCapture_isFalse_whereNoProducerCanBeMade()
{
    CameraDescription description;
    description.capabilities = { Offered };
    StreamingCamera camera(
            std::make_shared<CaptureControl>(description, [](const CameraCapability &) {
                return std::unique_ptr<PictureProducer>();
            }));
    QVERIFY(!camera.startCapture(Offered, 255));
    QVERIFY(!camera.captureStarted());
    camera.stopCapture();
    QVERIFY(!camera.startCapture(Offered, 255)); // not "started already"
}

void TestStreamingCamera::stopCapture_waitsForTheCallback_andNoneFollows()
{
    RecordingListener listener;
    Barrier barrier;
    listener.onFrame = [&](RecordingListener::Buffer &) { barrier.pass(); };
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(listener.isBusy());
    std::atomic<bool> wasBusy { true };
    std::thread stopper([&] {
        m_camera->stopCapture();
        wasBusy = listener.isBusy();
    });
    QTRY_VERIFY(!m_camera->captureStarted()); // so it is waiting by now, or about to
    QVERIFY(listener.isBusy());
    barrier.open();
    stopper.join();
    QVERIFY(!wasBusy);
    QCOMPARE(listener.frames(), 1);
    QCOMPARE(m_script->alive.load(), 0); // there is nobody left to make a second one
}

void TestStreamingCamera::stopCapture_fromWithinTheCallback_isTheLastOne()
{
    RecordingListener listener;
    listener.onFrame = [&](RecordingListener::Buffer &) {
        if (listener.frames() == 3) {
            m_camera->stopCapture();
            QVERIFY(!m_camera->captureStarted());
        }
    };
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(!m_camera->captureStarted());
    m_camera->stopCapture(); // now from outside: waits for that callback
    QCOMPARE(m_script->alive.load(), 0);
    QCOMPARE(listener.frames(), 3);
    QVERIFY(listener.errors().empty());
}

void TestStreamingCamera::stopCapture_withoutCapture_doesNothing()
{
    m_camera->stopCapture();
    m_camera->stopCapture();
    QVERIFY(!m_camera->captureStarted());
}

void TestStreamingCamera::stopCapture_byTwoThreads_returnsToBoth()
{
    RecordingListener listener;
    m_camera->setListener(&listener);
    for (int round = 0; round < 50; ++round) {
        QVERIFY(m_camera->startCapture(Offered, 255));
        std::thread other([this] { m_camera->stopCapture(); });
        m_camera->stopCapture();
        QCOMPARE(m_script->alive.load(), 0);
        other.join();
    }
}

void TestStreamingCamera::restart_fromWithinTheCallback_goesOnWithANewCapture()
{
    RecordingListener listener;
    std::atomic<bool> wasStarted { false };
    listener.onFrame = [&](RecordingListener::Buffer &) {
        if (listener.frames() == 3) {
            m_camera->stopCapture();
            wasStarted = m_camera->startCapture(Offered, 255);
        }
    };
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(listener.frames() >= 6);
    m_camera->stopCapture();
    QVERIFY(wasStarted);
    QCOMPARE(listener.stamps()[0].sequence, std::uint64_t(0));
    QCOMPARE(listener.stamps()[3].sequence, std::uint64_t(0)); // counts anew
    QCOMPARE(m_script->alive.load(), 0);
}

void TestStreamingCamera::camera_canBeDroppedWithinItsCallback()
{
    RecordingListener listener;
    Barrier started;
    listener.onFrame = [&](RecordingListener::Buffer &) {
        started.pass();
        if (listener.frames() == 2)
            m_camera.reset();
    };
    m_camera->setListener(&listener);
    m_camera->startCapture(Offered, 255);
    started.open();                          // from here on the camera belongs to the callback
    QTRY_COMPARE(m_script->alive.load(), 0); // the capture ended, so no callback will come
    QCOMPARE(listener.frames(), 2);
}

void TestStreamingCamera::camera_droppedElsewhere_waitsForTheCallback()
{
    auto listener = std::make_unique<RecordingListener>();
    for (int round = 0; round < 50; ++round) {
        m_camera->setListener(listener.get());
        m_camera->startCapture(Offered, 255);
        if (round % 2)
            QTRY_VERIFY(listener->frames() > 0);
        m_camera.reset();
        QCOMPARE(m_script->alive.load(), 0);
        listener = std::make_unique<RecordingListener>(); // the old one is gone for good
        makeCamera();
    }
}

void TestStreamingCamera::setListener_null_endsCallbacksButNotTheCapture()
{
    RecordingListener first;
    RecordingListener second;
    m_camera->setListener(&first);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(first.frames() >= 3);
    m_camera->setListener(nullptr);
    const int frames = first.frames();
    QVERIFY(!first.isBusy());
    m_camera->setListener(&second);
    QTRY_VERIFY(second.frames() >= 3);
    QCOMPARE(first.frames(), frames);
    QVERIFY(m_camera->captureStarted());
    m_camera->stopCapture();
}

void TestStreamingCamera::setListener_fromWithinTheCallback_doesNotDeadlock()
{
    RecordingListener first;
    RecordingListener second;
    first.onFrame = [&](RecordingListener::Buffer &) { m_camera->setListener(&second); };
    m_camera->setListener(&first);
    m_camera->startCapture(Offered, 255);
    QTRY_VERIFY(second.frames() >= 3);
    m_camera->stopCapture();
    QCOMPARE(first.frames(), 1);
}

void TestStreamingCamera::hundredCycles_deliverEachTime()
{
    RecordingListener listener;
    m_camera->setListener(&listener);
    for (int round = 0; round < 100; ++round) {
        const int before = listener.frames();
        QVERIFY(m_camera->startCapture(Offered, 255));
        QTRY_VERIFY(listener.frames() > before);
        m_camera->stopCapture();
        const int after = listener.frames();
        QVERIFY(!m_camera->captureStarted());
        QCOMPARE(m_script->alive.load(), 0);
        QCOMPARE(listener.frames(), after);
    }
    QVERIFY(listener.errors().empty());
}

void TestStreamingCamera::startStopFromManyThreads_endsStopped()
{
    const StderrCapture quiet; // of starts while it is started
    RecordingListener listener;
    m_camera->setListener(&listener);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([this] {
            for (int round = 0; round < 100; ++round) {
                m_camera->startCapture(Offered, 255);
                m_camera->stopCapture();
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    m_camera->stopCapture();
    QVERIFY(!m_camera->captureStarted());
    QCOMPARE(m_script->alive.load(), 0);
}

QTEST_GUILESS_MAIN(TestStreamingCamera)
#include "tst_streamingcamera.moc"

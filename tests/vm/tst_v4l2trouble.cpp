// SPDX-License-Identifier: BSD-3-Clause
#include "vmtest.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

int countFromEnvironment(const char *name, int otherwise)
{
    bool isNumber = false;
    const int count = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? count : otherwise;
}

} // namespace

/*! Devices that fail, go and come again. */
class TestV4l2Trouble : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(isInVm()); }
    void cleanup();

    void unplugging_isOneErrorAndPluggingInTheSameCamera();
    void injectedErrors_becomeSentences_data();
    void injectedErrors_becomeSentences();
    void unpluggingAtAnyMoment_isAnErrorAtOnce();
    void startAndStop_leakNothing();
};

void TestV4l2Trouble::cleanup()
{
    makeReady();
}

void TestV4l2Trouble::unplugging_isOneErrorAndPluggingInTheSameCamera()
{
    std::atomic<int> changes { 0 };
    const auto source = makeSource([&changes] { ++changes; });
    const QStringList ids = idsOf(*source);
    auto camera = source->open(FirstId);
    QVERIFY(camera);
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

void TestV4l2Trouble::injectedErrors_becomeSentences_data()
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

void TestV4l2Trouble::injectedErrors_becomeSentences()
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

void TestV4l2Trouble::unpluggingAtAnyMoment_isAnErrorAtOnce()
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
        QCOMPARE(listener.errors(), std::vector<std::string>()); // the next one is the unplugging's
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
        QVERIFY(VividDevice::settle() && VividDevice::plug());
        if (i % 20 == 19)
            qInfo("%d so far, slowest error after %lld ms", i + 1, slowest);
    }
    qInfo("%d unplugs, %d of them before the first picture; slowest error after %lld ms", count,
          early, slowest);
    QVERIFY(slowest < 500);
}

void TestV4l2Trouble::startAndStop_leakNothing()
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

QTEST_GUILESS_MAIN(TestV4l2Trouble)
#include "tst_v4l2trouble.moc"

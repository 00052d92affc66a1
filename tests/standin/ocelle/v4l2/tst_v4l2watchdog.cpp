// SPDX-License-Identifier: BSD-3-Clause
#include "scriptedcapture.h"

#include <QtTest>

#include <cerrno>

using namespace Veltra::Ocelle;

/*! A camera that stops delivering. */
class TestV4l2Watchdog : public QObject, private ScriptedCapture
{
    Q_OBJECT
private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void firstPicture_isWaitedForLonger();
    void silenceAfterPictures_isAnError();
    void silence_isNoError_whereThereIsNoWatchdog();
    void silence_isNoError_betweenThePicturesOfASlowDevice();
    void timeThatTheProgramWasStopped_isNoSilence();
    void damagedPicturesOnly_areAnError();
    void picturesToldOfButNotThere_areSilence_andKeepNoProcessorBusy();
};

void TestV4l2Watchdog::firstPicture_isWaitedForLonger()
{
    open(V4L2_PIX_FMT_NV12, { Milliseconds(900), Milliseconds(100) });
    QElapsedTimer timer;
    timer.start();
    QVERIFY(m_camera->startCapture(Only, 255));
    QTRY_VERIFY_WITH_TIMEOUT(!m_listener->errors().empty(), 30000);
    QVERIFY2(timer.elapsed() >= 900, qPrintable(QString::number(timer.elapsed())));
    const QString error = QString::fromStdString(m_listener->errors().front());
    QVERIFY2(error.contains("delivered no picture for ") && error.contains(" s: start it anew"),
             qPrintable(error));
    m_camera->stopCapture();
    QCOMPARE(m_listener->errors().size(), std::size_t(1));
}

void TestV4l2Watchdog::silenceAfterPictures_isAnError()
{
    open(V4L2_PIX_FMT_NV12, { std::chrono::hours(1), Milliseconds(1000) });
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(deliverUntilSeen(grey(1)));
    QTRY_VERIFY_WITH_TIMEOUT(!m_listener->errors().empty(), 30000);
    m_camera->stopCapture();
    QCOMPARE(m_listener->errors().size(), std::size_t(1));
    const QString error = QString::fromStdString(m_listener->errors().front());
    QVERIFY2(error.contains("delivered no picture for 1."), qPrintable(error));
}

void TestV4l2Watchdog::silence_isNoError_whereThereIsNoWatchdog()
{
    open(V4L2_PIX_FMT_NV12, V4l2Producer::Patience::endless());
    QVERIFY(m_camera->startCapture(Only, 255));
    const int waits = m_system->waits();
    QTRY_VERIFY(m_system->waits() >= waits + 3); // it looked at the time in vain
    QVERIFY(deliverUntilSeen(grey(1)));
    QTRY_VERIFY(m_system->waits() >= waits + 6);
    QVERIFY(m_listener->errors().empty());
    QVERIFY(m_camera->captureStarted());
}

void TestV4l2Watchdog::silence_isNoError_betweenThePicturesOfASlowDevice()
{
    open(V4L2_PIX_FMT_NV12, { Milliseconds(1), Milliseconds(1) });
    m_system->setInterval({ 60, 1 });
    QVERIFY(m_camera->startCapture(Only, 255));
    for (int i = 0; i < 2; ++i) {
        const int waits = m_system->waits();
        QTRY_VERIFY(m_system->waits() >= waits + 3); // it looked at the time in vain
        QVERIFY(deliverUntilSeen(grey(1)));
    }
    QVERIFY(m_listener->errors().empty());
    QVERIFY(m_camera->captureStarted());
}

void TestV4l2Watchdog::timeThatTheProgramWasStopped_isNoSilence()
{
    constexpr Milliseconds patience { 1000 };
    open(V4L2_PIX_FMT_NV12, { std::chrono::hours(1), patience });
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(deliverUntilSeen(grey(1)));
    m_system->stallWait(patience + Milliseconds(200));
    QTRY_VERIFY(!m_system->isStalled());
    QVERIFY(deliverUntilSeen(grey(1)));
    QVERIFY(m_listener->errors().empty());
}

void TestV4l2Watchdog::damagedPicturesOnly_areAnError()
{
    open(V4L2_PIX_FMT_NV12, { Milliseconds(500), Milliseconds(500) });
    QVERIFY(m_camera->startCapture(Only, 255));
    const Bytes half(std::size_t(Width * Height), 1);
    const auto isTold = [&] {
        m_system->deliver(half, std::chrono::seconds(0));
        return !m_listener->errors().empty();
    };
    QTRY_VERIFY_WITH_TIMEOUT(isTold(), 30000);
    m_camera->stopCapture();
    QCOMPARE(m_listener->frames(), 0);
    QVERIFY(m_counters->dropped > 0);
    QCOMPARE(m_listener->errors().size(), std::size_t(1));
    const QString error = QString::fromStdString(m_listener->errors().front());
    QVERIFY2(error.contains("delivered only damaged pictures for "), qPrintable(error));
}

void TestV4l2Watchdog::picturesToldOfButNotThere_areSilence_andKeepNoProcessorBusy()
{
    open(V4L2_PIX_FMT_NV12, { Milliseconds(500), Milliseconds(500) });
    m_system->failIoctl(VIDIOC_DQBUF, EAGAIN);
    QVERIFY(m_camera->startCapture(Only, 255));
    QVERIFY(m_system->deliver(grey(1)));
    QTRY_VERIFY_WITH_TIMEOUT(!m_listener->errors().empty(), 30000);
    m_camera->stopCapture();
    const QString error = QString::fromStdString(m_listener->errors().front());
    QVERIFY2(error.contains("delivered no picture for "), qPrintable(error));
    QVERIFY(m_system->calls(VIDIOC_DQBUF) > 1);
    QVERIFY(m_system->calls(VIDIOC_DQBUF) <= 60); // one in 10 ms
}

QTEST_GUILESS_MAIN(TestV4l2Watchdog)
#include "tst_v4l2watchdog.moc"

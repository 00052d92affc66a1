// SPDX-License-Identifier: BSD-3-Clause
#include "gate.h"
#include "jobrunner.h"
#include "outputtesting.h"
#include "recordingsurface.h"
#include "surfacethread.h"
#include "testpicture.h"

#include <QThread>
#include <QtTest>

#include <ocelle/videooutputqt5.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

QList<qint64> range(int first, int last)
{
    QList<qint64> numbers;
    for (int i = first; i <= last; ++i)
        numbers.append(i);
    return numbers;
}

/*! The surface stays in a call until that is let go. */
class HeldCall
{
public:
    std::function<void()> call()
    {
        return [this] { hold(); };
    }
    std::function<bool(const QVideoFrame &)> presentCall()
    {
        return [this](const QVideoFrame &) {
            hold();
            return true;
        };
    }
    void waitUntilEntered() { m_entered.acquire(); }
    void letGo(int calls = 1) { m_leave.release(calls); }

private:
    void hold()
    {
        m_entered.release();
        m_leave.acquire();
    }

    Gate m_entered;
    Gate m_leave;
};

} // namespace

class TestVideoOutputQt5Threads : public QObject
{
    Q_OBJECT
private slots:
    void callsTheSurfaceOnItsOwnThreadOnly();
    void deliveryDoesNotWaitForTheSurface();
    void stopOnAnotherThreadStopsTheSurfaceOnItsOwn();
    void stoppedOnAnotherThreadWhileTheSurfaceStarts();
    void pictureOnItsWayIsShown_whenStoppedOnAnotherThread();
    void surfaceOfAnotherThreadIsStoppedThere_whenTakenAway();
    void outputDestroyedWhileTheSurfaceIsBusyElsewhere();
    void surfaceDestroyedOnItsThreadWhilePicturesFly();
    void surfaceDestroyedBeforeItsThreadRuns();
    void surfaceThreadThatEndedIsLeftAlone();
    void surfaceMovesToAnotherThread();
};

void TestVideoOutputQt5Threads::callsTheSurfaceOnItsOwnThreadOnly()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    std::thread source([&output] {
        for (int i = 1; i <= 20; ++i)
            output.onGraphicBuffer(makeDecoded(i));
    });
    source.join();
    QTRY_COMPARE(surface->startTimes(), range(1, 20));
    output.stop();
    QTRY_VERIFY(surface->calls().contains(QLatin1String("stop")));
    for (const QThread *const thread : surface->threads())
        QCOMPARE(thread, there.thread());
    QVERIFY(surface->threads().size() >= 24); // start, stop, two questions and the pictures
}

void TestVideoOutputQt5Threads::deliveryDoesNotWaitForTheSurface()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    HeldCall present;
    surface->onPresent = present.presentCall();
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeLive(1));
    present.waitUntilEntered();

    for (int i = 2; i <= 100; ++i)
        output.onGraphicBuffer(makeLive(i));
    output.setMirrored(true);
    output.setMirrored(false);
    output.setViewport(QRect());
    VideoOutputStatistics statistics = statisticsOf(*surface);
    QCOMPARE(statistics.delivered, 100u);
    QCOMPARE(statistics.dropped, 98u);
    QCOMPARE(statistics.presented, 0u);

    present.letGo(2);
    QTRY_COMPARE(statisticsOf(*surface).presented, 2u);
    QCOMPARE(surface->startTimes(), (QList<qint64> { 1, 100 }));
}

void TestVideoOutputQt5Threads::stopOnAnotherThreadStopsTheSurfaceOnItsOwn()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(surface->presented(), 1);
    std::thread stopper([&output] { output.stop(); });
    stopper.join();
    QTRY_COMPARE(surface->calls().last(), QStringLiteral("stop"));
    for (const QThread *const thread : surface->threads())
        QCOMPARE(thread, there.thread());
}

void TestVideoOutputQt5Threads::stoppedOnAnotherThreadWhileTheSurfaceStarts()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    HeldCall start;
    surface->onStart = start.call();
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeLive(1));
    start.waitUntilEntered();
    output.stop();
    start.letGo();
    QTRY_COMPARE(surface->calls().join(QLatin1Char(' ')), QStringLiteral("start stop"));
    QTRY_COMPARE(statisticsOf(*surface).dropped, 1u);
}

// The end of a stream is told by the decoder's thread.
void TestVideoOutputQt5Threads::pictureOnItsWayIsShown_whenStoppedOnAnotherThread()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    HeldCall start;
    surface->onStart = start.call();
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    for (int i = 1; i <= 20; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    start.waitUntilEntered();
    output.stop();
    start.letGo();
    QTRY_COMPARE(surface->calls().last(), QStringLiteral("stop"));
    QCOMPARE(surface->startTimes(), range(1, 20));
    QCOMPARE(statisticsOf(*surface).dropped, 0u);
}

void TestVideoOutputQt5Threads::surfaceOfAnotherThreadIsStoppedThere_whenTakenAway()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(surface->presented(), 1);
    output.setVideoSurface(nullptr);
    QVERIFY(!hasOutput(surface));
    QTRY_COMPARE(surface->calls().last(), QStringLiteral("stop"));
    for (const QThread *const thread : surface->threads())
        QCOMPARE(thread, there.thread());
    int left = -1;
    there.run([&] { left = surface->children().size(); });
    QCOMPARE(left, 0);
}

void TestVideoOutputQt5Threads::outputDestroyedWhileTheSurfaceIsBusyElsewhere()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    HeldCall present;
    surface->onPresent = present.presentCall();
    auto output = std::make_unique<VideoOutputQt5>();
    output->setVideoSurface(surface);
    output->onGraphicBuffer(makeDecoded(1));
    present.waitUntilEntered();
    output->onGraphicBuffer(makeDecoded(2));
    output.reset(); // does not wait
    present.letGo();
    QTRY_COMPARE(surface->calls().last(), QStringLiteral("stop"));
    QCOMPARE(surface->startTimes(), (QList<qint64> { 1 }));
}

void TestVideoOutputQt5Threads::surfaceDestroyedOnItsThreadWhilePicturesFly()
{
    VideoOutputQt5 output;
    std::atomic<bool> run { true };
    std::thread source([&] {
        for (int i = 1; run; ++i) {
            output.onGraphicBuffer(i % 3 ? makeLive(i) : makeDecoded(i));
            if (i % 64 == 0)
                std::this_thread::yield();
        }
    });
    int presented = 0;
    for (int i = 0; i < 40; ++i) {
        SurfaceThread there;
        there.surface()->keepFrames = false;
        output.setVideoSurface(there.surface());
        if (i % 2 == 0)
            QTRY_VERIFY(there.surface()->presented() > 0);
        presented += there.surface()->presented();
        there.destroySurface();
        QCOMPARE(output.videoSurface(), nullptr);
    }
    run = false;
    source.join();
    QVERIFY(presented >= 20);
}

void TestVideoOutputQt5Threads::surfaceDestroyedBeforeItsThreadRuns()
{
    QThread thread;
    auto *const surface = new RecordingSurface;
    surface->moveToThread(&thread);
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeLive(1));
    delete surface; // nothing runs there yet, so that this is allowed here
    output.onGraphicBuffer(makeLive(2));
    thread.start();
    JobRunner there;
    there.moveToThread(&thread);
    there.run([] {}); // by when what was posted there before has been handled
    thread.quit();
    QVERIFY(thread.wait(10000));
    QCOMPARE(output.videoSurface(), nullptr);
}

void TestVideoOutputQt5Threads::surfaceThreadThatEndedIsLeftAlone()
{
    auto thread = std::make_unique<QThread>();
    auto surface = std::make_unique<RecordingSurface>();
    surface->moveToThread(thread.get());
    thread->start();
    VideoOutputQt5 output;
    output.setVideoSurface(surface.get());
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(surface->presented(), 1);
    thread->quit();
    QVERIFY(thread->wait(10000));

    output.onGraphicBuffer(makeLive(2));
    output.onGraphicBuffer(makeLive(3));
    output.stop();
    output.setVideoSurface(nullptr);
    QCOMPARE(surface->presented(), 1);
    surface.reset();
    thread.reset();
    output.onGraphicBuffer(makeLive(4));
}

void TestVideoOutputQt5Threads::surfaceMovesToAnotherThread()
{
    SurfaceThread first;
    SurfaceThread second;
    RecordingSurface *const surface = first.surface();
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeDecoded(1));
    QTRY_COMPARE(surface->presented(), 1);
    first.run([&] {
        output.onGraphicBuffer(makeDecoded(2)); // waits for its event, which moves along
        surface->moveToThread(second.thread());
    });
    output.onGraphicBuffer(makeDecoded(3));
    QTRY_COMPARE(surface->startTimes(), (QList<qint64> { 1, 2, 3 }));
    QCOMPARE(surface->threads().front(), first.thread());
    QCOMPARE(surface->threads().back(), second.thread());
    second.run([&] { surface->moveToThread(first.thread()); }); // to be destroyed there
}

QTEST_GUILESS_MAIN(TestVideoOutputQt5Threads)
#include "tst_videooutputqt5threads.moc"

#include "gate.h"
#include "jobrunner.h"
#include "recordingsurface.h"
#include "surfacethread.h"
#include "testpicture.h"
#include "videooutputstatistics.h"

#include <QEventLoop>
#include <QtTest>

#include <ocelle/videooutputqt5.h>

#include <atomic>
#include <memory>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

/*! Destroys itself in present(), as a window that closes on a key picture might. */
class VanishingSurface : public QAbstractVideoSurface
{
public:
    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType) const override
    {
        return { QVideoFrame::Format_NV12 };
    }
    bool start(const QVideoSurfaceFormat &format) override
    {
        if (!vanishInStart)
            return QAbstractVideoSurface::start(format);
        delete this;
        return true;
    }
    void stop() override
    {
        if (vanishInStop)
            delete this;
        else
            QAbstractVideoSurface::stop();
    }
    bool present(const QVideoFrame &) override
    {
        if (vanishInPresent)
            delete this;
        return true;
    }

    bool vanishInStart = false;
    bool vanishInStop = false;
    bool vanishInPresent = false;
};

bool hasOutput(const QAbstractVideoSurface *surface)
{
    VideoOutputStatistics statistics;
    return videoOutputStatistics(surface, &statistics);
}

VideoOutputStatistics statisticsOf(const QAbstractVideoSurface &surface)
{
    VideoOutputStatistics statistics;
    if (!videoOutputStatistics(&surface, &statistics))
        qFatal("No output has the surface");
    return statistics;
}

/*! Handles everything that is posted to this thread, deferred deletions included. */
void handleEvents()
{
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

} // namespace

class TestVideoOutputQt5Lifetime : public QObject
{
    Q_OBJECT
private slots:
    void surfaceOfThisThreadIsStoppedAtOnce_whenTakenAway();
    void surfaceOfAnotherThreadIsStoppedThere_whenTakenAway();
    void sameSurfaceAgainChangesNothing();
    void anotherSurfaceTakesOver();
    void surfaceMayComeBackAtOnce();
    void picturesForTheOldSurfaceDoNotReachTheNew();
    void destroyedSurfaceReadsAsNull();
    void surfaceDestroyedWithPictureInFlight();
    void surfaceDestroyedOnItsThreadWhilePicturesFly();
    void surfaceDestroyedBeforeItsThreadRuns();
    void surfaceThreadThatEndedIsLeftAlone();
    void surfaceMovesToAnotherThread();
    void outputDestroyedWithPictureInFlight();
    void outputDestroyedWhileTheSurfaceIsBusyElsewhere();
    void outputDestroyedFromWithinTheSurface_data();
    void outputDestroyedFromWithinTheSurface();
    void surfaceTakenAwayFromWithinTheSurface_data();
    void surfaceTakenAwayFromWithinTheSurface();
    void surfaceChangedFromWithinTheSurface_data();
    void surfaceChangedFromWithinTheSurface();
    void surfaceDestroyedFromWithinItself_data();
    void surfaceDestroyedFromWithinItself();
    void stoppedFromWithinTheSurface_data();
    void stoppedFromWithinTheSurface();
    void anythingMayHappenFromWithinTheLog_data();
    void anythingMayHappenFromWithinTheLog();
    void stoppedOnAnotherThreadWhileTheSurfaceStarts();
    void eventLoopInPresentIsNotEnteredTwice();
    void outputDestroyedInEventLoopInPresent();
    void leavesNothingBehindOnTheSurface();
};

void TestVideoOutputQt5Lifetime::surfaceOfThisThreadIsStoppedAtOnce_whenTakenAway()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(surface.presented(), 1);
    output.setVideoSurface(nullptr);
    QVERIFY(!surface.isActive());
    QCOMPARE(surface.calls().last(), QStringLiteral("stop"));
    QVERIFY(!hasOutput(&surface));
}

void TestVideoOutputQt5Lifetime::surfaceOfAnotherThreadIsStoppedThere_whenTakenAway()
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

void TestVideoOutputQt5Lifetime::sameSurfaceAgainChangesNothing()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeLive(1));
    output.setVideoSurface(&surface);
    QTRY_COMPARE(surface.presented(), 1);
    output.setVideoSurface(&surface);
    QVERIFY(surface.isActive());
    QCOMPARE(statisticsOf(surface).presented, 1u);
}

void TestVideoOutputQt5Lifetime::anotherSurfaceTakesOver()
{
    RecordingSurface first;
    SurfaceThread there;
    RecordingSurface third;
    VideoOutputQt5 output;
    output.setVideoSurface(&first);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(first.presented(), 1);

    output.setVideoSurface(there.surface());
    QVERIFY(!first.isActive());
    output.onGraphicBuffer(makeLive(2));
    QTRY_COMPARE(there.surface()->startTimes(), (QList<qint64> { 2 }));

    output.setVideoSurface(&third);
    output.onGraphicBuffer(makeLive(3));
    QTRY_COMPARE(third.startTimes(), (QList<qint64> { 3 }));
    QCOMPARE(first.startTimes(), (QList<qint64> { 1 }));
    QTRY_COMPARE(there.surface()->calls().last(), QStringLiteral("stop"));
}

void TestVideoOutputQt5Lifetime::surfaceMayComeBackAtOnce()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    VideoOutputQt5 output;
    for (int i = 1; i <= 50; ++i) {
        output.setVideoSurface(surface);
        output.onGraphicBuffer(makeLive(i));
        output.setVideoSurface(nullptr);
    }
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeLive(99));
    QTRY_VERIFY(surface->startTimes().endsWith(99));
    QCOMPARE(surface->calls().last(), QStringLiteral("present"));
    QCOMPARE(statisticsOf(*surface).delivered, 1u);
}

void TestVideoOutputQt5Lifetime::picturesForTheOldSurfaceDoNotReachTheNew()
{
    RecordingSurface first;
    RecordingSurface second;
    VideoOutputQt5 output;
    output.setVideoSurface(&first);
    auto picture = makeDecoded(1);
    const std::weak_ptr<GraphicBuffer> watch = picture;
    output.onGraphicBuffer(std::move(picture));
    output.setVideoSurface(&second);
    QVERIFY(watch.expired());
    output.onGraphicBuffer(makeDecoded(2));
    QTRY_COMPARE(second.startTimes(), (QList<qint64> { 2 }));
    QCOMPARE(first.presented(), 0);
}

void TestVideoOutputQt5Lifetime::destroyedSurfaceReadsAsNull()
{
    VideoOutputQt5 output;
    auto surface = std::make_unique<RecordingSurface>();
    output.setVideoSurface(surface.get());
    const QAbstractVideoSurface *const gone = surface.get();
    surface.reset();
    QCOMPARE(output.videoSurface(), nullptr);
    QVERIFY(!hasOutput(gone));
    output.onGraphicBuffer(makeLive(1));
    output.stop();
    output.setVideoSurface(nullptr);

    RecordingSurface next;
    output.setVideoSurface(&next);
    output.onGraphicBuffer(makeLive(2));
    QTRY_COMPARE(next.presented(), 1);
}

void TestVideoOutputQt5Lifetime::surfaceDestroyedWithPictureInFlight()
{
    VideoOutputQt5 output;
    auto surface = std::make_unique<RecordingSurface>();
    output.setVideoSurface(surface.get());
    auto picture = makeLive(1);
    const std::weak_ptr<GraphicBuffer> watch = picture;
    output.onGraphicBuffer(std::move(picture));
    surface.reset();
    QVERIFY(watch.expired());
    handleEvents();
}

void TestVideoOutputQt5Lifetime::surfaceDestroyedOnItsThreadWhilePicturesFly()
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

void TestVideoOutputQt5Lifetime::surfaceDestroyedBeforeItsThreadRuns()
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

void TestVideoOutputQt5Lifetime::surfaceThreadThatEndedIsLeftAlone()
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

void TestVideoOutputQt5Lifetime::surfaceMovesToAnotherThread()
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

void TestVideoOutputQt5Lifetime::outputDestroyedWithPictureInFlight()
{
    RecordingSurface surface;
    auto output = std::make_unique<VideoOutputQt5>();
    output->setVideoSurface(&surface);
    output->onGraphicBuffer(makeDecoded(1));
    QTRY_COMPARE(surface.presented(), 1);
    auto picture = makeDecoded(2);
    const std::weak_ptr<GraphicBuffer> watch = picture;
    output->onGraphicBuffer(std::move(picture));
    output.reset();
    QVERIFY(watch.expired());
    QVERIFY(!surface.isActive());
    handleEvents();
    QCOMPARE(surface.presented(), 1);
    QVERIFY(!hasOutput(&surface));
}

void TestVideoOutputQt5Lifetime::outputDestroyedWhileTheSurfaceIsBusyElsewhere()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    Gate entered;
    Gate leave;
    surface->onPresent = [&](const QVideoFrame &) {
        entered.release();
        leave.acquire();
        return true;
    };
    auto output = std::make_unique<VideoOutputQt5>();
    output->setVideoSurface(surface);
    output->onGraphicBuffer(makeDecoded(1));
    entered.acquire();
    output->onGraphicBuffer(makeDecoded(2));
    output.reset(); // does not wait
    leave.release();
    QTRY_COMPARE(surface->calls().last(), QStringLiteral("stop"));
    QCOMPARE(surface->startTimes(), (QList<qint64> { 1 }));
}

void TestVideoOutputQt5Lifetime::outputDestroyedFromWithinTheSurface_data()
{
    QTest::addColumn<QString>("within");
    for (const char *const within : { "start", "active", "present", "stop" })
        QTest::newRow(within) << QString::fromLatin1(within);
}

namespace {

/*! Has \a action done once, the next time \a surface is in the named call. */
void doWithin(RecordingSurface &surface, const QString &within, std::function<void()> action)
{
    const auto once = std::make_shared<std::function<void()>>(std::move(action));
    const auto run = [once] {
        if (const auto todo = std::exchange(*once, nullptr))
            todo();
    };
    if (within == QLatin1String("start"))
        surface.onStart = run;
    else if (within == QLatin1String("active"))
        QObject::connect(&surface, &QAbstractVideoSurface::activeChanged, run);
    else if (within == QLatin1String("stop"))
        surface.onStop = run;
    else
        surface.onPresent = [run](const QVideoFrame &) {
            run();
            return true;
        };
}

/*! Pictures that lead to each of the calls of doWithin(). */
void deliverTwoSizes(VideoOutputQt5 &output)
{
    output.onGraphicBuffer(makePicture(PixelFormat::NV12, 32, 24));
    output.onGraphicBuffer(makePicture(PixelFormat::NV12, 64, 48));
    output.onGraphicBuffer(makePicture(PixelFormat::NV12, 32, 24));
}

} // namespace

void TestVideoOutputQt5Lifetime::outputDestroyedFromWithinTheSurface()
{
    QFETCH(QString, within);
    RecordingSurface surface;
    auto output = std::make_unique<VideoOutputQt5>();
    bool done = false;
    doWithin(surface, within, [&] {
        output.reset();
        done = true;
    });
    output->setVideoSurface(&surface);
    deliverTwoSizes(*output);
    QTRY_VERIFY(done);
    handleEvents();
    QVERIFY(!surface.isActive());
    QVERIFY(surface.presented() <= 1);
    QVERIFY(surface.children().isEmpty());
}

void TestVideoOutputQt5Lifetime::surfaceTakenAwayFromWithinTheSurface_data()
{
    outputDestroyedFromWithinTheSurface_data();
}

void TestVideoOutputQt5Lifetime::surfaceTakenAwayFromWithinTheSurface()
{
    QFETCH(QString, within);
    RecordingSurface surface;
    VideoOutputQt5 output;
    bool done = false;
    doWithin(surface, within, [&] {
        output.setVideoSurface(nullptr);
        done = true;
    });
    output.setVideoSurface(&surface);
    deliverTwoSizes(output);
    QTRY_VERIFY(done);
    handleEvents();
    QVERIFY(!surface.isActive());
    QVERIFY(surface.presented() <= 1);
    QVERIFY(surface.children().isEmpty());

    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeLive(7));
    QTRY_VERIFY(surface.startTimes().endsWith(7));
    QVERIFY(surface.isActive());
}

void TestVideoOutputQt5Lifetime::surfaceChangedFromWithinTheSurface_data()
{
    outputDestroyedFromWithinTheSurface_data();
}

void TestVideoOutputQt5Lifetime::surfaceChangedFromWithinTheSurface()
{
    QFETCH(QString, within);
    RecordingSurface surface;
    RecordingSurface other;
    VideoOutputQt5 output;
    bool done = false;
    doWithin(surface, within, [&] {
        output.setVideoSurface(&other);
        output.onGraphicBuffer(makeLive(7));
        done = true;
    });
    output.setVideoSurface(&surface);
    deliverTwoSizes(output);
    QTRY_VERIFY(done);
    QTRY_COMPARE(other.startTimes(), (QList<qint64> { 7 }));
    handleEvents();
    QVERIFY(!surface.isActive());
    QVERIFY(other.isActive());
    QCOMPARE(statisticsOf(other).presented, 1u);
    QCOMPARE(statisticsOf(other).delivered, 1u);
}

void TestVideoOutputQt5Lifetime::surfaceDestroyedFromWithinItself_data()
{
    QTest::addColumn<QString>("within");
    for (const char *const within : { "start", "present", "stop for stop()", "stop for restart",
                                      "stop for another surface", "stop for the output's end" })
        QTest::newRow(within) << QString::fromLatin1(within);
}

void TestVideoOutputQt5Lifetime::surfaceDestroyedFromWithinItself()
{
    QFETCH(QString, within);
    auto *const surface = new VanishingSurface;
    const QPointer<QObject> watch(surface);
    surface->vanishInStart = within == QLatin1String("start");
    surface->vanishInPresent = within == QLatin1String("present");
    surface->vanishInStop = within.startsWith(QLatin1String("stop"));
    auto output = std::make_unique<VideoOutputQt5>();
    output->setVideoSurface(surface);
    output->onGraphicBuffer(makeDecoded(1));
    handleEvents();
    if (within == QLatin1String("stop for stop()"))
        output->stop();
    else if (within == QLatin1String("stop for restart"))
        output->onGraphicBuffer(makePicture());
    else if (within == QLatin1String("stop for another surface"))
        output->setVideoSurface(nullptr);
    else if (within == QLatin1String("stop for the output's end"))
        output.reset();
    handleEvents();
    QVERIFY(watch.isNull());
    if (output) {
        QCOMPARE(output->videoSurface(), nullptr);
        output->onGraphicBuffer(makeDecoded(2));
    }
    handleEvents();
}

void TestVideoOutputQt5Lifetime::stoppedFromWithinTheSurface_data()
{
    outputDestroyedFromWithinTheSurface_data();
}

void TestVideoOutputQt5Lifetime::stoppedFromWithinTheSurface()
{
    QFETCH(QString, within);
    RecordingSurface surface;
    VideoOutputQt5 output;
    bool done = false;
    doWithin(surface, within, [&] {
        output.stop();
        done = true;
    });
    output.setVideoSurface(&surface);
    deliverTwoSizes(output);
    QTRY_VERIFY(done);
    handleEvents();
    QVERIFY(!surface.isActive());
    QVERIFY(surface.presented() <= 1);
    const VideoOutputStatistics statistics = statisticsOf(surface);
    QCOMPARE(statistics.presented, quint64(surface.presented()));
    QCOMPARE(statistics.presented + statistics.dropped, 3u);
}

namespace {

std::function<void()> onWarning;

void handleMessage(QtMsgType, const QMessageLogContext &, const QString &)
{
    if (const auto action = std::exchange(onWarning, nullptr))
        action();
}

} // namespace

void TestVideoOutputQt5Lifetime::anythingMayHappenFromWithinTheLog_data()
{
    QTest::addColumn<QString>("cause");
    QTest::addColumn<QString>("action");
    for (const char *const cause : { "null", "bad", "unknown", "refused" }) {
        for (const char *const action :
             { "stop", "take away", "destroy output", "destroy surface" })
            QTest::addRow("%s, %s", cause, action)
                    << QString::fromLatin1(cause) << QString::fromLatin1(action);
    }
}

void TestVideoOutputQt5Lifetime::anythingMayHappenFromWithinTheLog()
{
    QFETCH(QString, cause);
    QFETCH(QString, action);
    auto surface = std::make_unique<RecordingSurface>();
    auto output = std::make_unique<VideoOutputQt5>();
    output->setVideoSurface(surface.get());
    output->onGraphicBuffer(makeDecoded(1));
    QTRY_COMPARE(surface->presented(), 1);

    bool done = false;
    onWarning = [&] {
        if (action == QLatin1String("stop"))
            output->stop();
        else if (action == QLatin1String("take away"))
            output->setVideoSurface(nullptr);
        else if (action == QLatin1String("destroy output"))
            output.reset();
        else
            surface.reset();
        done = true;
    };
    auto picture = makeDecoded(2);
    if (cause == QLatin1String("null"))
        picture.reset();
    else if (cause == QLatin1String("bad"))
        picture->planeCount = 0;
    else if (cause == QLatin1String("unknown"))
        picture->format = PixelFormat(99);
    else
        surface->accepts = [](const QVideoSurfaceFormat &format) { return !format.isMirrored(); };
    output->setMirrored(cause == QLatin1String("refused"));
    const QtMessageHandler handler = qInstallMessageHandler(handleMessage);
    output->onGraphicBuffer(picture);
    output->setMirrored(false);
    output->onGraphicBuffer(makeDecoded(3));
    handleEvents();
    qInstallMessageHandler(handler);
    QVERIFY(done);
    if (surface) {
        QCOMPARE(surface->presented(), 1);
        QVERIFY(!surface->isActive());
    }
}

void TestVideoOutputQt5Lifetime::stoppedOnAnotherThreadWhileTheSurfaceStarts()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    Gate entered;
    Gate leave;
    surface->onStart = [&] {
        entered.release();
        leave.acquire();
    };
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeDecoded(1));
    entered.acquire();
    output.stop();
    leave.release();
    QTRY_COMPARE(surface->calls().join(QLatin1Char(' ')), QStringLiteral("start stop"));
    QTRY_COMPARE(statisticsOf(*surface).dropped, 1u);
}

void TestVideoOutputQt5Lifetime::eventLoopInPresentIsNotEnteredTwice()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    int depth = 0;
    int deepest = 0;
    surface.onPresent = [&](const QVideoFrame &frame) {
        deepest = std::max(deepest, ++depth);
        if (frame.startTime() == 1) {
            for (int i = 2; i <= 5; ++i)
                output.onGraphicBuffer(makeDecoded(i));
            QEventLoop loop;
            QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
            loop.exec();
        }
        --depth;
        return true;
    };
    output.onGraphicBuffer(makeDecoded(1));
    QTRY_COMPARE(surface.startTimes(), (QList<qint64> { 1, 2, 3, 4, 5 }));
    QCOMPARE(deepest, 1);
}

void TestVideoOutputQt5Lifetime::outputDestroyedInEventLoopInPresent()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    Gate entered;
    auto output = std::make_unique<VideoOutputQt5>();
    QEventLoop *nested = nullptr;
    surface->onPresent = [&](const QVideoFrame &) {
        QEventLoop loop;
        nested = &loop;
        entered.release();
        loop.exec();
        return true;
    };
    output->setVideoSurface(surface);
    output->onGraphicBuffer(makeDecoded(1));
    entered.acquire();
    output.reset();
    QTRY_COMPARE(surface->calls().last(), QStringLiteral("stop")); // by an event in that loop
    there.run([&] { nested->quit(); });
    there.run([] {});
    QCOMPARE(surface->startTimes(), (QList<qint64> { 1 }));
}

void TestVideoOutputQt5Lifetime::leavesNothingBehindOnTheSurface()
{
    RecordingSurface surface;
    for (int i = 0; i < 3; ++i) {
        VideoOutputQt5 output;
        output.setVideoSurface(&surface);
        output.onGraphicBuffer(makeLive(1));
        QCOMPARE(surface.children().size(), 1);
    }
    QVERIFY(surface.children().isEmpty());
    emit surface.supportedFormatsChanged();
}

QTEST_GUILESS_MAIN(TestVideoOutputQt5Lifetime)
#include "tst_videooutputqt5lifetime.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "gate.h"
#include "outputtesting.h"
#include "recordingsurface.h"
#include "surfacethread.h"
#include "testpicture.h"

#include <QEventLoop>
#include <QtTest>

#include <ocelle/videooutputqt5.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

using namespace Veltra::Ocelle;

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

std::function<void()> onWarning;

void handleMessage(QtMsgType, const QMessageLogContext &, const QString &)
{
    if (const auto action = std::exchange(onWarning, nullptr))
        action();
}

} // namespace

class TestVideoOutputQt5Reentrancy : public QObject
{
    Q_OBJECT
private slots:
    void outputDestroyedFromWithinTheSurface_data();
    void outputDestroyedFromWithinTheSurface();
    void surfaceTakenAwayFromWithinTheSurface_data();
    void surfaceTakenAwayFromWithinTheSurface();
    void surfaceChangedFromWithinTheSurface_data();
    void surfaceChangedFromWithinTheSurface();
    void surfaceChangedWhileItIsChanged();
    void outputDestroyedWhileItsSurfaceIsChanged();
    void outputTakesNoSurfaceWhileItIsDestroyed();
    void stoppedFromWithinTheSurface_data();
    void stoppedFromWithinTheSurface();
    void anythingMayHappenFromWithinTheLog_data();
    void anythingMayHappenFromWithinTheLog();
    void eventLoopInPresentIsNotEnteredTwice();
    void outputDestroyedInEventLoopInPresent();
};

void TestVideoOutputQt5Reentrancy::outputDestroyedFromWithinTheSurface_data()
{
    QTest::addColumn<QString>("within");
    for (const char *const within : { "start", "active", "present", "stop" })
        QTest::newRow(within) << QString::fromLatin1(within);
}

void TestVideoOutputQt5Reentrancy::outputDestroyedFromWithinTheSurface()
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

void TestVideoOutputQt5Reentrancy::surfaceTakenAwayFromWithinTheSurface_data()
{
    outputDestroyedFromWithinTheSurface_data();
}

void TestVideoOutputQt5Reentrancy::surfaceTakenAwayFromWithinTheSurface()
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

void TestVideoOutputQt5Reentrancy::surfaceChangedFromWithinTheSurface_data()
{
    outputDestroyedFromWithinTheSurface_data();
}

void TestVideoOutputQt5Reentrancy::surfaceChangedFromWithinTheSurface()
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

void TestVideoOutputQt5Reentrancy::surfaceChangedWhileItIsChanged()
{
    RecordingSurface first;
    RecordingSurface second;
    RecordingSurface third;
    VideoOutputQt5 output;
    output.setVideoSurface(&first);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(first.presented(), 1);
    doWithin(first, QStringLiteral("stop"), [&] { output.setVideoSurface(&third); });
    output.setVideoSurface(&second);
    QCOMPARE(output.videoSurface(), &third); // what was asked for last
    QVERIFY(!hasOutput(&second));
    QVERIFY(second.children().isEmpty());
    output.onGraphicBuffer(makeLive(2));
    QTRY_COMPARE(third.presented(), 1);
    QCOMPARE(third.children().size(), 1);
}

void TestVideoOutputQt5Reentrancy::outputDestroyedWhileItsSurfaceIsChanged()
{
    RecordingSurface first;
    RecordingSurface second;
    auto *const output = new VideoOutputQt5;
    output->setVideoSurface(&first);
    output->onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(first.presented(), 1);
    doWithin(first, QStringLiteral("stop"), [output] { delete output; });
    output->setVideoSurface(&second);
    QVERIFY(!first.isActive());
    QVERIFY(first.children().isEmpty());
    QVERIFY(second.children().isEmpty());
    QVERIFY(!hasOutput(&second));
}

void TestVideoOutputQt5Reentrancy::outputTakesNoSurfaceWhileItIsDestroyed()
{
    RecordingSurface first;
    RecordingSurface second;
    auto *const output = new VideoOutputQt5;
    output->setVideoSurface(&first);
    output->onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(first.presented(), 1);
    doWithin(first, QStringLiteral("stop"), [&] { output->setVideoSurface(&second); });
    delete output;
    QVERIFY(second.children().isEmpty());
    QVERIFY(!hasOutput(&second));
}

void TestVideoOutputQt5Reentrancy::stoppedFromWithinTheSurface_data()
{
    outputDestroyedFromWithinTheSurface_data();
}

void TestVideoOutputQt5Reentrancy::stoppedFromWithinTheSurface()
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
    QCOMPARE(surface.presented(), 3); // they were there before
    QCOMPARE(surface.calls().last(), QStringLiteral("stop"));
    const VideoOutputStatistics statistics = statisticsOf(surface);
    QCOMPARE(statistics.presented, 3u);
    QCOMPARE(statistics.dropped, 0u);
}

void TestVideoOutputQt5Reentrancy::anythingMayHappenFromWithinTheLog_data()
{
    QTest::addColumn<QString>("cause");
    QTest::addColumn<QString>("action");
    for (const char *const cause : { "null", "bad", "unknown", "refused", "null before stop()" }) {
        for (const char *const action :
             { "stop", "take away", "destroy output", "destroy surface" })
            QTest::addRow("%s, %s", cause, action)
                    << QString::fromLatin1(cause) << QString::fromLatin1(action);
    }
}

void TestVideoOutputQt5Reentrancy::anythingMayHappenFromWithinTheLog()
{
    QFETCH(QString, cause);
    QFETCH(QString, action);
    auto surface = std::make_unique<RecordingSurface>();
    auto output = std::make_unique<VideoOutputQt5>();
    output->setVideoSurface(surface.get());
    output->onGraphicBuffer(makeLive(1));
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
    auto picture = makeDecoded(2); // the next one does not take its place
    if (cause.startsWith(QLatin1String("null")))
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
    if (cause.endsWith(QLatin1String("stop()")))
        output->stop();
    output->onGraphicBuffer(makeLive(3));
    handleEvents();
    qInstallMessageHandler(handler);
    QVERIFY(done);
    if (surface) {
        QCOMPARE(surface->calls().join(QLatin1Char(' ')), QStringLiteral("start present stop"));
        QVERIFY(!surface->isActive());
    }
}

void TestVideoOutputQt5Reentrancy::eventLoopInPresentIsNotEnteredTwice()
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

void TestVideoOutputQt5Reentrancy::outputDestroyedInEventLoopInPresent()
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

QTEST_GUILESS_MAIN(TestVideoOutputQt5Reentrancy)
#include "tst_videooutputqt5reentrancy.moc"

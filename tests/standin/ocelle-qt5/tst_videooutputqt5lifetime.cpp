// SPDX-License-Identifier: BSD-3-Clause
#include "outputtesting.h"
#include "recordingsurface.h"
#include "surfacethread.h"
#include "testpicture.h"
#include "vanishingsurface.h"

#include <QtTest>

#include <ocelle/videooutputqt5.h>

#include <memory>

using namespace Veltra::Ocelle;

class TestVideoOutputQt5Lifetime : public QObject
{
    Q_OBJECT
private slots:
    void surfaceOfThisThreadIsStoppedAtOnce_whenTakenAway();
    void sameSurfaceAgainChangesNothing();
    void anotherSurfaceTakesOver();
    void surfaceMayComeBackAtOnce();
    void picturesForTheOldSurfaceDoNotReachTheNew();
    void destroyedSurfaceReadsAsNull();
    void surfaceDestroyedWithPictureInFlight();
    void outputDestroyedWithPictureInFlight();
    void surfaceDestroyedFromWithinItself_data();
    void surfaceDestroyedFromWithinItself();
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

void TestVideoOutputQt5Lifetime::surfaceDestroyedFromWithinItself_data()
{
    QTest::addColumn<QString>("within");
    for (const char *const within :
         { "start", "present", "present, refused", "stop for stop()", "stop for restart",
           "stop for another surface", "stop for the output's end" })
        QTest::newRow(within) << QString::fromLatin1(within);
}

void TestVideoOutputQt5Lifetime::surfaceDestroyedFromWithinItself()
{
    QFETCH(QString, within);
    auto *const surface = new VanishingSurface;
    const QPointer<QObject> watch(surface);
    surface->vanishInStart = within == QLatin1String("start");
    surface->vanishInPresent = within.startsWith(QLatin1String("present"));
    surface->accepts = !within.endsWith(QLatin1String("refused"));
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

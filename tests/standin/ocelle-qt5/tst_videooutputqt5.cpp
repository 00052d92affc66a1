#include "gate.h"
#include "recordingsurface.h"
#include "surfacethread.h"
#include "testpicture.h"
#include "videooutputstatistics.h"

#include <QtTest>

#include <ocelle/videooutputqt5.h>

#include <atomic>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

VideoOutputStatistics statisticsOf(const QAbstractVideoSurface &surface)
{
    VideoOutputStatistics statistics;
    if (!videoOutputStatistics(&surface, &statistics))
        qFatal("No output has the surface");
    return statistics;
}

QList<qint64> range(int first, int last)
{
    QList<qint64> numbers;
    for (int i = first; i <= last; ++i)
        numbers.append(i);
    return numbers;
}

} // namespace

class TestVideoOutputQt5 : public QObject
{
    Q_OBJECT
private slots:
    void hasNoSurfaceAtFirst();
    void picturesWithoutSurfaceGoNowhere();
    void callsTheSurfaceOnItsOwnThreadOnly();
    void deliveryDoesNotWaitForTheSurface();
    void ofLivePicturesOnlyTheNewestWaits();
    void otherPicturesArePresentedInOrder();
    void beyond32WaitingPicturesTheOldestGoes();
    void presentsOnePictureAtATime();
    void showsPlanesInPlace();
    void picturesCannotBeWrittenTo();
    void keepsPicturesAliveWithTheirFrames();
    void passesOnTheTimestamp();
    void countsRefusedPictures();
    void startsAgain_whenTheSurfaceSaysSo_data();
    void startsAgain_whenTheSurfaceSaysSo();
    void startsAgain_whenTheApplicationStoppedTheSurface();
    void countsMissingAndDuplicatedPictures();
    void sourceThatBeginsAnewMissesNothing();
    void sourceThatDoesNotCountHasNoDuplicates();
    void statisticsAreThoseOfTheSurface();
    void stopDropsWhatWaits();
    void stopNeverCallsTheSurfaceItself();
    void stopOnAnotherThreadStopsTheSurfaceOnItsOwn();
    void stopWithoutPicturesLeavesTheSurfaceAlone();
    void picturesAfterStopStartTheSurfaceAgain();
};

void TestVideoOutputQt5::hasNoSurfaceAtFirst()
{
    VideoOutputQt5 output;
    QCOMPARE(output.videoSurface(), nullptr);
    RecordingSurface surface;
    output.setVideoSurface(&surface);
    QCOMPARE(output.videoSurface(), &surface);
    output.setVideoSurface(nullptr);
    QCOMPARE(output.videoSurface(), nullptr);
}

void TestVideoOutputQt5::picturesWithoutSurfaceGoNowhere()
{
    VideoOutputQt5 output;
    auto picture = makeLive(1);
    const std::weak_ptr<GraphicBuffer> watch = picture;
    output.onGraphicBuffer(std::move(picture));
    output.stop();
    QVERIFY(watch.expired());

    RecordingSurface surface;
    output.setVideoSurface(&surface);
    QCoreApplication::processEvents();
    QCOMPARE(surface.presented(), 0);
}

void TestVideoOutputQt5::callsTheSurfaceOnItsOwnThreadOnly()
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

void TestVideoOutputQt5::deliveryDoesNotWaitForTheSurface()
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
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    output.onGraphicBuffer(makeLive(1));
    entered.acquire();

    for (int i = 2; i <= 100; ++i)
        output.onGraphicBuffer(makeLive(i));
    output.setMirrored(true);
    output.setMirrored(false);
    output.setViewport(QRect());
    VideoOutputStatistics statistics = statisticsOf(*surface);
    QCOMPARE(statistics.delivered, 100u);
    QCOMPARE(statistics.dropped, 98u);
    QCOMPARE(statistics.presented, 0u);

    leave.release(2);
    QTRY_COMPARE(statisticsOf(*surface).presented, 2u);
    QCOMPARE(surface->startTimes(), (QList<qint64> { 1, 100 }));
}

void TestVideoOutputQt5::ofLivePicturesOnlyTheNewestWaits()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 10; ++i)
        output.onGraphicBuffer(makeLive(i));
    QCOMPARE(surface.presented(), 0);
    QTRY_COMPARE(surface.startTimes(), (QList<qint64> { 10 }));

    const VideoOutputStatistics statistics = statisticsOf(surface);
    QCOMPARE(statistics.delivered, 10u);
    QCOMPARE(statistics.presented, 1u);
    QCOMPARE(statistics.dropped, 9u);
    QCOMPARE(statistics.missing, 0u);
}

void TestVideoOutputQt5::otherPicturesArePresentedInOrder()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 32; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    QTRY_COMPARE(surface.startTimes(), range(1, 32));
    QCOMPARE(statisticsOf(surface).dropped, 0u);
}

void TestVideoOutputQt5::beyond32WaitingPicturesTheOldestGoes()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 40; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    QTRY_COMPARE(surface.startTimes(), range(9, 40));
    const VideoOutputStatistics statistics = statisticsOf(surface);
    QCOMPARE(statistics.delivered, 40u);
    QCOMPARE(statistics.presented, 32u);
    QCOMPARE(statistics.dropped, 8u);
}

void TestVideoOutputQt5::presentsOnePictureAtATime()
{
    // Other events of the thread have their turn between two pictures.
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    QList<int> presentedAtEvent;
    surface.onPresent = [&](const QVideoFrame &) {
        QMetaObject::invokeMethod(
                this, [&] { presentedAtEvent.append(surface.presented()); }, Qt::QueuedConnection);
        return true;
    };
    for (int i = 1; i <= 3; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    QTRY_COMPARE(presentedAtEvent, (QList<int> { 1, 2, 3 }));
}

void TestVideoOutputQt5::showsPlanesInPlace()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    const auto picture = makePicture(PixelFormat::NV12, 640, 480);
    output.onGraphicBuffer(picture);
    QTRY_COMPARE(surface.presented(), 1);
    QVideoFrame frame = surface.frames().first();
    QVERIFY(frame.map(QAbstractVideoBuffer::ReadOnly));
    QCOMPARE(frame.planeCount(), 2);
    for (int i = 0; i < 2; ++i) {
        const auto &plane = picture->planes[std::size_t(i)];
        QCOMPARE(static_cast<const uchar *>(frame.bits(i)), plane.data);
        QCOMPARE(frame.bytesPerLine(i), plane.stride);
    }
    QCOMPARE(frame.mappedBytes(), (640 + TestPicture::DefaultPadding) * (480 + 240));
    QCOMPARE(frame.size(), QSize(640, 480));
    frame.unmap();
    QVERIFY(frame.map(QAbstractVideoBuffer::ReadOnly)); // again
    frame.unmap();
}

void TestVideoOutputQt5::picturesCannotBeWrittenTo()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(surface.presented(), 1);
    QVideoFrame frame = surface.frames().first();
    QVERIFY(!frame.map(QAbstractVideoBuffer::WriteOnly));
    QVERIFY(!frame.map(QAbstractVideoBuffer::ReadWrite));
    QVERIFY(!frame.isMapped());
}

void TestVideoOutputQt5::keepsPicturesAliveWithTheirFrames()
{
    auto surface = std::make_unique<RecordingSurface>();
    VideoOutputQt5 output;
    output.setVideoSurface(surface.get());
    auto picture = makeLive(1);
    const std::weak_ptr<GraphicBuffer> watch = picture;
    output.onGraphicBuffer(std::move(picture));
    QTRY_COMPARE(surface->presented(), 1);
    output.setVideoSurface(nullptr);
    QVERIFY(!watch.expired()); // the surface keeps the frame
    surface.reset();
    QVERIFY(watch.expired());
}

void TestVideoOutputQt5::passesOnTheTimestamp()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    const auto picture = makeLive(1);
    picture->timestamp = Q_INT64_C(123456789012345);
    output.onGraphicBuffer(picture);
    QTRY_COMPARE(surface.startTimes(), (QList<qint64> { Q_INT64_C(123456789012345) }));
    QCOMPARE(surface.frames().first().endTime(), Q_INT64_C(-1));
}

void TestVideoOutputQt5::countsRefusedPictures()
{
    RecordingSurface surface;
    surface.onPresent = [&surface](const QVideoFrame &frame) {
        surface.fail(QAbstractVideoSurface::ResourceError);
        return frame.startTime() % 2 == 0;
    };
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 5; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    QTRY_COMPARE(surface.presented(), 5);
    const VideoOutputStatistics statistics = statisticsOf(surface);
    QCOMPARE(statistics.presented, 2u);
    QCOMPARE(statistics.refused, 3u);
    QCOMPARE(statistics.dropped, 0u);
}

void TestVideoOutputQt5::startsAgain_whenTheSurfaceSaysSo_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("starts");
    QTest::newRow("stopped") << int(QAbstractVideoSurface::StoppedError) << 2;
    QTest::newRow("incorrect format") << int(QAbstractVideoSurface::IncorrectFormatError) << 2;
    QTest::newRow("resource") << int(QAbstractVideoSurface::ResourceError) << 1;
    QTest::newRow("none") << int(QAbstractVideoSurface::NoError) << 1;
}

void TestVideoOutputQt5::startsAgain_whenTheSurfaceSaysSo()
{
    QFETCH(int, error);
    QFETCH(int, starts);
    RecordingSurface surface;
    surface.onPresent = [&](const QVideoFrame &frame) {
        if (frame.startTime() != 1)
            return true;
        surface.fail(QAbstractVideoSurface::Error(error));
        return false;
    };
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 3; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    QTRY_COMPARE(surface.presented(), 3);
    QCOMPARE(surface.started().size(), starts);
    QCOMPARE(statisticsOf(surface).refused, 1u);
    QCOMPARE(statisticsOf(surface).presented, 2u);
}

void TestVideoOutputQt5::startsAgain_whenTheApplicationStoppedTheSurface()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(surface.presented(), 1);
    surface.stop();
    output.onGraphicBuffer(makeLive(2));
    QTRY_COMPARE(surface.presented(), 2);
    QCOMPARE(surface.calls().join(QLatin1Char(' ')),
             QStringLiteral("start present stop start present"));
}

void TestVideoOutputQt5::countsMissingAndDuplicatedPictures()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (const int number : { 5, 6, 9, 9, 9, 10, 20 })
        output.onGraphicBuffer(makeDecoded(number));
    const VideoOutputStatistics statistics = statisticsOf(surface);
    QCOMPARE(statistics.delivered, 7u);
    QCOMPARE(statistics.missing, 2u + 9u);
    QCOMPARE(statistics.duplicated, 2u);
}

void TestVideoOutputQt5::sourceThatBeginsAnewMissesNothing()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (const int number : { 100, 101, 0, 1 })
        output.onGraphicBuffer(makeDecoded(number));
    output.stop();
    for (const int number : { 50, 51 })
        output.onGraphicBuffer(makeDecoded(number));
    QCOMPARE(statisticsOf(surface).missing, 0u);
    QCOMPARE(statisticsOf(surface).duplicated, 0u);
}

void TestVideoOutputQt5::sourceThatDoesNotCountHasNoDuplicates()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 0; i < 5; ++i)
        output.onGraphicBuffer(makeDecoded(0));
    QCOMPARE(statisticsOf(surface).duplicated, 0u);
}

void TestVideoOutputQt5::statisticsAreThoseOfTheSurface()
{
    RecordingSurface first;
    RecordingSurface second;
    VideoOutputStatistics statistics;
    statistics.delivered = 77;
    QVERIFY(!videoOutputStatistics(&first, &statistics));
    QVERIFY(!videoOutputStatistics(nullptr, &statistics));
    QCOMPARE(statistics.delivered, 77u);

    VideoOutputQt5 output;
    output.setVideoSurface(&first);
    output.onGraphicBuffer(makeDecoded(1));
    {
        VideoOutputQt5 other;
        other.setVideoSurface(&first);
        other.onGraphicBuffer(makeDecoded(1));
        QCOMPARE(statisticsOf(first).delivered, 2u);
    }
    QCOMPARE(statisticsOf(first).delivered, 1u);

    output.setVideoSurface(&second);
    QVERIFY(!videoOutputStatistics(&first, &statistics));
    QCOMPARE(statisticsOf(second).delivered, 0u);
}

void TestVideoOutputQt5::stopDropsWhatWaits()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    auto picture = makeDecoded(1);
    const std::weak_ptr<GraphicBuffer> watch = picture;
    output.onGraphicBuffer(std::move(picture));
    output.onGraphicBuffer(makeDecoded(2));
    output.stop();
    QVERIFY(watch.expired());
    QCoreApplication::processEvents();
    QCOMPARE(surface.presented(), 0);
    QCOMPARE(statisticsOf(surface).dropped, 2u);
}

void TestVideoOutputQt5::stopNeverCallsTheSurfaceItself()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(surface.presented(), 1);
    const QStringList before = surface.calls();
    output.stop();
    output.setMirrored(true);
    output.setViewport(QRect(0, 0, 4, 4));
    QCOMPARE(surface.calls(), before);
    QVERIFY(surface.isActive());
    QTRY_VERIFY(!surface.isActive());
    QCOMPARE(surface.calls(), before + QStringList { QStringLiteral("stop") });
}

void TestVideoOutputQt5::stopOnAnotherThreadStopsTheSurfaceOnItsOwn()
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

void TestVideoOutputQt5::stopWithoutPicturesLeavesTheSurfaceAlone()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.stop();
    QCoreApplication::processEvents();
    QCOMPARE(surface.calls(), QStringList());
}

void TestVideoOutputQt5::picturesAfterStopStartTheSurfaceAgain()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeLive(1));
    QTRY_COMPARE(surface.presented(), 1);
    output.onGraphicBuffer(makeLive(2));
    output.stop();
    output.onGraphicBuffer(makeLive(3));
    QTRY_COMPARE(surface.startTimes(), (QList<qint64> { 1, 3 }));
    QCOMPARE(surface.calls().join(QLatin1Char(' ')),
             QStringLiteral("start present stop start present"));
}

QTEST_GUILESS_MAIN(TestVideoOutputQt5)
#include "tst_videooutputqt5.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "outputtesting.h"
#include "recordingsurface.h"
#include "testpicture.h"

#include <QtTest>

#include <ocelle/videooutputqt5.h>

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

} // namespace

class TestVideoOutputQt5 : public QObject
{
    Q_OBJECT
private slots:
    void hasNoSurfaceAtFirst();
    void picturesWithoutSurfaceGoNowhere();
    void ofLivePicturesOnlyTheNewestWaits();
    void otherPicturesArePresentedInOrder();
    void beyond32WaitingPicturesTheOldestGoes();
    void otherEventsHaveTheirTurn_whilePicturesKeepComing();
    void showsPlanesInPlace();
    void picturesCannotBeWrittenTo();
    void keepsPicturesAliveWithTheirFrames();
    void passesOnTheTimestamp();
    void startsAgain_whenTheSurfaceSaysSo_data();
    void startsAgain_whenTheSurfaceSaysSo();
    void startsAgain_whenTheApplicationStoppedTheSurface();
    void stopDropsALivePictureThatWaits();
    void decodedPicturesThatWait_areShownBeforeTheStop();
    void nextStreamBeginsBehindTheStop();
    void picturesAreShown_whenStopComesInAnEventBehindThem();
    void stopNeverCallsTheSurfaceItself();
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

void TestVideoOutputQt5::otherEventsHaveTheirTurn_whilePicturesKeepComing()
{
    constexpr int Pictures = 100;
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    int delivered = 1;
    surface.onPresent = [&](const QVideoFrame &) {
        if (delivered < Pictures)
            output.onGraphicBuffer(makeDecoded(++delivered));
        return true;
    };
    int presentedAtEvent = -1;
    output.onGraphicBuffer(makeDecoded(1));
    QMetaObject::invokeMethod(
            this, [&] { presentedAtEvent = surface.presented(); }, Qt::QueuedConnection);
    QTRY_COMPARE(surface.startTimes(), range(1, Pictures));
    QVERIFY2(presentedAtEvent > 0 && presentedAtEvent <= 32,
             qPrintable(QString::number(presentedAtEvent)));
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

void TestVideoOutputQt5::stopDropsALivePictureThatWaits()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    auto picture = makeLive(1);
    const std::weak_ptr<GraphicBuffer> watch = picture;
    output.onGraphicBuffer(std::move(picture));
    output.stop();
    QVERIFY(watch.expired());
    QCoreApplication::processEvents();
    QCOMPARE(surface.presented(), 0);
    QCOMPARE(statisticsOf(surface).dropped, 1u);
}

// A decoder delivers the last pictures of a stream and tells of its end in one breath.
void TestVideoOutputQt5::decodedPicturesThatWait_areShownBeforeTheStop()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 3; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    output.stop();
    QTRY_VERIFY(surface.calls().contains(QLatin1String("stop")));
    QCOMPARE(surface.calls().join(QLatin1Char(' ')),
             QStringLiteral("start present present present stop"));
    QCOMPARE(statisticsOf(surface).dropped, 0u);
}

void TestVideoOutputQt5::nextStreamBeginsBehindTheStop()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int stream = 0; stream < 3; ++stream) {
        output.onGraphicBuffer(makeDecoded(1));
        output.onGraphicBuffer(makeDecoded(2));
        output.stop();
    }
    const QString stream = QStringLiteral("start present present stop ");
    QTRY_COMPARE(surface.calls().join(QLatin1Char(' ')), stream.repeated(3).trimmed());
    QCOMPARE(statisticsOf(surface).presented, 6u);
}

// As a decoder does that is drained: its last pictures come all at once, and then its end.
void TestVideoOutputQt5::picturesAreShown_whenStopComesInAnEventBehindThem()
{
    constexpr int Waiting = 32; // as many as can
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    QCoreApplication::processEvents(); // attached
    int shownBefore = -1;
    std::thread decoder([&] {
        for (int i = 0; i < Waiting; ++i)
            output.onGraphicBuffer(makeDecoded(i));
        const auto end = [&] {
            shownBefore = surface.presented();
            output.stop();
        };
        QMetaObject::invokeMethod(&output, end, Qt::QueuedConnection);
    });
    decoder.join();
    QTRY_VERIFY(surface.calls().contains(QLatin1String("stop")));
    QCOMPARE(shownBefore, Waiting);
    QCOMPARE(surface.presented(), Waiting);
    QCOMPARE(statisticsOf(surface).dropped, 0u);
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

// SPDX-License-Identifier: BSD-3-Clause
#include "outputtesting.h"
#include "recordingsurface.h"
#include "testpicture.h"

#include <QtTest>

#include <ocelle/videooutputqt5.h>

using namespace Veltra::Ocelle;

class TestVideoOutputQt5Statistics : public QObject
{
    Q_OBJECT
private slots:
    void countsRefusedPictures();
    void countsMissingAndDuplicatedPictures();
    void sourceThatBeginsAnewMissesNothing();
    void sourceThatDoesNotCountHasNoDuplicates();
    void statisticsAreThoseOfTheSurface();
};

void TestVideoOutputQt5Statistics::countsRefusedPictures()
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

void TestVideoOutputQt5Statistics::countsMissingAndDuplicatedPictures()
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

void TestVideoOutputQt5Statistics::sourceThatBeginsAnewMissesNothing()
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

void TestVideoOutputQt5Statistics::sourceThatDoesNotCountHasNoDuplicates()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 0; i < 5; ++i)
        output.onGraphicBuffer(makeDecoded(0));
    QCOMPARE(statisticsOf(surface).duplicated, 0u);
}

void TestVideoOutputQt5Statistics::statisticsAreThoseOfTheSurface()
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

QTEST_GUILESS_MAIN(TestVideoOutputQt5Statistics)
#include "tst_videooutputqt5statistics.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "messagelog.h"
#include "outputtesting.h"
#include "recordingsurface.h"
#include "testpicture.h"

#include <QtTest>

#include <ocelle/videooutputqt5.h>

#include <functional>

using namespace Veltra::Ocelle;

namespace {

using Qt5 = QVideoFrame;

} // namespace

class TestVideoOutputQt5Refusals : public QObject
{
    Q_OBJECT
private slots:
    void warnsOnce_whenTheSurfaceTakesNothing();
    void warnsOnce_whenTheSurfaceDoesNotStart();
    void triesAgain_whenTheSurfaceTakesOtherFormats();
    void triesAgain_whenThePicturesChange();
    void triesAgain_afterStop();
    void dropsPicturesThatAreNone_data();
    void dropsPicturesThatAreNone();
    void dropsConvertedPictures_whenTheSurfaceKeepsAll();
};

void TestVideoOutputQt5Refusals::warnsOnce_whenTheSurfaceTakesNothing()
{
    MessageLog log;
    RecordingSurface surface({ Qt5::Format_RGB24 });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 5; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    QTRY_COMPARE(statisticsOf(surface).dropped, 5u);
    QCOMPARE(surface.calls(), QStringList());
    QCOMPARE(log.warnings().size(), 1);
    const QString text = log.warnings().first();
    QVERIFY2(text.startsWith(QLatin1String("The surface takes no format that is offered for NV12 "
                                           "of 16x8 pixels: offered")),
             qPrintable(text));
    QVERIFY(text.contains(QLatin1String("Format_NV12")));
    QVERIFY(text.contains(QLatin1String("surface takes (Format_RGB24)")));
}

void TestVideoOutputQt5Refusals::warnsOnce_whenTheSurfaceDoesNotStart()
{
    MessageLog log;
    RecordingSurface surface({ Qt5::Format_NV12, Qt5::Format_RGB32 });
    surface.startSucceeds = false;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 5; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    QTRY_COMPARE(statisticsOf(surface).dropped, 5u);
    QCOMPARE(surface.started().size(), 2); // each format once
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY2(log.warnings().first().startsWith(QLatin1String("The surface did not start for NV12")),
             qPrintable(log.warnings().first()));
}

void TestVideoOutputQt5Refusals::triesAgain_whenTheSurfaceTakesOtherFormats()
{
    MessageLog log;
    RecordingSurface surface({ Qt5::Format_RGB24 });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeDecoded(1));
    QTRY_COMPARE(statisticsOf(surface).dropped, 1u);
    surface.formats = { Qt5::Format_NV12 };
    output.onGraphicBuffer(makeDecoded(2));
    QTRY_COMPARE(statisticsOf(surface).dropped, 2u); // it has not said so yet
    emit surface.supportedFormatsChanged();
    output.onGraphicBuffer(makeDecoded(3));
    QTRY_COMPARE(surface.startTimes(), (QList<qint64> { 3 }));
    QCOMPARE(log.warnings().size(), 1);
}

void TestVideoOutputQt5Refusals::triesAgain_whenThePicturesChange()
{
    MessageLog log;
    RecordingSurface surface;
    surface.accepts = [](const QVideoSurfaceFormat &format) { return format.frameWidth() == 64; };
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeDecoded(1));
    output.onGraphicBuffer(makePicture());
    output.onGraphicBuffer(makeDecoded(2));
    output.onGraphicBuffer(makePicture());
    QTRY_COMPARE(statisticsOf(surface).presented, 2u);
    QCOMPARE(statisticsOf(surface).dropped, 2u);
    QCOMPARE(log.warnings().size(), 1);
}

void TestVideoOutputQt5Refusals::triesAgain_afterStop()
{
    MessageLog log;
    RecordingSurface surface;
    surface.startSucceeds = false;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeDecoded(1));
    QTRY_COMPARE(statisticsOf(surface).dropped, 1u);
    surface.startSucceeds = true;
    output.stop();
    output.onGraphicBuffer(makeDecoded(2));
    QTRY_COMPARE(surface.startTimes(), (QList<qint64> { 2 }));
}

void TestVideoOutputQt5Refusals::dropsPicturesThatAreNone_data()
{
    QTest::addColumn<QString>("spoil");
    QTest::addColumn<QString>("warning");
    const QString planes = QStringLiteral("planes do not hold them");
    for (const char *const spoil :
         { "null", "no width", "negative width", "negative height", "huge", "no planes",
           "one plane", "null plane", "short stride", "short chroma stride", "negative stride",
           "few lines", "few chroma lines" }) {
        QTest::newRow(spoil) << QString::fromLatin1(spoil)
                             << (qstrcmp(spoil, "null") == 0 ? QStringLiteral("Null pictures")
                                                             : planes);
    }
    QTest::newRow("FourCC") << QStringLiteral("FourCC") << QStringLiteral("pixel format YUYV");
    QTest::newRow("number") << QStringLiteral("number") << QStringLiteral("pixel format 0x63");
}

void TestVideoOutputQt5Refusals::dropsPicturesThatAreNone()
{
    QFETCH(QString, spoil);
    QFETCH(QString, warning);
    auto picture = makePicture(PixelFormat::NV12, 15, 7);
    const QHash<QString, std::function<void()>> spoilers {
        { "null", [&] { picture.reset(); } },
        { "no width", [&] { picture->width = 0; } },
        { "negative width", [&] { picture->width = -15; } },
        { "negative height", [&] { picture->height = -7; } },
        { "huge",
          [&] {
              picture->width = picture->height = picture->planes[0].lines =
                      picture->planes[0].stride = 0x7fffffff;
          } },
        { "no planes", [&] { picture->planeCount = 0; } },
        { "one plane", [&] { picture->planeCount = 1; } },
        { "null plane", [&] { picture->planes[1].data = nullptr; } },
        { "short stride", [&] { picture->planes[0].stride = 14; } },
        { "short chroma stride", [&] { picture->planes[1].stride = 15; } },
        { "negative stride", [&] { picture->planes[0].stride = -23; } },
        { "few lines", [&] { picture->planes[0].lines = 6; } },
        { "few chroma lines", [&] { picture->planes[1].lines = 3; } },
        { "FourCC", [&] { picture->format = PixelFormat(0x56595559); } },
        { "number", [&] { picture->format = PixelFormat(99); } },
    };
    spoilers.value(spoil)();

    MessageLog log;
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 0; i < 4; ++i)
        output.onGraphicBuffer(picture);
    output.onGraphicBuffer(makeDecoded(5));
    QTRY_COMPARE(surface.startTimes(), (QList<qint64> { 5 }));
    QCOMPARE(statisticsOf(surface).delivered, 5u);
    QCOMPARE(statisticsOf(surface).dropped, 4u);
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY2(log.warnings().first().contains(warning), qPrintable(log.warnings().first()));

    output.stop(); // what comes after is another stream, about which is warned anew
    output.onGraphicBuffer(picture);
    QTRY_COMPARE(log.warnings().size(), 2);
}

void TestVideoOutputQt5Refusals::dropsConvertedPictures_whenTheSurfaceKeepsAll()
{
    RecordingSurface surface({ Qt5::Format_RGB32 });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 12; ++i)
        output.onGraphicBuffer(makeDecoded(i));
    QTRY_COMPARE(statisticsOf(surface).presented + statisticsOf(surface).dropped, 12u);
    QCOMPARE(statisticsOf(surface).presented, 8u);
    QCOMPARE(surface.startTimes(), (QList<qint64> { 1, 2, 3, 4, 5, 6, 7, 8 }));
}

QTEST_GUILESS_MAIN(TestVideoOutputQt5Refusals)
#include "tst_videooutputqt5refusals.moc"

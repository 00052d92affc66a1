// SPDX-License-Identifier: BSD-3-Clause
#include "recordingsurface.h"
#include "testpicture.h"

#include <QtTest>

#include <ocelle/videooutputqt5.h>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::PixelFormat)
Q_DECLARE_METATYPE(RecordingSurface::Formats)

namespace {

using Qt5 = QVideoFrame;

/*! The first pixel of \a frame that is not the test picture's, as text; empty if all are. */
QString firstWrongPixel(QVideoFrame frame)
{
    if (!frame.map(QAbstractVideoBuffer::ReadOnly))
        return QStringLiteral("the frame cannot be mapped");
    QString wrong;
    const bool rgb = frame.pixelFormat() == QVideoFrame::Format_RGB32;
    for (int y = 0; y < frame.height() && wrong.isEmpty(); ++y) {
        for (int x = 0; x < frame.width() && wrong.isEmpty(); ++x) {
            Sample is {};
            Sample expected = expectedSample(x, y);
            int tolerance = 0;
            if (rgb) {
                const auto *const line =
                        reinterpret_cast<const QRgb *>(frame.bits() + y * frame.bytesPerLine());
                is = { qRed(line[x]), qGreen(line[x]), qBlue(line[x]) };
                expected = toRgb(expected);
                tolerance = 3; // of fixed point arithmetic
            } else {
                is = sampleOf(frame, x, y);
            }
            if (qAbs(is.y - expected.y) > tolerance || qAbs(is.cb - expected.cb) > tolerance ||
                qAbs(is.cr - expected.cr) > tolerance) {
                wrong = QStringLiteral("at %1,%2: %3 %4 %5 instead of %6 %7 %8")
                                .arg(x)
                                .arg(y)
                                .arg(is.y)
                                .arg(is.cb)
                                .arg(is.cr)
                                .arg(expected.y)
                                .arg(expected.cb)
                                .arg(expected.cr);
            }
        }
    }
    frame.unmap();
    return wrong;
}

} // namespace

class TestVideoOutputQt5Formats : public QObject
{
    Q_OBJECT
private slots:
    void picksTheBestFormatThatTheSurfaceTakes_data();
    void picksTheBestFormatThatTheSurfaceTakes();
    void picturesAreTheSameInEveryFormat_data();
    void picturesAreTheSameInEveryFormat();
    void plainPlanarPicturesBecomeYv12InPlace();
    void asksTheSurfaceAboutTheWholeFormat();
    void restarts_whenThePicturesChange_data();
    void restarts_whenThePicturesChange();
    void doesNotRestart_whenNothingChanges();
    void mirroredAndViewportHoldForPicturesDeliveredAfter();
    void viewportStaysWithinThePicture_data();
    void viewportStaysWithinThePicture();
};

void TestVideoOutputQt5Formats::picksTheBestFormatThatTheSurfaceTakes_data()
{
    QTest::addColumn<PixelFormat>("format");
    QTest::addColumn<RecordingSurface::Formats>("surfaceTakes");
    QTest::addColumn<int>("started");
    using Formats = RecordingSurface::Formats;
    const Formats all { Qt5::Format_RGB32, Qt5::Format_YV12, Qt5::Format_YUV420P, Qt5::Format_NV21,
                        Qt5::Format_NV12 };
    const Formats planar { Qt5::Format_RGB32, Qt5::Format_YUV420P };
    const Formats nv12 { Qt5::Format_RGB32, Qt5::Format_NV12 };
    const Formats rgb { Qt5::Format_RGB24, Qt5::Format_RGB32 };
    const auto row = [](const char *name, PixelFormat format, const Formats &takes,
                        Qt5::PixelFormat started) {
        QTest::newRow(name) << format << takes << int(started);
    };
    row("NV12, all", PixelFormat::NV12, all, Qt5::Format_NV12);
    row("NV12, planar", PixelFormat::NV12, planar, Qt5::Format_YUV420P);
    row("NV12, NV21 only", PixelFormat::NV12, { Qt5::Format_NV21 }, Qt5::Format_NV21);
    row("NV12, YV12 only", PixelFormat::NV12, { Qt5::Format_YV12 }, Qt5::Format_YV12);
    row("NV12, RGB", PixelFormat::NV12, rgb, Qt5::Format_RGB32);
    row("semi-planar, all", PixelFormat::YUV420SemiPlanar, all, Qt5::Format_NV12);
    row("NV21, all", PixelFormat::NV21, all, Qt5::Format_NV21);
    row("NV21, NV12", PixelFormat::NV21, nv12, Qt5::Format_NV12);
    row("NV21, planar", PixelFormat::NV21, planar, Qt5::Format_YUV420P);
    row("NV21, YV12 only", PixelFormat::NV21, { Qt5::Format_YV12 }, Qt5::Format_YV12);
    row("NV21, RGB", PixelFormat::NV21, rgb, Qt5::Format_RGB32);
    row("YU12, all", PixelFormat::YU12, all, Qt5::Format_YUV420P);
    row("YU12, YV12", PixelFormat::YU12, { Qt5::Format_NV12, Qt5::Format_YV12 }, Qt5::Format_YV12);
    row("YU12, NV12", PixelFormat::YU12, nv12, Qt5::Format_NV12);
    row("YU12, NV21 only", PixelFormat::YU12, { Qt5::Format_NV21 }, Qt5::Format_NV21);
    row("YU12, RGB", PixelFormat::YU12, rgb, Qt5::Format_RGB32);
    row("planar, all", PixelFormat::YUV420Planar, all, Qt5::Format_YUV420P);
}

void TestVideoOutputQt5Formats::picksTheBestFormatThatTheSurfaceTakes()
{
    QFETCH(PixelFormat, format);
    QFETCH(RecordingSurface::Formats, surfaceTakes);
    QFETCH(int, started);
    RecordingSurface surface(surfaceTakes);
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    const auto picture = makePicture(format);
    picture->timestamp = 4711;
    output.onGraphicBuffer(picture);
    QTRY_COMPARE(surface.presented(), 1);
    QCOMPARE(surface.started().size(), 1);
    QCOMPARE(int(surface.started().first().pixelFormat()), started);
    QCOMPARE(surface.started().first().frameSize(), QSize(64, 48));
    QCOMPARE(surface.started().first().viewport(), QRect(0, 0, 64, 48));
    QCOMPARE(surface.started().first().isMirrored(), false);
    QCOMPARE(int(surface.frames().first().pixelFormat()), started);
    QCOMPARE(surface.startTimes(), (QList<qint64> { 4711 }));
    QCOMPARE(firstWrongPixel(surface.frames().first()), QString());
}

void TestVideoOutputQt5Formats::picturesAreTheSameInEveryFormat_data()
{
    QTest::addColumn<PixelFormat>("format");
    QTest::addColumn<int>("shownAs");
    QTest::addColumn<QSize>("size");
    const QList<QPair<const char *, PixelFormat>> sources { { "YU12", PixelFormat::YU12 },
                                                            { "NV12", PixelFormat::NV12 },
                                                            { "NV21", PixelFormat::NV21 } };
    const QList<QPair<const char *, Qt5::PixelFormat>> targets {
        { "YUV420P", Qt5::Format_YUV420P }, { "YV12", Qt5::Format_YV12 },
        { "NV12", Qt5::Format_NV12 },       { "NV21", Qt5::Format_NV21 },
        { "RGB32", Qt5::Format_RGB32 },
    };
    for (const auto &source : sources) {
        for (const auto &target : targets) {
            for (const QSize &size :
                 { QSize(1, 1), QSize(2, 1), QSize(5, 3), QSize(99, 101), QSize(320, 240) }) {
                QTest::addRow("%s as %s, %dx%d", source.first, target.first, size.width(),
                              size.height())
                        << source.second << int(target.second) << size;
            }
        }
    }
}

void TestVideoOutputQt5Formats::picturesAreTheSameInEveryFormat()
{
    QFETCH(PixelFormat, format);
    QFETCH(int, shownAs);
    QFETCH(QSize, size);
    RecordingSurface surface({ Qt5::PixelFormat(shownAs) });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makePicture(format, size.width(), size.height()));
    QTRY_COMPARE(surface.presented(), 1);
    QCOMPARE(surface.frames().first().size(), size);
    QCOMPARE(firstWrongPixel(surface.frames().first()), QString());
}

void TestVideoOutputQt5Formats::plainPlanarPicturesBecomeYv12InPlace()
{
    RecordingSurface surface({ Qt5::Format_YV12 });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    const auto picture = makePicture(PixelFormat::YU12);
    output.onGraphicBuffer(picture);
    QTRY_COMPARE(surface.presented(), 1);
    QVideoFrame frame = surface.frames().first();
    QVERIFY(frame.map(QAbstractVideoBuffer::ReadOnly));
    QCOMPARE(static_cast<const uchar *>(frame.bits(0)), picture->planes[0].data);
    QCOMPARE(static_cast<const uchar *>(frame.bits(1)), picture->planes[2].data);
    QCOMPARE(static_cast<const uchar *>(frame.bits(2)), picture->planes[1].data);
    frame.unmap();
}

void TestVideoOutputQt5Formats::asksTheSurfaceAboutTheWholeFormat()
{
    RecordingSurface surface({ Qt5::Format_NV12, Qt5::Format_RGB32 });
    surface.accepts = [](const QVideoSurfaceFormat &format) {
        return format.pixelFormat() == Qt5::Format_RGB32 || format.frameWidth() <= 64;
    };
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makePicture(PixelFormat::NV12, 64, 48));
    output.onGraphicBuffer(makePicture(PixelFormat::NV12, 128, 48));
    QTRY_COMPARE(surface.presented(), 2);
    QCOMPARE(surface.started().at(0).pixelFormat(), Qt5::Format_NV12);
    QCOMPARE(surface.started().at(1).pixelFormat(), Qt5::Format_RGB32);
}

void TestVideoOutputQt5Formats::restarts_whenThePicturesChange_data()
{
    QTest::addColumn<PixelFormat>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<QRect>("viewport");
    const QSize same(64, 48);
    QTest::newRow("width") << PixelFormat::NV12 << QSize(66, 48) << false << QRect();
    QTest::newRow("height") << PixelFormat::NV12 << QSize(64, 47) << false << QRect();
    QTest::newRow("format") << PixelFormat::YU12 << same << false << QRect();
    QTest::newRow("mirrored") << PixelFormat::NV12 << same << true << QRect();
    QTest::newRow("viewport") << PixelFormat::NV12 << same << false << QRect(2, 2, 60, 40);
}

void TestVideoOutputQt5Formats::restarts_whenThePicturesChange()
{
    QFETCH(PixelFormat, format);
    QFETCH(QSize, size);
    QFETCH(bool, mirrored);
    QFETCH(QRect, viewport);
    RecordingSurface surface({ Qt5::Format_NV12, Qt5::Format_YUV420P });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makePicture());
    QTRY_COMPARE(surface.presented(), 1);
    output.setMirrored(mirrored);
    output.setViewport(viewport);
    output.onGraphicBuffer(makePicture(format, size.width(), size.height()));
    QTRY_COMPARE(surface.presented(), 2);
    QCOMPARE(surface.calls().join(QLatin1Char(' ')),
             QStringLiteral("start present stop start present"));
    const QVideoSurfaceFormat started = surface.started().last();
    QCOMPARE(started.frameSize(), size);
    QCOMPARE(started.isMirrored(), mirrored);
    QCOMPARE(started.property("mirrored").toBool(), mirrored);
    QCOMPARE(started.viewport(), viewport.isNull() ? QRect(QPoint(), size) : viewport);
    QCOMPARE(started.pixelFormat(),
             format == PixelFormat::YU12 ? Qt5::Format_YUV420P : Qt5::Format_NV12);
}

void TestVideoOutputQt5Formats::doesNotRestart_whenNothingChanges()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setMirrored(true);
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 20; ++i) {
        output.setMirrored(true);
        output.onGraphicBuffer(makeDecoded(i));
    }
    QTRY_COMPARE(surface.presented(), 20);
    QCOMPARE(surface.started().size(), 1);
    QVERIFY(surface.started().first().isMirrored());
}

void TestVideoOutputQt5Formats::mirroredAndViewportHoldForPicturesDeliveredAfter()
{
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeDecoded(1));
    output.setMirrored(true);
    output.onGraphicBuffer(makeDecoded(2));
    output.setViewport(QRect(0, 0, 8, 8));
    output.onGraphicBuffer(makeDecoded(3));
    output.setMirrored(false);
    output.setViewport(QRect());
    QTRY_COMPARE(surface.presented(), 3);
    const auto started = surface.started();
    QCOMPARE(started.size(), 3);
    QCOMPARE(started.at(0).isMirrored(), false);
    QCOMPARE(started.at(1).isMirrored(), true);
    QCOMPARE(started.at(1).viewport(), QRect(0, 0, 16, 8));
    QCOMPARE(started.at(2).isMirrored(), true);
    QCOMPARE(started.at(2).viewport(), QRect(0, 0, 8, 8));
}

void TestVideoOutputQt5Formats::viewportStaysWithinThePicture_data()
{
    QTest::addColumn<QRect>("viewport");
    QTest::addColumn<QRect>("started");
    const QRect whole(0, 0, 64, 48);
    QTest::newRow("inside") << QRect(3, 5, 20, 10) << QRect(3, 5, 20, 10);
    QTest::newRow("too large") << QRect(-5, -5, 1000, 1000) << whole;
    QTest::newRow("over the edge") << QRect(32, 24, 64, 48) << QRect(32, 24, 32, 24);
    QTest::newRow("outside") << QRect(100, 100, 10, 10) << whole;
    QTest::newRow("empty") << QRect(10, 10, 0, 0) << whole;
}

void TestVideoOutputQt5Formats::viewportStaysWithinThePicture()
{
    QFETCH(QRect, viewport);
    QFETCH(QRect, started);
    RecordingSurface surface;
    VideoOutputQt5 output;
    output.setViewport(viewport);
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makePicture());
    QTRY_COMPARE(surface.presented(), 1);
    QCOMPARE(surface.started().first().viewport(), started);
}

QTEST_GUILESS_MAIN(TestVideoOutputQt5Formats)
#include "tst_videooutputqt5formats.moc"

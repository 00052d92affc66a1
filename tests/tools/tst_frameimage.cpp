// SPDX-License-Identifier: BSD-3-Clause
#include "frameimage.h"
#include "patternreader.h"
#include "testpattern.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/resource.h>

#include <csignal>

using namespace Veltra::Ocelle;

class FrameImageTest : public QObject
{
    Q_OBJECT
private slots:
    void showsThePicture_data();
    void showsThePicture();
    void keepsTheColours();
    void isNull_whenTheFormatIsUnknown();
    void saveImage_keepsTheOldFile_whenTheDiskIsFull();
    void canSaveImage_knowsFormatsByTheirSuffix();

private:
    static constexpr int Width = 320;
    static constexpr int Height = 240;
    static constexpr quint32 Number = 123456;

    // The three layouts of 4:2:0 with 12 bits a pixel, and 32-bit RGB.
    static QVideoFrame frame(QVideoFrame::PixelFormat format)
    {
        const bool rgb = format == QVideoFrame::Format_RGB32;
        const bool planar =
                format == QVideoFrame::Format_YUV420P || format == QVideoFrame::Format_YV12;
        QVideoFrame result(Width * Height * (rgb ? 4 : 3) / (rgb ? 1 : 2), QSize(Width, Height),
                           Width * (rgb ? 4 : 1), format);
        if (!result.map(QAbstractVideoBuffer::WriteOnly))
            return QVideoFrame();
        if (rgb) {
            const QImage image = Tool::toImage(frame(QVideoFrame::Format_NV12), false);
            memcpy(result.bits(), image.constBits(), size_t(image.sizeInBytes()));
        } else {
            const TestPattern pattern(Width, Height,
                                      planar ? PixelFormat::YU12 : PixelFormat::NV12);
            TestPattern::Planes planes { { { result.bits(0), result.bytesPerLine(0) },
                                           { result.bits(1), result.bytesPerLine(1) },
                                           { planar ? result.bits(2) : nullptr,
                                             planar ? result.bytesPerLine(2) : 0 } } };
            if (format == QVideoFrame::Format_YV12)
                std::swap(planes[1], planes[2]);
            pattern.paintBackground(planes);
            pattern.update(planes, Number, 0);
        }
        result.unmap();
        return result;
    }
};

void FrameImageTest::showsThePicture_data()
{
    QTest::addColumn<QVideoFrame::PixelFormat>("format");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<QSize>("size");
    for (const auto format : { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P,
                               QVideoFrame::Format_YV12, QVideoFrame::Format_RGB32 }) {
        for (const bool mirrored : { false, true }) {
            QTest::addRow("%d %d", format, mirrored) << format << mirrored << QSize();
            QTest::addRow("%d %d scaled", format, mirrored)
                    << format << mirrored << QSize(500, 300);
        }
    }
}

void FrameImageTest::showsThePicture()
{
    QFETCH(QVideoFrame::PixelFormat, format);
    QFETCH(bool, mirrored);
    QFETCH(QSize, size);
    const QImage image = Tool::toImage(frame(format), mirrored, size);
    QCOMPARE(image.size(), size.isValid() ? size : QSize(Width, Height));
    const auto reading = readPatternRgb32(image.constBits(), image.bytesPerLine(), image.width(),
                                          image.height());
    QVERIFY(reading.has_value());
    QCOMPARE(reading->sequence, Number);
    QCOMPARE(reading->mirrored, mirrored);
    QCOMPARE(reading->rotation, 0);
}

void FrameImageTest::keepsTheColours()
{
    for (const auto format : { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P,
                               QVideoFrame::Format_YV12, QVideoFrame::Format_RGB32 }) {
        const QImage image = Tool::toImage(frame(format), false);
        const QColor red = image.pixelColor(220, 20); // the sixth bar
        QVERIFY(red.red() > 170 && red.green() < 20 && red.blue() < 20);
        const QColor blue = image.pixelColor(260, 20);
        QVERIFY(blue.red() < 20 && blue.green() < 20 && blue.blue() > 170);
    }
    // With the chroma samples the other way round.
    QVideoFrame nv21(Width * Height * 3 / 2, QSize(Width, Height), Width, QVideoFrame::Format_NV21);
    QVERIFY(nv21.map(QAbstractVideoBuffer::WriteOnly));
    memset(nv21.bits(0), 65, Width * Height);
    for (int i = 0; i < Width * Height / 2; i += 2) {
        nv21.bits(1)[i] = 212;
        nv21.bits(1)[i + 1] = 100;
    }
    nv21.unmap();
    const QColor red = Tool::toImage(nv21, false).pixelColor(5, 5);
    QVERIFY(red.red() > 170 && red.green() < 20 && red.blue() < 20);
}

void FrameImageTest::isNull_whenTheFormatIsUnknown()
{
    QVERIFY(Tool::toImage(QVideoFrame(), false).isNull());
    const QVideoFrame packed(Width * Height * 2, QSize(Width, Height), Width * 2,
                             QVideoFrame::Format_UYVY);
    QVERIFY(Tool::toImage(packed, false).isNull());
}

// A limit of the file size is as good as a full disk.
void FrameImageTest::saveImage_keepsTheOldFile_whenTheDiskIsFull()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("a.PNG"));
    QString error;
    const QImage image = Tool::toImage(frame(QVideoFrame::Format_NV12), false);
    QVERIFY2(Tool::saveImage(image, file, &error), qPrintable(error));
    QCOMPARE(QImage(file), image);

    rlimit before = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full = { 100, before.rlim_max }; // bytes
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &full), 0);
    const bool isSaved = Tool::saveImage(image.mirrored(true, false), file, &error);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QVERIFY(!isSaved);
    QCOMPARE(error, QStringLiteral("File too large"));
    QCOMPARE(QImage(file), image);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList { "a.PNG" });
    QVERIFY(!Tool::saveImage(image, folder.filePath(QStringLiteral("none/a.png")), &error));
    QCOMPARE(error, QStringLiteral("No such file or directory"));
}

void FrameImageTest::canSaveImage_knowsFormatsByTheirSuffix()
{
    QVERIFY(Tool::canSaveImage(QStringLiteral("a.png")));
    QVERIFY(Tool::canSaveImage(QStringLiteral("/x/a.b.PNG")));
    QVERIFY(!Tool::canSaveImage(QStringLiteral("png")));
    QVERIFY(!Tool::canSaveImage(QStringLiteral("a.mkv")));
    QVERIFY(!Tool::canSaveImage(QString()));
}

QTEST_MAIN(FrameImageTest)
#include "tst_frameimage.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "codecroundtrip.h"
#include "footage.h"
#include "patternreader.h"
#include "picture.h"
#include "testpattern.h"

#include <QFile>
#include <QtTest>

extern "C" {
#include <libavutil/log.h>
}

using namespace Veltra::Ocelle;

/*! What lossy codecs leave of the pattern, and what the reader makes of real footage. */
class PatternLossyTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void everyNumberIsReadAfterEncoding_data();
    void everyNumberIsReadAfterEncoding();
    void footageIsNeverTakenForThePattern_data();
    void footageIsNeverTakenForThePattern();
};

void PatternLossyTest::initTestCase()
{
    av_log_set_level(AV_LOG_ERROR);
}

void PatternLossyTest::everyNumberIsReadAfterEncoding_data()
{
    QTest::addColumn<QString>("encoder");
    QTest::addColumn<QString>("decoder");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("bitRate");
    const QString x264 = QStringLiteral("preset=veryfast:tune=zerolatency");
    const QString vpx = QStringLiteral("deadline=realtime:cpu-used=8:lag-in-frames=0");
    QTest::newRow("H.264 320x240") << "libx264"
                                   << "h264" << x264 << QSize(320, 240) << 200000;
    QTest::newRow("H.264 640x480") << "libx264"
                                   << "h264" << x264 << QSize(640, 480) << 400000;
    QTest::newRow("VP8 320x240") << "libvpx"
                                 << "vp8" << vpx << QSize(320, 240) << 200000;
    QTest::newRow("VP8 640x480") << "libvpx"
                                 << "vp8" << vpx << QSize(640, 480) << 400000;
}

void PatternLossyTest::everyNumberIsReadAfterEncoding()
{
    QFETCH(QString, encoder);
    QFETCH(QString, decoder);
    QFETCH(QString, options);
    QFETCH(QSize, size);
    QFETCH(int, bitRate);
    constexpr int Pictures = 240;
    constexpr int FrameRate = 30;
    constexpr quint32 First = 0x7fffff80; // all the upper bits change half-way

    int decoded = 0;
    int right = 0;
    const auto check = [&](const std::uint8_t *luma, int stride, std::int64_t index) {
        const auto reading = readPattern(luma, stride, size.width(), size.height());
        right += reading && reading->sequence == First + quint32(index) && !reading->mirrored;
        ++decoded;
    };
    CodecRoundTrip codec({ encoder.toStdString(), decoder.toStdString(), size.width(),
                           size.height(), bitRate, FrameRate, options.toStdString() },
                         check);
    QVERIFY(codec.isValid());

    const TestPattern pattern(size.width(), size.height(), PixelFormat::YU12, "BACK");
    Picture picture(size.width(), size.height(), PixelFormat::YU12);
    pattern.paintBackground(picture.planes());
    for (int i = 0; i < Pictures; ++i) {
        pattern.update(picture.planes(), First + quint32(i), qint64(i) * 1000000 / FrameRate);
        QVERIFY(codec.put(picture, i));
    }
    QVERIFY(codec.finish());
    qInfo("%lld bit/s", static_cast<long long>(codec.encodedBytes() * 8 * FrameRate / Pictures));
    QCOMPARE(decoded, Pictures);
    QCOMPARE(right, Pictures);
    QVERIFY(codec.encodedBytes() * 8 * FrameRate / Pictures < bitRate * 3 / 2);
}

void PatternLossyTest::footageIsNeverTakenForThePattern_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("ship") << QStringLiteral("ship-cif.mkv");
    QTest::newRow("flower") << QStringLiteral("flower-720p.mkv");
}

void PatternLossyTest::footageIsNeverTakenForThePattern()
{
    QFETCH(QString, file);
    const QString path = QStringLiteral(OCELLE_MEDIA_DIR "/") + file;
    if (!QFile::exists(path))
        QSKIP(qPrintable(QStringLiteral("There is no ") + path));
    int read = 0;
    const int pictures =
            Footage::play(path.toStdString(),
                          [&read](const std::uint8_t *luma, int stride, int width, int height) {
                              read += readPattern(luma, stride, width, height).has_value() ? 1 : 0;
                          });
    QCOMPARE(pictures, 300);
    QCOMPARE(read, 0);
}

QTEST_GUILESS_MAIN(PatternLossyTest)
#include "tst_patternlossy.moc"

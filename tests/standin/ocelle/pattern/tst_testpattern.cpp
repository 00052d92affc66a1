// SPDX-License-Identifier: BSD-3-Clause
#include "patternreader.h"
#include "picture.h"
#include "testpattern.h"

#include <QtTest>

#include <algorithm>

using namespace Veltra::Ocelle;

class TestPatternTest : public QObject
{
    Q_OBJECT
private slots:
    void isReadAtEverySizeFormatAndStride_data();
    void isReadAtEverySizeFormatAndStride();
    void update_dependsOnlyOnItsArguments_data();
    void update_dependsOnlyOnItsArguments();
    void update_changesLittleOfThePicture();
    void update_movesTheBallAndTheClock();
    void update_takesAnyTimeAndNumber();
    void paint_staysWithinItsPlanesAtAnySize();
    void formats_showTheSamePicture();
    void caption_isVisibleAndCutToItsPlace();

private:
    static Picture painted(const TestPattern &pattern, PixelFormat format, quint64 sequence,
                           qint64 time)
    {
        Picture picture(pattern.width(), pattern.height(), format);
        pattern.paintBackground(picture.planes());
        pattern.update(picture.planes(), sequence, time);
        return picture;
    }
};

void TestPatternTest::isReadAtEverySizeFormatAndStride_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<quint32>("format");
    QTest::addColumn<int>("padding");
    const QList<QSize> sizes { { 160, 120 }, { 320, 240 },   { 640, 480 },   { 1280, 720 },
                               { 352, 288 }, { 1920, 1080 }, { 3840, 2160 }, { 161, 121 },
                               { 333, 251 }, { 641, 479 },   { 240, 320 },   { 720, 1280 } };
    for (const QSize &size : sizes) {
        for (const PixelFormat format : { PixelFormat::NV12, PixelFormat::YU12 }) {
            for (const int padding : { 0, 37, 64 }) {
                QTest::addRow("%dx%d %s +%d", size.width(), size.height(),
                              format == PixelFormat::NV12 ? "NV12" : "YU12", padding)
                        << size.width() << size.height() << quint32(format) << padding;
            }
        }
    }
}

void TestPatternTest::isReadAtEverySizeFormatAndStride()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(quint32, format);
    QFETCH(int, padding);
    Picture picture(width, height, PixelFormat(format), padding);
    const TestPattern pattern(width, height, PixelFormat(format), "BACK");
    pattern.paintBackground(picture.planes());
    for (const quint32 sequence : { 0U, 1U, 4711U, 0xffffffffU }) {
        pattern.update(picture.planes(), sequence, qint64(sequence) * 33333);
        const auto reading = readPattern(picture.luma(), picture.stride(), width, height);
        QVERIFY(reading.has_value());
        QCOMPARE(reading->sequence, sequence);
        QVERIFY(!reading->mirrored);
        QCOMPARE(reading->rotation, 0);
    }
    QVERIFY(picture.surroundingsIntact());
}

void TestPatternTest::update_dependsOnlyOnItsArguments_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("320x240") << 320 << 240;
    QTest::newRow("1920x1080") << 1920 << 1080;
    QTest::newRow("odd") << 643 << 481;
    QTest::newRow("tiny") << 30 << 22;
}

// A buffer of a pool held some older picture, any of them.
void TestPatternTest::update_dependsOnlyOnItsArguments()
{
    QFETCH(int, width);
    QFETCH(int, height);
    for (const PixelFormat format : { PixelFormat::NV12, PixelFormat::YU12 }) {
        const TestPattern pattern(width, height, format, "FRONT");
        Picture reused = painted(pattern, format, 0, 0);
        for (int i = 0; i < 300; ++i) {
            const quint64 sequence = quint64(i) * 7919 * 104729;
            const qint64 time = i * 123457LL;
            pattern.update(reused.planes(), sequence, time);
            if (i % 10 == 0)
                QVERIFY(reused.samples() == painted(pattern, format, sequence, time).samples());
        }
    }
}

void TestPatternTest::update_changesLittleOfThePicture()
{
    const TestPattern pattern(640, 480, PixelFormat::NV12);
    const std::vector<std::uint8_t> one =
            painted(pattern, PixelFormat::NV12, 99, 3300000).samples();
    const std::vector<std::uint8_t> two =
            painted(pattern, PixelFormat::NV12, 100, 3333333).samples();
    int changed = 0;
    for (std::size_t i = 0; i < one.size(); ++i)
        changed += one[i] != two[i] ? 1 : 0;
    QVERIFY(changed > 0);
    QVERIFY2(changed < int(one.size()) / 10, qPrintable(QString::number(changed)));
}

void TestPatternTest::update_movesTheBallAndTheClock()
{
    const TestPattern pattern(320, 240, PixelFormat::YU12);
    const auto at = [&pattern](qint64 time) {
        return painted(pattern, PixelFormat::YU12, 5, time).samples();
    };
    const auto differ = [](const auto &one, const auto &two, int firstLine, int lastLine) {
        return !std::equal(one.begin() + firstLine * 320, one.begin() + lastLine * 320,
                           two.begin() + firstLine * 320);
    };
    QVERIFY(differ(at(0), at(40000), 80, 112));                  // the ball's lane
    QVERIFY(!differ(at(0), at(4000000), 80, 112));               // it is back where it was
    QVERIFY(differ(at(0), at(4000000), 112, 160));               // but the clock is not
    QVERIFY(!differ(at(0), at(100 * 60 * 1000000LL), 112, 160)); // until 100 minutes later
    QVERIFY(!differ(at(0), at(40000), 0, 80));                   // the bars stand
    QVERIFY(!differ(at(0), at(40000), 160, 240));                // the number is the same
}

void TestPatternTest::update_takesAnyTimeAndNumber()
{
    const TestPattern pattern(320, 240, PixelFormat::NV12);
    Picture picture(320, 240, PixelFormat::NV12, 8);
    pattern.paintBackground(picture.planes());
    for (const qint64 time :
         { std::numeric_limits<qint64>::min(), qint64(-1), std::numeric_limits<qint64>::max() }) {
        pattern.update(picture.planes(), 0xfffffffff5ULL, time);
        const auto reading = readPattern(picture.luma(), picture.stride(), 320, 240);
        QVERIFY(reading.has_value());
        QCOMPARE(reading->sequence, 0xfffffff5U);
    }
    QVERIFY(picture.surroundingsIntact());
}

void TestPatternTest::paint_staysWithinItsPlanesAtAnySize()
{
    for (const PixelFormat format : { PixelFormat::NV12, PixelFormat::YU12 }) {
        for (int width = 1; width < 100; width += width < 24 ? 1 : 7) {
            for (int height = 1; height < 90; height += height < 24 ? 1 : 5) {
                Picture picture(width, height, format, 3);
                const TestPattern pattern(width, height, format, "CAPTION");
                pattern.paintBackground(picture.planes());
                for (int i = 0; i < 5; ++i)
                    pattern.update(picture.planes(), i, i * 777777LL);
                QVERIFY2(picture.surroundingsIntact(),
                         qPrintable(QStringLiteral("%1x%2").arg(width).arg(height)));
            }
        }
    }
}

void TestPatternTest::formats_showTheSamePicture()
{
    const int width = 322;
    const int height = 242;
    const TestPattern semi(width, height, PixelFormat::NV12, "BACK");
    const TestPattern planar(width, height, PixelFormat::YU12, "BACK");
    const auto nv12 = painted(semi, PixelFormat::NV12, 77, 1234567).samples();
    const auto yu12 = painted(planar, PixelFormat::YU12, 77, 1234567).samples();
    const std::size_t luma = width * height;
    const std::size_t chroma = (width / 2) * (height / 2);
    QCOMPARE(nv12.size(), yu12.size());
    QVERIFY(std::equal(nv12.begin(), nv12.begin() + luma, yu12.begin()));
    for (std::size_t i = 0; i < chroma; ++i) {
        QCOMPARE(nv12[luma + 2 * i], yu12[luma + i]);
        QCOMPARE(nv12[luma + 2 * i + 1], yu12[luma + chroma + i]);
    }
}

void TestPatternTest::caption_isVisibleAndCutToItsPlace()
{
    const auto with = [](const char *caption) {
        return painted(TestPattern(320, 240, PixelFormat::NV12, caption), PixelFormat::NV12, 1, 1)
                .samples();
    };
    QVERIFY(with("FRONT") != with("BACK"));
    QVERIFY(with("FRONT") != with(""));
    QVERIFY(with("SEVENLE") == with("SEVENLETTERS"));
}

QTEST_GUILESS_MAIN(TestPatternTest)
#include "tst_testpattern.moc"

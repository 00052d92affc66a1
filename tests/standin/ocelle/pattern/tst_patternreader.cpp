// SPDX-License-Identifier: BSD-3-Clause
#include "patternreader.h"
#include "picture.h"
#include "testpattern.h"

#include <QRandomGenerator>
#include <QtTest>

#include <libyuv.h>

#include <algorithm>

using namespace Veltra::Ocelle;

namespace {

constexpr quint32 Number = 0x00c0ffee;

// Luma samples without padding.
struct Luma
{
    int width;
    int height;
    std::vector<std::uint8_t> samples;

    std::optional<PatternReading> read() const
    {
        return readPattern(samples.data(), width, width, height);
    }
};

Luma paintedLuma(int width, int height, quint32 number = Number)
{
    Picture picture(width, height, PixelFormat::YU12);
    const TestPattern pattern(width, height, PixelFormat::YU12, "BACK");
    pattern.paintBackground(picture.planes());
    pattern.update(picture.planes(), number, 7654321);
    return { width, height, { picture.luma(), picture.luma() + width * height } };
}

// The picture mirrored left to right, and then turned clockwise.
Luma moved(const Luma &from, bool mirrored, int rotation)
{
    Luma to = from;
    if (rotation % 180 != 0)
        std::swap(to.width, to.height);
    for (int y = 0; y < from.height; ++y) {
        for (int x = 0; x < from.width; ++x) {
            const int mx = mirrored ? from.width - 1 - x : x;
            int toX = mx;
            int toY = y;
            if (rotation == 90) {
                toX = from.height - 1 - y;
                toY = mx;
            } else if (rotation == 180) {
                toX = from.width - 1 - mx;
                toY = from.height - 1 - y;
            } else if (rotation == 270) {
                toX = y;
                toY = from.width - 1 - mx;
            }
            to.samples[std::size_t(toY * to.width + toX)] =
                    from.samples[std::size_t(y * from.width + x)];
        }
    }
    return to;
}

} // namespace

class PatternReaderTest : public QObject
{
    Q_OBJECT
private slots:
    void tellsHowThePictureStands_data();
    void tellsHowThePictureStands();
    void readsScaledPictures_data();
    void readsScaledPictures();
    void readsRgb32_data();
    void readsRgb32();
    void readsPicturesStoredBottomUp();
    void readsAnyRangeOfValues_data();
    void readsAnyRangeOfValues();
    void readsThroughNoise();
    void givesNothingRatherThanAWrongNumber_whenNoiseGrows();
    void givesNothingRatherThanAWrongNumber_whenPartsAreMissing();
    void givesNothing_forOtherPictures();
    void givesNothing_forTinySizes();
};

void PatternReaderTest::tellsHowThePictureStands_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<int>("rotation");
    for (const QSize size :
         { QSize(160, 120), QSize(320, 240), QSize(1280, 720), QSize(333, 251) }) {
        for (const bool mirrored : { false, true }) {
            for (const int rotation : { 0, 90, 180, 270 })
                QTest::addRow("%dx%d %s %d", size.width(), size.height(),
                              mirrored ? "mirrored" : "plain", rotation)
                        << size << mirrored << rotation;
        }
    }
}

void PatternReaderTest::tellsHowThePictureStands()
{
    QFETCH(QSize, size);
    QFETCH(bool, mirrored);
    QFETCH(int, rotation);
    const auto reading = moved(paintedLuma(size.width(), size.height()), mirrored, rotation).read();
    QVERIFY(reading.has_value());
    QCOMPARE(reading->sequence, Number);
    QCOMPARE(reading->mirrored, mirrored);
    QCOMPARE(reading->rotation, rotation);
}

void PatternReaderTest::readsScaledPictures_data()
{
    QTest::addColumn<QSize>("from");
    QTest::addColumn<QSize>("to");
    QTest::newRow("half of 320x240") << QSize(320, 240) << QSize(160, 120);
    QTest::newRow("half of 640x480") << QSize(640, 480) << QSize(320, 240);
    QTest::newRow("half of 1280x720") << QSize(1280, 720) << QSize(640, 360);
    QTest::newRow("half of 1920x1080") << QSize(1920, 1080) << QSize(960, 540);
    QTest::newRow("other shape") << QSize(1280, 720) << QSize(320, 240);
    QTest::newRow("odd factor") << QSize(640, 480) << QSize(213, 161);
    QTest::newRow("enlarged") << QSize(160, 120) << QSize(1000, 700);
    QTest::newRow("smallest") << QSize(1920, 1080) << QSize(80, 60);
}

void PatternReaderTest::readsScaledPictures()
{
    QFETCH(QSize, from);
    QFETCH(QSize, to);
    const Luma luma = paintedLuma(from.width(), from.height());
    for (const libyuv::FilterMode filter :
         { libyuv::kFilterNone, libyuv::kFilterBilinear, libyuv::kFilterBox }) {
        Luma scaled { to.width(), to.height(), {} };
        scaled.samples.resize(std::size_t(to.width() * to.height()));
        libyuv::ScalePlane(luma.samples.data(), luma.width, luma.width, luma.height,
                           scaled.samples.data(), scaled.width, scaled.width, scaled.height,
                           filter);
        const auto reading = scaled.read();
        QVERIFY(reading.has_value());
        QCOMPARE(reading->sequence, Number);
    }
}

void PatternReaderTest::readsRgb32_data()
{
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("plain") << false;
    QTest::newRow("mirrored") << true;
}

void PatternReaderTest::readsRgb32()
{
    QFETCH(bool, mirrored);
    constexpr int Width = 640;
    constexpr int Height = 480;
    constexpr int Stride = Width * 4 + 16;
    Picture picture(Width, Height, PixelFormat::NV12);
    const TestPattern pattern(Width, Height, PixelFormat::NV12);
    pattern.paintBackground(picture.planes());
    pattern.update(picture.planes(), Number, 0);
    std::vector<std::uint8_t> pixels(std::size_t(Stride) * Height);
    libyuv::NV12ToARGB(picture.luma(), picture.stride(), picture.planes()[1].data,
                       picture.planes()[1].stride, pixels.data(), Stride, Width, Height);
    if (mirrored) {
        std::vector<std::uint8_t> other(pixels.size());
        libyuv::ARGBMirror(pixels.data(), Stride, other.data(), Stride, Width, Height);
        pixels = other;
    }
    const auto reading = readPatternRgb32(pixels.data(), Stride, Width, Height);
    QVERIFY(reading.has_value());
    QCOMPARE(reading->sequence, Number);
    QCOMPARE(reading->mirrored, mirrored);
    QCOMPARE(reading->rotation, 0);
    QVERIFY(!readPatternRgb32(nullptr, Stride, Width, Height).has_value());
}

void PatternReaderTest::readsPicturesStoredBottomUp()
{
    const Luma luma = paintedLuma(320, 240);
    const Luma upsideDown = moved(luma, true, 180); // lines in the opposite order
    const auto reading = readPattern(upsideDown.samples.data() + 320 * 239, -320, 320, 240);
    QVERIFY(reading.has_value());
    QCOMPARE(reading->sequence, Number);
    QVERIFY(!reading->mirrored);
    QCOMPARE(reading->rotation, 0);
}

void PatternReaderTest::readsAnyRangeOfValues_data()
{
    QTest::addColumn<int>("black");
    QTest::addColumn<int>("white");
    QTest::newRow("full range") << 0 << 255;
    QTest::newRow("limited range") << 16 << 235;
    QTest::newRow("limited twice") << 30 << 218;
    QTest::newRow("pale") << 90 << 170;
    QTest::newRow("dark") << 0 << 70;
    QTest::newRow("bright") << 180 << 255;
}

void PatternReaderTest::readsAnyRangeOfValues()
{
    QFETCH(int, black);
    QFETCH(int, white);
    Luma luma = paintedLuma(320, 240);
    for (std::uint8_t &sample : luma.samples)
        sample = std::uint8_t(
                std::clamp(black + (sample - 16) * (white - black) / (235 - 16), 0, 255));
    const auto reading = luma.read();
    QVERIFY(reading.has_value());
    QCOMPARE(reading->sequence, Number);
}

void PatternReaderTest::readsThroughNoise()
{
    QRandomGenerator random(1);
    for (quint32 number = 0; number < 200; ++number) {
        Luma luma = paintedLuma(320, 240, number);
        for (std::uint8_t &sample : luma.samples)
            sample = std::uint8_t(std::clamp(sample + random.bounded(-60, 61), 0, 255));
        const auto reading = luma.read();
        QVERIFY(reading.has_value());
        QCOMPARE(reading->sequence, number);
    }
}

void PatternReaderTest::givesNothingRatherThanAWrongNumber_whenNoiseGrows()
{
    QRandomGenerator random(2);
    int unread = 0;
    for (int amplitude = 100; amplitude < 2600; amplitude += 5) {
        Luma luma = paintedLuma(160, 120);
        for (std::uint8_t &sample : luma.samples)
            sample = std::uint8_t(
                    std::clamp(sample + random.bounded(-amplitude, amplitude + 1), 0, 255));
        const auto reading = luma.read();
        if (reading)
            QCOMPARE(reading->sequence, Number);
        unread += reading ? 0 : 1;
    }
    QVERIFY(unread > 0); // else the noise was no trial
}

void PatternReaderTest::givesNothingRatherThanAWrongNumber_whenPartsAreMissing()
{
    const Luma whole = paintedLuma(320, 240);
    const auto older = paintedLuma(320, 240, Number - 0x1234567);
    int unread = 0;
    for (int line = 0; line <= 240; ++line) {
        Luma torn = whole; // from this line on the buffer still holds an older picture
        std::copy(older.samples.begin() + line * 320, older.samples.end(),
                  torn.samples.begin() + line * 320);
        const auto reading = torn.read();
        QVERIFY(!reading || reading->sequence == Number || reading->sequence == Number - 0x1234567);
        unread += reading ? 0 : 1;

        Luma cut = whole; // or nothing at all
        std::fill(cut.samples.begin() + line * 320, cut.samples.end(), std::uint8_t(16));
        QVERIFY(!cut.read() || cut.read()->sequence == Number);
    }
    QVERIFY(unread >= 32); // at least while the tear runs through two rows of cells
    for (const int height : { 60, 100, 150, 200, 220 })
        QVERIFY(!readPattern(whole.samples.data(), 320, 320, height).has_value());
    for (const int width : { 80, 100, 200, 280, 300 })
        QVERIFY(!readPattern(whole.samples.data(), 320, width, 240).has_value());
}

void PatternReaderTest::givesNothing_forOtherPictures()
{
    QRandomGenerator random(3);
    Luma luma { 320, 240, std::vector<std::uint8_t>(320 * 240) };
    for (const int level : { 0, 16, 128, 235, 255 }) {
        std::fill(luma.samples.begin(), luma.samples.end(), std::uint8_t(level));
        QVERIFY(!luma.read().has_value());
    }
    for (int i = 0; i < 4000; ++i) { // cells of black and white, at random
        quint64 cells = random.generate64();
        for (int row = 10; row < 14; ++row) {
            for (int column = 2; column < 18; ++column, cells = cells >> 1 | cells << 63) {
                for (int y = row * 16; y < row * 16 + 16; ++y)
                    std::fill_n(luma.samples.begin() + y * 320 + column * 16, 16,
                                std::uint8_t((cells & 1) != 0 ? 235 : 16));
            }
        }
        QVERIFY(!luma.read().has_value());
    }
    QVERIFY(!readPattern(nullptr, 320, 320, 240).has_value());
}

void PatternReaderTest::givesNothing_forTinySizes()
{
    const Luma luma = paintedLuma(160, 120);
    for (int width = -1; width < 80; ++width) {
        QVERIFY(!readPattern(luma.samples.data(), 160, width, 59).has_value());
        QVERIFY(!readPattern(luma.samples.data(), 160, 59, width).has_value());
    }
    const Luma tiny = paintedLuma(79, 59);
    QVERIFY(!tiny.read().has_value());
}

QTEST_GUILESS_MAIN(PatternReaderTest)
#include "tst_patternreader.moc"

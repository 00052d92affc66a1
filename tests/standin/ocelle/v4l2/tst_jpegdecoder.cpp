// SPDX-License-Identifier: BSD-3-Clause
#include "jpegdecoder.h"
#include "jpegscan.h"

#include <QtTest>

#include <turbojpeg.h>

#include <cstdlib>
#include <vector>

using namespace Veltra::Ocelle;

namespace {

using Bytes = std::vector<std::uint8_t>;

/*! A picture whose luma rises to the right and whose chroma rises downwards, all smooth. */
struct Picture
{
    Picture(int pictureWidth, int pictureHeight)
        : width(pictureWidth)
        , height(pictureHeight)
        , chromaWidth((width + 1) / 2)
        , chromaHeight((height + 1) / 2)
        , y(std::size_t(width * height))
        , u(std::size_t(chromaWidth * chromaHeight))
        , v(u.size())
    {
    }
    JpegDecoder::Planes planes()
    {
        return { { { y.data(), width }, { u.data(), chromaWidth }, { v.data(), chromaWidth } } };
    }

    int width;
    int height;
    int chromaWidth;
    int chromaHeight;
    Bytes y;
    Bytes u;
    Bytes v;
};

/*! Grey values of all strengths from left to right, in the full range. */
Bytes greyRamp(int width, int height, int subsampling)
{
    Bytes rgb;
    for (int line = 0; line < height; ++line) {
        for (int x = 0; x < width; ++x)
            rgb.insert(rgb.end(), 3, std::uint8_t(x * 255 / (width - 1)));
    }
    const tjhandle handle = tjInitCompress();
    unsigned char *jpeg = nullptr;
    unsigned long size = 0;
    tjCompress2(handle, rgb.data(), width, 0, height, TJPF_RGB, &jpeg, &size, subsampling, 95, 0);
    const Bytes bytes(jpeg, jpeg + size);
    tjFree(jpeg);
    tjDestroy(handle);
    return bytes;
}

/*! How far the picture is from the ramp in the limited range. */
int worstDifference(const Picture &picture)
{
    int worst = 0;
    for (int line = 0; line < picture.height; ++line) {
        for (int x = 0; x < picture.width; ++x) {
            const int full = x * 255 / (picture.width - 1);
            const int expected = 16 + (full * 219 + 127) / 255;
            const int got = picture.y[std::size_t(line * picture.width + x)];
            worst = std::max(worst, std::abs(got - expected));
        }
    }
    for (const Bytes *chroma : { &picture.u, &picture.v }) {
        for (const std::uint8_t value : *chroma)
            worst = std::max(worst, std::abs(int(value) - 128));
    }
    return worst;
}

bool decode(JpegDecoder &decoder, const Bytes &jpeg, Picture &picture)
{
    return decoder.decode(jpeg.data(), jpeg.size(), picture.width, picture.height,
                          picture.planes());
}

JpegScan::State scan(const Bytes &bytes)
{
    return JpegScan::of(bytes.data(), bytes.size()).state;
}

} // namespace

class TestJpegDecoder : public QObject
{
    Q_OBJECT
private slots:
    void decode_givesThePicture_data();
    void decode_givesThePicture();
    void decode_refusesAPictureThatWasCutOff();
    void decode_refusesAPictureWithDamagedData();
    void decode_refusesAnotherSize();
    void decode_skipsExtraneousBytes();
    void decode_goesOnAfterADamagedPicture();
    void scan_findsSizeAndEnd();
    void scan_tellsWhatIsWrong();
};

void TestJpegDecoder::decode_givesThePicture_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("subsampling");
    const std::pair<const char *, int> kinds[] = {
        { "4:2:0", TJSAMP_420 }, { "4:2:2", TJSAMP_422 }, { "4:4:4", TJSAMP_444 },
        { "4:4:0", TJSAMP_440 }, { "4:1:1", TJSAMP_411 }, { "grey", TJSAMP_GRAY }
    };
    for (const auto &[name, subsampling] : kinds) {
        QTest::addRow("%s even", name) << 320 << 240 << subsampling;
        QTest::addRow("%s odd", name) << 321 << 241 << subsampling;
        QTest::addRow("%s tiny", name) << 3 << 1 << subsampling;
    }
}

void TestJpegDecoder::decode_givesThePicture()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, subsampling);
    JpegDecoder decoder;
    Picture picture(width, height);
    QVERIFY(decode(decoder, greyRamp(width, height, subsampling), picture));
    const int tolerated = width > 3 ? 3 : 12; // hardly a ramp any more
    QVERIFY2(worstDifference(picture) <= tolerated,
             qPrintable(QString::number(worstDifference(picture))));
}

void TestJpegDecoder::decode_refusesAPictureThatWasCutOff()
{
    const Bytes whole = greyRamp(64, 48, TJSAMP_422);
    JpegDecoder decoder;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Picture picture(64, 48);
        QVERIFY(!decode(decoder, Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(size)),
                        picture));
    }
}

void TestJpegDecoder::decode_refusesAPictureWithDamagedData()
{
    // Without its second half, but with the end marker again: the decoder runs out of data.
    const Bytes whole = greyRamp(320, 240, TJSAMP_420);
    Bytes damaged(whole.begin(), whole.begin() + std::ptrdiff_t(whole.size() * 2 / 3));
    damaged.insert(damaged.end(), { 0x00, 0xFF, 0xD9 });
    QVERIFY(scan(damaged) == JpegScan::State::Complete);
    JpegDecoder decoder;
    Picture picture(320, 240);
    QVERIFY(!decode(decoder, damaged, picture));
}

void TestJpegDecoder::decode_refusesAnotherSize()
{
    JpegDecoder decoder;
    Picture picture(320, 238);
    QVERIFY(!decode(decoder, greyRamp(320, 240, TJSAMP_420), picture));
}

void TestJpegDecoder::decode_skipsExtraneousBytes()
{
    Bytes jpeg = greyRamp(320, 240, TJSAMP_422);
    jpeg.insert(jpeg.begin() + 2, { 0x11, 0x22, 0x33 }); // before the first segment
    jpeg.insert(jpeg.end(), 1000, 0x00);                 // as cameras pad their pictures
    JpegDecoder decoder;
    Picture picture(320, 240);
    QVERIFY(decode(decoder, jpeg, picture));
    QVERIFY(worstDifference(picture) <= 3);
}

void TestJpegDecoder::decode_goesOnAfterADamagedPicture()
{
    const Bytes whole = greyRamp(320, 240, TJSAMP_422);
    JpegDecoder decoder;
    Picture picture(320, 240);
    QVERIFY(!decode(decoder, Bytes(whole.begin(), whole.end() - 200), picture));
    QVERIFY(decode(decoder, whole, picture));
    QVERIFY(worstDifference(picture) <= 3);
}

void TestJpegDecoder::scan_findsSizeAndEnd()
{
    Bytes jpeg = greyRamp(322, 200, TJSAMP_422);
    const std::size_t length = jpeg.size();
    jpeg.insert(jpeg.end(), 10, 0xFF);
    const JpegScan result = JpegScan::of(jpeg.data(), jpeg.size());
    QVERIFY(result.state == JpegScan::State::Complete);
    QCOMPARE(result.width, 322);
    QCOMPARE(result.height, 200);
    QCOMPARE(result.length, length);
}

void TestJpegDecoder::scan_tellsWhatIsWrong()
{
    const Bytes whole = greyRamp(64, 48, TJSAMP_420);
    QVERIFY(scan({}) == JpegScan::State::NoStart);
    QVERIFY(scan({ 0xFF }) == JpegScan::State::NoStart);
    QVERIFY(scan({ 0x00, 0xFF, 0xD8 }) == JpegScan::State::NoStart);
    QVERIFY(scan({ 0xFF, 0xD8 }) == JpegScan::State::NoFrame);
    QVERIFY(scan({ 0xFF, 0xD8, 0xFF, 0xD9 }) == JpegScan::State::NoFrame);
    QVERIFY(scan({ 0xFF, 0xD8, 0xFF, 0xE0, 0x00, 0x01 }) == JpegScan::State::Malformed);
    QVERIFY(scan({ 0xFF, 0xD8, 0xFF, 0xE0, 0x10, 0x00, 0x00 }) == JpegScan::State::Malformed);
    QVERIFY(scan(Bytes(whole.begin(), whole.end() - 1)) == JpegScan::State::NoEnd);
}

QTEST_APPLESS_MAIN(TestJpegDecoder)
#include "tst_jpegdecoder.moc"

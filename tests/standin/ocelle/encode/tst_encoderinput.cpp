// SPDX-License-Identifier: BSD-3-Clause
#include "rawpicture.h"

#include <QtTest>

#include <encoderinput.h>
#include <pictureencoder.h>

#include <random>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::PictureLayout)

namespace {
// A codec as picky as told.
class PickyEncoder final : public PictureEncoder
{
public:
    PickyEncoder(bool interleaved, bool odd)
        : m_interleaved(interleaved)
        , m_odd(odd)
    {
    }
    bool takes(PictureLayout layout) const override
    {
        return layout == PictureLayout::Planar || m_interleaved;
    }
    bool takesOddSizes() const override { return m_odd; }
    bool open(const EncoderSettings &, std::string *) override { return true; }
    bool encode(const PictureView &, std::int64_t, bool, const UnitFunction &,
                std::string *) override
    {
        return true;
    }
    bool finish(const UnitFunction &, std::string *) override { return true; }
    BitrateChange setBitrate(int, std::string *) override { return BitrateChange::Done; }

private:
    const bool m_interleaved;
    const bool m_odd;
};

RawPicture noise(int width, int height)
{
    RawPicture picture(width, height);
    std::mt19937 random(unsigned(width * 1000 + height));
    for (auto *plane : { &picture.y, &picture.cb, &picture.cr }) {
        for (std::uint8_t &sample : *plane)
            sample = std::uint8_t(random());
    }
    return picture;
}

// One plane mirrored top to bottom and then turned clockwise, sample by sample.
std::vector<std::uint8_t> turnedPlane(const std::vector<std::uint8_t> &from, int width, int height,
                                      int degrees, bool mirrored)
{
    const int toWidth = degrees % 180 ? height : width;
    const int toHeight = degrees % 180 ? width : height;
    std::vector<std::uint8_t> to(from.size());
    for (int line = 0; line < toHeight; ++line) {
        for (int column = 0; column < toWidth; ++column) {
            int x = column;
            int y = line;
            if (degrees == 90) {
                x = line;
                y = height - 1 - column;
            } else if (degrees == 180) {
                x = width - 1 - column;
                y = height - 1 - line;
            } else if (degrees == 270) {
                x = width - 1 - line;
                y = column;
            }
            if (mirrored)
                y = height - 1 - y;
            to[std::size_t(line * toWidth + column)] = from[std::size_t(y * width + x)];
        }
    }
    return to;
}

RawPicture turnedPicture(const RawPicture &from, int degrees, bool mirrored)
{
    RawPicture to(degrees % 180 ? from.height : from.width,
                  degrees % 180 ? from.width : from.height);
    to.y = turnedPlane(from.y, from.width, from.height, degrees, mirrored);
    to.cb = turnedPlane(from.cb, from.chromaWidth(), from.chromaHeight(), degrees, mirrored);
    to.cr = turnedPlane(from.cr, from.chromaWidth(), from.chromaHeight(), degrees, mirrored);
    return to;
}

RawPicture evenPicture(const RawPicture &from)
{
    RawPicture to((from.width + 1) / 2 * 2, (from.height + 1) / 2 * 2);
    to.cb = from.cb;
    to.cr = from.cr;
    for (int line = 0; line < to.height; ++line) {
        for (int x = 0; x < to.width; ++x)
            to.y[std::size_t(line * to.width + x)] = from.y[std::size_t(
                    std::min(line, from.height - 1) * from.width + std::min(x, from.width - 1))];
    }
    return to;
}

RawPicture pictureOf(const PictureView &view)
{
    RawPicture picture(view.width, view.height);
    const int step = view.layout == PictureLayout::Planar ? 1 : 2;
    for (int line = 0; line < view.height; ++line)
        std::copy_n(view.y + line * view.yStride, view.width,
                    picture.y.begin() + line * view.width);
    for (int line = 0; line < picture.chromaHeight(); ++line) {
        for (int x = 0; x < picture.chromaWidth(); ++x) {
            const auto to = std::size_t(line * picture.chromaWidth() + x);
            picture.cb[to] = view.cb[line * view.cStride + x * step];
            picture.cr[to] = view.cr[line * view.cStride + x * step];
        }
    }
    return picture;
}

bool operator==(const RawPicture &one, const RawPicture &other)
{
    return one.width == other.width && one.height == other.height && one.y == other.y &&
           one.cb == other.cb && one.cr == other.cr;
}

const char *layoutName(PictureLayout layout)
{
    return layout == PictureLayout::Planar ? "planar"
           : layout == PictureLayout::NV12 ? "NV12"
                                           : "NV21";
}
} // namespace

class TestEncoderInput : public QObject
{
    Q_OBJECT
private slots:
    void prepare_turnsAndMirrors_everyLayoutAndSize_data()
    {
        QTest::addColumn<PictureLayout>("layout");
        QTest::addColumn<int>("degrees");
        QTest::addColumn<bool>("mirrored");
        for (PictureLayout layout :
             { PictureLayout::Planar, PictureLayout::NV12, PictureLayout::NV21 }) {
            for (int degrees : { 0, 90, 180, 270 }) {
                for (bool mirrored : { false, true })
                    QTest::addRow("%s, %d%s", layoutName(layout), degrees,
                                  mirrored ? ", mirrored" : "")
                            << layout << degrees << mirrored;
            }
        }
    }

    void prepare_turnsAndMirrors_everyLayoutAndSize()
    {
        QFETCH(PictureLayout, layout);
        QFETCH(int, degrees);
        QFETCH(bool, mirrored);
        EncoderInput input;
        input.setRotation(degrees);
        input.setMirrored(mirrored);
        const std::vector<QSize> sizes { { 64, 48 }, { 63, 48 }, { 64, 47 }, { 33, 35 },
                                         { 2, 2 },   { 1, 1 },   { 1, 7 },   { 130, 66 } };
        for (const QSize &size : sizes) {
            const RawPicture picture = noise(size.width(), size.height());
            const RawPicture expected = turnedPicture(picture, degrees, mirrored);
            for (int padding : { 0, 13 }) {
                const auto frame = ycbcrFrame(picture, layout, 0, padding);
                for (bool interleaved : { false, true }) {
                    const PictureView odd = input.prepare(*frame, PickyEncoder(interleaved, true));
                    QVERIFY(pictureOf(odd) == expected);
                    const PictureView even =
                            input.prepare(*frame, PickyEncoder(interleaved, false));
                    QVERIFY(pictureOf(even) == evenPicture(expected));
                }
            }
        }
    }

    void prepare_copiesNothing_whereTheCodecTakesThePictureAsItIs()
    {
        const RawPicture picture = noise(64, 48);
        EncoderInput input;
        for (PictureLayout layout :
             { PictureLayout::Planar, PictureLayout::NV12, PictureLayout::NV21 }) {
            const auto frame = ycbcrFrame(picture, layout, 0, 5);
            const PictureView view = input.prepare(*frame, PickyEncoder(true, false));
            QCOMPARE(view.layout, layout);
            QCOMPARE(static_cast<const void *>(view.y), static_cast<const void *>(frame->y));
            QCOMPARE(static_cast<const void *>(view.cb), static_cast<const void *>(frame->cb));
            QCOMPARE(static_cast<const void *>(view.cr), static_cast<const void *>(frame->cr));
        }
        const auto frame = ycbcrFrame(picture, PictureLayout::NV12, 0);
        const PictureView view = input.prepare(*frame, PickyEncoder(false, false));
        QCOMPARE(static_cast<const void *>(view.y), static_cast<const void *>(frame->y));
    }

    void prepare_convertsRgb_turnedAndMirrored()
    {
        const RawPicture picture = RawPicture::pattern(161, 121, 77);
        for (int degrees : { 0, 90, 180, 270 }) {
            for (bool mirrored : { false, true }) {
                EncoderInput input;
                input.setRotation(degrees);
                input.setMirrored(mirrored);
                const auto frame = rgbFrame(picture, 0, 12);
                const RawPicture expected = turnedPicture(picture, degrees, mirrored);
                const RawPicture odd = pictureOf(input.prepare(*frame, PickyEncoder(false, true)));
                QCOMPARE(odd.width, expected.width);
                QVERIFY(psnr(odd.y, expected.y) > 40);
                QVERIFY(psnr(odd.cb, expected.cb) > 25); // edges: samples of pixels, averaged
                QVERIFY(psnr(odd.cr, expected.cr) > 25);
                const PictureView even = input.prepare(*frame, PickyEncoder(false, false));
                QCOMPARE(even.width % 2 + even.height % 2, 0);
                QVERIFY(psnr(pictureOf(even).y, evenPicture(expected).y) > 40);
            }
        }
    }

    void check_saysWhatIsWrong_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<QString>("text");
        QTest::newRow("no luma") << 0 << "samples";
        QTest::newRow("no Cb") << 1 << "samples";
        QTest::newRow("no Cr") << 2 << "samples";
        QTest::newRow("no width") << 3 << "size";
        QTest::newRow("no height") << 4 << "size";
        QTest::newRow("short luma lines") << 5 << "lines of 63 bytes";
        QTest::newRow("short chroma lines") << 6 << "chroma lines of 31 bytes";
        QTest::newRow("chroma step 0") << 7 << "chroma step is 0";
        QTest::newRow("chroma step 3") << 8 << "chroma step is 3";
        QTest::newRow("interleaved but apart") << 9 << "in pairs";
        QTest::newRow("interleaved, short lines") << 10 << "chroma lines of 63 bytes";
    }

    void check_saysWhatIsWrong()
    {
        QFETCH(int, fault);
        QFETCH(QString, text);
        const bool pairs = fault >= 9;
        auto frame =
                ycbcrFrame(noise(64, 48), pairs ? PictureLayout::NV12 : PictureLayout::Planar, 0);
        std::string error;
        QVERIFY(EncoderInput::check(*frame, &error));
        switch (fault) {
        case 0:
            frame->y = nullptr;
            break;
        case 1:
            frame->cb = nullptr;
            break;
        case 2:
            frame->cr = nullptr;
            break;
        case 3:
            frame->width = 0;
            break;
        case 4:
            frame->height = 0;
            break;
        case 5:
            frame->yStride = 63;
            break;
        case 6:
            frame->cStride = 31;
            break;
        case 7:
            frame->chromaStep = 0;
            break;
        case 8:
            frame->chromaStep = 3;
            break;
        case 9:
            frame->cr = frame->cb + 4;
            break;
        case 10:
            frame->cStride = 63;
            break;
        }
        QVERIFY(!EncoderInput::check(*frame, &error));
        QVERIFY2(QString::fromStdString(error).contains(text), error.c_str());
    }

    void check_saysWhatIsWrongWithRgb()
    {
        const auto whole = rgbFrame(noise(64, 48), 0);
        std::string error;
        QVERIFY(EncoderInput::check(*whole, &error));
        RGBFrame frame = *whole;
        frame.fourcc = 0x32315559;
        QVERIFY(!EncoderInput::check(frame, &error));
        frame = *whole;
        frame.data = nullptr;
        QVERIFY(!EncoderInput::check(frame, &error));
        frame = *whole;
        frame.stride = 255;
        QVERIFY(!EncoderInput::check(frame, &error));
        frame = *whole;
        frame.height = 0;
        QVERIFY(!EncoderInput::check(frame, &error));
        QVERIFY(!error.empty());
    }
};

QTEST_GUILESS_MAIN(TestEncoderInput)
#include "tst_encoderinput.moc"

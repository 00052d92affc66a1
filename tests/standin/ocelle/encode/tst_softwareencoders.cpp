// SPDX-License-Identifier: BSD-3-Clause
#include "codecrows.h"
#include "encodinglistener.h"
#include "rawpicture.h"
#include "unitdecoder.h"

#include <QDir>
#include <QtTest>

#include <encodersettings.h>
#include <patternreader.h>
#include <vp8encoder.h>

#include <cstdio>
#include <set>
#include <thread>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
using Parameter = VideoEncoderParameter;

constexpr int Width = 320;
constexpr int Height = 240;

std::shared_ptr<YCbCrFrame> patternFrame(std::uint32_t number, std::int64_t timestamp = 0,
                                         PictureLayout layout = PictureLayout::Planar)
{
    return ycbcrFrame(RawPicture::pattern(Width, Height, number), layout, timestamp, 32);
}

std::vector<RawPicture> decoded(CodecType type, const std::vector<EncodingListener::Unit> &units)
{
    UnitDecoder decoder(type);
    std::vector<RawPicture> pictures;
    for (const auto &unit : units) {
        for (RawPicture &picture : decoder.decode(unit.data))
            pictures.push_back(std::move(picture));
    }
    for (RawPicture &picture : decoder.finish())
        pictures.push_back(std::move(picture));
    return pictures;
}

std::vector<int> numbersIn(const std::vector<RawPicture> &pictures)
{
    std::vector<int> numbers;
    for (const RawPicture &picture : pictures) {
        const auto reading =
                readPattern(picture.y.data(), picture.width, picture.width, picture.height);
        numbers.push_back(reading ? int(reading->sequence) : -1);
    }
    return numbers;
}

std::vector<int> upTo(int count)
{
    std::vector<int> numbers(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        numbers[std::size_t(i)] = i;
    return numbers;
}

// How much more resident memory, in KiB, is no leak. AddressSanitizer keeps 256 MiB of freed memory.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long MemoryGrowth = 400 * 1024;
#else
constexpr long MemoryGrowth = 6 * 1024;
#endif

// Resident memory of this process, in KiB.
long residentMemory()
{
    long pages = 0;
    long resident = 0;
    std::FILE *file = std::fopen("/proc/self/statm", "r");
    if (file && std::fscanf(file, "%ld %ld", &pages, &resident) != 2)
        resident = 0;
    if (file)
        std::fclose(file);
    return resident * 4;
}

int threadsOfThisProcess()
{
    return QDir(QStringLiteral("/proc/self/task"))
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
            .size();
}
} // namespace

class TestSoftwareEncoders : public QObject
{
    Q_OBJECT
private slots:
    void encode_losesNoPicture_andKeepsOrderTimestampsAndColours_data()
    {
        addCodecRows();
        QVERIFY(UnitDecoder(CodecType::H264).isValid());
    }

    // Every kind of input in turn, while the encoder runs.
    void encode_losesNoPicture_andKeepsOrderTimestampsAndColours()
    {
        QFETCH(CodecType, type);
        EncodingListener listener;
        const auto encoder = softwareEncoder(type, &listener);
        QVERIFY(encoder->initialize(encoderConfig(type, Width, Height, 3000000)));
        constexpr int pictures = 40;
        std::vector<std::uint64_t> timestamps;
        for (int i = 0; i < pictures; ++i) {
            const std::int64_t timestamp = i % 7 == 3 ? -1 : 1000000 - i * 33333;
            timestamps.push_back(std::uint64_t(timestamp));
            const auto picture = RawPicture::pattern(Width, Height, std::uint32_t(i));
            const bool taken = i % 4 == 3
                                       ? encoder->encodeRGB(rgbFrame(picture, timestamp, 8), false)
                                       : encoder->encode(ycbcrFrame(picture, PictureLayout(i % 4),
                                                                    timestamp, i),
                                                         false);
            QVERIFY(taken);
            QCOMPARE(listener.units.size(), std::size_t(i + 1)); // one in, one out
        }
        QVERIFY(listener.errors.empty());
        for (std::size_t i = 0; i < timestamps.size(); ++i)
            QCOMPARE(listener.units[i].timestamp, timestamps[i]);
        QCOMPARE(listener.keyFrames(), std::vector<int> { 0 });
        const std::vector<RawPicture> pictured = decoded(type, listener.units);
        QCOMPARE(numbersIn(pictured), upTo(pictures));
        for (int i = 0; i < pictures; ++i) {
            const RawPicture &out = pictured[std::size_t(i)];
            const RawPicture in = RawPicture::pattern(Width, Height, std::uint32_t(i));
            QVERIFY2(psnr(out.y, in.y) > 30, qPrintable(QString::number(psnr(out.y, in.y))));
            QVERIFY2(psnr(out.cb, in.cb) > 28, qPrintable(QString::number(psnr(out.cb, in.cb))));
            QVERIFY2(psnr(out.cr, in.cr) > 28, qPrintable(QString::number(psnr(out.cr, in.cr))));
        }
    }

    void encode_turnsAndMirrors_data() { addCodecRows(); }

    void encode_turnsAndMirrors()
    {
        QFETCH(CodecType, type);
        for (int degrees : { 0, 90, 180, 270 }) {
            for (bool mirrored : { false, true }) {
                EncodingListener listener;
                const auto encoder = softwareEncoder(type, &listener);
                QVERIFY(encoder->setParameter(Parameter::RotationParameter,
                                              std::to_string(degrees)));
                QVERIFY(encoder->setParameter(Parameter::MirrorVerticalParameter,
                                              mirrored ? "true" : "false"));
                QVERIFY(encoder->initialize(encoderConfig(type, Width, Height)));
                QVERIFY(encoder->encode(patternFrame(7, 0, PictureLayout::NV12), false));
                QVERIFY(encoder->encodeRGB(rgbFrame(RawPicture::pattern(Width, Height, 8), 0),
                                           false));
                const std::vector<RawPicture> pictures = decoded(type, listener.units);
                QCOMPARE(pictures.size(), std::size_t(2));
                for (std::size_t i = 0; i < 2; ++i) {
                    const RawPicture &picture = pictures[i];
                    QCOMPARE(picture.width, degrees % 180 ? Height : Width);
                    QCOMPARE(picture.height, degrees % 180 ? Width : Height);
                    const auto reading = readPattern(picture.y.data(), picture.width, picture.width,
                                                     picture.height);
                    QVERIFY(reading.has_value());
                    QCOMPARE(reading->sequence, std::uint32_t(7 + i));
                    // Top to bottom is left to right and half a turn.
                    QCOMPARE(reading->mirrored, mirrored);
                    QCOMPARE(reading->rotation, (degrees + (mirrored ? 180 : 0)) % 360);
                }
            }
        }
    }

    void encode_makesAKeyFrame_exactlyWhereAsked_data() { addCodecRows(); }

    void encode_makesAKeyFrame_exactlyWhereAsked()
    {
        QFETCH(CodecType, type);
        EncodingListener listener;
        const auto encoder = softwareEncoder(type, &listener);
        QVERIFY(encoder->initialize(encoderConfig(type, Width, Height)));
        const std::vector<int> asked { 0, 7, 8, 21, 39 };
        for (int i = 0; i < 45; ++i)
            QVERIFY(encoder->encode(patternFrame(std::uint32_t(i)),
                                    i && std::count(asked.begin(), asked.end(), i)));
        QCOMPARE(listener.keyFrames(), asked);
        // Whoever comes in at a key frame has all there is to know.
        for (int key : asked) {
            const std::vector<EncodingListener::Unit> rest(listener.units.begin() + key,
                                                           listener.units.end());
            const std::vector<int> numbers = numbersIn(decoded(type, rest));
            QCOMPARE(int(numbers.size()), 45 - key);
            QCOMPARE(numbers.front(), key);
            QCOMPARE(numbers.back(), 44);
        }
    }

    void encode_takesSizesAsTheyCome_data() { addCodecRows(); }

    void encode_takesSizesAsTheyCome()
    {
        QFETCH(CodecType, type);
        const bool exact = type == CodecType::VP8 || type == CodecType::VP9;
        EncodingListener listener;
        const auto encoder = softwareEncoder(type, &listener);
        QVERIFY(encoder->initialize(encoderConfig(type, Width, Height)));
        const std::vector<QSize> sizes { { 320, 240 }, { 321, 241 }, { 160, 121 }, { 201, 320 },
                                         { 64, 48 },   { 320, 240 }, { 1280, 720 } };
        std::uint32_t number = 0;
        for (const QSize &size : sizes) {
            for (int repeat = 0; repeat < 2; ++repeat, ++number)
                QVERIFY(encoder->encode(
                        ycbcrFrame(RawPicture::pattern(size.width(), size.height(), number),
                                   PictureLayout::NV21, number),
                        false));
        }
        QVERIFY(listener.errors.empty());
        QCOMPARE(listener.units.size(), 2 * sizes.size());
        QCOMPARE(listener.keyFrames(), (std::vector<int> { 0, 2, 4, 6, 8, 10, 12 }));
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const std::vector<RawPicture> pictures =
                    decoded(type, { listener.units[2 * i], listener.units[2 * i + 1] });
            QCOMPARE(pictures.size(), std::size_t(2));
            const int width = sizes[i].width();
            const int height = sizes[i].height();
            QCOMPARE(pictures[1].width, exact ? width : (width + 1) / 2 * 2);
            QCOMPARE(pictures[1].height, exact ? height : (height + 1) / 2 * 2);
            const RawPicture in = RawPicture::pattern(width, height, std::uint32_t(2 * i + 1));
            QVERIFY(psnr(pictures[1].cb, in.cb) > 25);
            if (pictures[1].width == width && pictures[1].height == height)
                QVERIFY(psnr(pictures[1].y, in.y) > 25);
        }
    }

    void encode_takesTinyPictures_orSaysWhyNot_data() { addCodecRows(); }

    void encode_takesTinyPictures_orSaysWhyNot()
    {
        QFETCH(CodecType, type);
        const std::vector<QSize> sizes { { 1, 1 },   { 2, 2 },   { 3, 17 },  { 16, 16 },
                                         { 31, 31 }, { 32, 32 }, { 33, 16 }, { 1, 300 } };
        for (const QSize &size : sizes) {
            EncodingListener listener;
            const auto encoder = softwareEncoder(type, &listener);
            if (!encoder->initialize(encoderConfig(type, size.width(), size.height()))) {
                QCOMPARE(listener.errors.size(), std::size_t(1));
                QVERIFY(size.width() < 32 || size.height() < 32);
                QVERIFY(type == CodecType::H265);
                continue;
            }
            for (int i = 0; i < 3; ++i)
                QVERIFY(encoder->encode(
                        ycbcrFrame(RawPicture(size.width(), size.height()), PictureLayout::NV12, i),
                        i == 1));
            QCOMPARE(decoded(type, listener.units).size(), std::size_t(3));
        }
    }

    void encode_survivesWrongPictures_data() { addCodecRows(); }

    void encode_survivesWrongPictures()
    {
        QFETCH(CodecType, type);
        EncodingListener listener;
        const auto encoder = softwareEncoder(type, &listener);
        QVERIFY(!encoder->initialize(encoderConfig(type, 0, 0)));
        QVERIFY(!encoder->initialize(encoderConfig(type, Width, -Height)));
        QVERIFY(!encoder->initialize(encoderConfig(type, Width, Height, -5)));
        QVERIFY(!encoder->initialize(encoderConfig(type, Width, Height, 0x7fffffff)));
        QVERIFY(!encoder->initialize(encoderConfig(CodecType::Unknown, Width, Height)));
        QVERIFY(encoder->initialize(encoderConfig(type, Width, Height)));
        std::size_t errors = listener.errors.size();
        QCOMPARE(errors, std::size_t(5));
        for (int fault = 0; fault < 6; ++fault) {
            const auto frame = patternFrame(99);
            switch (fault) {
            case 0:
                frame->y = nullptr;
                break;
            case 1:
                frame->cr = nullptr;
                break;
            case 2:
                frame->yStride = Width - 1;
                break;
            case 3:
                frame->cStride = 3;
                break;
            case 4:
                frame->chromaStep = 7;
                break;
            case 5:
                frame->width = 0;
                break;
            }
            QVERIFY(!encoder->encode(frame, false));
            QCOMPARE(listener.errors.size(), ++errors);
            QVERIFY(encoder->encode(patternFrame(std::uint32_t(fault)), false));
        }
        QCOMPARE(numbersIn(decoded(type, listener.units)), upTo(6));
        QCOMPARE(listener.keyFrames(), std::vector<int> { 0 });
    }

    void encode_takesEveryBitrateInRange_data() { addCodecRows(); }

    void encode_takesEveryBitrateInRange()
    {
        QFETCH(CodecType, type);
        for (const char *mode : { "constant", "variable" }) {
            for (int bitrate : { 1000, 1999, 64000, 50000000, 1000000000 }) {
                EncodingListener listener;
                const auto encoder = softwareEncoder(type, &listener);
                QVERIFY(encoder->setParameter(Parameter::BitrateModeParameter, mode));
                QVERIFY(encoder->initialize(encoderConfig(type, Width, Height, bitrate)));
                for (std::uint32_t i = 0; i < 3; ++i)
                    QVERIFY(encoder->encode(patternFrame(i), false));
                QVERIFY(encoder->setBitrate(bitrate > 1000000 ? 1000 : 1000000000));
                for (std::uint32_t i = 3; i < 6; ++i)
                    QVERIFY(encoder->encode(patternFrame(i), i == 4));
                QVERIFY(listener.errors.empty());
                QCOMPARE(decoded(type, listener.units).size(), std::size_t(6));
            }
        }
    }

    void startAndStop_leavesNothingBehind_data() { addCodecRows(); }

    void startAndStop_leavesNothingBehind()
    {
        QFETCH(CodecType, type);
        constexpr int cycles = 200;
        const auto frame = ycbcrFrame(RawPicture::pattern(96, 64, 1), PictureLayout::NV12, 5);
        long settled = 0;
        std::size_t units = 0;
        for (int cycle = 0; cycle < cycles; ++cycle) {
            EncodingListener listener;
            const auto encoder = softwareEncoder(type, &listener);
            if (cycle % 5 != 4) // one of them is never configured
                QVERIFY(encoder->initialize(encoderConfig(type, 96, 64)));
            for (int picture = 0; picture < cycle % 4; ++picture)
                encoder->encode(frame, false);
            units += listener.units.size();
            if (cycle == cycles / 4)
                settled = residentMemory();
        }
        QCOMPARE(units, std::size_t(240));
        QVERIFY2(
                residentMemory() - settled < MemoryGrowth,
                qPrintable(QStringLiteral("from %1 to %2 KiB").arg(settled).arg(residentMemory())));
    }

    void aLongRun_needsNoMoreMemory_data() { addCodecRows(); }

    void aLongRun_needsNoMoreMemory()
    {
        QFETCH(CodecType, type);
        constexpr int pictures = 3000;
        std::size_t units = 0;
        EncodingListener listener;
        const auto encoder = softwareEncoder(type, &listener);
        listener.onCall = [&listener, &units] {
            units += listener.units.size();
            listener.units.clear();
        };
        QVERIFY(encoder->initialize(encoderConfig(type, 96, 64, 100000)));
        std::vector<std::shared_ptr<YCbCrFrame>> frames;
        for (std::uint32_t i = 0; i < 30; ++i)
            frames.push_back(ycbcrFrame(RawPicture::pattern(96, 64, i), PictureLayout::NV21, i));
        long settled = 0;
        for (int i = 0; i < pictures; ++i) {
            if (i % 200 == 199)
                QVERIFY(encoder->setBitrate(50000 + i * 100));
            QVERIFY(encoder->encode(frames[std::size_t(i % 30)], i % 500 == 499));
            if (i == pictures / 4)
                settled = residentMemory();
        }
        QCOMPARE(units, std::size_t(pictures));
        QVERIFY2(
                residentMemory() - settled < MemoryGrowth,
                qPrintable(QStringLiteral("from %1 to %2 KiB").arg(settled).arg(residentMemory())));
    }

    // Those of its library spin, which is slow wherever the processors have other work.
    void vp8_takesHalfOfTheProcessors_howeverLargeThePicture()
    {
        QCOMPARE(Vp8Encoder::threads(4, 0), 1); // where nobody knows
        QCOMPARE(Vp8Encoder::threads(4, 2), 1);
        QCOMPARE(Vp8Encoder::threads(4, 5), 2);
        QCOMPARE(Vp8Encoder::threads(4, 64), 4);
        QCOMPARE(Vp8Encoder::threads(1, 64), 1);

        EncodingListener listener;
        const auto encoder = softwareEncoder(CodecType::VP8, &listener);
        const int before = threadsOfThisProcess();
        QVERIFY(before > 0);
        QVERIFY(encoder->initialize(encoderConfig(CodecType::VP8, 1920, 1080)));
        QVERIFY(encoder->encode(
                ycbcrFrame(RawPicture::pattern(1920, 1080, 1), PictureLayout::Planar, 0), false));
        QCOMPARE(listener.units.size(), std::size_t(1));
        const int taken = Vp8Encoder::threads(encoderThreads(1920, 1080),
                                              int(std::thread::hardware_concurrency()));
        QCOMPARE(threadsOfThisProcess(), before + taken - 1);
    }
};

QTEST_GUILESS_MAIN(TestSoftwareEncoders)
#include "tst_softwareencoders.moc"

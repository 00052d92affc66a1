// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"
#include "decodingchecks.h"
#include "decodinglistener.h"
#include "encodedstream.h"
#include "parameterbits.h"

#include <QtTest>

#include <algorithm>
#include <random>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
constexpr int KeyDistance = 10; // pictures

std::vector<MediaUnit> stream(CodecType type, int pictures = 30)
{
    return encodedStream({ type, 320, 240, pictures, KeyDistance });
}

Bytes noise(std::mt19937 *random, std::size_t size)
{
    Bytes data(size);
    for (std::uint8_t &byte : data)
        byte = std::uint8_t((*random)());
    return data;
}

// One of the kinds of damage.
Bytes damaged(std::mt19937 *random, Bytes data)
{
    const auto any = [random](std::size_t below) { return std::size_t((*random)()) % below; };
    switch (any(5)) {
    case 0: // flipped bits
        for (std::size_t i = any(20) + 1; i > 0; --i)
            data[any(data.size())] ^= std::uint8_t(1 << any(8));
        break;
    case 1: // cut off
        data.resize(any(data.size()) + 1);
        break;
    case 2: // the start is missing
        data.erase(data.begin(), data.begin() + std::ptrdiff_t(any(data.size())));
        break;
    case 3: // garbage in the middle
        for (std::size_t i = any(data.size()), end = i + any(40); i < end && i < data.size(); ++i)
            data[i] = std::uint8_t((*random)());
        break;
    default:
        data = noise(random, any(500) + 1);
        break;
    }
    return data;
}

// Feeds all units, one of them changed.
DecodingListener decodedWith(CodecType type, std::vector<MediaUnit> units, std::size_t index,
                             const Bytes &data)
{
    units[index].data = data;
    return decoded({ type }, units);
}

// The pictures from the third key frame on are as they should be.
bool hasRecovered(const DecodingListener &listener, const std::vector<RawPicture> &whole)
{
    constexpr std::size_t last = KeyDistance;
    if (listener.visible.size() < last)
        return false;
    return std::equal(listener.visible.end() - std::ptrdiff_t(last), listener.visible.end(),
                      whole.end() - std::ptrdiff_t(last),
                      [](const RawPicture &a, const RawPicture &b) { return isEqual(a, b); });
}
} // namespace

class TestDamagedStreams : public QObject
{
    Q_OBJECT
private slots:
    void beforeTheFirstKeyFrame_nothingIsShown_data() { addDecoderRows(); }
    void beforeTheFirstKeyFrame_nothingIsShown()
    {
        QFETCH(CodecType, type);
        auto units = stream(type);
        units.erase(units.begin());
        for (const bool hasDelay : { false, true }) {
            const DecodingListener listener = decoded({ type, false, hasDelay }, units);
            QCOMPARE(int(listener.errors.size()), 1);
            QVERIFY2(listener.errors[0].find(": waiting for a key frame") != std::string::npos,
                     listener.firstError());
            QCOMPARE(listener.calls.front(), std::string("error"));
            QCOMPARE(numbers(listener.visible), range(10, 30));
        }
    }

    void aDamagedFirstKeyFrame_isNotShown_data() { addDecoderRows(); }
    void aDamagedFirstKeyFrame_isNotShown()
    {
        QFETCH(CodecType, type);
        const auto units = stream(type);
        Bytes part = units[0].data;
        part.resize(type == CodecType::H264 ? part.size() / 2 : 20); // what others notice
        for (const Bytes &data : { part, Bytes(units[0].data.size(), 0), Bytes(3, 0x11) }) {
            const DecodingListener listener = decodedWith(type, units, 0, data);
            QCOMPARE(int(listener.errors.size()), 1);
            QCOMPARE(numbers(listener.visible), range(10, 30));
        }
    }

    void aCutOffFrame_isToldOfOnce_untilAKeyFrame_data() { addDecoderRows(); }
    void aCutOffFrame_isToldOfOnce_untilAKeyFrame()
    {
        QFETCH(CodecType, type);
        auto units = stream(type);
        for (const std::size_t index : { 2, 4, 5, 12 })
            units[index].data.resize(units[index].data.size() / 3);
        const DecodingListener listener = decoded({ type }, units);
        for (const std::string &error : listener.errors)
            QVERIFY2(error.find(": ") != std::string::npos, error.c_str());
        QVERIFY2(listener.errors.size() <= 2, listener.firstError());
        if (type == CodecType::H264) { // the other codecs fill in what is missing and say nothing
            const std::string text = "H.264: parts of a picture are damaged";
            QCOMPARE(listener.errors, std::vector<std::string>(2, text));
        }
        const auto shown = numbers(listener.visible);
        QCOMPARE(std::vector<int>(shown.end() - 10, shown.end()), range(20, 30));
    }

    void aFrameThatCannotBeDecoded_isToldOfOnce_untilAKeyFrame_data() { addDecoderRows(); }
    void aFrameThatCannotBeDecoded_isToldOfOnce_untilAKeyFrame()
    {
        QFETCH(CodecType, type);
        auto units = stream(type);
        for (const std::size_t index : { 2, 4, 5, 12 })
            units[index].data.resize(8);
        const DecodingListener listener = decoded({ type }, units);
        QCOMPARE(int(listener.errors.size()), 2);
        for (const std::string &error : listener.errors)
            QVERIFY2(error.find(": damaged data: ") != std::string::npos, error.c_str());
        const auto shown = numbers(listener.visible);
        QCOMPARE(std::vector<int>(shown.end() - 10, shown.end()), range(20, 30));
    }

    void garbageBetween_isToldOf_andHarmsNothing_data() { addDecoderRows(); }
    void garbageBetween_isToldOf_andHarmsNothing()
    {
        QFETCH(CodecType, type);
        auto units = stream(type);
        const Bytes garbage { 0x7f, 0x35, 0x13, 0xff, 0xfe };
        units.insert(units.begin() + 15, 3, { garbage, 0, false });
        const DecodingListener listener = decoded({ type }, units);
        QCOMPARE(int(listener.errors.size()), 1);
        const auto shown = numbers(listener.visible);
        QCOMPARE(std::vector<int>(shown.end() - 10, shown.end()), range(20, 30));
    }

    void damageBehindAKeyFrameStillInside_isOneIncident_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<int>("bFrames");
        QTest::addColumn<bool>("hasDelay");
        QTest::newRow("H.264 throughput") << CodecType::H264 << 0 << true;
        QTest::newRow("H.264 reordered") << CodecType::H264 << 3 << false;
        QTest::newRow("H.265 throughput") << CodecType::H265 << 0 << true;
        QTest::newRow("H.265 reordered") << CodecType::H265 << 3 << false;
        QTest::newRow("VP8 throughput") << CodecType::VP8 << 0 << true;
        QTest::newRow("VP9 throughput") << CodecType::VP9 << 0 << true;
    }
    void damageBehindAKeyFrameStillInside_isOneIncident()
    {
        QFETCH(CodecType, type);
        QFETCH(int, bFrames);
        QFETCH(bool, hasDelay);
        const auto units = encodedStream({ type, 320, 240, 30, KeyDistance, bFrames });
        const Bytes garbage { 0x7f, 0x35 }; // told of before it gets to the codec
        DecodingListener listener;
        const auto decoder = softwareDecoder({ type, false, hasDelay }, &listener);
        DecodeFeeder feeder(decoder);
        const auto feed = [&](int from, int to) {
            for (int i = from; i < to; ++i)
                QVERIFY(feeder.decode(units[std::size_t(i)].data, std::uint64_t(i)));
        };
        const auto isOut = [&listener](std::uint64_t number) {
            const auto &out = listener.timestamps;
            return std::find(out.begin(), out.end(), number) != out.end();
        };
        feed(0, KeyDistance + 1);
        QVERIFY(!isOut(KeyDistance));
        feeder.decode(garbage);
        QCOMPARE(int(listener.errors.size()), 1);
        feed(KeyDistance + 1, 2 * KeyDistance - 1);
        QVERIFY(isOut(KeyDistance)); // whole, but from before the damage
        feeder.decode(garbage);
        QCOMPARE(int(listener.errors.size()), 1);
        feed(2 * KeyDistance - 1, 3 * KeyDistance - 1);
        QVERIFY(isOut(2 * KeyDistance));
        feeder.decode(garbage);
        QCOMPARE(int(listener.errors.size()), 2);
    }

    void aVp9FrameOfAnImpossibleSize_isRecoveredFrom()
    {
        BitWriter header;
        header.bits(2, 2);  // marker
        header.bits(3, 0);  // profile, is coded
        header.bits(3, 6);  // refers to others, is shown
        header.bits(2, 0);  // keeps probabilities
        header.bits(8, 0);  // is not referred to
        header.bits(12, 0); // refers to the first picture
        header.bits(3, 0);  // has not its size
        header.bits(16, 53035);
        header.bits(16, 56094);
        header.finish();
        auto units = stream(CodecType::VP9);
        units[5].data = header.bytes();
        for (const bool hasDelay : { false, true }) {
            const DecodingListener listener = decoded({ CodecType::VP9, false, hasDelay }, units);
            QCOMPARE(int(listener.errors.size()), 1);
            std::vector<int> expected = range(0, 5);
            for (const int number : range(KeyDistance, 3 * KeyDistance))
                expected.push_back(number);
            QCOMPARE(numbers(listener.visible), expected);
        }
    }

    void anotherCodec_isToldOf_andNothingShown_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<CodecType>("other");
        const std::vector<CodecType> types { CodecType::H264, CodecType::H265, CodecType::VP8,
                                             CodecType::VP9 };
        for (const CodecType type : types) {
            for (const CodecType other : types) {
                if (type != other)
                    QTest::addRow("%d as %d", int(other), int(type)) << type << other;
            }
        }
    }
    void anotherCodec_isToldOf_andNothingShown()
    {
        QFETCH(CodecType, type);
        QFETCH(CodecType, other);
        const DecodingListener listener = decoded({ type }, stream(other));
        QCOMPARE(listener.pictures, 0);
        QCOMPARE(int(listener.errors.size()), 1);
    }

    void lostH264Frames_areToldOf()
    {
        auto units = stream(CodecType::H264);
        units.erase(units.begin() + 14, units.begin() + 16);
        const DecodingListener listener = decoded({ CodecType::H264 }, units);
        QCOMPARE(int(listener.errors.size()), 1);
        QCOMPARE(listener.errors[0],
                 std::string("H.264: pictures are missing: frame number 6 comes after 3"));
        QCOMPARE(listener.visible.size(), std::size_t(28));
        const auto shown = numbers(listener.visible);
        QCOMPARE(std::vector<int>(shown.end() - 10, shown.end()), range(20, 30));
    }

    void missingParameters_areToldOf()
    {
        for (const CodecType type : { CodecType::H264, CodecType::H265 }) {
            const auto units =
                    filtered(stream(type), type,
                             type == CodecType::H264 ? "filter_units=remove_types=7|8"
                                                     : "filter_units=remove_types=32-34");
            QCOMPARE(units.size(), std::size_t(30));
            const DecodingListener listener = decoded({ type }, units);
            QCOMPARE(listener.pictures, 0);
            QCOMPARE(int(listener.errors.size()), 1);
            QVERIFY2(listener.errors[0].find("parameter sets") != std::string::npos,
                     listener.firstError());
        }
    }

    void anyDamage_isSurvived_andRecoveredFrom_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<bool>("hasDelay");
        for (const bool hasDelay : { false, true }) {
            QTest::addRow("H.264 %d", hasDelay) << CodecType::H264 << hasDelay;
            QTest::addRow("H.265 %d", hasDelay) << CodecType::H265 << hasDelay;
            QTest::addRow("VP8 %d", hasDelay) << CodecType::VP8 << hasDelay;
            QTest::addRow("VP9 %d", hasDelay) << CodecType::VP9 << hasDelay;
        }
    }
    void anyDamage_isSurvived_andRecoveredFrom()
    {
        QFETCH(CodecType, type);
        QFETCH(bool, hasDelay);
        constexpr unsigned rounds = 60;
        const auto units = stream(type);
        const std::vector<RawPicture> whole = decoded({ type }, units).visible;
        QCOMPARE(whole.size(), std::size_t(30));
        for (unsigned round = 0; round < rounds; ++round) {
            std::mt19937 random(round);
            auto broken = units;
            for (std::size_t i = 0; i < 2 * KeyDistance; ++i) {
                if (random() % 4 == 0)
                    broken[i].data = damaged(&random, broken[i].data);
            }
            const DecodingListener listener = decoded({ type, round % 2 == 1, hasDelay }, broken);
            QVERIFY2(hasRecovered(listener, whole), qPrintable(QString::number(round)));
            QVERIFY2(listener.errors.size() <= 3, listener.firstError());
            for (const std::string &error : listener.errors)
                QVERIFY2(error.find("given back") == std::string::npos, error.c_str());
        }
    }
};

QTEST_GUILESS_MAIN(TestDamagedStreams)
#include "tst_damagedstreams.moc"

#include "decodefeeder.h"
#include "decodingchecks.h"
#include "decodinglistener.h"
#include "encodedstream.h"

#include <QtTest>

#include <limits>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

class TestLocalVideoDecoder : public QObject
{
    Q_OBJECT
private slots:
    void pictures_comeOutAtOnce_withTheirTimestamps_data() { addDecoderRows(); }
    void pictures_comeOutAtOnce_withTheirTimestamps()
    {
        QFETCH(CodecType, type);
        const std::vector<std::uint64_t> odd { 0,
                                               1,
                                               std::numeric_limits<std::uint64_t>::max(),
                                               std::uint64_t(1) << 63,
                                               (std::uint64_t(1) << 63) - 1,
                                               0x123456789abcdef0,
                                               5,
                                               5,
                                               4 };
        StreamWish wish { type };
        if (type == CodecType::H265)
            wish.options = { { "tune", "zerolatency" } };
        const auto units = encodedStream(wish);
        QCOMPARE(units.size(), std::size_t(20));
        for (const bool usesFrames : { false, true }) {
            DecodingListener listener;
            const auto decoder = softwareDecoder({ type, usesFrames }, &listener);
            QVERIFY(decoder);
            DecodeFeeder feeder(decoder);
            std::vector<std::uint64_t> timestamps;
            for (std::size_t i = 0; i < units.size(); ++i) {
                timestamps.push_back(odd[i % odd.size()]);
                QVERIFY(feeder.decode(units[i].data, timestamps.back()));
                QVERIFY(feeder.isAllReleasedOnce());
                QCOMPARE(listener.pictures, int(i) + 1);
            }
            QVERIFY2(listener.errors.empty(), listener.firstError());
            QCOMPARE(numbers(listener.visible), range(0, 20));
            QCOMPARE(listener.timestamps, timestamps);
            QCOMPARE(listener.calls[1], std::string(usesFrames ? "frame" : "buffer"));
            for (int i = 0; i < 20; ++i)
                QVERIFY(psnr(listener.visible[std::size_t(i)],
                             RawPicture::pattern(320, 240, std::uint32_t(i))) > 25);
        }
    }

    void reorderedPictures_comeOutInOrder_withTheirTimestamps_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<bool>("hasDelay");
        for (const bool hasDelay : { false, true }) {
            QTest::addRow("H.264 %d", hasDelay) << CodecType::H264 << hasDelay;
            QTest::addRow("H.265 %d", hasDelay) << CodecType::H265 << hasDelay;
        }
    }
    void reorderedPictures_comeOutInOrder_withTheirTimestamps()
    {
        QFETCH(CodecType, type);
        QFETCH(bool, hasDelay);
        const auto units = encodedStream({ type, 320, 240, 60, 20, 4 });
        QVERIFY(!std::is_sorted(units.begin(), units.end(),
                                [](const auto &a, const auto &b) { return a.number < b.number; }));
        const DecodingListener listener = decoded({ type, false, hasDelay }, units);
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QCOMPARE(numbers(listener.visible), range(0, 60));
        for (std::size_t i = 0; i < 60; ++i)
            QCOMPARE(listener.timestamps[i], std::uint64_t(i));
    }

    void throughput_andBothWaysOut_changeNoPicture_data() { addDecoderRows(); }
    void throughput_andBothWaysOut_changeNoPicture()
    {
        QFETCH(CodecType, type);
        const auto units = encodedStream({ type, 640, 360, 40, 15, 2 });
        const DecodingListener plain = decoded({ type }, units);
        QCOMPARE(plain.pictures, 40);
        QCOMPARE(numbers(plain.visible), range(0, 40));
        for (const DecoderWish &wish :
             { DecoderWish { type, true, false }, DecoderWish { type, false, true },
               DecoderWish { type, true, true }, DecoderWish { type, false, false, 4096, 2160 } }) {
            const DecodingListener other = decoded(wish, units);
            QVERIFY2(other.errors.empty(), other.firstError());
            QVERIFY(isEqual(other.visible, plain.visible));
            QCOMPARE(other.timestamps, plain.timestamps);
            QCOMPARE(other.viewports, plain.viewports);
        }
    }
};

QTEST_GUILESS_MAIN(TestLocalVideoDecoder)
#include "tst_localvideodecoder.moc"

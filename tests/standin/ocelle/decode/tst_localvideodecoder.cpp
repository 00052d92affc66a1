// SPDX-License-Identifier: BSD-3-Clause
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

    void parametersApart_areTaken_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<bool>("hasDelay");
        for (const bool hasDelay : { false, true }) {
            QTest::addRow("H.264 %d", hasDelay) << CodecType::H264 << hasDelay;
            QTest::addRow("H.265 %d", hasDelay) << CodecType::H265 << hasDelay;
        }
    }
    void parametersApart_areTaken()
    {
        QFETCH(CodecType, type);
        QFETCH(bool, hasDelay);
        const std::string kinds = type == CodecType::H264 ? "7|8" : "32-34";
        const auto whole = encodedStream({ type, 320, 240, 20, 10 });
        const auto pictures = filtered(whole, type, "filter_units=remove_types=" + kinds);
        const auto parameters =
                filtered({ whole[0] }, type, "filter_units=pass_types=" + kinds).front();
        auto units = pictures; // without any in the middle
        units.insert(units.begin(), parameters);
        const DecodingListener once = decoded({ type, false, hasDelay }, units);
        QVERIFY2(once.errors.empty(), once.firstError());
        QCOMPARE(numbers(once.visible), range(0, 20));
        units.insert(units.begin() + 11, parameters);
        units.insert(units.begin() + 5, parameters);
        const DecodingListener often = decoded({ type, false, hasDelay }, units);
        QVERIFY2(often.errors.empty(), often.firstError());
        QCOMPARE(numbers(often.visible), range(0, 20));
        units = pictures; // with a picture that is dropped
        units.erase(units.begin());
        units[0].data.insert(units[0].data.begin(), parameters.data.begin(), parameters.data.end());
        const DecodingListener late = decoded({ type, false, hasDelay }, units);
        QCOMPARE(int(late.errors.size()), 1);
        QCOMPARE(numbers(late.visible), range(10, 20));
    }

    void streamsOfManyKinds_comeOutWhole_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        const auto row = [](CodecType type, const char *name, const char *value) {
            QTest::addRow("%d %s %s", int(type), name, value) << type << name << value;
        };
        for (const char *value :
             { "open-gop=1:bframes=3", "intra-refresh=1:bframes=0", "slices=4", "interlaced=1",
               "b-pyramid=normal:bframes=5:ref=5", "ref=8:weightp=2", "cabac=0",
               "nal-hrd=vbr:vbv-maxrate=2000:"
               "vbv-bufsize=1000:aud=1:pic-struct=1",
               "constrained-intra=1", "cqm=jvt", "keyint=1",
               "filler=1:nal-hrd=cbr:vbv-maxrate=2000:"
               "vbv-bufsize=1000" })
            row(CodecType::H264, "x264-params", value);
        row(CodecType::H264, "profile", "baseline");
        row(CodecType::H264, "profile", "main");
        for (const char *value : { "open-gop=1:bframes=3", "open-gop=1:b-pyramid=1:bframes=8:ref=5",
                                   "pools=2:wpp=1", "temporal-layers=3", "intra-refresh=1",
                                   "hash=1:aud=1:repeat-headers=1", "lossless=1", "keyint=1" })
            row(CodecType::H265, "x265-params", value);
        row(CodecType::VP8, "auto-alt-ref", "1");
        row(CodecType::VP8, "slices", "4");
        row(CodecType::VP9, "auto-alt-ref", "1");
        row(CodecType::VP9, "tile-columns", "2");
        row(CodecType::VP9, "lossless", "1");
        row(CodecType::VP9, "error-resilient", "1");
    }
    void streamsOfManyKinds_comeOutWhole()
    {
        QFETCH(CodecType, type);
        QFETCH(QString, name);
        QFETCH(QString, value);
        StreamWish wish { type, 512, 256, 32, 0 };
        QByteArray text = value.toLatin1();
        if (type == CodecType::H265)
            text.prepend("log-level=none:pools=none:frame-threads=1:keyint=15:");
        else if (type == CodecType::H264 && name == "x264-params")
            text.prepend("keyint=15:");
        wish.options = { { name.toStdString(), text.toStdString() } };
        if (name == "auto-alt-ref")
            wish.options.insert(wish.options.end(),
                                { { "lag-in-frames", "10" }, { "deadline", "good" } });
        const auto units = encodedStream(wish);
        QVERIFY(units.size() >= 32);
        for (const bool hasDelay : { false, true }) {
            const DecodingListener listener =
                    decoded({ type, false, hasDelay, hasDelay ? 0 : 1920, 1080 }, units);
            QVERIFY2(listener.errors.empty(), listener.firstError());
            QCOMPARE(numbers(listener.visible), range(0, 32));
        }
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

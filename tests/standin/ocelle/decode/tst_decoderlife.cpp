// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"
#include "decodingchecks.h"
#include "decodinglistener.h"
#include "encodedstream.h"

#include <QtTest>

#include <graphicbuffer.h>
#include <softwaredecoderfactory.h>
#include <stderrcapture.h>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
std::vector<std::string> texts(std::initializer_list<const char *> list)
{
    return { list.begin(), list.end() };
}
} // namespace

/*! What ends and begins: drain, flush, stop, and calls that come at the wrong time. */
class TestDecoderLife : public QObject
{
    Q_OBJECT
private slots:
    void drain_putsOutWhatIsInside_flushDoesNot_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<int>("bFrames");
        QTest::addColumn<bool>("hasDelay");
        QTest::newRow("H.264 reordered") << CodecType::H264 << 3 << false;
        QTest::newRow("H.265 reordered") << CodecType::H265 << 3 << false;
        QTest::newRow("H.264 throughput") << CodecType::H264 << 0 << true;
        QTest::newRow("H.265 throughput") << CodecType::H265 << 0 << true;
        QTest::newRow("VP8 throughput") << CodecType::VP8 << 0 << true;
        QTest::newRow("VP9 throughput") << CodecType::VP9 << 0 << true;
    }
    void drain_putsOutWhatIsInside_flushDoesNot()
    {
        QFETCH(CodecType, type);
        QFETCH(int, bFrames);
        QFETCH(bool, hasDelay);
        const auto units = encodedStream({ type, 320, 240, 8, 100, bFrames });
        DecodingListener listener;
        const auto decoder = softwareDecoder({ type, false, hasDelay }, &listener);
        DecodeFeeder feeder(decoder);
        const auto feed = [&] {
            for (const MediaUnit &unit : units)
                QVERIFY(feeder.decode(unit.data, std::uint64_t(unit.number)));
        };
        feed();
        const int before = listener.pictures;
        QVERIFY(before < 8);
        decoder->drain();
        QCOMPARE(listener.pictures, 8);
        decoder->drain();
        QCOMPARE(listener.pictures, 8);
        feed();
        const int after = listener.pictures;
        decoder->flush();
        QCOMPARE(listener.pictures, after);
        decoder->drain();
        decoder->flush();
        QCOMPARE(listener.pictures, after);
        feed();
        decoder->drain();
        QCOMPARE(listener.pictures, after + 8);
        QVERIFY2(listener.errors.empty(), listener.firstError());
        listener.visible.erase(listener.visible.begin() + 8, listener.visible.begin() + after);
        std::vector<int> expected = range(0, 8);
        for (const int number : range(0, 8))
            expected.push_back(number);
        QCOMPARE(numbers(listener.visible), expected);
        QVERIFY(feeder.isAllReleasedOnce());
    }

    void afterDrainAndFlush_aKeyFrameIsNeeded_data() { addDecoderRows(); }
    void afterDrainAndFlush_aKeyFrameIsNeeded()
    {
        QFETCH(CodecType, type);
        const auto units = encodedStream({ type, 320, 240, 4, 100 });
        for (const bool drains : { false, true }) {
            DecodingListener listener;
            const auto decoder = softwareDecoder({ type }, &listener);
            DecodeFeeder feeder(decoder);
            QVERIFY(feeder.decode(units[0].data));
            if (drains)
                decoder->drain();
            else
                decoder->flush();
            const int before = listener.pictures;
            QVERIFY(feeder.decode(units[1].data));
            QVERIFY(feeder.decode(units[2].data));
            QCOMPARE(listener.pictures, before);
            QCOMPARE(int(listener.errors.size()), 1);
            QVERIFY(listener.errors[0].find("waiting for a key frame") != std::string::npos);
        }
    }

    void afterStop_framesAreRefused_andGivenBack_data() { addDecoderRows(); }
    void afterStop_framesAreRefused_andGivenBack()
    {
        QFETCH(CodecType, type);
        const auto units = encodedStream({ type, 320, 240, 2 });
        DecodingListener listener;
        const auto decoder = softwareDecoder({ type }, &listener);
        DecodeFeeder feeder(decoder);
        QVERIFY(feeder.decode(units[0].data));
        decoder->stop();
        const int before = listener.pictures;
        QVERIFY(!feeder.decode(units[1].data));
        decoder->flush();
        decoder->drain();
        decoder->stop();
        QVERIFY(!decoder->initialize(decoderConfig(type)));
        QCOMPARE(listener.pictures, before);
        QVERIFY(feeder.isAllReleasedOnce());
        QVERIFY(listener.errors[0].find("once it is stopped") != std::string::npos);
    }

    void wrongCalls_areRefused_withAReason()
    {
        StderrCapture quiet;
        DecodingListener listener;
        const auto decoder = softwareDecoder({ CodecType::VP8 }, &listener);
        DecodeFeeder feeder(decoder);
        QVERIFY(!feeder.decode({}));
        QVERIFY(feeder.isAllReleasedOnce());
        QVERIFY(!decoder->decode(nullptr, 5, 0, FrameType::Key, nullptr, nullptr));
        QVERIFY(!decoder->initialize(decoderConfig(CodecType::VP9)));
        QVERIFY(!decoder->initialize(decoderConfig(CodecType::VP8, 20000, 16)));
        QCOMPARE(listener.errors,
                 texts({ "VP8: there is no frame", "VP8: there is no frame",
                         "VP8: cannot do codec 2", "VP8: pictures of 20000x16 are too large" }));
        QVERIFY(decoder->initialize(decoderConfig(CodecType::VP8, -1, -1)));
        int releases = 0;
        const unsigned char byte = 0;
        QVERIFY(!decoder->decode(
                &byte, std::uint64_t(1) << 40, 0, FrameType::Key,
                [](void *count) { ++*static_cast<int *>(count); }, &releases));
        QCOMPARE(releases, 1);
        QVERIFY(listener.errors.back().find("is too large") != std::string::npos);
    }

    void beforeInitialize_framesAreRefused()
    {
        DecodingListener listener;
        std::string error;
        const auto decoder = SoftwareDecoderFactory::all({}).front()->create(&error);
        decoder->lockAndSetListener(&listener);
        DecodeFeeder feeder(decoder);
        QVERIFY(!feeder.decode({ 1, 2, 3 }));
        decoder->flush();
        decoder->drain();
        decoder->stop();
        QVERIFY(feeder.isAllReleasedOnce());
        QCOMPARE(listener.errors, texts({ "H.264: takes no frame before it is configured" }));
    }

    void endOfStream_isReported_afterTheLastPicture_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<Bytes>("end");
        QTest::addColumn<int>("ends");
        QTest::newRow("H.264 stream") << CodecType::H264 << Bytes { 0, 0, 0, 1, 11 } << 1;
        QTest::newRow("H.264 sequence") << CodecType::H264 << Bytes { 0, 0, 0, 1, 10 } << 0;
        QTest::newRow("H.265 stream") << CodecType::H265 << Bytes { 0, 0, 0, 1, 0x4a, 1 } << 1;
        QTest::newRow("H.265 sequence") << CodecType::H265 << Bytes { 0, 0, 0, 1, 0x48, 1 } << 0;
    }
    void endOfStream_isReported_afterTheLastPicture()
    {
        QFETCH(CodecType, type);
        QFETCH(Bytes, end);
        QFETCH(int, ends);
        auto units = encodedStream({ type, 320, 240, 7, 100, 3 });
        for (const bool isApart : { false, true }) {
            auto ended = units;
            if (isApart)
                ended.push_back({ end, 7, false });
            else
                ended.back().data.insert(ended.back().data.end(), end.begin(), end.end());
            DecodingListener listener;
            const auto decoder = softwareDecoder({ type }, &listener);
            DecodeFeeder feeder(decoder);
            for (const MediaUnit &unit : ended)
                QVERIFY(feeder.decode(unit.data));
            QVERIFY2(listener.errors.empty(), listener.firstError());
            QCOMPARE(numbers(listener.visible), range(0, 7));
            QCOMPARE(listener.ends, ends);
            if (ends)
                QCOMPARE(listener.calls.back(), std::string("end"));
            for (const MediaUnit &unit : ended) // and once more
                QVERIFY(feeder.decode(unit.data));
            QVERIFY2(listener.errors.empty(), listener.firstError());
            QCOMPARE(listener.pictures, 14);
            QCOMPARE(listener.ends, 2 * ends);
        }
    }

    void theListener_mayEndDecoding_fromWithinItsCalls()
    {
        const auto units = encodedStream({ CodecType::H264, 320, 240, 12, 100, 3 });
        for (const char *what : { "flush", "stop", "detach", "refused" }) {
            DecodingListener listener;
            listener.keepsPictures = false;
            auto decoder = softwareDecoder({ CodecType::H264 }, &listener);
            VideoDecoder *const bare = decoder.get();
            auto feeder = std::make_unique<DecodeFeeder>(decoder);
            decoder.reset();
            int refused = 0;
            const QByteArray action(what);
            listener.onCall = [&] {
                if (listener.calls.back() != "buffer" || listener.pictures != 2)
                    return;
                if (action == "flush")
                    bare->flush();
                else if (action == "stop")
                    bare->stop();
                else if (action == "detach")
                    bare->lockAndSetListener(nullptr);
                else if (action == "refused") {
                    refused += !bare->initialize(decoderConfig(CodecType::H264));
                    refused += !bare->decode(units[0].data.data(), units[0].data.size(), 0,
                                             FrameType::Key, nullptr, nullptr);
                    bare->drain();
                }
            };
            int rejected = 0;
            for (const MediaUnit &unit : units)
                rejected += !feeder->decode(unit.data);
            bare->drain();
            QVERIFY(feeder->isAllReleasedOnce());
            QCOMPARE(listener.pictures, action == "refused" ? 12 : 2);
            QCOMPARE(refused, action == "refused" ? 2 : 0);
            QCOMPARE(rejected > 0, action == "stop");
            const int waits = action == "flush"; // for a key frame
            QCOMPARE(int(listener.errors.size()), action == "refused" ? 3 : rejected + waits);
        }
    }

    void afterFlushAndStop_fromWithinACall_noneOfTheOthersInsideComesOut_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<bool>("hasDelay");
        QTest::addColumn<bool>("stops");
        QTest::addColumn<Bytes>("end"); // of the stream; else it is drained
        const Bytes ofH264 { 0, 0, 0, 1, 11 };
        const Bytes ofH265 { 0, 0, 0, 1, 0x4a, 1 };
        for (const bool hasDelay : { false, true }) {
            for (const bool stops : { false, true }) {
                const auto row = [&](const char *how, CodecType type, const Bytes &end) {
                    QTest::addRow("%s %d %d", how, hasDelay, stops)
                            << type << hasDelay << stops << end;
                };
                row("H.264 drain", CodecType::H264, {});
                row("H.264 end", CodecType::H264, ofH264);
                row("H.265 drain", CodecType::H265, {});
                row("H.265 end", CodecType::H265, ofH265);
            }
        }
    }
    void afterFlushAndStop_fromWithinACall_noneOfTheOthersInsideComesOut()
    {
        QFETCH(CodecType, type);
        QFETCH(bool, hasDelay);
        QFETCH(bool, stops);
        QFETCH(Bytes, end);
        const auto units = encodedStream({ type, 320, 240, 8, 100, 3 });
        DecodingListener listener;
        const auto decoder = softwareDecoder({ type, false, hasDelay }, &listener);
        DecodeFeeder feeder(decoder);
        const auto putOut = [&] {
            if (end.empty())
                decoder->drain();
            else
                QVERIFY(feeder.decode(end));
        };
        for (const MediaUnit &unit : units)
            QVERIFY(feeder.decode(unit.data));
        const int before = listener.pictures;
        QVERIFY(8 - before >= 2); // inside, which one call puts out
        listener.onCall = [&] {
            if (listener.pictures == before + 1)
                stops ? decoder->stop() : decoder->flush();
        };
        putOut();
        QCOMPARE(listener.pictures, before + 1);
        listener.onCall = {};
        QVERIFY2(listener.errors.empty(), listener.firstError());
        if (stops) {
            QVERIFY(!feeder.decode(units[0].data));
            return;
        }
        for (const MediaUnit &unit : units)
            QVERIFY(feeder.decode(unit.data));
        putOut();
        QCOMPARE(listener.pictures, before + 1 + 8);
        QVERIFY2(listener.errors.empty(), listener.firstError());
    }

    void theListener_mayDropTheDecoder_fromWithinACall()
    {
        const auto units = encodedStream({ CodecType::VP8, 320, 240, 3 });
        DecodingListener listener;
        auto decoder = softwareDecoder({ CodecType::VP8 }, &listener);
        listener.onCall = [&decoder] { decoder.reset(); };
        auto *const data = static_cast<unsigned char *>(std::malloc(units[0].data.size()));
        std::copy(units[0].data.begin(), units[0].data.end(), data);
        QVERIFY(decoder->decode(data, units[0].data.size(), 0, FrameType::Key, std::free, data));
        QVERIFY(!decoder);
        QCOMPARE(listener.pictures, 1);
    }
};

QTEST_GUILESS_MAIN(TestDecoderLife)
#include "tst_decoderlife.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"
#include "decodingchecks.h"
#include "decodinglistener.h"
#include "encodedstream.h"
#include "parameterbits.h"

#include <QtTest>

#include <graphicbuffer.h>
#include <softwaredecoderfactory.h>
#include <stderrcapture.h>

#include <thread>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
std::vector<MediaUnit> joined(std::vector<MediaUnit> one, const std::vector<MediaUnit> &other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

std::vector<std::string> texts(std::initializer_list<const char *> list)
{
    return { list.begin(), list.end() };
}
} // namespace

class TestDecoderLife : public QObject
{
    Q_OBJECT
private slots:
    void croppedPictures_areWhole_andTellWhatIsVisible_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("viewport");
        QTest::addColumn<QSize>("size");
        QTest::newRow("H.264 right and bottom") << CodecType::H264 << ""
                                                << "(0,0,200,100)" << QSize(208, 112);
        QTest::newRow("H.264 all sides")
                << CodecType::H264
                << "h264_metadata=crop_left=4:crop_right=10:crop_top=2:crop_bottom=14"
                << "(4,2,194,96)" << QSize(208, 112);
        QTest::newRow("H.265 right and bottom") << CodecType::H265 << ""
                                                << "(0,0,200,100)" << QSize(200, 104);
        QTest::newRow("H.265 all sides")
                << CodecType::H265
                << "hevc_metadata=crop_left=4:crop_right=10:crop_top=2:crop_bottom=14"
                << "(4,2,186,88)" << QSize(200, 104);
        QTest::newRow("VP8") << CodecType::VP8 << ""
                             << "(0,0,200,100)" << QSize(200, 100);
        QTest::newRow("VP9") << CodecType::VP9 << ""
                             << "(0,0,200,100)" << QSize(200, 100);
    }
    void croppedPictures_areWhole_andTellWhatIsVisible()
    {
        QFETCH(CodecType, type);
        QFETCH(QString, filter);
        QFETCH(QString, viewport);
        QFETCH(QSize, size);
        auto units = encodedStream({ type, 200, 100, 6, 10 });
        if (!filter.isEmpty())
            units = filtered(units, type, filter.toStdString());
        DecodingListener listener;
        listener.keepsBuffers = true;
        const auto decoder = softwareDecoder({ type }, &listener);
        DecodeFeeder feeder(decoder);
        for (const MediaUnit &unit : units)
            QVERIFY(feeder.decode(unit.data));
        decoder->drain();
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QCOMPARE(listener.viewports, std::vector<std::string> { viewport.toStdString() });
        QCOMPARE(listener.calls.front(), std::string("parameter"));
        QCOMPARE(listener.pictures, 6);
        for (const auto &buffer : listener.buffers) {
            QCOMPARE(QSize(buffer->width, buffer->height), size);
            QVERIFY(!buffer->live);
            QCOMPARE(buffer->format, PixelFormat::YU12);
        }
        for (std::size_t i = 1; i < listener.buffers.size(); ++i)
            QCOMPARE(listener.buffers[i]->sequence, listener.buffers[i - 1]->sequence + 1);
        if (filter.isEmpty())
            QCOMPARE(numbers(listener.visible), range(0, 6));
    }

    void cropping_isToldAgainWithKeyFrames()
    {
        const auto units = encodedStream({ CodecType::H264, 200, 100, 9, 3 });
        const DecodingListener listener = decoded({ CodecType::H264 }, units);
        const char *const viewport = "(0,0,200,100)";
        QCOMPARE(listener.viewports, texts({ viewport, viewport, viewport }));
    }

    void anotherSize_isFollowed_data() { addDecoderRows(); }
    void anotherSize_isFollowed()
    {
        QFETCH(CodecType, type);
        StreamWish second { type, 200, 120, 10, 10 };
        second.firstNumber = 10;
        StreamWish third { type, 640, 480, 10, 10 };
        third.firstNumber = 20;
        const auto units =
                joined(joined(encodedStream({ type, 320, 240, 10, 10 }), encodedStream(second)),
                       encodedStream(third));
        for (const bool hasDelay : { false, true }) {
            const DecodingListener listener = decoded({ type, false, hasDelay }, units);
            QVERIFY2(listener.errors.empty(), listener.firstError());
            QCOMPARE(numbers(listener.visible), range(0, 30));
            QCOMPARE(listener.viewports,
                     texts({ "(0,0,320,240)", "(0,0,200,120)", "(0,0,640,480)" }));
            for (std::size_t i = 0; i < 30; ++i)
                QCOMPARE(listener.visible[i].width, i < 10 ? 320 : i < 20 ? 200 : 640);
        }
    }

    void reorderedPictures_areKeptInOrder_whereTheStreamDoesNotSayHowMany()
    {
        const auto units = encodedStream({ CodecType::H264, 320, 240, 60, 20, 4 });
        const auto without = withoutUsability(units);
        QVERIFY(without[0].data != units[0].data);
        const DecodingListener told = decoded({ CodecType::H264 }, units);
        for (const bool hasDelay : { false, true }) {
            const DecodingListener listener =
                    decoded({ CodecType::H264, false, hasDelay }, without);
            QVERIFY2(listener.errors.empty(), listener.firstError());
            QVERIFY(isEqual(listener.visible, told.visible));
            QCOMPARE(listener.timestamps, told.timestamps);
        }
    }

    void reorderingThatBeginsAndEnds_isFollowed_data()
    {
        QTest::addColumn<bool>("isTold");
        QTest::addColumn<int>("bFrames");
        for (const bool isTold : { true, false }) {
            for (const int bFrames : { 1, 4 })
                QTest::addRow("%d, %s", bFrames, isTold ? "told" : "not told") << isTold << bFrames;
        }
    }
    void reorderingThatBeginsAndEnds_isFollowed()
    {
        QFETCH(bool, isTold);
        QFETCH(int, bFrames);
        const auto part = [&](int first, int reordered) {
            StreamWish wish { CodecType::H264, 320, 240, 20, 100, reordered };
            wish.firstNumber = first;
            const auto units = encodedStream(wish);
            return isTold || reordered == 0 ? units : withoutUsability(units);
        };
        const auto units = joined(joined(part(0, 0), part(20, bFrames)),
                                  joined(part(40, 0), part(60, bFrames)));
        for (const bool hasDelay : { false, true }) {
            const DecodingListener listener = decoded({ CodecType::H264, false, hasDelay }, units);
            QVERIFY2(listener.errors.empty(), listener.firstError());
            QCOMPARE(numbers(listener.visible), range(0, 80));
        }
    }

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

    void otherLayouts_areConverted_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<QString>("layout");
        for (const char *layout :
             { "yuv422p", "yuv444p", "yuv420p10le", "yuv422p10le", "yuv444p10le", "gray" })
            QTest::addRow("H.264 %s", layout) << CodecType::H264 << layout;
        for (const char *layout : { "yuv422p", "yuv444p", "yuv420p10le", "yuv420p12le", "gbrp" })
            QTest::addRow("H.265 %s", layout) << CodecType::H265 << layout;
        for (const char *layout : { "yuv422p", "yuv444p", "yuv440p", "yuv420p10le", "yuv422p12le" })
            QTest::addRow("VP9 %s", layout) << CodecType::VP9 << layout;
    }
    void otherLayouts_areConverted()
    {
        QFETCH(CodecType, type);
        QFETCH(QString, layout);
        StreamWish wish { type, 310, 238, 5 };
        wish.layout = layout.toStdString();
        if (type == CodecType::VP9)
            wish.options = { { "profile",
                               layout.contains('1') ? layout.contains("422") ? "3" : "2" : "1" } };
        const auto units = encodedStream(wish);
        QCOMPARE(units.size(), std::size_t(5));
        const DecodingListener listener = decoded({ type }, units);
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QCOMPARE(numbers(listener.visible), range(0, 5));
        const RawPicture painted = RawPicture::pattern(310, 238, 4);
        QVERIFY(psnr(listener.visible[4].y, painted.y) > 25);
        if (layout != "gray") {
            QVERIFY(psnr(listener.visible[4].cb, painted.cb) > 25);
            QVERIFY(psnr(listener.visible[4].cr, painted.cr) > 25);
        }
        const DecodingListener frames = decoded({ type, true }, units);
        QVERIFY(isEqual(frames.visible, listener.visible));
    }

    void oddSizes_areKept_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::newRow("VP8") << CodecType::VP8;
        QTest::newRow("VP9") << CodecType::VP9;
    }
    void oddSizes_areKept()
    {
        QFETCH(CodecType, type);
        const DecodingListener listener = decoded({ type }, encodedStream({ type, 321, 181, 5 }));
        QCOMPARE(listener.viewports, texts({ "(0,0,321,181)" }));
        QCOMPARE(numbers(listener.visible), range(0, 5));
    }

    void pictures_outliveTheDecoder_andAreNotWrittenTo_data() { addDecoderRows(); }
    void pictures_outliveTheDecoder_andAreNotWrittenTo()
    {
        QFETCH(CodecType, type);
        for (const bool hasDelay : { false, true }) {
            DecodingListener listener;
            listener.keepsBuffers = true;
            const auto units = encodedStream({ type, 320, 240, 40 });
            auto decoder = softwareDecoder({ type, false, hasDelay }, &listener);
            {
                DecodeFeeder feeder(decoder);
                for (const MediaUnit &unit : units)
                    QVERIFY(feeder.decode(unit.data));
            }
            decoder->drain();
            decoder->stop();
            QCOMPARE(decoder.use_count(), 1L);
            decoder.reset();
            QCOMPARE(int(listener.buffers.size()), 40);
            DecodingListener reader; // reads the pictures now
            for (const auto &buffer : listener.buffers)
                reader.onDecodedGraphicBuffer(buffer);
            QVERIFY(isEqual(reader.visible, listener.visible));
            std::thread([&listener] { listener.buffers.clear(); }).join();
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

// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"
#include "decodingchecks.h"
#include "decodinglistener.h"
#include "encodedstream.h"
#include "parameterbits.h"

#include <QtTest>

#include <graphicbuffer.h>

#include <algorithm>
#include <cstddef>
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

/*! Turns the first picture into its negative where it lies, once it is copied. */
class OverwritingListener : public DecodingListener
{
public:
    void onDecodedYCbCrFrame(const YCbCrFrame *frame) override
    {
        DecodingListener::onDecodedYCbCrFrame(frame);
        overwrite(frame->y, frame->yStride, frame->width, frame->height);
    }
    void onDecodedGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer) override
    {
        DecodingListener::onDecodedGraphicBuffer(buffer);
        const GraphicBuffer::Plane &luma = buffer->planes[0];
        overwrite(luma.data, luma.stride, buffer->width, buffer->height);
    }

private:
    void overwrite(const std::uint8_t *data, int stride, int width, int height) const
    {
        if (pictures != 1)
            return;
        for (int row = 0; row < height; ++row) {
            auto *const line = const_cast<std::uint8_t *>(data + std::ptrdiff_t(row) * stride);
            std::transform(line, line + width, line, [](int luma) { return 255 - luma; });
        }
    }
};

RawPicture negative(RawPicture picture)
{
    for (std::uint8_t &luma : picture.y)
        luma = std::uint8_t(255 - luma);
    return picture;
}
} // namespace

/*! What comes out: sizes, order, layouts. */
class TestDecodedPictures : public QObject
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

    // In a still scene each picture says no more than "as the one before", which the codec looks up
    // in its own memory. What is written to a picture that was handed out comes back with the next
    // one only if both are the same memory: a copy of it would leave the next one untouched. No
    // application may do that, since it spoils all pictures up to the next key frame.
    void pictures_areTheCodecsOwn_notCopies_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<bool>("usesFrames");
        for (const bool usesFrames : { false, true }) {
            QTest::addRow("H.264 %d", usesFrames) << CodecType::H264 << usesFrames;
            QTest::addRow("H.265 %d", usesFrames) << CodecType::H265 << usesFrames;
            QTest::addRow("VP8 %d", usesFrames) << CodecType::VP8 << usesFrames;
            QTest::addRow("VP9 %d", usesFrames) << CodecType::VP9 << usesFrames;
        }
    }
    void pictures_areTheCodecsOwn_notCopies()
    {
        QFETCH(CodecType, type);
        QFETCH(bool, usesFrames);
        constexpr double same = 20;  // dB; the encoder still refines the first picture a little
        constexpr double other = 10; // dB
        StreamWish wish { type, 320, 240, 4, 100 };
        wish.isStill = true;
        if (type == CodecType::H265)
            wish.options = { { "tune", "zerolatency" } };
        const auto units = encodedStream(wish);
        const DecodingListener plain = decoded({ type, usesFrames }, units);
        QCOMPARE(numbers(plain.visible), std::vector<int>(4, 0));
        OverwritingListener listener;
        const auto decoder = softwareDecoder({ type, usesFrames }, &listener);
        DecodeFeeder feeder(decoder);
        for (std::size_t i = 0; i < units.size(); ++i) {
            QVERIFY(feeder.decode(units[i].data));
            QCOMPARE(listener.pictures, int(i) + 1); // before the next one is decoded
        }
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QVERIFY(isEqual(listener.visible[0], plain.visible[0]));
        const RawPicture written = negative(plain.visible[0]);
        for (std::size_t i = 1; i < units.size(); ++i) {
            QVERIFY(psnr(plain.visible[i].y, written.y) < other);
            QVERIFY(psnr(listener.visible[i].y, written.y) > same);
        }
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
};

QTEST_GUILESS_MAIN(TestDecodedPictures)
#include "tst_decodedpictures.moc"

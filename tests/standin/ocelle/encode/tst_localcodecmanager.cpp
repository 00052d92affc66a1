// SPDX-License-Identifier: BSD-3-Clause
#include "encodinglistener.h"
#include "rawpicture.h"
#include "scriptedencoders.h"
#include "stderrcapture.h"
#include "unitdecoder.h"

#include <avencoder.h>
#include <decode/decoderfactory.h>
#include <hardwareencoderfactory.h>
#include <localcodecmanager.h>
#include <localencoderfactories.h>
#include <ocelle/videodecoder.h>
#include <ocelle/videoencoder.h>
#include <patternreader.h>
#include <sharedlibrary.h>

#ifdef OCELLE_X264
#include <h264encoder.h>
#endif
#ifdef OCELLE_X265
#include <h265encoder.h>
#endif
#ifdef OCELLE_VPX
#include <vp8encoder.h>
#include <vp9encoder.h>
#endif

#include <QtTest>

#include <atomic>
#include <set>
#include <thread>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::PictureLayout)

namespace {
EncoderSettings settings(int width, int height)
{
    EncoderSettings result;
    result.width = width;
    result.height = height;
    result.bitrate = 1000000;
    return result;
}

class ScriptedDecoders : public DecoderFactory
{
public:
    ScriptedDecoders(const std::string &name, bool works)
        : DecoderFactory({ CodecType::VP8, false, name, 0, 1, !works })
        , m_works(works)
    {
    }
    bool isAvailable() override { return true; }
    std::shared_ptr<VideoDecoder> create(std::string *error) override
    {
        *error = "broken";
        return m_works ? std::make_shared<Decoder>() : nullptr;
    }

private:
    struct Decoder : VideoDecoder
    {
        bool initialize(DecoderConfig) override { return true; }
        bool decode(const unsigned char *, std::uint64_t, std::uint64_t, FrameType,
                    void (*release)(void *), void *argument) override
        {
            release(argument);
            return true;
        }
        void flush() override {}
        void drain() override {}
        void stop() override {}
    };
    const bool m_works;
};

// Opens a codec whose library is not there.
template <class Encoder, class Library>
std::string reasonWithout(const char *fileName)
{
    const Library library(fileName);
    Encoder encoder(library);
    std::string error;
    if (library.isComplete() || encoder.open(settings(64, 48), &error))
        return {};
    return error;
}
} // namespace

class TestLocalCodecManager : public QObject
{
    Q_OBJECT
private slots:
    void getVideoCodecs_listsWhatThisMachineHas()
    {
        LocalCodecManager manager(localEncoderFactories(), {});
        QVERIFY(manager.prepare());
        QVERIFY(manager.prepare());
        std::set<std::string> names;
        std::set<CodecType> software;
        for (const VideoCodecInfo &info : manager.getVideoCodecs()) {
            QVERIFY(info.isEncoder);
            QVERIFY(info.maxInstances > 0);
            QVERIFY2(names.insert(info.codecName).second, info.codecName.c_str());
            QVERIFY(manager.isEncoderSupported(info.type, false));
            QVERIFY(manager.isEncoderSupported(info.type, true));
            QVERIFY(manager.createVideoEncoder(info.type, 0));
            if (!info.isHardwareAccelerated)
                software.insert(info.type);
        }
        std::set<CodecType> built;
#ifdef OCELLE_X264
        built.insert(CodecType::H264);
#endif
#ifdef OCELLE_X265
        built.insert(CodecType::H265);
#endif
#ifdef OCELLE_VPX
        built.insert(CodecType::VP8);
        built.insert(CodecType::VP9);
#endif
        QVERIFY(software == built);
    }

    void codecsThatAreNotThere_areNotOffered()
    {
        const auto missing = std::make_shared<ScriptedEncoders>(CodecType::VP8, "missing");
        missing->available = false;
        const auto there = std::make_shared<ScriptedEncoders>(CodecType::VP9, "there");
        LocalCodecManager manager({ missing, there }, {});
        StderrCapture lines;
        QCOMPARE(manager.getVideoCodecs().size(), std::size_t(1));
        QVERIFY(!manager.isEncoderSupported(CodecType::VP8, false));
        QVERIFY(!manager.createVideoEncoder(CodecType::VP8, 0));
        QVERIFY(!manager.createVideoEncoder(CodecType::Unknown, 0));
        QVERIFY(!manager.createVideoEncoder(CodecType(99), 0));
        QVERIFY(!manager.createVideoDecoder(CodecType::VP9, 0));
        QVERIFY(!manager.isDecoderSupported(CodecType::VP9, false));
        QVERIFY(manager.createVideoEncoder(CodecType::VP9, 0));
        QCOMPARE(missing->availableCalls, 1);
        QVERIFY(lines.lines().join(' ').contains("no encoder for VP8"));
    }

    void hardware_isPreferred_andSoftwareTakesOver()
    {
        const auto hardware = std::make_shared<ScriptedEncoders>(CodecType::VP8, "hard", true, 1);
        const auto software = std::make_shared<ScriptedEncoders>(CodecType::VP8, "soft");
        LocalCodecManager manager({ hardware, software }, {});
        const std::vector<VideoCodecInfo> codecs = manager.getVideoCodecs();
        QCOMPARE(codecs.size(), std::size_t(2));
        QVERIFY(codecs[0].isHardwareAccelerated);
        QVERIFY(!codecs[1].isHardwareAccelerated);

        const EncoderConfig config { 1, 64, 48, 64, 48, 500000, 30 };
        const auto first = manager.createVideoEncoder(CodecType::VP8, 0);
        QVERIFY(first->initialize(config));
        QCOMPARE(hardware->alive, 1);
        StderrCapture lines;
        const auto second = manager.createVideoEncoder(CodecType::VP8, 0);
        QVERIFY(second->initialize(config));
        QCOMPARE(software->alive, 1);
        QVERIFY(lines.lines().join(' ').contains(
                "taking soft, since hard does not open (all 1 instances"));
    }

    void createVideoEncoder_givesNone_whenAllAreRunning()
    {
        const auto rare = std::make_shared<ScriptedEncoders>(CodecType::VP8, "rare", false, 1);
        LocalCodecManager manager({ rare }, {});
        auto encoder = manager.createVideoEncoder(CodecType::VP8, 0);
        QVERIFY(encoder->initialize({ 1, 64, 48, 64, 48, 500000, 30 }));
        StderrCapture lines;
        QVERIFY(!manager.createVideoEncoder(CodecType::VP8, 0));
        QVERIFY(lines.lines().join(' ').contains("in use"));
        encoder.reset();
        QVERIFY(manager.createVideoEncoder(CodecType::VP8, 0));
    }

    void createVideoDecoder_takesTheFirstThatWorks()
    {
        LocalCodecManager manager({}, { std::make_shared<ScriptedDecoders>("hard", false),
                                        std::make_shared<ScriptedDecoders>("soft", true) });
        StderrCapture lines;
        QVERIFY(manager.createVideoDecoder(CodecType::VP8, 0));
        QCOMPARE(lines.lines(),
                 QStringList { "ocelle: taking soft, since hard does not open (broken)" });
        QVERIFY(manager.isDecoderSupported(CodecType::VP8, true));
        QVERIFY(!manager.getVideoCodecs().front().isEncoder);
    }

    void operations_mayBeCalledFromSeveralThreads()
    {
        LocalCodecManager manager(localEncoderFactories(), {});
        std::vector<std::thread> threads;
        std::atomic<int> encoders { 0 };
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&manager, &encoders] {
                for (const VideoCodecInfo &info : manager.getVideoCodecs()) {
                    const auto encoder = manager.createVideoEncoder(info.type, 0);
                    if (encoder->initialize(
                                { std::int32_t(info.type), 64, 48, 64, 48, 500000, 30 }) &&
                        encoder->encode(ycbcrFrame(RawPicture::pattern(64, 48, 1),
                                                   PictureLayout::Planar, 0),
                                        false))
                        ++encoders;
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(encoders.load(), 4 * int(manager.getVideoCodecs().size()));
    }

    void aMissingLibrary_isNamed()
    {
        [[maybe_unused]] const char *none = "libthere-is-no-such.so.1";
        [[maybe_unused]] const char *other = "libm.so.6"; // a library, but without the functions
        QVERIFY(!SharedLibrary(none).isComplete());
#ifdef OCELLE_X264
        QVERIFY((reasonWithout<H264Encoder, X264Library>(none).find(none) != std::string::npos));
        QVERIFY((reasonWithout<H264Encoder, X264Library>(other).find("x264_") !=
                 std::string::npos));
#endif
#ifdef OCELLE_X265
        QVERIFY((reasonWithout<H265Encoder, X265Library>(none).find(none) != std::string::npos));
        QVERIFY((reasonWithout<H265Encoder, X265Library>(other).find("x265_") !=
                 std::string::npos));
#endif
#ifdef OCELLE_VPX
        QVERIFY((reasonWithout<Vp8Encoder, VpxLibrary>(none).find(none) != std::string::npos));
        QVERIFY((reasonWithout<Vp9Encoder, VpxLibrary>(other).find("vpx_") != std::string::npos));
#endif
    }

    // libavcodec's own encoders stand for hardware, which is reached in the same way.
    void avEncoder_encodesEveryPicture_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<PictureLayout>("layout");
        QTest::newRow("planar") << "mpeg4" << PictureLayout::Planar;
        QTest::newRow("NV12") << "mpeg4" << PictureLayout::NV12;
    }

    void avEncoder_encodesEveryPicture()
    {
        QFETCH(QString, name);
        QFETCH(PictureLayout, layout);
        AvEncoder encoder({ name.toStdString(), {} });
        std::string error;
        QVERIFY2(encoder.open(settings(320, 240), &error), error.c_str());
        UnitDecoder decoder(name.toStdString());
        QVERIFY(decoder.isValid());
        std::vector<RawPicture> decoded;
        std::int64_t next = 0;
        const auto onUnit = [&](const EncodedUnit &unit) {
            QCOMPARE(unit.index, next);
            QCOMPARE(unit.isKeyFrame, next == 0 || next == 5);
            ++next;
            for (const RawPicture &picture : decoder.decode({ unit.data, unit.data + unit.size }))
                decoded.push_back(picture);
        };
        for (int index = 0; index < 10; ++index) {
            const auto frame =
                    ycbcrFrame(RawPicture::pattern(320, 240, std::uint32_t(index)), layout, 0, 3);
            const PictureView view { layout,         frame->y,       frame->cb, frame->cr,
                                     frame->yStride, frame->cStride, 320,       240 };
            QVERIFY2(encoder.encode(view, index, index == 5, onUnit, &error), error.c_str());
        }
        QVERIFY(encoder.finish(onUnit, &error));
        for (const RawPicture &picture : decoder.finish())
            decoded.push_back(picture);
        QCOMPARE(decoded.size(), std::size_t(10));
        for (std::size_t i = 0; i < decoded.size(); ++i) {
            const auto reading = readPattern(decoded[i].y.data(), 320, 320, 240);
            QVERIFY(reading.has_value());
            QCOMPARE(reading->sequence, std::uint32_t(i));
            QVERIFY(psnr(decoded[i], RawPicture::pattern(320, 240, std::uint32_t(i))) > 28);
        }
    }

    void hardware_isAvailable_whereATrialSucceeds()
    {
        HardwareEncoderFactory works(CodecType::H264, "works", { "mpeg4", {} });
        QVERIFY(works.isAvailable());
        QVERIFY(works.info().isHardwareAccelerated);
        QCOMPARE(works.info().codecName, std::string("hardware.works.encoder"));
        HardwareEncoderFactory unknown(CodecType::H264, "unknown", { "no-such-encoder", {} });
        QVERIFY(!unknown.isAvailable());
        HardwareEncoderFactory device(CodecType::H264, "device",
                                      { "h264_vaapi", "/dev/dri/there-is-none" });
        QVERIFY(!device.isAvailable());
        std::string error;
        QVERIFY(!device.create()->open(settings(64, 48), &error));
        QVERIFY2(!error.empty(), error.c_str());
    }
};

QTEST_GUILESS_MAIN(TestLocalCodecManager)
#include "tst_localcodecmanager.moc"

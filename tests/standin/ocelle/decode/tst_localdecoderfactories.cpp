// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"
#include "decodingchecks.h"
#include "decodinglistener.h"
#include "encodedstream.h"

#include <QtTest>

#include <hardwaredecoderfactory.h>
#include <localcodecmanager.h>
#include <localdecoderfactories.h>
#include <softwaredecoderfactory.h>
#include <stderrcapture.h>
#include <trialframe.h>

#include <set>
#include <thread>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

class TestLocalDecoderFactories : public QObject
{
    Q_OBJECT
private slots:
    void getVideoCodecs_listsADecoderForEachKind()
    {
        LocalCodecManager manager({}, localDecoderFactories({}));
        std::set<std::string> names;
        std::set<CodecType> software;
        for (const VideoCodecInfo &info : manager.getVideoCodecs()) {
            QVERIFY(!info.isEncoder);
            QVERIFY(info.maxInstances > 0);
            QVERIFY2(names.insert(info.codecName).second, info.codecName.c_str());
            QVERIFY(manager.isDecoderSupported(info.type, false));
            QVERIFY(manager.isDecoderSupported(info.type, true));
            QVERIFY(manager.createVideoDecoder(info.type, 0));
            if (!info.isHardwareAccelerated)
                software.insert(info.type);
        }
        QCOMPARE(int(software.size()), 4);
        const StderrCapture quiet;
        QVERIFY(!manager.createVideoDecoder(CodecType::Unknown, 0));
        QVERIFY(!manager.isDecoderSupported(CodecType::Unknown, true));
    }

    void noMoreDecodersThanInstances_areHandedOut()
    {
        LocalCodecManager manager({}, SoftwareDecoderFactory::all({}));
        const int most = manager.getVideoCodecs().front().maxInstances;
        const CodecType type = manager.getVideoCodecs().front().type;
        std::vector<std::shared_ptr<VideoDecoder>> decoders;
        for (int i = 0; i < most; ++i) {
            decoders.push_back(manager.createVideoDecoder(type, 0));
            QVERIFY(decoders.back());
        }
        {
            StderrCapture lines;
            QVERIFY(!manager.createVideoDecoder(type, 0));
            QVERIFY(lines.lines().join(' ').contains("instances are in use"));
        }
        decoders.front()->stop(); // gives its place back while it is still held
        QVERIFY(manager.createVideoDecoder(type, 0));
    }

    void settings_comeFromTexts()
    {
        StderrCapture none;
        DecoderSettings settings = DecoderSettings::fromTexts(nullptr, "");
        QVERIFY(settings.output == DecoderOutput::Buffer);
        QVERIFY(settings.threads == DecoderThreads::LowDelay);
        settings = DecoderSettings::fromTexts("ycbcr", "throughput");
        QVERIFY(settings.output == DecoderOutput::YCbCr);
        QVERIFY(settings.threads == DecoderThreads::Throughput);
        settings = DecoderSettings::fromTexts("buffer", "delay");
        QVERIFY(settings.output == DecoderOutput::Buffer);
        QVERIFY(settings.threads == DecoderThreads::LowDelay);
        QVERIFY(none.lines().isEmpty());
        StderrCapture lines;
        settings = DecoderSettings::fromTexts("rgb", "many");
        QVERIFY(settings.output == DecoderOutput::Buffer);
        QVERIFY(settings.threads == DecoderThreads::LowDelay);
        QCOMPARE(lines.lines(),
                 (QStringList { "ocelle: OCELLE_DECODER_OUTPUT is \"rgb\", not \"buffer\" or "
                                "\"ycbcr\"; taking \"buffer\"",
                                "ocelle: OCELLE_DECODER_THREADS is \"many\", not \"delay\" or "
                                "\"throughput\"; taking \"delay\"" }));
    }

    void trialFrames_areKeyFrames_data() { addDecoderRows(); }
    void trialFrames_areKeyFrames()
    {
        QFETCH(CodecType, type);
        const TrialFrame frame = trialFrame(type);
        const DecodingListener listener =
                decoded({ type }, { { Bytes(frame.data, frame.data + frame.size), 0, true } });
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QCOMPARE(listener.viewports, std::vector<std::string> { "(0,0,320,240)" });
        QCOMPARE(listener.pictures, 1);
        QVERIFY(trialFrame(CodecType::Unknown).size == 0);
    }

    // libavcodec's own decoders stand for hardware, which is reached in the same way.
    void hardware_isAvailable_whereATrialSucceeds()
    {
        HardwareDecoderFactory works(CodecType::VP8, "works", { "vp8", {}, true }, {});
        QVERIFY(works.isAvailable());
        QVERIFY(works.info().isHardwareAccelerated);
        QCOMPARE(works.info().codecName, std::string("hardware.works.decoder"));
        HardwareDecoderFactory unknown(CodecType::H264, "unknown", { "no-such", {}, true }, {});
        QVERIFY(!unknown.isAvailable());
        HardwareDecoderFactory wrong(CodecType::H264, "wrong", { "vp8", {}, true }, {});
        QVERIFY(!wrong.isAvailable());
        HardwareDecoderFactory device(CodecType::H264, "device",
                                      { "h264", "/dev/dri/there-is-none", false }, {});
        QVERIFY(!device.isAvailable());
        std::string error;
        QVERIFY(!device.create(&error));
        QVERIFY2(error.find("/dev/dri/there-is-none") != std::string::npos, error.c_str());
    }

    void softwareTakesOver_andALineSaysWhy()
    {
        const auto device = std::make_shared<HardwareDecoderFactory>(
                CodecType::VP8, "device", AvDecoderKind { "vp8", "/dev/dri/there-is-none", false },
                DecoderSettings {});
        std::string error;
        StderrCapture none;
        LocalCodecManager without({}, { device, SoftwareDecoderFactory::all({})[2] });
        QVERIFY(without.createVideoDecoder(CodecType::VP8, 0));
        QVERIFY(!none.lines().join(' ').contains("ocelle:")); // it was never offered
        const auto single = std::make_shared<HardwareDecoderFactory>(
                CodecType::VP8, "single", AvDecoderKind { "vp8", {}, true }, DecoderSettings {});
        StderrCapture lines;
        LocalCodecManager manager({}, { single, SoftwareDecoderFactory::all({})[2] });
        std::vector<std::shared_ptr<VideoDecoder>> decoders;
        for (int i = 0; i <= single->info().maxInstances; ++i)
            decoders.push_back(manager.createVideoDecoder(CodecType::VP8, 0));
        QVERIFY(decoders.back());
        QCOMPARE(lines.lines(),
                 QStringList { "ocelle: taking software.vp8.decoder, since hardware.single.decoder "
                               "does not open (all 4 instances are in use)" });
    }

    void aDecoderThatHasToBeReopened_goesOnAfterDrainAndFlush()
    {
        const auto units = encodedStream({ CodecType::VP8, 320, 240, 5 });
        HardwareDecoderFactory factory(CodecType::VP8, "reopened", { "vp8", {}, true }, {});
        std::string error;
        const auto decoder = factory.create(&error);
        DecodingListener listener;
        decoder->lockAndSetListener(&listener);
        QVERIFY(decoder->initialize(decoderConfig(CodecType::VP8)));
        DecodeFeeder feeder(decoder);
        for (int round = 0; round < 4; ++round) {
            for (const MediaUnit &unit : units)
                QVERIFY(feeder.decode(unit.data));
            if (round % 2)
                decoder->flush();
            else
                decoder->drain();
        }
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QCOMPARE(listener.pictures, 20);
    }

    void severalDecoders_workAtTheSameTime()
    {
        LocalCodecManager manager({}, localDecoderFactories({}));
        std::vector<std::thread> threads;
        std::vector<DecodingListener> listeners(4);
        const CodecType types[] = { CodecType::H264, CodecType::H265, CodecType::VP8,
                                    CodecType::VP9 };
        std::vector<std::vector<MediaUnit>> streams;
        for (const CodecType type : types)
            streams.push_back(encodedStream({ type, 320, 240, 20 }));
        for (std::size_t i = 0; i < 4; ++i) {
            threads.emplace_back([&, i] {
                const auto decoder = manager.createVideoDecoder(types[i], 0);
                decoder->lockAndSetListener(&listeners[i]);
                decoder->initialize(decoderConfig(types[i]));
                DecodeFeeder feeder(decoder);
                for (const MediaUnit &unit : streams[i])
                    feeder.decode(unit.data);
                decoder->drain();
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        for (const DecodingListener &listener : listeners)
            QCOMPARE(numbers(listener.visible), range(0, 20));
    }
};

QTEST_GUILESS_MAIN(TestLocalDecoderFactories)
#include "tst_localdecoderfactories.moc"

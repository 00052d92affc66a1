// SPDX-License-Identifier: BSD-3-Clause
#include "encodinglistener.h"
#include "rawpicture.h"
#include "scriptedencoders.h"

#include <QtTest>

#include <localvideoencoder.h>

#include <atomic>
#include <limits>
#include <thread>

using namespace Veltra::Ocelle;

namespace {
using Parameter = VideoEncoderParameter;

EncoderConfig config(int width = 64, int height = 48, int bitrate = 500000)
{
    return { std::int32_t(CodecType::H264), width, height, width, height, bitrate, 30 };
}
} // namespace

Q_DECLARE_METATYPE(EncoderConfig)

class TestLocalVideoEncoder : public QObject
{
    Q_OBJECT

    std::shared_ptr<ScriptedEncoders> m_script;
    std::shared_ptr<LocalVideoEncoder> m_encoder;
    EncodingListener m_listener;

    bool encode(std::int64_t timestamp, bool keyFrame = false, int width = 64, int height = 48)
    {
        return m_encoder->encode(
                ycbcrFrame(RawPicture(width, height), PictureLayout::Planar, timestamp), keyFrame);
    }

    bool lastErrorHas(const char *text) const
    {
        return !m_listener.errors.empty() &&
               m_listener.errors.back().find(text) != std::string::npos;
    }

private slots:
    void init()
    {
        m_listener = {};
        m_script = std::make_shared<ScriptedEncoders>(CodecType::H264, "scripted");
        m_encoder = std::make_shared<LocalVideoEncoder>(
                CodecType::H264, std::vector<std::shared_ptr<EncoderFactory>> { m_script });
        m_encoder->lockAndSetListener(&m_listener);
    }
    void cleanup() { m_encoder.reset(); }

    void encode_reportsEveryTimestampAsItIs()
    {
        QVERIFY(m_encoder->initialize(config()));
        const std::vector<std::int64_t> timestamps { 0,
                                                     -1,
                                                     -1,
                                                     5,
                                                     3,
                                                     std::numeric_limits<std::int64_t>::max(),
                                                     std::numeric_limits<std::int64_t>::min() };
        for (std::int64_t timestamp : timestamps)
            QVERIFY(encode(timestamp));
        QCOMPARE(m_listener.units.size(), timestamps.size());
        for (std::size_t i = 0; i < timestamps.size(); ++i)
            QCOMPARE(m_listener.units[i].timestamp, std::uint64_t(timestamps[i]));
        QCOMPARE(m_listener.units[1].timestamp, ~std::uint64_t(0));
    }

    void encode_keepsTimestampsWithTheirPictures_whereTheCodecHoldsPicturesBack()
    {
        m_script->delay = 3;
        QVERIFY(m_encoder->initialize(config()));
        for (int i = 0; i < 5; ++i)
            QVERIFY(encode(100 - i));
        QCOMPARE(m_listener.units.size(), std::size_t(2));
        QVERIFY(encode(50, false, 32, 32)); // another size: what is inside comes out first
        QCOMPARE(m_listener.units.size(), std::size_t(5));
        for (std::size_t i = 0; i < 5; ++i)
            QCOMPARE(m_listener.units[i].timestamp, std::uint64_t(100 - i));
        QCOMPARE(m_script->finished, 1);
    }

    void initialize_refusesWhatMakesNoSense_data()
    {
        QTest::addColumn<EncoderConfig>("wrong");
        QTest::addColumn<QByteArray>("text");
        const auto row = [](const char *name, EncoderConfig wrong, const char *text) {
            QTest::newRow(name) << wrong << QByteArray(text);
        };
        EncoderConfig other = config();
        other.codecType = 0;
        row("codec 0", other, "codec 0");
        other.codecType = 1;
        row("another codec", other, "codec 1");
        row("no width", config(0), "0x48");
        row("negative height", config(64, -1), "64x-1");
        row("huge", config(1 << 30), "too large");
        row("no bit rate", config(64, 48, 0), "bit rate of 0");
        row("negative bit rate", config(64, 48, -1000000), "bit rate of -1000000");
        row("tiny bit rate", config(64, 48, 1), "bit rate of 1 ");
        row("absurd bit rate", config(64, 48, std::numeric_limits<int>::max()), "2147483647");
        other = config();
        other.frameRate = 0;
        row("no frame rate", other, "frame rate of 0");
        other.frameRate = std::numeric_limits<int>::min();
        row("negative frame rate", other, "-2147483648");
        other = config();
        other.stride = -64;
        row("negative stride", other, "stride of -64");
        other = config();
        other.sliceHeight = -1;
        row("negative slice height", other, "-1 lines");
    }

    void initialize_refusesWhatMakesNoSense()
    {
        QFETCH(EncoderConfig, wrong);
        QFETCH(QByteArray, text);
        QVERIFY(!m_encoder->initialize(wrong));
        QCOMPARE(m_listener.errors.size(), std::size_t(1));
        QVERIFY2(lastErrorHas(text.constData()), m_listener.errors.back().c_str());
        QVERIFY(m_script->opened.empty());
        QVERIFY(m_encoder->initialize(config())); // a sound one is taken all the same
        QVERIFY(encode(1));
    }

    void initialize_reportsTheCodecsReason()
    {
        m_script->openError = "no such thing";
        QVERIFY(!m_encoder->initialize(config()));
        QCOMPARE(m_listener.errors, std::vector<std::string> { "H.264: no such thing" });
        QVERIFY(!encode(1));
        m_script->openError.clear();
        QVERIFY(m_encoder->initialize(config()));
        QVERIFY(encode(2));
    }

    void encode_refusesPictures_beforeInitialize()
    {
        QVERIFY(!encode(1));
        QVERIFY(lastErrorHas("before it is configured"));
        QVERIFY(!m_encoder->setBitrate(100000));
    }

    void encode_refusesWrongPictures_andGoesOn()
    {
        QVERIFY(m_encoder->initialize(config()));
        QVERIFY(!m_encoder->encode(nullptr, false));
        QVERIFY(!m_encoder->encodeRGB(nullptr, false));
        auto frame = ycbcrFrame(RawPicture(64, 48), PictureLayout::Planar, 0);
        frame->yStride = 10;
        QVERIFY(!m_encoder->encode(frame, false));
        QVERIFY(lastErrorHas("too short"));
        QVERIFY(!encode(1, false, 20000, 2));
        QVERIFY(lastErrorHas("too large"));
        QCOMPARE(m_listener.errors.size(), std::size_t(4));
        QVERIFY(encode(7));
        QCOMPARE(m_script->opened.size(), std::size_t(1));
        QCOMPARE(m_listener.units.size(), std::size_t(1));
    }

    void encode_startsTheCodecAnew_afterItFailed()
    {
        QVERIFY(m_encoder->initialize(config()));
        QVERIFY(encode(1));
        m_script->encodeError = "out of something";
        QVERIFY(!encode(2));
        QVERIFY(lastErrorHas("H.264: out of something"));
        m_script->encodeError.clear();
        QVERIFY(encode(3));
        QCOMPARE(m_script->opened.size(), std::size_t(2));
        QCOMPARE(m_listener.units.back().timestamp, std::uint64_t(3));
        QCOMPARE(m_listener.keyFrames(), (std::vector<int> { 0, 1 }));
    }

    void encode_keepsNoPicture()
    {
        QVERIFY(m_encoder->initialize(config()));
        const auto frame = ycbcrFrame(RawPicture(64, 48), PictureLayout::NV12, 0);
        QVERIFY(m_encoder->encode(frame, false));
        QCOMPARE(frame.use_count(), 1L);
    }

    void setBitrate_reachesTheCodec_withTheNextPicture()
    {
        QVERIFY(m_encoder->initialize(config()));
        QVERIFY(encode(1));
        QVERIFY(m_encoder->setBitrate(100000));
        QVERIFY(m_encoder->setBitrate(200000));
        QVERIFY(m_script->bitrates.empty());
        QVERIFY(encode(2));
        QVERIFY(encode(3));
        QCOMPARE(m_script->bitrates, std::vector<int> { 200000 });
    }

    void setBitrate_refusesWhatMakesNoSense()
    {
        QVERIFY(m_encoder->initialize(config()));
        QVERIFY(!m_encoder->setBitrate(0));
        QVERIFY(!m_encoder->setBitrate(-1));
        QVERIFY(m_listener.errors.empty()); // a request that names no rate is none
        QVERIFY(!m_encoder->setBitrate(10));
        QVERIFY(!m_encoder->setBitrate(std::numeric_limits<int>::max()));
        QCOMPARE(m_listener.errors.size(), std::size_t(2));
        QVERIFY(encode(1));
        QVERIFY(m_script->bitrates.empty());
    }

    void setBitrate_keepsTheOldRate_whereTheCodecRefuses()
    {
        QVERIFY(m_encoder->initialize(config()));
        m_script->bitrateError = "cannot";
        QVERIFY(m_encoder->setBitrate(100000));
        QVERIFY(encode(1));
        QVERIFY(lastErrorHas("cannot"));
        QVERIFY(encode(2));
        QCOMPARE(m_listener.errors.size(), std::size_t(1));
        QCOMPARE(m_listener.units.size(), std::size_t(2));
    }

    void setBitrate_takesRapidChangesTogether_whereTheCodecHasToStartAnew()
    {
        m_script->reopensForBitrate = true;
        QVERIFY(m_encoder->initialize(config()));
        for (int picture = 0; picture < 90; ++picture) { // a change with every picture
            m_encoder->setBitrate(300000 + 5000 * picture);
            QVERIFY(encode(picture));
        }
        QCOMPARE(m_script->opened.size(), std::size_t(6)); // not before half a second is over
        QCOMPARE(m_listener.units.size(), std::size_t(90));
        for (int picture = 0; picture < 90; ++picture)
            QCOMPARE(m_listener.units[std::size_t(picture)].timestamp, std::uint64_t(picture));
        for (int picture = 0; picture < 15; ++picture)
            QVERIFY(encode(0));
        QCOMPARE(m_script->opened.back().bitrate, 745000);
    }

    void setBitrate_waitsWithSmallChanges_untilAKeyFrame_whereTheCodecHasToStartAnew()
    {
        m_script->reopensForBitrate = true;
        QVERIFY(m_encoder->initialize(config()));
        m_encoder->setBitrate(510000);
        for (int picture = 0; picture < 60; ++picture)
            QVERIFY(encode(picture));
        QCOMPARE(m_script->opened.size(), std::size_t(1));
        QVERIFY(encode(60, true));
        QCOMPARE(m_script->opened.size(), std::size_t(2));
        QCOMPARE(m_script->opened.back().bitrate, 510000);
        QCOMPARE(m_listener.keyFrames(), (std::vector<int> { 0, 60 }));
    }

    void setParameter_refusesWhatIsUnknown()
    {
        for (const char *value : { "", "45", "abc", "90x", "1e2" })
            QVERIFY(!m_encoder->setParameter(Parameter::RotationParameter, value));
        for (const char *value : { "", "yes", "TRUE" })
            QVERIFY(!m_encoder->setParameter(Parameter::MirrorVerticalParameter, value));
        QVERIFY(!m_encoder->setParameter(Parameter::BitrateModeParameter, "lavish"));
        QVERIFY(!m_encoder->setParameter(Parameter::UnknownParameter3, "true"));
        QVERIFY(!m_encoder->setParameter(Parameter(77), "true"));
        QCOMPARE(m_listener.errors.size(), std::size_t(11));
        QVERIFY(m_encoder->initialize(config()));
        QCOMPARE(m_script->opened.back().width, 64);
        QVERIFY(!m_script->opened.back().constantBitrate);
    }

    void setParameter_reachesTheCodec_alsoWhileItRuns()
    {
        QVERIFY(m_encoder->setParameter(Parameter::BitrateModeParameter, "constant"));
        QVERIFY(m_encoder->setParameter(Parameter::RotationParameter, "-90"));
        QVERIFY(m_encoder->initialize(config()));
        QVERIFY(m_script->opened.back().constantBitrate);
        QCOMPARE(m_script->opened.back().width, 48);
        QCOMPARE(m_script->opened.back().height, 64);
        QVERIFY(encode(1));
        QCOMPARE(m_script->opened.size(), std::size_t(1));

        QVERIFY(m_encoder->setParameter(Parameter::BitrateModeParameter, "variable"));
        QVERIFY(encode(2));
        QCOMPARE(m_script->opened.size(), std::size_t(2));
        QVERIFY(!m_script->opened.back().constantBitrate);
        QVERIFY(m_encoder->setParameter(Parameter::RotationParameter, "720"));
        QVERIFY(encode(3));
        QCOMPARE(m_script->opened.back().width, 64);
        QCOMPARE(m_listener.units.size(), std::size_t(3));
    }

    void callback_mayDetach_changeTheBitrate_andDropTheEncoder()
    {
        QVERIFY(m_encoder->initialize(config()));
        int calls = 0;
        m_listener.onCall = [this, &calls] {
            ++calls;
            QVERIFY(m_encoder->setBitrate(100000));
            QVERIFY(m_encoder->setParameter(Parameter::MirrorVerticalParameter, "true"));
            m_encoder->lockAndSetListener(nullptr);
        };
        QVERIFY(encode(1));
        QVERIFY(encode(2)); // nobody listens any more
        QCOMPARE(calls, 1);

        m_listener.onCall = [this] { m_encoder.reset(); };
        m_encoder->lockAndSetListener(&m_listener);
        LocalVideoEncoder *const encoder = m_encoder.get();
        QVERIFY(encoder->encode(ycbcrFrame(RawPicture(64, 48), PictureLayout::Planar, 3), false));
        QVERIFY(!m_encoder);
        QCOMPARE(m_script->alive, 0);
    }

    void callback_mayNotEncode()
    {
        QVERIFY(m_encoder->initialize(config()));
        bool taken = true;
        bool configured = true;
        int calls = 0;
        m_listener.onCall = [this, &taken, &configured, &calls] {
            if (++calls > 1)
                return; // the errors of the refusals
            taken = encode(2);
            configured = m_encoder->initialize(config());
        };
        QVERIFY(encode(1));
        QVERIFY(!taken);
        QVERIFY(!configured);
        QCOMPARE(m_listener.errors.size(), std::size_t(2));
        QCOMPARE(calls, 3);
        QVERIFY(encode(3));
        QCOMPARE(m_listener.units.size(), std::size_t(2));
    }

    void lockAndSetListener_waitsForACallback_andExcludesLaterOnes()
    {
        QVERIFY(m_encoder->initialize(config()));
        std::atomic<bool> isWithin { false };
        std::atomic<bool> mayLeave { false };
        std::atomic<bool> isDetached { false };
        std::atomic<int> late { 0 };
        m_listener.onCall = [&] {
            if (isDetached)
                ++late;
            isWithin = true;
            while (!mayLeave)
                std::this_thread::yield();
        };
        std::thread worker([this] {
            for (int i = 0; i < 20; ++i)
                encode(i);
        });
        QTRY_VERIFY(isWithin.load());
        std::thread detaching([&] {
            m_encoder->lockAndSetListener(nullptr);
            isDetached = true;
        });
        QVERIFY(!isDetached);
        mayLeave = true;
        detaching.join();
        worker.join();
        QCOMPARE(late.load(), 0);
    }

    void destructor_callsNobody_inAnyState()
    {
        m_encoder.reset(); // never configured
        init();
        QVERIFY(m_encoder->initialize(config()));
        m_encoder.reset(); // no picture yet
        init();
        m_script->delay = 5;
        QVERIFY(m_encoder->initialize(config()));
        QVERIFY(encode(1));
        QVERIFY(encode(2));
        m_encoder.reset(); // pictures inside
        QVERIFY(m_listener.units.empty());
        QVERIFY(m_listener.errors.empty());
        QCOMPARE(m_listener.otherCalls, 0);
        QCOMPARE(m_script->alive, 0);
    }
};

QTEST_GUILESS_MAIN(TestLocalVideoEncoder)
#include "tst_localvideoencoder.moc"

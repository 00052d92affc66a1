// SPDX-License-Identifier: BSD-3-Clause
#include "codecrows.h"
#include "encodinglistener.h"
#include "rawpicture.h"
#include "unitdecoder.h"

#include <QtTest>

#include <cmath>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
constexpr int Width = 640;
constexpr int Height = 480;
constexpr int FrameRate = 30;
} // namespace

/*! Bit rate and quality on real footage, as fast as it goes. */
class TestEncoderRates : public QObject
{
    Q_OBJECT

    std::vector<RawPicture> m_pictures;
    std::vector<std::shared_ptr<YCbCrFrame>> m_frames;

    // The footage forth and back, for as long as wanted.
    std::size_t footage(int index) const
    {
        const int last = int(m_frames.size()) - 1;
        const int place = index % (2 * last);
        return std::size_t(place > last ? 2 * last - place : place);
    }

    // Encodes as many seconds at each of the bit rates.
    void encode(CodecType type, const char *mode, const std::vector<int> &bitrates, int seconds,
                EncodingListener *listener) const
    {
        const auto encoder = softwareEncoder(type, listener);
        QVERIFY(encoder->setParameter(VideoEncoderParameter::BitrateModeParameter, mode));
        QVERIFY(encoder->initialize(encoderConfig(type, Width, Height, bitrates.front())));
        int index = 0;
        for (int bitrate : bitrates) {
            QVERIFY(encoder->setBitrate(bitrate));
            for (int i = 0; i < seconds * FrameRate; ++i, ++index)
                QVERIFY(encoder->encode(m_frames[footage(index)], false));
        }
        QVERIFY(listener->errors.empty());
        QCOMPARE(int(listener->units.size()), index);
    }

    static void verifyRate(double rate, double target, double tolerance)
    {
        QVERIFY2(std::abs(rate / target - 1) <= tolerance,
                 qPrintable(QStringLiteral("%1 bit/s instead of %2").arg(rate).arg(target)));
    }

private slots:
    void initTestCase()
    {
        const QString path = QStringLiteral(OCELLE_MEDIA_DIR "/ship-cif.mkv");
        if (!QFile::exists(path))
            QSKIP("there is no footage: " OCELLE_MEDIA_DIR "/ship-cif.mkv");
        m_pictures = UnitDecoder::play(path.toStdString(), Width, Height, 150);
        QCOMPARE(m_pictures.size(), std::size_t(150));
        for (const RawPicture &picture : m_pictures)
            m_frames.push_back(ycbcrFrame(picture, PictureLayout::Planar, 0));
    }

    void constantMode_keepsTheBitrate_andTheQuality_data() { addCodecRows(); }

    void constantMode_keepsTheBitrate_andTheQuality()
    {
        QFETCH(CodecType, type);
        EncodingListener listener;
        encode(type, "constant", { 1000000 }, 10, &listener);
        verifyRate(listener.bitrate(0, 10 * FrameRate), 1000000, 0.1);
        QCOMPARE(listener.keyFrames(), std::vector<int> { 0 });

        UnitDecoder decoder(type);
        double sum = 0;
        double worst = 100;
        int count = 0;
        const auto judge = [&](const std::vector<RawPicture> &pictures) {
            for (const RawPicture &picture : pictures) {
                const double quality = psnr(picture, m_pictures[footage(count++)]);
                sum += quality;
                worst = std::min(worst, quality);
            }
        };
        for (const auto &unit : listener.units)
            judge(decoder.decode(unit.data));
        judge(decoder.finish());
        QCOMPARE(count, 10 * FrameRate);
        QVERIFY2(sum / count > 32, qPrintable(QString::number(sum / count)));
        QVERIFY2(worst > 28, qPrintable(QString::number(worst)));
        qInfo("PSNR %.2f dB, worst %.2f dB", sum / count, worst);
    }

    void setBitrate_isFollowedWithinASecond_data() { addCodecRows(); }

    void setBitrate_isFollowedWithinASecond()
    {
        QFETCH(CodecType, type);
        for (const char *mode : { "constant", "variable" }) {
            EncodingListener listener;
            encode(type, mode, { 200000, 800000, 500000 }, 3, &listener);
            verifyRate(listener.bitrate(4 * FrameRate, 6 * FrameRate), 800000, 0.15);
            verifyRate(listener.bitrate(7 * FrameRate, 9 * FrameRate), 500000, 0.15);
        }
    }

    void modes_differ_data() { addCodecRows(); }

    // In variable mode the first pictures, of which the first is a key frame, may take more.
    void modes_differ()
    {
        QFETCH(CodecType, type);
        EncodingListener constant;
        EncodingListener variable;
        encode(type, "constant", { 300000 }, 4, &constant);
        encode(type, "variable", { 300000 }, 4, &variable);
        const double constantStart = constant.bitrate(0, FrameRate);
        const double variableStart = variable.bitrate(0, FrameRate);
        qInfo("first second: constant %.0f, variable %.0f bit/s", constantStart, variableStart);
        QVERIFY(variableStart > 1.1 * constantStart);
        verifyRate(constant.bitrate(FrameRate, 4 * FrameRate), 300000, 0.1);
        verifyRate(variable.bitrate(FrameRate, 4 * FrameRate), 300000, 0.15);
    }
};

QTEST_GUILESS_MAIN(TestEncoderRates)
#include "tst_encoderrates.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"
#include "decodingchecks.h"
#include "decodinglistener.h"
#include "encodedstream.h"

#include <QtTest>

#include <streamscan.h>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
constexpr int KeyDistance = 10; // pictures

// With so many bytes of its picture, which every codec notices.
Bytes cutOff(CodecType type, Bytes data, std::size_t bytes)
{
    data.resize(StreamScan::create(type)->examine(data.data(), data.size()).headSize + bytes);
    return data;
}
} // namespace

/*! Key frames that decoding would begin with, but that do not come out whole. */
class TestDamagedKeyFrames : public QObject
{
    Q_OBJECT

    enum class Before { Nothing, Drain, Flush };

private slots:
    void neitherItNorWhatRefersToIt_isShown_data()
    {
        QTest::addColumn<CodecType>("type");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<int>("bFrames");
        QTest::addColumn<bool>("hasDelay");
        const auto rows = [](const char *name, CodecType type, int bytes, int bFrames) {
            for (const bool hasDelay : { false, true })
                QTest::addRow("%s %d, %d", name, bFrames, hasDelay)
                        << type << bytes << bFrames << hasDelay;
        };
        rows("H.264 parts", CodecType::H264, 400, 0);
        // With several threads libavcodec may overlook damage in parts of reordered pictures.
        QTest::newRow("H.264 parts 3, 0") << CodecType::H264 << 400 << 3 << false;
        for (const int bFrames : { 0, 3 }) {
            rows("H.264", CodecType::H264, 7, bFrames);
            rows("H.265", CodecType::H265, 6, bFrames);
        }
        rows("VP8", CodecType::VP8, 12, 0);
        rows("VP9", CodecType::VP9, 12, 0);
    }
    void neitherItNorWhatRefersToIt_isShown()
    {
        QFETCH(CodecType, type);
        QFETCH(int, bytes);
        QFETCH(int, bFrames);
        QFETCH(bool, hasDelay);
        auto units = encodedStream({ type, 320, 240, 30, KeyDistance, bFrames });
        units[KeyDistance].data = cutOff(type, units[KeyDistance].data, std::size_t(bytes));
        for (const Before before : { Before::Nothing, Before::Drain, Before::Flush }) {
            for (const bool isDrained : { false, true }) { // soon after the key frame
                DecodingListener listener;
                const auto decoder = softwareDecoder({ type, false, hasDelay }, &listener);
                DecodeFeeder feeder(decoder);
                const auto feed = [&](int from, int to) {
                    for (int i = from; i < to; ++i)
                        QVERIFY(feeder.decode(units[std::size_t(i)].data));
                };
                if (before != Before::Nothing) {
                    feed(0, KeyDistance);
                    before == Before::Drain ? decoder->drain() : decoder->flush();
                    QVERIFY(listener.pictures > 0);
                    listener.visible.clear();
                }
                feed(KeyDistance, isDrained ? KeyDistance + 3 : 2 * KeyDistance);
                if (isDrained)
                    decoder->drain();
                feed(2 * KeyDistance, 3 * KeyDistance);
                decoder->drain();
                QCOMPARE(numbers(listener.visible), range(2 * KeyDistance, 3 * KeyDistance));
                QCOMPARE(int(listener.errors.size()), 1);
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestDamagedKeyFrames)
#include "tst_damagedkeyframes.moc"

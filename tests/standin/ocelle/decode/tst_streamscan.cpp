// SPDX-License-Identifier: BSD-3-Clause
#include "parameterbits.h"

#include <QtTest>

#include <h264parameters.h>
#include <streamscan.h>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)
Q_DECLARE_METATYPE(SequenceWish)
Q_DECLARE_METATYPE(Bytes)

namespace {
H264SequenceParameters readBack(const SequenceWish &wish)
{
    const Bytes unit = sequenceParameters(wish);
    return H264SequenceParameters::read(unit.data() + 5, unit.size() - 5);
}

UnitReport examine(StreamScan &scan, const Bytes &data)
{
    return scan.examine(data.data(), data.size());
}

// Picture parameters and the beginning of a slice for them.
Bytes pictureParameters()
{
    BitWriter to;
    to.number(0);
    to.number(0);
    to.bits(8, 0);
    to.finish();
    return to.unit({ 0x68 });
}

Bytes slice(std::uint8_t header, std::uint32_t frameNumber)
{
    BitWriter to;
    to.number(0);
    to.number(7);
    to.number(0);
    to.bits(4, frameNumber);
    to.bits(32, 0xffffffff);
    to.finish();
    return to.unit({ header });
}
constexpr std::uint8_t KeySlice = 0x65;
constexpr std::uint8_t ReferenceSlice = 0x41;
constexpr std::uint8_t PlainSlice = 0x01;

Bytes joined(const std::vector<Bytes> &parts)
{
    Bytes result;
    for (const Bytes &part : parts)
        result.insert(result.end(), part.begin(), part.end());
    return result;
}

Bytes h265Sequence(std::uint32_t width, std::uint32_t height)
{
    BitWriter to;
    to.bits(4, 0);
    to.bits(3, 1); // one sub layer
    to.bits(1, 0);
    to.bits(32, 0);
    to.bits(64, 0);
    to.bits(16, 0xc000); // with profile and level of its own
    to.bits(32, 0);
    to.bits(64, 0);
    to.number(0);
    to.number(1);
    to.number(width);
    to.number(height);
    to.bits(32, 0);
    to.finish();
    return to.unit({ 0x42, 0x01 });
}

Bytes vp9KeyFrame(std::uint32_t width, std::uint32_t height)
{
    BitWriter to;
    to.bits(2, 2);
    to.bits(2, 0); // profile
    to.bits(4, 2); // key frame, shown
    to.bits(24, 0x498342);
    to.bits(4, 1 << 1);
    to.bits(16, width - 1);
    to.bits(16, height - 1);
    to.finish();
    return to.bytes();
}

Bytes vp8KeyFrame(unsigned width, unsigned height)
{
    return { 0x10,
             0,
             0,
             0x9d,
             0x01,
             0x2a,
             std::uint8_t(width),
             std::uint8_t(width >> 8),
             std::uint8_t(height),
             std::uint8_t(height >> 8) };
}
} // namespace

class TestStreamScan : public QObject
{
    Q_OBJECT
private slots:
    void sequenceParameters_tellOfReordering_data()
    {
        QTest::addColumn<SequenceWish>("wish");
        QTest::addColumn<bool>("reorders");
        const auto row = [](const char *name, std::uint32_t profile, std::uint32_t constraints,
                            std::uint32_t order, int stated, bool reorders) {
            SequenceWish wish;
            wish.profile = profile;
            wish.constraints = constraints;
            wish.order = order;
            wish.reordered = stated;
            QTest::newRow(name) << wish << reorders;
        };
        row("baseline", 66, 0, 0, -1, false);
        row("baseline that says so", 66, 0, 0, 1, true);
        row("main", 77, 0, 0, -1, true);
        row("main that rules it out", 77, 0, 0, 0, false);
        row("main in decoding order", 77, 0, 2, -1, false);
        row("high", 100, 0, 0, -1, true);
        row("high that says two", 100, 0, 0, 2, true);
        row("high that rules it out", 100, 0, 0, 0, false);
        row("high with key pictures only", 100, 0x10, 0, -1, false);
    }
    void sequenceParameters_tellOfReordering()
    {
        QFETCH(SequenceWish, wish);
        QFETCH(bool, reorders);
        const H264SequenceParameters parameters = readBack(wish);
        QVERIFY(parameters.isValid);
        QCOMPARE(parameters.reorders, reorders);
        QCOMPARE(parameters.width, std::uint64_t(64));
        QCOMPARE(parameters.height, std::uint64_t(64));
        QCOMPARE(parameters.frameNumberBits, 4U);
    }

    void cutOffParameters_areNotValid()
    {
        const Bytes whole = sequenceParameters({});
        for (std::size_t size = 0; size + 6 < whole.size(); ++size)
            QVERIFY(!H264SequenceParameters::read(whole.data() + 5, size).isValid);
    }

    void h264_needsParametersBeforeAKeyFrame()
    {
        const auto scan = StreamScan::create(CodecType::H264);
        QCOMPARE(examine(*scan, slice(KeySlice, 0)).problem,
                 std::string("parameter sets are missing"));
        UnitReport report = examine(*scan, joined({ sequenceParameters({}), pictureParameters() }));
        QVERIFY2(report.problem.empty(), report.problem.c_str());
        QVERIFY(!report.hasPicture);
        report = examine(*scan, slice(KeySlice, 0));
        QVERIFY2(report.problem.empty(), report.problem.c_str());
        QVERIFY(report.hasPicture && report.isKey);
    }

    void h264_framesNumbersThatDoNotFollow_areAGap()
    {
        for (const bool allowsGaps : { false, true }) {
            const auto scan = StreamScan::create(CodecType::H264);
            SequenceWish wish;
            wish.allowsGaps = allowsGaps;
            const auto hasGap = [&scan](std::uint8_t header, std::uint32_t number) {
                const UnitReport report = examine(*scan, slice(header, number));
                return !report.gap.empty();
            };
            examine(*scan, joined({ sequenceParameters(wish), pictureParameters() }));
            QVERIFY(!hasGap(ReferenceSlice, 7)); // nothing before it
            QVERIFY(!hasGap(KeySlice, 0));
            QVERIFY(!hasGap(ReferenceSlice, 1));
            QVERIFY(!hasGap(ReferenceSlice, 2));
            QVERIFY(!hasGap(ReferenceSlice, 2)); // the second field
            QVERIFY(!hasGap(PlainSlice, 3));
            QVERIFY(!hasGap(PlainSlice, 3));
            QVERIFY(!hasGap(ReferenceSlice, 3));
            QCOMPARE(hasGap(ReferenceSlice, 5), !allowsGaps);
            QVERIFY(!hasGap(ReferenceSlice, 6));
            QVERIFY(!hasGap(KeySlice, 0));
            for (std::uint32_t number = 1; number < 40; ++number)
                QVERIFY(!hasGap(ReferenceSlice, number & 15));
            QCOMPARE(hasGap(PlainSlice, 12), !allowsGaps);
            QVERIFY(!hasGap(PlainSlice, 12));
            scan->restart();
            QVERIFY(!hasGap(ReferenceSlice, 3));
        }
    }

    void h264_aRecoveryPoint_isAKeyFrame()
    {
        const auto scan = StreamScan::create(CodecType::H264);
        const Bytes parameters = joined({ sequenceParameters({}), pictureParameters() });
        const Bytes other { 0, 0, 1, 6, 5, 2, 9, 9, 0x80 }; // a message of another kind
        const Bytes recovery { 0, 0, 1, 6, 5, 2, 9, 9, 6, 1, 0xc0, 0x80 };
        QVERIFY(!examine(*scan, joined({ parameters, other, slice(ReferenceSlice, 3) })).isKey);
        QVERIFY(examine(*scan, joined({ recovery, slice(ReferenceSlice, 3) })).isKey);
        QVERIFY(!examine(*scan, slice(ReferenceSlice, 3)).isKey);
    }

    void h264_whatComesAfterSideInformation_isNotTakenForIt()
    {
        const auto scan = StreamScan::create(CodecType::H264);
        const Bytes parameters = joined({ sequenceParameters({}), pictureParameters() });
        const Bytes other { 0, 0, 1, 6, 5, 2, 9, 9, 0x80 };
        const Bytes alike(4000, 6); // wherever one begins to read, it is a recovery point
        const Bytes data = joined({ parameters, other, slice(ReferenceSlice, 3), alike });
        const UnitReport report = examine(*scan, data);
        QVERIFY(report.hasPicture);
        QVERIFY(!report.isKey);
    }

    void h264_isRecognised_data()
    {
        QTest::addColumn<Bytes>("data");
        QTest::addColumn<QString>("problem");
        QTest::newRow("no start code") << Bytes(100, 0x65) << "no start code in 100 bytes";
        QTest::newRow("zeros") << Bytes(100, 0) << "no start code in 100 bytes";
        QTest::newRow("H.265") << Bytes { 0, 0, 0, 1, 0x40, 1, 12, 1 }
                               << "nothing that belongs to H.264";
        QTest::newRow("partitions") << slice(0x42, 0) << "slices in partitions";
        QTest::newRow("parameters")
                << Bytes { 0, 0, 1, 0x67, 66 } << "sequence parameters that make no sense";
        QTest::newRow("slice") << Bytes { 0, 0, 1, 0x65, 0 } << "a slice is cut off";
        SequenceWish large;
        large.width = 16400;
        QTest::newRow("large") << sequenceParameters(large) << "pictures of 16400x64 are too large";
        large.width = 16384;
        large.height = 16384;
        QTest::newRow("not too large") << sequenceParameters(large) << "";
    }
    void h264_isRecognised()
    {
        QFETCH(Bytes, data);
        QFETCH(QString, problem);
        QCOMPARE(
                QString::fromStdString(examine(*StreamScan::create(CodecType::H264), data).problem),
                problem);
    }

    void ends_areFoundBehindThePicture()
    {
        const auto h264 = StreamScan::create(CodecType::H264);
        const Bytes picture =
                joined({ sequenceParameters({}), pictureParameters(), slice(KeySlice, 0) });
        UnitReport report = examine(*h264, picture);
        QVERIFY(!report.endsSequence && !report.endsStream);
        report = examine(*h264, joined({ picture, { 0, 0, 1, 10 } }));
        QVERIFY(report.hasPicture && report.endsSequence && !report.endsStream);
        report = examine(*h264, joined({ picture, { 0, 0, 1, 10, 0, 0, 0, 1, 11, 0 } }));
        QVERIFY(report.hasPicture && report.endsSequence && report.endsStream);
        report = examine(*h264, { 0, 0, 1, 11 });
        QVERIFY(!report.hasPicture && report.endsStream && report.problem.empty());

        const auto h265 = StreamScan::create(CodecType::H265);
        report = examine(*h265, { 0, 0, 1, 0x48, 1 });
        QVERIFY(report.endsSequence && !report.endsStream && report.problem.empty());
        report = examine(*h265, { 0, 0, 1, 2, 1, 0xd0, 1, 2, 0, 0, 1, 0x4a, 1 });
        QVERIFY(report.hasPicture && report.endsStream);
    }

    void h265_needsParametersBeforeAKeyFrame()
    {
        const auto scan = StreamScan::create(CodecType::H265);
        const Bytes key { 0, 0, 1, 0x26, 1, 0xaf, 1 };
        QCOMPARE(examine(*scan, key).problem, std::string("a key frame without parameter sets"));
        const UnitReport report =
                examine(*scan, joined({ h265Sequence(1920, 1080), { 0, 0, 1, 0x44, 1, 2 }, key }));
        QVERIFY2(report.problem.empty(), report.problem.c_str());
        QVERIFY(report.hasPicture && report.isKey);
        QVERIFY(!examine(*scan, { 0, 0, 1, 2, 1, 0xd0 }).isKey);
        QCOMPARE(examine(*scan, h265Sequence(64, 20000)).problem,
                 std::string("pictures of 64x20000 are too large"));
        QCOMPARE(examine(*scan, { 0, 0, 1, 0x42, 1, 1 }).problem,
                 std::string("parameter sets are cut off"));
        QCOMPARE(examine(*scan, sequenceParameters({})).problem,
                 std::string("nothing that belongs to H.265"));
        QCOMPARE(examine(*scan, Bytes(5, 1)).problem, std::string("no start code in 5 bytes"));
    }

    void vp8AndVp9_keyFramesAreSeen()
    {
        const auto vp8 = StreamScan::create(CodecType::VP8);
        UnitReport report = examine(*vp8, vp8KeyFrame(176, 144));
        QVERIFY(report.isKey && report.hasPicture && report.problem.empty());
        QVERIFY(!examine(*vp8, { 0x11, 0, 0 }).isKey);
        QCOMPARE(examine(*vp8, vp8KeyFrame(0, 144)).problem,
                 std::string("pictures of 0x144 have no size"));
        QCOMPARE(examine(*vp8, { 0x11, 0 }).problem, std::string("a frame of 2 bytes is cut off"));
        QCOMPARE(examine(*vp8, Bytes(10, 0)).problem,
                 std::string("a key frame without its start code"));

        const auto vp9 = StreamScan::create(CodecType::VP9);
        report = examine(*vp9, vp9KeyFrame(1920, 1080));
        QVERIFY2(report.problem.empty(), report.problem.c_str());
        QVERIFY(report.isKey);
        report = examine(*vp9, { 0x86, 0, 0 });
        QVERIFY(!report.isKey && report.problem.empty());
        QCOMPARE(examine(*vp9, vp9KeyFrame(16385, 64)).problem,
                 std::string("pictures of 16385x64 are too large"));
        QCOMPARE(examine(*vp9, { 0x12, 3, 4 }).problem, std::string("no VP9 frame"));
        QCOMPARE(examine(*vp9, { 0x82, 0x49, 0x83, 0x42, 0 }).problem,
                 std::string("a frame of 5 bytes is cut off"));
        QCOMPARE(examine(*vp9, { 0x82, 1, 2, 3, 0 }).problem,
                 std::string("a key frame without its start code"));
    }

    void unknownKinds_haveNone()
    {
        QVERIFY(!StreamScan::create(CodecType::Unknown));
        QVERIFY(!StreamScan::create(CodecType(99)));
    }
};

QTEST_APPLESS_MAIN(TestStreamScan)
#include "tst_streamscan.moc"

#include "messagelog.h"
#include "ocelleinputframe.h"
#include "ocelleinputrgbframe.h"
#include "testpicture.h"

#include <QtTest>

#include <limits>

using Veltra::Ocelle::RGBFrame;
using Veltra::Ocelle::YCbCrFrame;

class TestInputFrame : public QObject
{
    Q_OBJECT
private slots:
    void interleavedChroma_isTwoPlanesOneByteApart()
    {
        const QVideoFrame picture = testPicture(123, QVideoFrame::Format_NV12, QSize(64, 48));
        const auto input = std::make_shared<OcelleInputFrame>(picture);
        const YCbCrFrame &record = *input;
        QCOMPARE(record.y, picture.bits(0)); // shared, not copied
        QCOMPARE(record.cb, picture.bits(1));
        QCOMPARE(record.cr, picture.bits(1) + 1);
        QCOMPARE(int(record.yStride), 64);
        QCOMPARE(int(record.cStride), 64);
        QCOMPARE(int(record.chromaStep), 2);
        QCOMPARE(int(record.width), 64);
        QCOMPARE(int(record.height), 48);
        QCOMPARE(record.timestamp, std::int64_t(123));
    }

    void planarChroma_isThreePlanes()
    {
        const QVideoFrame picture = testPicture(-1, QVideoFrame::Format_YUV420P, QSize(64, 48));
        const OcelleInputFrame record(picture);
        QCOMPARE(record.y, picture.bits(0));
        QCOMPARE(record.cb, picture.bits(1));
        QCOMPARE(record.cr, picture.bits(2));
        QCOMPARE(int(record.yStride), 64);
        QCOMPARE(int(record.cStride), 32);
        QCOMPARE(int(record.chromaStep), 1);
        QCOMPARE(record.timestamp, std::int64_t(-1));
    }

    void packedPicture_hasNoChroma()
    {
        const QVideoFrame picture = testPicture(0, QVideoFrame::Format_BGRA32, QSize(16, 8));
        const OcelleInputFrame record(picture);
        QCOMPARE(record.y, picture.bits(0));
        QCOMPARE(record.cb, nullptr);
        QCOMPARE(record.cr, nullptr);
        QCOMPARE(int(record.yStride), 64);
        QCOMPARE(int(record.cStride), 0);
        QCOMPARE(int(record.chromaStep), 2);
    }

    void rgbPicture_isOnePlane()
    {
        const QVideoFrame picture = testPicture(77, QVideoFrame::Format_RGB32, QSize(16, 8));
        const OcelleInputRGBFrame input(picture);
        const RGBFrame &record = input;
        QCOMPARE(record.fourcc, std::uint32_t(0x34325842));
        QCOMPARE(record.data, picture.bits());
        QCOMPARE(int(record.stride), 64);
        QCOMPARE(int(record.width), 16);
        QCOMPARE(int(record.height), 8);
        QCOMPARE(record.reserved[0], std::uint64_t(0));
        QCOMPARE(record.reserved[1], std::uint64_t(0));
        QCOMPARE(record.timestamp, std::int64_t(77));
    }

    void sizesAndStrides_areCutTo16Bits()
    {
        const QVideoFrame wide(70002 * 3, QSize(70002, 2), 70002, QVideoFrame::Format_NV12);
        const OcelleInputFrame record(wide);
        QCOMPARE(int(record.width), 70002 - 65536);
        QCOMPARE(int(record.yStride), 70002 - 65536);
        QCOMPARE(int(record.cStride), 70002 - 65536);
        QCOMPARE(record.y, wide.bits(0));
        const QVideoFrame high(4 * 65537, QSize(1, 65537), 4, QVideoFrame::Format_RGB32);
        const OcelleInputRGBFrame rgb(high);
        QCOMPARE(int(rgb.height), 1);
        QCOMPARE(int(rgb.width), 1);
        QCOMPARE(rgb.data, high.bits());
        const QVideoFrame wideRgb(4 * 16384, QSize(16384, 1), 4 * 16384, QVideoFrame::Format_RGB32);
        QCOMPARE(int(OcelleInputRGBFrame(wideRgb).stride), 0);
    }

    void timestamp_isKeptWhole()
    {
        QVideoFrame picture = testPicture();
        picture.setStartTime(std::numeric_limits<qint64>::max());
        QCOMPARE(OcelleInputFrame(picture).timestamp, std::numeric_limits<std::int64_t>::max());
        QCOMPARE(OcelleInputFrame(QVideoFrame()).timestamp, std::int64_t(-1)); // never set
    }

    void pictureWithTooLittleMemory_hasNoPlanes_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<int>("format");
        QTest::addColumn<bool>("readable");
        const int nv12 = QVideoFrame::Format_NV12;
        const int planar = QVideoFrame::Format_YUV420P;
        const int packed = QVideoFrame::Format_BGRA32;
        QTest::newRow("NV12, exact") << 64 * 48 * 3 / 2 << nv12 << true;
        QTest::newRow("NV12, a byte short") << 64 * 48 * 3 / 2 - 1 << nv12 << false;
        QTest::newRow("NV12, no chroma") << 64 * 48 << nv12 << true; // chroma: memory of its own
        QTest::newRow("NV12, half the luma") << 64 * 24 << nv12 << false;
        QTest::newRow("NV12, a byte") << 1 << nv12 << false;
        QTest::newRow("YUV420P, exact") << 64 * 48 * 3 / 2 << planar << true;
        QTest::newRow("YUV420P, half the luma") << 64 * 24 << planar << false;
        QTest::newRow("BGRA32, a byte") << 1 << packed << false;
    }

    void pictureWithTooLittleMemory_hasNoPlanes()
    {
        QFETCH(int, bytes);
        QFETCH(int, format);
        QFETCH(bool, readable);
        const MessageLog messages;
        const QVideoFrame picture(bytes, QSize(64, 48), 64,
                                  static_cast<QVideoFrame::PixelFormat>(format));
        const OcelleInputFrame record(picture);
        QCOMPARE(record.y != nullptr, readable);
        QVERIFY(readable || (!record.cb && !record.cr));
        QCOMPARE(messages.messages("warning veltra.palaver.encoder.ocelle: The picture exceeds its "
                                   "memory")
                         .size(),
                 readable ? 0 : 1);
    }

    void rgbPictureWithTooLittleMemory_hasNoData()
    {
        const QVideoFrame picture(64 * 8 - 1, QSize(16, 8), 64, QVideoFrame::Format_RGB32);
        QCOMPARE(OcelleInputRGBFrame(picture).data, nullptr);
    }

    void strideThatCountsBackwards_leavesNoPlanes()
    {
        const auto track = std::make_shared<BufferTrack>();
        const QVideoFrame picture(new TrackedBuffer(track, 4096, -64), QSize(64, 48),
                                  QVideoFrame::Format_BGRA32);
        QCOMPARE(OcelleInputFrame(picture).y, nullptr);
        const QVideoFrame rgb(new TrackedBuffer(track, 4096, -64), QSize(16, 48),
                              QVideoFrame::Format_RGB32);
        QCOMPARE(OcelleInputRGBFrame(rgb).data, nullptr);
        QCOMPARE(track->maps.load(), track->unmaps.load());
    }

    void samePictureTwice_isUnmappedWithTheLastOfThem()
    {
        const auto track = std::make_shared<BufferTrack>();
        {
            const QVideoFrame picture = trackedPicture(track);
            auto first = std::make_unique<OcelleInputFrame>(picture);
            const OcelleInputFrame second(picture);
            QCOMPARE(track->maps.load(), 1);
            first.reset();
            QCOMPARE(track->unmaps.load(), 0);
            QVERIFY(second.frame().isMapped());
        }
        QCOMPARE(track->unmaps.load(), 1);
        QCOMPARE(track->buffers.load(), 0);
    }

    void pictureMappedForWriting_isLeftToItsOwner()
    {
        const MessageLog messages;
        QVideoFrame picture = testPicture();
        QVERIFY(picture.map(QAbstractVideoBuffer::ReadWrite));
        {
            const OcelleInputFrame record(picture);
            QCOMPARE(record.y, picture.bits(0));
        }
        QVERIFY(picture.isMapped());
        picture.unmap();
        QCOMPARE(messages.messages(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestInputFrame)
#include "tst_ocelleinputframe.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "messagelog.h"
#include "ocelleinputframe.h"
#include "ocelleinputrgbframe.h"
#include "testpicture.h"

#include <QAbstractPlanarVideoBuffer>
#include <QtTest>

#include <limits>
#include <vector>

using Veltra::Ocelle::RGBFrame;
using Veltra::Ocelle::YCbCrFrame;

namespace {

/*! Planes as an application may have them: each allocated by itself, as close as it happens. */
class SeparatePlanes : public QAbstractPlanarVideoBuffer
{
public:
    explicit SeparatePlanes(const QSize &size)
        : QAbstractPlanarVideoBuffer(NoHandle)
        , m_width(size.width())
        , m_memory(static_cast<std::size_t>(size.width()) * size.height() * 2)
    {
        m_planes[0] = m_memory.data();
        m_planes[1] = m_planes[0] + size.width() * size.height() + Gap;
        m_planes[2] = m_planes[1] + size.width() * size.height() / 4 + Gap;
        m_bytes = size.width() * size.height() * 3 / 2;
    }

    const uchar *plane(int index) const { return m_planes[index]; }
    MapMode mapMode() const override { return m_mapMode; }
    int map(MapMode mode, int *bytes, int strides[4], uchar *planes[4]) override
    {
        m_mapMode = mode;
        *bytes = m_bytes; // of all, as Qt has it
        for (int i = 0; i < 3; ++i) {
            planes[i] = m_planes[i];
            strides[i] = i == 0 ? m_width : m_width / 2;
        }
        return 3;
    }
    void unmap() override { m_mapMode = NotMapped; }

private:
    static constexpr int Gap = 16; // bytes that an allocator keeps between them

    const int m_width;
    std::vector<uchar> m_memory;
    uchar *m_planes[3];
    int m_bytes;
    MapMode m_mapMode = NotMapped;
};

} // namespace

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
        QTest::newRow("NV12, no chroma") << 64 * 48 << nv12 << false;
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

    void cutPictureWithTooLittleMemory_hasNoPlanes_data()
    {
        QTest::addColumn<int>("stride");
        QTest::addColumn<int>("lines");
        QTest::newRow("high") << 64 << 65536 + 48;
        QTest::newRow("wide") << 65536 + 64 << 48;
    }

    void cutPictureWithTooLittleMemory_hasNoPlanes()
    {
        QFETCH(int, stride);
        QFETCH(int, lines);
        for (const auto format : { QVideoFrame::Format_BGRA32, QVideoFrame::Format_NV12 }) {
            const QVideoFrame picture(64 * 48 * 3 / 2, QSize(64, lines), stride, format);
            QCOMPARE(OcelleInputFrame(picture).y, nullptr);
        }
    }

    void planesWithMemoryOfTheirOwn_areTaken()
    {
        auto *buffer = new SeparatePlanes(QSize(64, 48));
        const QVideoFrame picture(buffer, QSize(64, 48), QVideoFrame::Format_YUV420P);
        const OcelleInputFrame record(picture);
        QCOMPARE(record.y, buffer->plane(0));
        QCOMPARE(record.cb, buffer->plane(1));
        QCOMPARE(record.cr, buffer->plane(2));
        QCOMPARE(int(record.cStride), 32);
    }

    void pictureOfHardlyAnyLines_isHarmless_data()
    {
        QTest::addColumn<int>("lines");
        for (const int lines : { -2, -1, 0, 1, 2 })
            QTest::newRow(QByteArray::number(lines)) << lines;
    }

    void pictureOfHardlyAnyLines_isHarmless()
    {
        QFETCH(int, lines);
        for (const auto format : { QVideoFrame::Format_YUV420P, QVideoFrame::Format_YV12,
                                   QVideoFrame::Format_NV12, QVideoFrame::Format_BGRA32 }) {
            const QVideoFrame picture(4096, QSize(64, lines), 64, format);
            const OcelleInputFrame record(picture);
            QCOMPARE(int(record.height), lines & 0xffff);
            const bool planar =
                    format == QVideoFrame::Format_YUV420P || format == QVideoFrame::Format_YV12;
            QCOMPARE(record.y != nullptr, lines >= (planar ? 2 : 0));
        }
        const QVideoFrame rgb(4096, QSize(16, lines), 64, QVideoFrame::Format_RGB32);
        QCOMPARE(OcelleInputRGBFrame(rgb).data != nullptr, lines >= 0);
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

// SPDX-License-Identifier: BSD-3-Clause
#include "messagelog.h"
#include "outputtesting.h"
#include "recordingsurface.h"
#include "testpicture.h"

#include <QtTest>

#include <ocelle/frames.h>
#include <ocelle/videooutputqt5.h>

#include <algorithm>
#include <set>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

/*! \a picture as a frame; it has to outlive it. */
YCbCrFrame frameOf(const TestPicture &picture)
{
    const auto &planes = picture.planes;
    YCbCrFrame frame {};
    frame.y = planes[0].data;
    frame.yStride = std::uint16_t(planes[0].stride);
    frame.cStride = std::uint16_t(planes[1].stride);
    frame.width = std::uint16_t(picture.width);
    frame.height = std::uint16_t(picture.height);
    frame.timestamp = picture.timestamp;
    frame.chromaStep = picture.planeCount == 3 ? 1 : 2;
    switch (picture.format) {
    case PixelFormat::NV12:
        frame.cb = planes[1].data;
        frame.cr = frame.cb + 1;
        break;
    case PixelFormat::NV21:
        frame.cr = planes[1].data;
        frame.cb = frame.cr + 1;
        break;
    default:
        frame.cb = planes[1].data;
        frame.cr = planes[2].data;
    }
    return frame;
}

/*! Lends a copy of \a frame's samples for the call and destroys them after it. */
void lend(VideoOutputQt5 &output, TestPicture picture)
{
    const YCbCrFrame frame = frameOf(picture);
    output.onVideoFrame(&frame);
    for (auto &plane : picture.memory)
        std::fill(plane.begin(), plane.end(), std::uint8_t(0));
}

bool isTestPicture(QVideoFrame frame)
{
    if (!frame.map(QAbstractVideoBuffer::ReadOnly))
        return false;
    bool same = true;
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x)
            same = same && sampleOf(frame, x, y) == expectedSample(x, y);
    }
    frame.unmap();
    return same;
}

TestPicture stamped(int timestamp)
{
    TestPicture picture(PixelFormat::YU12, 16, 8);
    picture.timestamp = timestamp;
    return picture;
}

} // namespace

class TestVideoOutputQt5Frames : public QObject
{
    Q_OBJECT
private slots:
    void copiesFramesInTheirOwnLayout_data();
    void copiesFramesInTheirOwnLayout();
    void copiesFramesWithSpreadChroma();
    void framesArePresentedInOrder();
    void framesAreNeitherMissingNorDuplicated();
    void memoryIsUsedAgain();
    void dropsFrames_whenTheSurfaceKeepsAll();
    void framesComeFromAnyThread();
    void framesOutliveTheOutput();
    void dropsFramesThatAreNone_data();
    void dropsFramesThatAreNone();
};

void TestVideoOutputQt5Frames::copiesFramesInTheirOwnLayout_data()
{
    QTest::addColumn<quint32>("format");
    QTest::addColumn<int>("shownAs");
    QTest::addColumn<QSize>("size");
    for (const QSize &size : { QSize(1, 1), QSize(5, 3), QSize(320, 240) }) {
        QTest::addRow("planar %dx%d", size.width(), size.height())
                << quint32(PixelFormat::YU12) << int(QVideoFrame::Format_YUV420P) << size;
        QTest::addRow("NV12 %dx%d", size.width(), size.height())
                << quint32(PixelFormat::NV12) << int(QVideoFrame::Format_NV12) << size;
        QTest::addRow("NV21 %dx%d", size.width(), size.height())
                << quint32(PixelFormat::NV21) << int(QVideoFrame::Format_NV21) << size;
    }
}

void TestVideoOutputQt5Frames::copiesFramesInTheirOwnLayout()
{
    QFETCH(quint32, format);
    QFETCH(int, shownAs);
    QFETCH(QSize, size);
    RecordingSurface surface(
            { QVideoFrame::Format_YUV420P, QVideoFrame::Format_NV12, QVideoFrame::Format_NV21 });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    TestPicture picture(PixelFormat(format), size.width(), size.height());
    picture.timestamp = -12345;
    lend(output, std::move(picture));
    QTRY_COMPARE(surface.presented(), 1);
    const QVideoFrame frame = surface.frames().first();
    QCOMPARE(int(frame.pixelFormat()), shownAs);
    QCOMPARE(frame.size(), size);
    QCOMPARE(frame.startTime(), Q_INT64_C(-12345));
    QVERIFY(isTestPicture(frame));
}

void TestVideoOutputQt5Frames::copiesFramesWithSpreadChroma()
{
    // Four bytes for each pair of chroma samples: Cb, nothing, Cr, nothing.
    const int width = 10;
    const int height = 6;
    TestPicture picture(PixelFormat::YU12, width, height);
    std::vector<std::uint8_t> chroma(std::size_t(4 * width / 2 * height / 2), 0);
    for (int y = 0; y < height / 2; ++y) {
        for (int x = 0; x < width / 2; ++x) {
            const auto at = std::size_t(y * 4 * width / 2 + 4 * x);
            chroma[at] = std::uint8_t(expectedSample(2 * x, 2 * y).cb);
            chroma[at + 2] = std::uint8_t(expectedSample(2 * x, 2 * y).cr);
        }
    }
    YCbCrFrame frame = frameOf(picture);
    frame.cb = chroma.data();
    frame.cr = frame.cb + 2;
    frame.chromaStep = 4;
    frame.cStride = std::uint16_t(4 * width / 2);

    RecordingSurface surface({ QVideoFrame::Format_YUV420P });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onVideoFrame(&frame);
    std::fill(chroma.begin(), chroma.end(), std::uint8_t(0));
    QTRY_COMPARE(surface.presented(), 1);
    QVERIFY(isTestPicture(surface.frames().first()));
}

void TestVideoOutputQt5Frames::framesArePresentedInOrder()
{
    RecordingSurface surface({ QVideoFrame::Format_YUV420P });
    surface.keepFrames = false;
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 35; ++i)
        lend(output, stamped(i));
    QTRY_COMPARE(surface.presented(), 32);
    QCOMPARE(surface.startTimes().first(), Q_INT64_C(4));
    QCOMPARE(surface.startTimes().last(), Q_INT64_C(35));
    QCOMPARE(statisticsOf(surface).dropped, 3u);
    QCOMPARE(statisticsOf(surface).delivered, 35u);
}

void TestVideoOutputQt5Frames::framesAreNeitherMissingNorDuplicated()
{
    RecordingSurface surface({ QVideoFrame::Format_YUV420P, QVideoFrame::Format_NV12 });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    output.onGraphicBuffer(makeDecoded(10));
    lend(output, stamped(1));
    lend(output, stamped(1));
    output.onGraphicBuffer(makeDecoded(11));
    QCOMPARE(statisticsOf(surface).delivered, 4u);
    QCOMPARE(statisticsOf(surface).missing, 0u);
    QCOMPARE(statisticsOf(surface).duplicated, 0u);
}

void TestVideoOutputQt5Frames::memoryIsUsedAgain()
{
    RecordingSurface surface({ QVideoFrame::Format_YUV420P });
    surface.keepFrames = false;
    std::set<const uchar *> memory;
    surface.onPresent = [&memory](QVideoFrame frame) {
        frame.map(QAbstractVideoBuffer::ReadOnly);
        memory.insert(frame.bits());
        frame.unmap();
        return true;
    };
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 50; ++i) {
        lend(output, stamped(i));
        QTRY_COMPARE(surface.presented(), i);
    }
    QVERIFY(memory.size() <= 2);
}

void TestVideoOutputQt5Frames::dropsFrames_whenTheSurfaceKeepsAll()
{
    RecordingSurface surface({ QVideoFrame::Format_YUV420P });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 1; i <= 60; ++i) {
        lend(output, stamped(i));
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(statisticsOf(surface).presented, 40u);
    QCOMPARE(statisticsOf(surface).delivered, 60u);
    QCOMPARE(statisticsOf(surface).dropped, 20u);
    QVERIFY(isTestPicture(surface.frames().first())); // not written over
}

void TestVideoOutputQt5Frames::framesComeFromAnyThread()
{
    RecordingSurface surface({ QVideoFrame::Format_YUV420P });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    std::thread source([&output] {
        for (int i = 1; i <= 10; ++i)
            lend(output, stamped(i));
    });
    source.join();
    QTRY_COMPARE(surface.presented(), 10);
    const auto frames = surface.frames();
    for (const QVideoFrame &frame : frames)
        QVERIFY(isTestPicture(frame));
    for (const QThread *const thread : surface.threads())
        QCOMPARE(thread, QThread::currentThread());
}

void TestVideoOutputQt5Frames::framesOutliveTheOutput()
{
    RecordingSurface surface({ QVideoFrame::Format_YUV420P });
    {
        VideoOutputQt5 output;
        output.setVideoSurface(&surface);
        lend(output, stamped(1));
        QTRY_COMPARE(surface.presented(), 1);
    }
    QVERIFY(isTestPicture(surface.frames().first()));
}

void TestVideoOutputQt5Frames::dropsFramesThatAreNone_data()
{
    QTest::addColumn<QString>("spoil");
    for (const char *const spoil : { "null", "no luma", "no cb", "no cr", "no width", "no height",
                                     "short luma", "short chroma", "no step", "huge" })
        QTest::newRow(spoil) << QString::fromLatin1(spoil);
}

void TestVideoOutputQt5Frames::dropsFramesThatAreNone()
{
    QFETCH(QString, spoil);
    const TestPicture picture(PixelFormat::YU12, 15, 7);
    YCbCrFrame frame = frameOf(picture);
    const QHash<QString, std::function<void()>> spoilers {
        { "null", [] {} },
        { "no luma", [&] { frame.y = nullptr; } },
        { "no cb", [&] { frame.cb = nullptr; } },
        { "no cr", [&] { frame.cr = nullptr; } },
        { "no width", [&] { frame.width = 0; } },
        { "no height", [&] { frame.height = 0; } },
        { "short luma", [&] { frame.yStride = 14; } },
        { "short chroma", [&] { frame.cStride = 7; } },
        { "no step", [&] { frame.chromaStep = 0; } },
        { "huge", [&] { frame.width = frame.height = frame.yStride = frame.cStride = 65535; } },
    };
    spoilers.value(spoil)();

    MessageLog log;
    RecordingSurface surface({ QVideoFrame::Format_YUV420P });
    VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    for (int i = 0; i < 3; ++i)
        output.onVideoFrame(spoil == QLatin1String("null") ? nullptr : &frame);
    QCOMPARE(log.warnings(), QStringList()); // nothing is called from here
    lend(output, stamped(5));
    QTRY_COMPARE(surface.startTimes(), (QList<qint64> { 5 }));
    QCOMPARE(statisticsOf(surface).dropped, 3u);
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY(log.warnings().first().startsWith(QLatin1String("Frames are dropped that are null")));
}

QTEST_GUILESS_MAIN(TestVideoOutputQt5Frames)
#include "tst_videooutputqt5frames.moc"

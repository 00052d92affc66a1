// SPDX-License-Identifier: BSD-3-Clause
#include "capturemodes.h"
#include "v4l2format.h"

#include <QtTest>

#include <algorithm>

using namespace Veltra::Ocelle;

namespace {

v4l2_frmsizeenum discreteSize(std::uint32_t width, std::uint32_t height)
{
    v4l2_frmsizeenum answer {};
    answer.type = V4L2_FRMSIZE_TYPE_DISCRETE;
    answer.discrete = { width, height };
    return answer;
}

v4l2_frmsizeenum rangeOfSizes(v4l2_frmsize_stepwise range, std::uint32_t type)
{
    v4l2_frmsizeenum answer {};
    answer.type = type;
    answer.stepwise = range;
    return answer;
}

v4l2_frmivalenum discreteInterval(std::uint32_t numerator, std::uint32_t denominator)
{
    v4l2_frmivalenum answer {};
    answer.type = V4L2_FRMIVAL_TYPE_DISCRETE;
    answer.discrete = { numerator, denominator };
    return answer;
}

v4l2_frmivalenum rangeOfIntervals(v4l2_fract min, v4l2_fract max)
{
    v4l2_frmivalenum answer {};
    answer.type = V4L2_FRMIVAL_TYPE_CONTINUOUS;
    answer.stepwise = { min, max, { 1, 1 } };
    return answer;
}

CaptureMode mode(std::uint32_t fourcc, std::int32_t width, std::int32_t height, v4l2_fract interval)
{
    return { fourcc, width, height, interval, rateOf(interval) };
}

QStringList toText(const std::vector<CameraCapability> &capabilities)
{
    QStringList all;
    for (const CameraCapability &one : capabilities)
        all.append(QStringLiteral("%1x%2@%3").arg(one.width).arg(one.height).arg(one.frameRate));
    return all;
}

bool contains(const std::vector<PictureSize> &sizes, PictureSize size)
{
    return std::find(sizes.begin(), sizes.end(), size) != sizes.end();
}

} // namespace

class TestCaptureModes : public QObject
{
    Q_OBJECT
private slots:
    void sizesFrom_takesDiscreteSizesOnceInTheirOrder();
    void sizesFrom_leavesOutWhatIsNoSize();
    void sizesFrom_offersCommonSizesOfARange();
    void sizesFrom_takesOnlyWholeStepsOfARange();
    void sizesFrom_offersTheOnlySizeOfANarrowRange();
    void sizesFrom_offersNothing_whenTheRangeIsUpsideDown();
    void intervalsFrom_ordersShortestFirstAndLeavesOutWhatIsNone();
    void intervalsFrom_offersUsualRatesOfARange();
    void rateOf_rounds_data();
    void rateOf_rounds();
    void capabilitiesOf_putsPreferredFirst();
    void capabilitiesOf_leavesOutUnknownFormats();
    void chooseMode_takesTheCheapestFormatThatHasSizeAndRate();
    void chooseMode_takesTheIntervalNearestToTheRate();
    void deliveredFormats_beginsWithThatOfThePreferredCapability();
    void name_showsUnprintableLettersAsDots();
};

void TestCaptureModes::sizesFrom_takesDiscreteSizesOnceInTheirOrder()
{
    const auto sizes = sizesFrom({ discreteSize(640, 480), discreteSize(160, 120),
                                   discreteSize(640, 480), discreteSize(1279, 719) });
    QCOMPARE(sizes, (std::vector<PictureSize> { { 640, 480 }, { 160, 120 }, { 1279, 719 } }));
}

void TestCaptureModes::sizesFrom_leavesOutWhatIsNoSize()
{
    v4l2_frmsizeenum unknown = discreteSize(640, 480);
    unknown.type = 99;
    QVERIFY(sizesFrom({ discreteSize(0, 480), discreteSize(640, 0), discreteSize(0xffffffff, 2),
                        discreteSize(16385, 16), unknown })
                    .empty());
}

void TestCaptureModes::sizesFrom_offersCommonSizesOfARange()
{
    const auto sizes =
            sizesFrom({ rangeOfSizes({ 16, 1936, 8, 16, 1096, 2 }, V4L2_FRMSIZE_TYPE_STEPWISE) });
    for (const PictureSize &size : { PictureSize { 320, 240 }, PictureSize { 640, 480 },
                                     PictureSize { 1280, 720 }, PictureSize { 1920, 1080 } })
        QVERIFY(contains(sizes, size));
    QVERIFY(!contains(sizes, { 2560, 1440 }));
    QCOMPARE(sizes.back(), PictureSize(1936, 1096));
}

void TestCaptureModes::sizesFrom_takesOnlyWholeStepsOfARange()
{
    const auto sizes =
            sizesFrom({ rangeOfSizes({ 32, 1000, 32, 32, 1000, 32 }, V4L2_FRMSIZE_TYPE_STEPWISE) });
    QVERIFY(contains(sizes, { 640, 480 }));
    QVERIFY(!contains(sizes, { 640, 360 })); // 360 is not a multiple of 32
    QCOMPARE(sizes.back(), PictureSize(992, 992));
}

void TestCaptureModes::sizesFrom_offersTheOnlySizeOfANarrowRange()
{
    const auto sizes =
            sizesFrom({ rangeOfSizes({ 652, 652, 0, 488, 488, 0 }, V4L2_FRMSIZE_TYPE_CONTINUOUS) });
    QCOMPARE(sizes, (std::vector<PictureSize> { { 652, 488 } }));
}

void TestCaptureModes::sizesFrom_offersNothing_whenTheRangeIsUpsideDown()
{
    QVERIFY(sizesFrom({ rangeOfSizes({ 700, 600, 7, 10, 20, 1 }, V4L2_FRMSIZE_TYPE_STEPWISE) })
                    .empty());
    QVERIFY(sizesFrom({ rangeOfSizes({ 0, 0, 1, 0, 0, 1 }, V4L2_FRMSIZE_TYPE_CONTINUOUS) })
                    .empty());
}

void TestCaptureModes::intervalsFrom_ordersShortestFirstAndLeavesOutWhatIsNone()
{
    const auto intervals = intervalsFrom({ discreteInterval(1, 15), discreteInterval(0, 30),
                                           discreteInterval(1, 0), discreteInterval(1001, 30000),
                                           discreteInterval(2, 30), discreteInterval(1, 100000) });
    QCOMPARE(intervals.size(), std::size_t(2)); // 2/30 is 1/15 again
    QCOMPARE(intervals[0].numerator, 1001U);
    QCOMPARE(intervals[1].denominator, 15U);
}

void TestCaptureModes::intervalsFrom_offersUsualRatesOfARange()
{
    QStringList rates;
    for (const v4l2_fract &interval : intervalsFrom({ rangeOfIntervals({ 1, 40 }, { 1, 10 }) }))
        rates.append(QString::number(rateOf(interval)));
    QCOMPARE(rates.join(' '), QStringLiteral("40 30 25 24 20 15 10"));
}

void TestCaptureModes::rateOf_rounds_data()
{
    QTest::addColumn<quint32>("numerator");
    QTest::addColumn<quint32>("denominator");
    QTest::addColumn<quint32>("rate");
    QTest::newRow("whole") << 1U << 30U << 30U;
    QTest::newRow("television") << 1001U << 30000U << 30U;
    QTest::newRow("half") << 2U << 25U << 13U;
    QTest::newRow("slow") << 10U << 3U << 1U;
    QTest::newRow("none") << 1U << 0U << 0U;
    QTest::newRow("endless") << 0U << 1U << 0U;
    QTest::newRow("largest") << 0xffffffffU << 0xffffffffU << 1U;
}

void TestCaptureModes::rateOf_rounds()
{
    QFETCH(quint32, numerator);
    QFETCH(quint32, denominator);
    QTEST(rateOf({ numerator, denominator }), "rate");
}

void TestCaptureModes::capabilitiesOf_putsPreferredFirst()
{
    const auto capabilities = capabilitiesOf({ mode(V4L2_PIX_FMT_YUYV, 1280, 720, { 1, 10 }),
                                               mode(V4L2_PIX_FMT_MJPEG, 1280, 720, { 1, 60 }),
                                               mode(V4L2_PIX_FMT_MJPEG, 1280, 720, { 1, 30 }),
                                               mode(V4L2_PIX_FMT_YUYV, 320, 240, { 1, 15 }),
                                               mode(V4L2_PIX_FMT_YUYV, 640, 480, { 1, 30 }),
                                               mode(V4L2_PIX_FMT_MJPEG, 640, 480, { 1, 30 }) });
    QCOMPARE(toText(capabilities).join(' '),
             QStringLiteral("640x480@30 320x240@15 1280x720@30 1280x720@60 1280x720@10"));
}

void TestCaptureModes::capabilitiesOf_leavesOutUnknownFormats()
{
    QVERIFY(capabilitiesOf({ mode(V4L2_PIX_FMT_SBGGR10, 640, 480, { 1, 30 }) }).empty());
    QVERIFY(!chooseMode({ mode(V4L2_PIX_FMT_SBGGR10, 640, 480, { 1, 30 }) }, { 640, 480, 30 }));
}

void TestCaptureModes::chooseMode_takesTheCheapestFormatThatHasSizeAndRate()
{
    const std::vector<CaptureMode> modes { mode(V4L2_PIX_FMT_MJPEG, 1280, 720, { 1, 30 }),
                                           mode(V4L2_PIX_FMT_YUYV, 1280, 720, { 1, 10 }),
                                           mode(V4L2_PIX_FMT_YUYV, 640, 480, { 1, 30 }),
                                           mode(V4L2_PIX_FMT_NV12, 640, 480, { 1, 30 }),
                                           mode(V4L2_PIX_FMT_MJPEG, 640, 480, { 1, 30 }) };
    QCOMPARE(chooseMode(modes, { 640, 480, 30 })->fourcc, V4L2_PIX_FMT_NV12);
    QCOMPARE(chooseMode(modes, { 1280, 720, 30 })->fourcc, V4L2_PIX_FMT_MJPEG);
    QCOMPARE(chooseMode(modes, { 1280, 720, 10 })->fourcc, V4L2_PIX_FMT_YUYV);
    QVERIFY(!chooseMode(modes, { 1280, 720, 15 }));
    QVERIFY(!chooseMode(modes, { 1280, 721, 10 }));
}

void TestCaptureModes::chooseMode_takesTheIntervalNearestToTheRate()
{
    const std::vector<CaptureMode> modes { mode(V4L2_PIX_FMT_NV12, 640, 480, { 1001, 30000 }),
                                           mode(V4L2_PIX_FMT_NV12, 640, 480, { 1, 30 }),
                                           mode(V4L2_PIX_FMT_NV12, 640, 480, { 100, 3049 }) };
    QCOMPARE(chooseMode(modes, { 640, 480, 30 })->interval.denominator, 30U);
}

void TestCaptureModes::deliveredFormats_beginsWithThatOfThePreferredCapability()
{
    const auto formats = deliveredFormats({ mode(V4L2_PIX_FMT_MJPEG, 1920, 1080, { 1, 30 }),
                                            mode(V4L2_PIX_FMT_NV12, 640, 480, { 1, 30 }),
                                            mode(V4L2_PIX_FMT_YUYV, 640, 480, { 1, 30 }),
                                            mode(V4L2_PIX_FMT_NV21, 320, 240, { 1, 30 }) });
    QCOMPARE(formats, (std::vector<PixelFormat> { PixelFormat::NV12, PixelFormat::NV21,
                                                  PixelFormat::YU12 }));
}

void TestCaptureModes::name_showsUnprintableLettersAsDots()
{
    QCOMPARE(V4l2Format::name(V4L2_PIX_FMT_YUYV), std::string("YUYV"));
    QCOMPARE(V4l2Format::name(V4L2_PIX_FMT_Y10), std::string("Y10"));
    QCOMPARE(V4l2Format::name(0x01020341), std::string("A..."));
}

QTEST_APPLESS_MAIN(TestCaptureModes)
#include "tst_capturemodes.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "streamingcamera.h"

#include <QSignalSpy>
#include <QTest>
#include <QVideoSurfaceFormat>

#include <statistics.h>

#include <chrono>

using Viewer::FrameMeter;
using Viewer::Statistics;

class TestStatistics : public QObject
{
    Q_OBJECT
private slots:
    void meter_countsPictures_andTheirAge();
    void meter_takesNoTime_fromOtherClocks();
    void meter_leavesPicturesAsTheyAre();
    void statistics_tellRates_ofRunningCamera();
    void statistics_areZero_withoutSurface();
};

namespace {

qint64 now()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

QVideoFrame frameOf(qint64 time)
{
    QVideoFrame frame(64 * 48 * 3 / 2, QSize(64, 48), 64, QVideoFrame::Format_NV12);
    frame.setStartTime(time);
    return frame;
}

QVideoFrame show(FrameMeter &meter, QVideoFrame frame)
{
    const std::unique_ptr<QVideoFilterRunnable> runnable(meter.createFilterRunnable());
    return runnable->run(&frame, QVideoSurfaceFormat(), QVideoFilterRunnable::RunFlags());
}

} // namespace

void TestStatistics::meter_countsPictures_andTheirAge()
{
    FrameMeter meter;
    show(meter, frameOf(now() - 20000));
    show(meter, frameOf(now() - 500000));
    const FrameMeter::Counts counts = meter.take();
    QCOMPARE(counts.pictures, 2);
    QCOMPARE(counts.timed, 2);
    QVERIFY(counts.latencySum >= 520000);
    QVERIFY(counts.worstLatency >= 500000);
    QCOMPARE(meter.take().pictures, 0);
}

void TestStatistics::meter_takesNoTime_fromOtherClocks()
{
    FrameMeter meter;
    show(meter, frameOf(now() - 60000000));
    show(meter, frameOf(now() + 60000000));
    const FrameMeter::Counts counts = meter.take();
    QCOMPARE(counts.pictures, 2);
    QCOMPARE(counts.timed, 0);
}

void TestStatistics::meter_leavesPicturesAsTheyAre()
{
    FrameMeter meter;
    const QVideoFrame frame = frameOf(now());
    QVERIFY(show(meter, frame) == frame);
}

void TestStatistics::statistics_tellRates_ofRunningCamera()
{
    StreamingCamera camera("pattern:back");
    FrameMeter meter;
    Statistics statistics;
    statistics.setProperty("meter", QVariant::fromValue(&meter));
    statistics.setSurface(camera.surface());
    connect(&statistics, &Statistics::changed, this, [&meter] { show(meter, frameOf(now())); });
    camera.camera()->start();
    QTRY_VERIFY(statistics.delivered() > 10);
    QVERIFY(statistics.delivered() < 70);
    QTRY_VERIFY(statistics.shown() > 0);
    QVERIFY(statistics.latency() >= 0);
    QVERIFY(statistics.worstLatency() >= statistics.latency());
    QVERIFY(statistics.cpu() > 0);
    QVERIFY(statistics.queued() >= 0 && statistics.queued() <= 1); // only the newest waits
}

void TestStatistics::statistics_areZero_withoutSurface()
{
    Statistics statistics;
    QSignalSpy changed(&statistics, &Statistics::changed);
    QTRY_VERIFY(!changed.isEmpty());
    QCOMPARE(statistics.delivered(), 0.0);
    QCOMPARE(statistics.shown(), 0.0);
    QVERIFY(statistics.latency() < 0);
    QCOMPARE(statistics.queued(), 0);
}

QTEST_GUILESS_MAIN(TestStatistics)
#include "tst_statistics.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "previewreport.h"
#include "previewsurface.h"

#include <QVideoSurfaceFormat>
#include <QtTest>

#include <chrono>

using namespace Tool;

class PreviewSurfaceTest : public QObject
{
    Q_OBJECT
private slots:
    void countsMeasuresAndKeepsTheNewest();
    void refusesPicturesBeyondTheLimit();
    void takesPicturesInMemoryOnly();
    void report_leavesOutWhatIsNotKnown();
    void report_tellsEverything();

private:
    static qint64 now()
    {
        using namespace std::chrono;
        return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
    }
    static QVideoFrame picture(qint64 startTime)
    {
        QVideoFrame frame(64 * 48 * 3 / 2, QSize(64, 48), 64, QVideoFrame::Format_NV12);
        frame.setStartTime(startTime);
        return frame;
    }
    static QVideoSurfaceFormat format(bool mirrored)
    {
        QVideoSurfaceFormat result(QSize(64, 48), QVideoFrame::Format_NV12);
        result.setMirrored(mirrored);
        return result;
    }
};

void PreviewSurfaceTest::countsMeasuresAndKeepsTheNewest()
{
    PreviewSurface surface;
    QVERIFY(!surface.frame().isValid());
    QCOMPARE(surface.rate(), 0.0);
    QVERIFY(surface.start(format(true)));
    QSignalSpy first(&surface, &PreviewSurface::firstPictureTaken);
    QSignalSpy taken(&surface, &PreviewSurface::pictureTaken);
    QVERIFY(surface.present(picture(now() - 30000)));
    const qint64 newest = now() - 50000;
    QVERIFY(surface.present(picture(newest)));
    QCOMPARE(surface.presented(), qint64(2));
    QCOMPARE(first.size(), 1);
    QCOMPARE(taken.size(), 2);
    QVERIFY(surface.rate() > 0);
    QCOMPARE(surface.latencies().count(), qint64(2));
    QVERIFY(surface.latencies().maximum() >= 50000);
    QVERIFY(surface.latencies().mean() >= 40000);
    surface.stop();
    QCOMPARE(surface.frame().startTime(), newest);
    QVERIFY(surface.isMirrored());
    QVERIFY(surface.start(format(false)));
    QVERIFY(surface.present(picture(-1)));
    QVERIFY(!surface.isMirrored());
    QCOMPARE(surface.latencies().count(), qint64(2)); // a picture that does not know its time
}

void PreviewSurfaceTest::refusesPicturesBeyondTheLimit()
{
    PreviewSurface surface;
    surface.setLimit(2);
    QVERIFY(surface.start(format(false)));
    QSignalSpy reached(&surface, &PreviewSurface::limitReached);
    QVERIFY(surface.present(picture(1)));
    QCOMPARE(reached.size(), 0);
    QVERIFY(surface.present(picture(2)));
    QCOMPARE(reached.size(), 1);
    QVERIFY(!surface.present(picture(3)));
    QCOMPARE(surface.presented(), qint64(2));
    QCOMPARE(surface.frame().startTime(), qint64(2));
    QCOMPARE(reached.size(), 1);
}

void PreviewSurfaceTest::takesPicturesInMemoryOnly()
{
    const PreviewSurface surface;
    QVERIFY(surface.supportedPixelFormats(QAbstractVideoBuffer::NoHandle)
                    .contains(QVideoFrame::Format_NV12));
    QVERIFY(surface.supportedPixelFormats(QAbstractVideoBuffer::GLTextureHandle).isEmpty());
}

void PreviewSurfaceTest::report_leavesOutWhatIsNotKnown()
{
    PreviewReport report;
    report.camera = QStringLiteral("x");
    report.size = QSize(640, 480);
    report.format = QStringLiteral("NV12");
    report.settings.setMaximumFrameRate(30);
    report.presented = 3;
    report.rate = 29.5;
    QCOMPARE(toText(report),
             QStringLiteral("x 640x480 NV12 at 30 fps: presented 3; 29.50 pictures/s"));
    const QJsonObject json = toJson(report);
    QVERIFY(!json.contains(QStringLiteral("delivered")));
    QVERIFY(!json.contains(QStringLiteral("latency_ms")));
    QVERIFY(!json.contains(QStringLiteral("snapshot")));
    QCOMPARE(json.value(QStringLiteral("presented")).toInt(), 3);
}

void PreviewSurfaceTest::report_tellsEverything()
{
    PreviewReport report;
    report.camera = QStringLiteral("x");
    report.size = QSize(640, 480);
    report.format = QStringLiteral("NV12");
    report.settings.setMaximumFrameRate(60);
    report.presented = 3;
    report.delivery = PreviewReport::Delivery { 6, 1, 2, 4 };
    report.rate = 60;
    report.latencies.add(1500);
    report.latencies.add(2500);
    report.snapshot = QStringLiteral("a.png");
    QCOMPARE(toText(report),
             QStringLiteral("x 640x480 NV12 at 60 fps: delivered 6, presented 3, dropped 1, "
                            "missing 2, duplicated 4; 60.00 pictures/s; latency mean 2.00 ms, "
                            "median 1.51 ms, 99% 2.50 ms, max 2.50 ms"));
    const QJsonObject json = toJson(report);
    QCOMPARE(json.value(QStringLiteral("delivered")).toInt(), 6);
    QCOMPARE(json.value(QStringLiteral("dropped")).toInt(), 1);
    QCOMPARE(json.value(QStringLiteral("missing")).toInt(), 2);
    QCOMPARE(json.value(QStringLiteral("duplicated")).toInt(), 4);
    QCOMPARE(json.value(QStringLiteral("snapshot")).toString(), QStringLiteral("a.png"));
    const QJsonObject latency = json.value(QStringLiteral("latency_ms")).toObject();
    QCOMPARE(latency.value(QStringLiteral("mean")).toDouble(), 2.0);
    QCOMPARE(latency.value(QStringLiteral("max")).toDouble(), 2.5);
}

QTEST_GUILESS_MAIN(PreviewSurfaceTest)
#include "tst_previewsurface.moc"

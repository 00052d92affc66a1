// SPDX-License-Identifier: BSD-3-Clause
#include "previewreport.h"

#include <QtTest>

using Tool::PreviewReport;

/*! What is printed of a preview. */
class PreviewReportTest : public QObject
{
    Q_OBJECT
private slots:
    void device_isToldBesideWhatWasAsked();
    void loweringControl_isNamed_whereItLowersTheRate_data();
    void loweringControl_isNamed_whereItLowersTheRate();
    void noDevice_isToldOfACameraThatIsNone();
    void camera_isNamedAsItIs();
};

namespace {

PreviewReport report()
{
    PreviewReport report;
    report.camera = QStringLiteral("v4l2:Test_0001");
    report.settings.setMinimumFrameRate(30);
    report.settings.setMaximumFrameRate(30);
    report.device =
            PreviewReport::Device { QStringLiteral("MJPG"), 25, 25, QStringLiteral("Low Light") };
    return report;
}

} // namespace

void PreviewReportTest::device_isToldBesideWhatWasAsked()
{
    const QString text = toText(report());
    QVERIFY2(text.endsWith("; device: MJPG, asked for 30 fps, negotiated 25.00, measured 25.00"),
             qPrintable(text));
    const QJsonObject expected { { "format", "MJPG" },
                                 { "negotiated_fps", 25.0 },
                                 { "measured_fps", 25.0 },
                                 { "lowering_control", "Low Light" } };
    QCOMPARE(toJson(report()).value("device").toObject(), expected);
}

void PreviewReportTest::loweringControl_isNamed_whereItLowersTheRate_data()
{
    QTest::addColumn<double>("measured");
    QTest::addColumn<QString>("control");
    QTest::addColumn<bool>("isNamed");
    QTest::newRow("lowered") << 12.5 << "Low Light" << true;
    QTest::newRow("nearly as negotiated") << 24.0 << "Low Light" << false;
    QTest::newRow("faster") << 30.0 << "Low Light" << false;
    QTest::newRow("not measured") << 0.0 << "Low Light" << false;
    QTest::newRow("lowered by something else") << 12.5 << "" << false;
}

void PreviewReportTest::loweringControl_isNamed_whereItLowersTheRate()
{
    QFETCH(double, measured);
    QFETCH(QString, control);
    QFETCH(bool, isNamed);
    PreviewReport shown = report();
    shown.device->measured = measured;
    shown.device->loweringControl = control;
    const QString text = toText(shown);
    QCOMPARE(text.endsWith(", lowered by its automatic exposure (control \"Low Light\")"), isNamed);
    QCOMPARE(text.contains("lowered"), isNamed);
}

void PreviewReportTest::noDevice_isToldOfACameraThatIsNone()
{
    PreviewReport shown = report();
    shown.device.reset();
    QVERIFY(!toText(shown).contains("device"));
    QVERIFY(!toJson(shown).contains("device"));
}

void PreviewReportTest::camera_isNamedAsItIs()
{
    PreviewReport shown = report();
    shown.camera = QStringLiteral("v4l2:100%2_%7");
    shown.size = QSize(640, 480);
    shown.format = QStringLiteral("nv12");
    const QString text = toText(shown);
    QVERIFY2(text.startsWith("v4l2:100%2_%7 640x480 nv12 at 30 fps: "), qPrintable(text));
}

QTEST_GUILESS_MAIN(PreviewReportTest)
#include "tst_previewreport.moc"

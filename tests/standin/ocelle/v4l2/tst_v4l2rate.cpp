// SPDX-License-Identifier: BSD-3-Clause
#include "camerarates.h"
#include "devicequery.h"
#include "ratemeter.h"
#include "scriptedcapture.h"

#include <QtTest>

using namespace Veltra::Ocelle;

/*! The rate that is asked for, what the driver makes of it, and what comes. */
class TestV4l2Rate : public QObject, private ScriptedCapture
{
    Q_OBJECT
private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void rates_tellWhatWasAskedNegotiatedAndMeasured();
    void loweringControl_isNamedWhileItMayLowerTheRate_data();
    void loweringControl_isNamedWhileItMayLowerTheRate();
    void measuredRate_isThatOfTheLatestPictures();
};

void TestV4l2Rate::rates_tellWhatWasAskedNegotiatedAndMeasured()
{
    open(V4L2_PIX_FMT_YUYV);
    m_system->setInterval({ 2, 15 });
    m_system->setControl(V4L2_CID_EXPOSURE_AUTO_PRIORITY, 1);
    QVERIFY(m_camera->startCapture(Only, 255));
    const Bytes picture(std::size_t(Width * Height * 2), 100);
    const std::uint64_t captured = m_counters->captured;
    for (int i = 0; i < 5; ++i)
        QVERIFY(m_system->deliver(picture));
    QTRY_VERIFY(m_counters->captured >= captured + 5);
    m_camera->stopCapture();
    const std::vector<CameraRate> all = cameraRates();
    const auto rate = std::find_if(all.begin(), all.end(),
                                   [](const CameraRate &one) { return one.id == Id; });
    QVERIFY(rate != all.end());
    QCOMPARE(rate->format, std::string("YUYV"));
    QCOMPARE(rate->asked, 30U);
    QCOMPARE(rate->negotiated, 7.5);
    QVERIFY(rate->measured > 0);
    QCOMPARE(rate->loweringControl, std::string("Control 0x9a0903"));
}

void TestV4l2Rate::loweringControl_isNamedWhileItMayLowerTheRate_data()
{
    QTest::addColumn<int>("automatic"); // -1: no such control
    QTest::addColumn<int>("priority");
    QTest::addColumn<bool>("isNamed");
    QTest::newRow("automatic, may lower") << int(V4L2_EXPOSURE_APERTURE_PRIORITY) << 1 << true;
    QTest::newRow("automatic, may not") << int(V4L2_EXPOSURE_APERTURE_PRIORITY) << 0 << false;
    QTest::newRow("manual") << int(V4L2_EXPOSURE_MANUAL) << 1 << false;
    QTest::newRow("no control of exposure") << -1 << -1 << false;
    QTest::newRow("only the priority") << -1 << 1 << true;
}

void TestV4l2Rate::loweringControl_isNamedWhileItMayLowerTheRate()
{
    QFETCH(int, automatic);
    QFETCH(int, priority);
    QFETCH(bool, isNamed);
    m_system = std::make_shared<ScriptedV4l2System>();
    if (automatic >= 0)
        m_system->setControl(V4L2_CID_EXPOSURE_AUTO, automatic);
    if (priority >= 0)
        m_system->setControl(V4L2_CID_EXPOSURE_AUTO_PRIORITY, priority);
    const OpenDevice device(m_system, Node);
    QCOMPARE(rateLoweringControl(device), std::string(isNamed ? "Control 0x9a0903" : ""));
}

void TestV4l2Rate::measuredRate_isThatOfTheLatestPictures()
{
    m_system = std::make_shared<ScriptedV4l2System>();
    RateMeter meter;
    meter.begin({});
    for (int i = 0; i < 3; ++i)
        meter.add(i * 100000);
    QCOMPARE(meter.rate().measured, 0.0); // too few to tell
    for (int i = 3; i < 200; ++i)
        meter.add(i * 100000);
    QCOMPARE(meter.rate().measured, 10.0);
    for (int i = 1; i <= 64; ++i) // twice as fast from here
        meter.add(19900000 + i * 50000);
    QCOMPARE(meter.rate().measured, 20.0);
    meter.begin({});
    QCOMPARE(meter.rate().measured, 0.0);
}

QTEST_GUILESS_MAIN(TestV4l2Rate)
#include "tst_v4l2rate.moc"

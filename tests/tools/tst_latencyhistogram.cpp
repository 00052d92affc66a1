// SPDX-License-Identifier: BSD-3-Clause
#include "latencyhistogram.h"

#include <QtTest>

using Tool::LatencyHistogram;

class LatencyHistogramTest : public QObject
{
    Q_OBJECT
private slots:
    void isZero_whenEmpty();
    void knowsMeanMaximumAndQuantiles();
    void keepsQuantilesWithinTheMaximum();
    void countsWhatIsBeyondItsRange();
};

void LatencyHistogramTest::isZero_whenEmpty()
{
    const LatencyHistogram histogram;
    QCOMPARE(histogram.count(), qint64(0));
    QCOMPARE(histogram.mean(), 0.0);
    QCOMPARE(histogram.maximum(), qint64(0));
    QCOMPARE(histogram.quantile(0.5), 0.0);
}

void LatencyHistogramTest::knowsMeanMaximumAndQuantiles()
{
    LatencyHistogram histogram;
    for (int i = 1; i <= 1000; ++i)
        histogram.add(i * 10);
    QCOMPARE(histogram.count(), qint64(1000));
    QCOMPARE(histogram.mean(), 5005.0);
    QCOMPARE(histogram.maximum(), qint64(10000));
    QVERIFY(qAbs(histogram.quantile(0.5) - 5000) <= 10);
    QVERIFY(qAbs(histogram.quantile(0.99) - 9900) <= 10);
    QCOMPARE(histogram.quantile(1), 10000.0);
    QVERIFY(histogram.quantile(0) <= 20);
}

void LatencyHistogramTest::keepsQuantilesWithinTheMaximum()
{
    LatencyHistogram histogram;
    histogram.add(7);
    QCOMPARE(histogram.quantile(0.5), 7.0);
}

void LatencyHistogramTest::countsWhatIsBeyondItsRange()
{
    LatencyHistogram histogram;
    histogram.add(-5);
    histogram.add(7000000);
    QCOMPARE(histogram.count(), qint64(2));
    QCOMPARE(histogram.mean(), 3500000.0);
    QCOMPARE(histogram.maximum(), qint64(7000000));
    QCOMPARE(histogram.quantile(1), 7000000.0);
}

QTEST_GUILESS_MAIN(LatencyHistogramTest)
#include "tst_latencyhistogram.moc"

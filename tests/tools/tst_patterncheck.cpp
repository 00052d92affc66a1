// SPDX-License-Identifier: BSD-3-Clause
#include "patterncheck.h"

#include <QRect>
#include <QVideoFrame>
#include <QtTest>

#include <testpattern.h>

using Tool::PatternCheck;

class PatternCheckTest : public QObject
{
    Q_OBJECT
private slots:
    void numbers_areJudged_data();
    void numbers_areJudged();
    void lostNumbers_areToldInRanges();
    void number_isFoundInTheVisiblePart();
};

void PatternCheckTest::numbers_areJudged_data()
{
    QTest::addColumn<QList<int>>("numbers"); // -1: cannot be read
    QTest::addColumn<QList<int>>("counts");  // lost, repeated, reordered, unreadable
    QTest::addColumn<bool>("isFlawless");
    using L = QList<int>;
    QTest::newRow("none") << L {} << L { 0, 0, 0, 0 } << false;
    QTest::newRow("all") << L { 7, 8, 9, 10 } << L { 0, 0, 0, 0 } << true;
    QTest::newRow("one") << L { 7 } << L { 0, 0, 0, 0 } << true;
    QTest::newRow("lost") << L { 0, 1, 3, 7 } << L { 4, 0, 0, 0 } << false;
    QTest::newRow("repeated") << L { 0, 1, 1, 2, 2, 2 } << L { 0, 3, 0, 0 } << false;
    QTest::newRow("exchanged") << L { 0, 2, 1, 3 } << L { 0, 0, 1, 0 } << false;
    QTest::newRow("late, not lost") << L { 0, 5, 3, 6 } << L { 3, 0, 1, 0 } << false;
    QTest::newRow("late and repeated") << L { 0, 5, 3, 3, 6 } << L { 3, 1, 1, 0 } << false;
    QTest::newRow("back to the start") << L { 0, 1, 2, 0, 1 } << L { 0, 2, 0, 0 } << false;
    QTest::newRow("before the first") << L { 4, 3, 5 } << L { 0, 0, 1, 0 } << false;
    QTest::newRow("unreadable") << L { 0, -1, 2 } << L { 1, 0, 0, 1 } << false;
    QTest::newRow("only unreadable") << L { -1, -1 } << L { 0, 0, 0, 2 } << false;
}

void PatternCheckTest::numbers_areJudged()
{
    QFETCH(QList<int>, numbers);
    PatternCheck check;
    for (const int number : numbers)
        check.add(number < 0 ? std::optional<quint32>() : quint32(number));
    const QList<int> counts { int(check.lost()), int(check.repeated()), int(check.reordered()),
                              int(check.unreadable()) };
    QTEST(counts, "counts");
    QTEST(check.isFlawless(), "isFlawless");
    QCOMPARE(check.pictures(), qint64(numbers.size()));
}

void PatternCheckTest::lostNumbers_areToldInRanges()
{
    PatternCheck check;
    for (const quint32 number : { 0, 2, 6 })
        check.add(number);
    QCOMPARE(check.lostNumbers(), QStringLiteral("1, 3 to 5"));
    for (quint32 number = 8; number < 30; number += 2)
        check.add(number);
    QCOMPARE(check.lostNumbers(), QStringLiteral("1, 3 to 5, 7, 9, 11 and more"));
    QVERIFY(Tool::toText(check).endsWith(
            QStringLiteral("missing are 1, 3 to 5, 7, 9, 11 and more")));
}

// As decoders put it out: whole blocks, of which only a part is to be seen.
void PatternCheckTest::number_isFoundInTheVisiblePart()
{
    constexpr int Width = 160;
    constexpr int Height = 120;
    const QSize coded(Width + 32, Height + 16);
    QVideoFrame frame(coded.width() * coded.height() * 3 / 2, coded, coded.width(),
                      QVideoFrame::Format_YUV420P);
    QVERIFY(frame.map(QAbstractVideoBuffer::WriteOnly));
    std::fill_n(frame.bits(), frame.mappedBytes(), uchar(0));
    const QRect part(8, 4, Width, Height);
    std::vector<std::uint8_t> chroma(Width * Height / 2);
    using Pattern = Veltra::Ocelle::TestPattern;
    const Pattern::Planes planes { {
            { frame.bits() + part.top() * frame.bytesPerLine() + part.left(),
              frame.bytesPerLine() },
            { chroma.data(), Width / 2 },
            { chroma.data() + Width * Height / 4, Width / 2 },
    } };
    const Pattern pattern(Width, Height, Veltra::Ocelle::PixelFormat::YU12);
    pattern.paintBackground(planes);
    pattern.update(planes, 4711, 0);
    frame.unmap();
    QVERIFY(!Tool::patternNumber(frame, QRect()));
    QCOMPARE(Tool::patternNumber(frame, part).value_or(0), 4711U);
}

QTEST_GUILESS_MAIN(PatternCheckTest)
#include "tst_patterncheck.moc"

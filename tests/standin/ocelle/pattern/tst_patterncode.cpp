// SPDX-License-Identifier: BSD-3-Clause
#include "patterncode.h"

#include <QSet>
#include <QtTest>

using namespace Veltra::Ocelle;

class PatternCodeTest : public QObject
{
    Q_OBJECT
private slots:
    void decode_findsWhatWasEncoded_data();
    void decode_findsWhatWasEncoded();
    void encode_differsForEveryNumber();
    void decode_refusesAnyOneOrTwoWrongCells();
    void fixedCells_areAsManyWhiteAsBlack();
    void fixedCells_tellEveryOrientationApart();
};

void PatternCodeTest::decode_findsWhatWasEncoded_data()
{
    QTest::addColumn<quint32>("number");
    QTest::newRow("zero") << 0U;
    QTest::newRow("one") << 1U;
    QTest::newRow("some") << 0x12345678U;
    QTest::newRow("top bit") << 0x80000000U;
    QTest::newRow("last") << 0xffffffffU;
}

void PatternCodeTest::decode_findsWhatWasEncoded()
{
    QFETCH(quint32, number);
    const auto decoded = PatternCode::decode(PatternCode::encode(number));
    QVERIFY(decoded.has_value());
    QCOMPARE(*decoded, number);
}

void PatternCodeTest::encode_differsForEveryNumber()
{
    QSet<quint64> seen;
    for (quint32 number = 0; number < 100000; ++number)
        seen.insert(PatternCode::encode(number));
    QCOMPARE(seen.size(), 100000);
}

void PatternCodeTest::decode_refusesAnyOneOrTwoWrongCells()
{
    for (const quint32 number : { 0U, 0x12345678U, 0xffffffffU }) {
        const quint64 cells = PatternCode::encode(number);
        for (int first = 0; first < PatternCode::Cells; ++first) {
            for (int second = first; second < PatternCode::Cells; ++second) {
                quint64 damaged = cells ^ quint64(1) << first;
                if (second != first)
                    damaged ^= quint64(1) << second;
                QVERIFY(!PatternCode::decode(damaged).has_value());
            }
        }
    }
}

void PatternCodeTest::fixedCells_areAsManyWhiteAsBlack()
{
    QCOMPARE(qPopulationCount(quint64(PatternCode::fixedMask())), 16U);
    QCOMPARE(qPopulationCount(quint64(PatternCode::fixedCells())), 8U);
    QCOMPARE(PatternCode::fixedCells() & ~PatternCode::fixedMask(), std::uint64_t(0));
}

void PatternCodeTest::fixedCells_tellEveryOrientationApart()
{
    quint64 mirrored = 0;
    quint64 flipped = 0;
    quint64 turned = 0;
    for (int cell = 0; cell < PatternCode::Cells; ++cell) {
        const quint64 bit = PatternCode::fixedCells() >> cell & 1;
        const int row = cell / PatternCode::Columns;
        const int column = cell % PatternCode::Columns;
        const int otherRow = PatternCode::Rows - 1 - row;
        const int otherColumn = PatternCode::Columns - 1 - column;
        mirrored |= bit << (row * PatternCode::Columns + otherColumn);
        flipped |= bit << (otherRow * PatternCode::Columns + column);
        turned |= bit << (otherRow * PatternCode::Columns + otherColumn);
    }
    for (const quint64 other : { mirrored, flipped, turned })
        QVERIFY(qPopulationCount(other ^ PatternCode::fixedCells()) >= 4);
}

QTEST_GUILESS_MAIN(PatternCodeTest)
#include "tst_patterncode.moc"

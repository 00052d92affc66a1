// SPDX-License-Identifier: BSD-3-Clause
#include "pacer.h"

#include <QtTest>

using namespace Veltra::Ocelle;
using namespace std::chrono_literals;

class TestPacer : public QObject
{
    Q_OBJECT
private slots:
    void firstPicture_isDueAtOnce();
    void laterPictures_areCountedFromTheFirst_howeverLateOthersWere();
    void picture_isLate_onceTheNextIsDue();
    void sourceThatIsTooSlow_movesTheBeat();
    void longDelay_movesTheBeat();
    void singleSlowPicture_keepsTheBeat();

private:
    const Pacer::TimePoint m_start { 1000s };
};

void TestPacer::firstPicture_isDueAtOnce()
{
    Pacer pacer(40ms, 1s);
    QVERIFY(pacer.schedule(0ms, m_start, 500ms) == m_start);
}

void TestPacer::laterPictures_areCountedFromTheFirst_howeverLateOthersWere()
{
    Pacer pacer(40ms, 1s);
    pacer.schedule(0ms, m_start, 1ms);
    for (int i = 1; i < 1000; ++i) {
        const Pacer::TimePoint due = m_start + i * 40ms;
        const auto delay = (i % 7) * 10ms - 35ms; // ready a little early, or up to 25 ms late
        QVERIFY(pacer.schedule(i * 40ms, due + delay, 1ms) == due);
    }
    // Held up for half a second by others.
    QVERIFY(pacer.schedule(40000ms, m_start + 40500ms, 1ms) == m_start + 40000ms);
}

void TestPacer::picture_isLate_onceTheNextIsDue()
{
    Pacer pacer(40ms, 1s);
    const Pacer::TimePoint first = pacer.schedule(0ms, m_start, 1ms);
    QVERIFY(!pacer.isLate(first, m_start + 500ms)); // but for the first one: it is what is there
    const Pacer::TimePoint second = pacer.schedule(40ms, m_start + 40ms, 1ms);
    QVERIFY(!pacer.isLate(second, second));
    QVERIFY(!pacer.isLate(second, second + 40ms));
    QVERIFY(pacer.isLate(second, second + 41ms));
}

void TestPacer::sourceThatIsTooSlow_movesTheBeat()
{
    Pacer pacer(40ms, 1s);
    Pacer::TimePoint now = m_start;
    pacer.schedule(0ms, now, 100ms);
    int delivered = 0;
    for (int i = 1; i <= 100; ++i) { // each picture takes 100 ms
        now += 100ms;
        if (!pacer.isLate(pacer.schedule(i * 40ms, now, 100ms), now))
            ++delivered;
    }
    QCOMPARE(delivered, 100);
}

void TestPacer::longDelay_movesTheBeat()
{
    Pacer pacer(40ms, 1s);
    pacer.schedule(0ms, m_start, 1ms);
    const Pacer::TimePoint ready = m_start + 40ms + 1001ms;
    QVERIFY(pacer.schedule(40ms, ready, 1ms) == ready);
    QVERIFY(pacer.schedule(80ms, ready, 1ms) == ready + 40ms);
}

void TestPacer::singleSlowPicture_keepsTheBeat()
{
    Pacer pacer(40ms, 1s);
    pacer.schedule(0ms, m_start, 1ms);
    // Decoded for 60 ms, so 20 ms late: less than a period.
    QVERIFY(pacer.schedule(40ms, m_start + 60ms, 60ms) == m_start + 40ms);
    QVERIFY(pacer.schedule(80ms, m_start + 61ms, 1ms) == m_start + 80ms);
}

QTEST_APPLESS_MAIN(TestPacer)
#include "tst_pacer.moc"

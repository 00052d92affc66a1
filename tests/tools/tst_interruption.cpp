// SPDX-License-Identifier: BSD-3-Clause
#include "interruption.h"

#include <QSignalSpy>
#include <QtTest>

#include <csignal>

/*! Signals that this program sends to itself: one that is not held would end it. */
class InterruptionTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { std::signal(SIGHUP, SIG_DFL); }
    void firstSignal_isTold_data();
    void firstSignal_isTold();
    void laterHangUps_doNothing();
    void hangUp_staysIgnored_underNohup();
    void signals_areAsBefore_whenItHasGone();
};

void InterruptionTest::firstSignal_isTold_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("kill") << SIGTERM;
    QTest::newRow("terminal that closes") << SIGHUP;
}

void InterruptionTest::firstSignal_isTold()
{
    QFETCH(int, signal);
    const Tool::Interruption interruption;
    QSignalSpy interrupted(&interruption, &Tool::Interruption::interrupted);
    std::raise(signal);
    QTRY_COMPARE(interrupted.count(), 1);
}

// The shell sends one, and so does the kernel when the shell has gone.
void InterruptionTest::laterHangUps_doNothing()
{
    const Tool::Interruption interruption;
    QSignalSpy interrupted(&interruption, &Tool::Interruption::interrupted);
    for (int times = 0; times < 3; ++times) {
        std::raise(SIGHUP);
        QTRY_COMPARE(interrupted.count(), 1);
    }
}

void InterruptionTest::hangUp_staysIgnored_underNohup()
{
    std::signal(SIGHUP, SIG_IGN);
    {
        const Tool::Interruption interruption;
        QVERIFY(std::signal(SIGHUP, SIG_IGN) == SIG_IGN);
    }
    QVERIFY(std::signal(SIGHUP, SIG_IGN) == SIG_IGN);
}

void InterruptionTest::signals_areAsBefore_whenItHasGone()
{
    {
        const Tool::Interruption interruption;
    }
    for (const int signal : { SIGINT, SIGTERM, SIGHUP })
        QVERIFY(std::signal(signal, SIG_DFL) == SIG_DFL);
}

QTEST_GUILESS_MAIN(InterruptionTest)
#include "tst_interruption.moc"

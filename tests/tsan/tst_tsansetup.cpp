// SPDX-License-Identifier: BSD-3-Clause
#include <QProcess>
#include <QTest>

/*! A build with ThreadSanitizer that reports nothing proves nothing unless it can report. */
class TestTsanSetup : public QObject
{
    Q_OBJECT
private slots:
    void plantedRace_isReported();
    void orderedThreads_areNotReported_data();
    void orderedThreads_areNotReported();
};

namespace {

/*! Runs the program that goes \a way and gives its exit code; what it said goes to \a output. */
int runPlanted(const QString &way, QString *output)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(OCELLE_PLANTED_RACE), { way });
    const bool finished = process.waitForFinished(60000);
    *output = QString::fromLocal8Bit(process.readAll());
    return finished && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

const int RaceExitCode = 66; // ThreadSanitizer's

} // namespace

void TestTsanSetup::plantedRace_isReported()
{
    QString output;
    QCOMPARE(runPlanted(QStringLiteral("race"), &output), RaceExitCode);
    QVERIFY2(output.contains(QStringLiteral("WARNING: ThreadSanitizer: data race")),
             qPrintable(output));
    QVERIFY2(output.contains(QStringLiteral("countPlain")), qPrintable(output));
}

void TestTsanSetup::orderedThreads_areNotReported_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("mutex") << QStringLiteral("mutex");
    QTest::newRow("atomic") << QStringLiteral("atomic");
    QTest::newRow("semaphore") << QStringLiteral("semaphore");
    QTest::newRow("posted event") << QStringLiteral("event");
}

void TestTsanSetup::orderedThreads_areNotReported()
{
    QFETCH(QString, way);
    QString output;
    QVERIFY2(runPlanted(way, &output) == 0, qPrintable(output));
    QVERIFY2(!output.contains(QStringLiteral("ThreadSanitizer")), qPrintable(output));
}

QTEST_GUILESS_MAIN(TestTsanSetup)
#include "tst_tsansetup.moc"

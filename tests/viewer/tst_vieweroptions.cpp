// SPDX-License-Identifier: BSD-3-Clause
#include <QFile>
#include <QProcess>
#include <QTest>

/*! What the program does where it cannot print. */
class TestViewerOptions : public QObject
{
    Q_OBJECT
private slots:
    void lostOutput_isTold_data();
    void lostOutput_isTold();
    void closedStreams_areNotTakenByOthers();
};

void TestViewerOptions::lostOutput_isTold_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("output"); // as a shell redirects it
    QTest::addColumn<QByteArray>("reason");
    for (const char *option : { "--help", "--version" }) {
        const QByteArray name = option;
        QTest::newRow(name + ", full disk")
                << option << "> /dev/full" << QByteArray("No space left on device");
        QTest::newRow(name + ", closed") << option << ">&-" << QByteArray("Bad file descriptor");
    }
}

void TestViewerOptions::lostOutput_isTold()
{
    QFETCH(QString, option);
    QFETCH(QString, output);
    QFETCH(QByteArray, reason);
    QProcess shell;
    shell.start(QStringLiteral("sh"),
                { QStringLiteral("-c"), "exec \"$@\" " + output, QStringLiteral("-"),
                  QStringLiteral(OCELLE_VIEWER), option });
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitCode(), 1);
    QCOMPARE(shell.readAllStandardError(),
             "ocelle-viewer: standard output cannot be written to: " + reason + '\n');
}

// Not by the connection to the display, say.
void TestViewerOptions::closedStreams_areNotTakenByOthers()
{
    QProcess shell;
    shell.start(QStringLiteral("sh"),
                { QStringLiteral("-c"), QStringLiteral("exec \"$@\" <&- >&- 2>&-"),
                  QStringLiteral("-"), QStringLiteral(OCELLE_VIEWER) });
    QVERIFY(shell.waitForStarted());
    const QString open = QStringLiteral("/proc/%1/fd/").arg(shell.processId());
    for (const char *stream : { "0", "1", "2" })
        QTRY_COMPARE(QFile::symLinkTarget(open + stream), QStringLiteral("/dev/null"));
    shell.terminate();
    QVERIFY(shell.waitForFinished());
}

QTEST_GUILESS_MAIN(TestViewerOptions)
#include "tst_vieweroptions.moc"

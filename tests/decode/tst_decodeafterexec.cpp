// SPDX-License-Identifier: BSD-3-Clause
#include <QProcess>
#include <QtTest>

/*! The end of a program whose decoder service is the last to go. */
class TestDecodeAfterExec : public QObject
{
    Q_OBJECT
private slots:
    void program_ends_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : { "starting", "active", "restarting", "blocked", "no application" })
            QTest::newRow(way) << QString(way);
    }

    void program_ends()
    {
        QFETCH(QString, way);
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(OCELLE_DECODE_AFTER_EXEC, { way });
        QVERIFY2(program.waitForFinished(20000), "hangs");
        QVERIFY2(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0,
                 program.readAll());
    }
};

QTEST_GUILESS_MAIN(TestDecodeAfterExec)
#include "tst_decodeafterexec.moc"

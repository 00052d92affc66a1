// SPDX-License-Identifier: BSD-3-Clause
#include <QProcess>
#include <QtTest>

/*! The built library file: its name for the loader, and what it shows to others. */
class PalaverLibraryTest : public QObject
{
    Q_OBJECT
private slots:
    void isFoundUnderItsSoname();
    void exportsItsOwnClassesOnly();

private:
    static QByteArray outputOf(const QString &program, const QStringList &arguments)
    {
        QProcess process;
        process.start(program, arguments + QStringList { QStringLiteral(PALAVER_LIBRARY) });
        if (!process.waitForFinished() || process.exitCode() != 0)
            return {};
        return process.readAllStandardOutput();
    }
};

void PalaverLibraryTest::isFoundUnderItsSoname()
{
    const QByteArray dynamic = outputOf(QStringLiteral(READELF), { QStringLiteral("-d") });
    QVERIFY2(dynamic.contains("Library soname: [libQt5Palaver.so.0]"), dynamic.constData());
}

void PalaverLibraryTest::exportsItsOwnClassesOnly()
{
    const QByteArray symbols = outputOf(
            QStringLiteral(NM), { QStringLiteral("-DCP"), QStringLiteral("--defined-only") });
    int own = 0;
    for (const QByteArray &line : symbols.split('\n')) {
        if (line.isEmpty())
            continue;
        QVERIFY2(line.contains("QPV"), line.constData());
        ++own;
    }
    QVERIFY(own > 0);
    QVERIFY(symbols.contains("vtable for QPVRawVideoSourceControl"));
    QVERIFY(symbols.contains("vtable for QPVMediaServiceCodecInfoInterface"));
}

QTEST_GUILESS_MAIN(PalaverLibraryTest)
#include "tst_palaverlibrary.moc"

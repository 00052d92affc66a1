// SPDX-License-Identifier: BSD-3-Clause
#include "toolprocess.h"

#include <QRegularExpression>
#include <QtTest>

namespace {

/*! The commands that the program's own help lists. */
QStringList commands()
{
    const QString help = QString::fromUtf8(ToolProcess::run({ QStringLiteral("--help") }).output);
    QStringList names;
    bool isList = false;
    for (const QString &line : help.split(QLatin1Char('\n'))) {
        isList = isList || line == QLatin1String("Subcommands:");
        const auto match = QRegularExpression(QStringLiteral("^  (\\w+)( |$)")).match(line);
        if (isList && match.hasMatch())
            names.append(match.captured(1));
    }
    return names;
}

} // namespace

/*! What a terminal shows of the program's help, and of mistakes. */
class HelpTextsTest : public QObject
{
    Q_OBJECT
private slots:
    void help_fitsATerminal_data();
    void help_fitsATerminal();
    void wrongArguments_areOneLineWithTheWayOut_data();
    void wrongArguments_areOneLineWithTheWayOut();
};

void HelpTextsTest::help_fitsATerminal_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("ocelle") << QStringList { "--help" };
    const QStringList names = commands();
    QVERIFY(names.contains("compliance") && names.contains("list") && names.size() >= 10);
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << QStringList { name, "--help" };
}

void HelpTextsTest::help_fitsATerminal()
{
    QFETCH(QStringList, arguments);
    constexpr int columns = 80;
    const ToolResult result = ToolProcess::run(arguments);
    QCOMPARE(result.exitCode, 0);
    const QString help = QString::fromUtf8(result.output);
    QVERIFY(help.contains(QLatin1String("Usage: ocelle")));
    for (const QString &line : help.split(QLatin1Char('\n')))
        QVERIFY2(line.size() <= columns, qPrintable(line));
}

void HelpTextsTest::wrongArguments_areOneLineWithTheWayOut_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no command") << QStringList {};
    QTest::newRow("unknown command") << QStringList { "nonsense" };
    for (const QString &name : commands())
        QTest::newRow(qPrintable(name)) << QStringList { name, "--no-such-option" };
}

void HelpTextsTest::wrongArguments_areOneLineWithTheWayOut()
{
    QFETCH(QStringList, arguments);
    const ToolResult result = ToolProcess::run(arguments);
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    const QByteArrayList lines = result.errors.trimmed().split('\n');
    QVERIFY2(lines.size() == 1, result.errors);
    QVERIFY2(lines.first().startsWith("ocelle: "), result.errors);
    QVERIFY2(lines.first().contains("ocelle") && lines.first().contains("--help"), result.errors);
}

QTEST_GUILESS_MAIN(HelpTextsTest)
#include "tst_helptexts.moc"

#include "commandline.h"

#include <QtTest>

#include <vector>

using namespace Tool;

class CommandLineTest : public QObject
{
    Q_OBJECT
private slots:
    void readsEveryOptionOfPreview();
    void leavesOutWhatIsNotGiven();
    void readsListAndWatch();
    void endsWell_whenAskedForHelpOrVersion_data();
    void endsWell_whenAskedForHelpOrVersion();
    void refusesWrongArguments_data();
    void refusesWrongArguments();

private:
    static std::optional<CommandLine> parse(const QByteArrayList &arguments, int *exitCode)
    {
        std::vector<const char *> argv { "ocelle" };
        for (const QByteArray &argument : arguments)
            argv.push_back(argument.constData());
        *exitCode = -1;
        return parseCommandLine(int(argv.size()), argv.data(), exitCode);
    }
};

void CommandLineTest::readsEveryOptionOfPreview()
{
    int exitCode = 0;
    const auto line = parse({ "preview", "--size", "640x480", "--fps", "29.97", "--frames", "12",
                              "--snapshot", "/tmp/a.png", "--no-window", "--json", "pattern:back" },
                            &exitCode);
    QVERIFY(line.has_value());
    QCOMPARE(line->command, CommandLine::Command::Preview);
    QCOMPARE(line->preview.camera, QStringLiteral("pattern:back"));
    QCOMPARE(line->preview.size.value(), QSize(640, 480));
    QCOMPARE(line->preview.rate.value(), 29.97);
    QCOMPARE(line->preview.frames.value(), qint64(12));
    QCOMPARE(line->preview.snapshot, QStringLiteral("/tmp/a.png"));
    QVERIFY(!line->preview.window);
    QVERIFY(line->preview.json);
}

void CommandLineTest::leavesOutWhatIsNotGiven()
{
    int exitCode = 0;
    const auto line = parse({ "preview", "file:/tmp/\xc3\xa9.mkv" }, &exitCode);
    QVERIFY(line.has_value());
    QCOMPARE(line->preview.camera, QString::fromUtf8("file:/tmp/\xc3\xa9.mkv"));
    QVERIFY(!line->preview.size.has_value());
    QVERIFY(!line->preview.rate.has_value());
    QVERIFY(!line->preview.frames.has_value());
    QVERIFY(line->preview.snapshot.isEmpty());
    QVERIFY(line->preview.window);
    QVERIFY(!line->preview.json);
}

void CommandLineTest::readsListAndWatch()
{
    int exitCode = 0;
    QCOMPARE(parse({ "list" }, &exitCode).value().command, CommandLine::Command::List);
    QVERIFY(!parse({ "list" }, &exitCode).value().json);
    QVERIFY(parse({ "list", "--json" }, &exitCode).value().json);
    QCOMPARE(parse({ "watch" }, &exitCode).value().command, CommandLine::Command::Watch);
    QVERIFY(parse({ "watch", "--json" }, &exitCode).value().json);
}

void CommandLineTest::endsWell_whenAskedForHelpOrVersion_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::newRow("help") << QByteArrayList { "--help" };
    QTest::newRow("help of a command") << QByteArrayList { "preview", "--help" };
    QTest::newRow("version") << QByteArrayList { "--version" };
}

void CommandLineTest::endsWell_whenAskedForHelpOrVersion()
{
    QFETCH(QByteArrayList, arguments);
    int exitCode = 0;
    QVERIFY(!parse(arguments, &exitCode).has_value());
    QCOMPARE(exitCode, int(Success));
}

void CommandLineTest::refusesWrongArguments_data()
{
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::newRow("nothing") << QByteArrayList {};
    QTest::newRow("unknown command") << QByteArrayList { "show" };
    QTest::newRow("unknown option") << QByteArrayList { "list", "--all" };
    QTest::newRow("no camera") << QByteArrayList { "preview" };
    QTest::newRow("two cameras") << QByteArrayList { "preview", "a", "b" };
    QTest::newRow("size without height") << QByteArrayList { "preview", "a", "--size", "640" };
    QTest::newRow("empty size") << QByteArrayList { "preview", "a", "--size", "0x480" };
    QTest::newRow("huge size") << QByteArrayList { "preview", "a", "--size", "99999x480" };
    QTest::newRow("size and more") << QByteArrayList { "preview", "a", "--size", "640x480x2" };
    QTest::newRow("no frames") << QByteArrayList { "preview", "a", "--frames", "0" };
    QTest::newRow("frames in words") << QByteArrayList { "preview", "a", "--frames", "many" };
    QTest::newRow("part of a frame") << QByteArrayList { "preview", "a", "--frames", "1.5" };
    QTest::newRow("negative rate") << QByteArrayList { "preview", "a", "--fps", "-30" };
    QTest::newRow("rate is not a number") << QByteArrayList { "preview", "a", "--fps", "nan" };
    QTest::newRow("missing value") << QByteArrayList { "preview", "a", "--fps" };
    QTest::newRow("snapshot folder")
            << QByteArrayList { "preview", "a", "--snapshot", "/no/x.png" };
    QTest::newRow("snapshot format")
            << QByteArrayList { "preview", "a", "--snapshot", "/tmp/x.doc" };
}

void CommandLineTest::refusesWrongArguments()
{
    QFETCH(QByteArrayList, arguments);
    int exitCode = 0;
    QVERIFY(!parse(arguments, &exitCode).has_value());
    QCOMPARE(exitCode, int(Usage));
}

QTEST_GUILESS_MAIN(CommandLineTest)
#include "tst_commandline.moc"

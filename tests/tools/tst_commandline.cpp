// SPDX-License-Identifier: BSD-3-Clause
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
    void readsEveryOptionOfRecord();
    void recordLeavesTheRestToOthers();
    void readsEncode();
    void recordReadsWhatToCheck();
    void readsEveryOptionOfPlay();
    void readsVerifyAndTranscode();
    void readsDoctor();
    void readsEveryOptionOfCompliance();
    void readsBitRates_data();
    void readsBitRates();
    void readsRotations_data();
    void readsRotations();
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

void CommandLineTest::readsEveryOptionOfRecord()
{
    int exitCode = 0;
    const auto line = parse({ "record", "--camera", "pattern:back", "--size", "640x480", "--fps",
                              "15", "--seconds", "2.5", "--codec", "vp9", "--bitrate", "800000",
                              "--rotate", "90", "--mirror", "--force", "--json", "a.webm" },
                            &exitCode);
    QVERIFY(line.has_value());
    QCOMPARE(line->command, CommandLine::Command::Record);
    QCOMPARE(line->record.camera, QStringLiteral("pattern:back"));
    QCOMPARE(line->record.size.value(), QSize(640, 480));
    QCOMPARE(line->record.rate.value(), 15.0);
    QCOMPARE(line->record.seconds.value(), 2.5);
    QVERIFY(line->record.json);
    QCOMPARE(line->record.encoding.output, QStringLiteral("a.webm"));
    QVERIFY(line->record.encoding.codec == VideoCodec::VP9);
    QCOMPARE(line->record.encoding.bitRate, 800000);
    QCOMPARE(line->record.encoding.rotation, 90);
    QVERIFY(line->record.encoding.mirror);
    QVERIFY(line->record.encoding.force);
}

void CommandLineTest::recordLeavesTheRestToOthers()
{
    int exitCode = 0;
    const auto line = parse({ "record", "--camera", "pattern:back", "a.mkv" }, &exitCode);
    QVERIFY(line.has_value());
    QVERIFY(!line->record.size && !line->record.rate && !line->record.seconds);
    QVERIFY(!line->record.encoding.codec);
    QCOMPARE(line->record.encoding.bitRate, 1000000);
    QCOMPARE(line->record.encoding.rotation, 0);
    QVERIFY(!line->record.encoding.mirror && !line->record.encoding.force);
    QVERIFY(!line->record.json);
}

void CommandLineTest::readsEncode()
{
    int exitCode = 0;
    const auto line = parse({ "encode", "in.mkv", "out.mp4", "--codec", "h265" }, &exitCode);
    QVERIFY(line.has_value());
    QCOMPARE(line->command, CommandLine::Command::Encode);
    QCOMPARE(line->encode.input, QStringLiteral("in.mkv"));
    QCOMPARE(line->encode.encoding.output, QStringLiteral("out.mp4"));
    QVERIFY(line->encode.encoding.codec == VideoCodec::H265);
}

void CommandLineTest::recordReadsWhatToCheck()
{
    int exitCode = 0;
    const auto plain = parse({ "record", "--camera", "a", "b.mkv" }, &exitCode);
    QVERIFY(plain.has_value() && !plain->record.check && plain->record.pictures.isEmpty());
    const auto checked = parse(
            { "record", "--camera", "a", "b.mkv", "--check", "--pictures", "/tmp/c" }, &exitCode);
    QVERIFY(checked.has_value() && checked->record.check);
    QCOMPARE(checked->record.pictures, QStringLiteral("/tmp/c"));
}

void CommandLineTest::readsEveryOptionOfPlay()
{
    int exitCode = 0;
    const auto plain = parse({ "play", "a.mkv" }, &exitCode);
    QVERIFY(plain.has_value());
    QCOMPARE(plain->command, CommandLine::Command::Play);
    QCOMPARE(plain->play.file, QStringLiteral("a.mkv"));
    QVERIFY(!plain->play.codec && !plain->play.frames && plain->play.snapshot.isEmpty());
    QVERIFY(plain->play.realTime && plain->play.window && !plain->play.json);
    const auto full = parse({ "play", "--codec", "h265", "--frames", "7", "--rate", "max",
                              "--snapshot", "/tmp/a.png", "--no-window", "--json", "a.bin" },
                            &exitCode);
    QVERIFY(full.has_value());
    QCOMPARE(full->play.codec.value(), VideoCodec::H265);
    QCOMPARE(full->play.frames.value(), qint64(7));
    const auto padded = parse({ "play", "a.mkv", "--frames", "010" }, &exitCode);
    QVERIFY(padded.has_value());
    QCOMPARE(padded->play.frames.value(), qint64(10)); // not octal
    QCOMPARE(full->play.snapshot, QStringLiteral("/tmp/a.png"));
    QVERIFY(!full->play.realTime && !full->play.window && full->play.json);
}

void CommandLineTest::readsVerifyAndTranscode()
{
    int exitCode = 0;
    const auto verify = parse({ "verify", "a.ivf", "--codec", "vp8", "--json" }, &exitCode);
    QVERIFY(verify.has_value());
    QCOMPARE(verify->command, CommandLine::Command::Verify);
    QCOMPARE(verify->verify.file, QStringLiteral("a.ivf"));
    QCOMPARE(verify->verify.codec.value(), VideoCodec::VP8);
    QVERIFY(verify->verify.json);
    const auto transcode = parse(
            { "transcode", "a.ivf", "b.mp4", "--codec", "vp9", "--bitrate", "2M" }, &exitCode);
    QVERIFY(transcode.has_value());
    QCOMPARE(transcode->command, CommandLine::Command::Transcode);
    QCOMPARE(transcode->encode.input, QStringLiteral("a.ivf"));
    QCOMPARE(transcode->encode.encoding.output, QStringLiteral("b.mp4"));
    QCOMPARE(transcode->encode.encoding.codec.value(), VideoCodec::VP9);
    QCOMPARE(transcode->encode.encoding.bitRate, 2000000);
}

void CommandLineTest::readsDoctor()
{
    int exitCode = 0;
    const auto all = parse({ "doctor" }, &exitCode);
    QVERIFY(all.has_value() && !all->cameras && !all->json);
    QCOMPARE(all->command, CommandLine::Command::Doctor);
    const auto nodes = parse({ "doctor", "--cameras", "--json" }, &exitCode);
    QVERIFY(nodes.has_value() && nodes->cameras && nodes->json);
}

void CommandLineTest::readsEveryOptionOfCompliance()
{
    int exitCode = 0;
    const auto plain = parse({ "compliance" }, &exitCode);
    QVERIFY(plain.has_value());
    QCOMPARE(plain->command, CommandLine::Command::Compliance);
    QVERIFY(plain->compliance.checks.only.isEmpty() && plain->compliance.checks.device.isEmpty());
    QCOMPARE(plain->compliance.checks.hotPlug, 0);
    QVERIFY(plain->compliance.report.isEmpty() && !plain->compliance.json);
    const auto full = parse({ "compliance", "--only", "camera.*", "--device", "a?", "--hotplug",
                              "7", "--junit", "/tmp/a.xml", "--json" },
                            &exitCode);
    QVERIFY(full.has_value());
    QCOMPARE(full->compliance.checks.only, QStringLiteral("camera.*"));
    QCOMPARE(full->compliance.checks.device, QStringLiteral("a?"));
    QCOMPARE(full->compliance.checks.hotPlug, 7);
    QCOMPARE(full->compliance.report, QStringLiteral("/tmp/a.xml"));
    QVERIFY(full->compliance.json);
}

void CommandLineTest::readsBitRates_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("rate"); // bits per second
    QTest::newRow("bits") << QByteArray("123456") << 123456;
    QTest::newRow("thousands") << QByteArray("64k") << 64000;
    QTest::newRow("millions") << QByteArray("1.5M") << 1500000;
}

void CommandLineTest::readsBitRates()
{
    QFETCH(QByteArray, text);
    int exitCode = 0;
    const auto line = parse({ "encode", "a", "b.mkv", "--bitrate", text }, &exitCode);
    QVERIFY(line.has_value());
    QTEST(line->encode.encoding.bitRate, "rate");
}

void CommandLineTest::readsRotations_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("degrees");
    QTest::newRow("none") << QByteArray("0") << 0;
    QTest::newRow("half") << QByteArray("180") << 180;
    QTest::newRow("the other way") << QByteArray("-90") << 270;
    QTest::newRow("more than all") << QByteArray("450") << 90;
    QTest::newRow("with a zero in front") << QByteArray("090") << 90;
}

void CommandLineTest::readsRotations()
{
    QFETCH(QByteArray, text);
    int exitCode = 0;
    const auto line = parse({ "encode", "a", "b.mkv", "--rotate", text }, &exitCode);
    QVERIFY(line.has_value());
    QTEST(line->encode.encoding.rotation, "degrees");
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
    QTest::newRow("recording of nothing") << QByteArrayList { "record", "a.mkv" };
    QTest::newRow("recording to nowhere") << QByteArrayList { "record", "--camera", "a" };
    QTest::newRow("pictures without a name")
            << QByteArrayList { "record", "--camera", "a", "b.mkv", "--check", "--pictures", "" };
    QTest::newRow("encoding to nowhere") << QByteArrayList { "encode", "a.mkv" };
    QTest::newRow("playing of nothing") << QByteArrayList { "play" };
    QTest::newRow("verifying of nothing") << QByteArrayList { "verify" };
    QTest::newRow("transcoding to nowhere") << QByteArrayList { "transcode", "a.mkv" };
    for (const char *option : { "--hotplug=0", "--hotplug=soon", "--hotplug=3601",
                                "--junit=/no/report.xml", "--junit=", "--only" })
        QTest::newRow(qPrintable(QStringLiteral("compliance ") + option))
                << QByteArrayList { "compliance", option };
    for (const char *option :
         { "--rate=fast", "--rate=25", "--frames=0", "--codec=mpeg", "--snapshot=/no/x.png" })
        QTest::newRow(qPrintable(QStringLiteral("play ") + option))
                << QByteArrayList { "play", "a.mkv", option };
    for (const char *option : { "--codec=mpeg", "--codec=H264", "--codec=", "--bitrate=0",
                                "--bitrate=-5", "--bitrate=1G", "--bitrate=much", "--bitrate=9000M",
                                "--rotate=45", "--rotate=up", "--rotate=9999999990" })
        QTest::newRow(option) << QByteArrayList { "encode", "a", "b.mkv", option };
    for (const char *option : { "--seconds=0", "--seconds=-1", "--seconds=nan", "--seconds=long" })
        QTest::newRow(option) << QByteArrayList { "record", "--camera", "a", "b.mkv", option };
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

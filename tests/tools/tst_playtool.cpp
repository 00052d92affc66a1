// SPDX-License-Identifier: BSD-3-Clause
#include "patternfiles.h"
#include "recordedvideo.h"
#include "toolprocess.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <patternreader.h>

#include <memory>

/*! "ocelle play" with the real plugins, and what files are told of. */
class PlayToolTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void play_showsEveryPicture_data();
    void play_showsEveryPicture();
    void play_keepsTheStreamsTime();
    void play_endsAfterSoManyPictures_andSavesTheLast_data();
    void play_endsAfterSoManyPictures_andSavesTheLast();
    void play_endsWell_whenInterrupted();
    void play_showsWhatIsToBeSeen_ofPublishedStreams();
    void play_showsWhatIsThere_ofACutFile();
    void play_goesOn_withoutAKeyFrameForLong();
    void play_goesOn_whereFewUnitsShowAPicture_data();
    void play_goesOn_whereFewUnitsShowAPicture();
    void play_tellsOfNoDisplay_onlyWhereItPlays();
    void commands_refuseWhatCannotBe_data();
    void commands_refuseWhatCannotBe();
    void play_showsPicturesUpright_data();
    void play_showsPicturesUpright();
    void reports_nameFilesAsTheyAre();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

std::optional<Veltra::Ocelle::PatternReading> readingOf(const QImage &image)
{
    const QImage pixels = image.convertToFormat(QImage::Format_RGB32);
    return Veltra::Ocelle::readPatternRgb32(pixels.constBits(), pixels.bytesPerLine(),
                                            pixels.width(), pixels.height());
}

int numberIn(const QImage &image)
{
    const auto reading = readingOf(image);
    return reading ? int(reading->sequence) : -1;
}

} // namespace

void PlayToolTest::play_showsEveryPicture_data()
{
    addCodecFiles();
}

// More than all queues take, with a size that is not made of whole blocks.
void PlayToolTest::play_showsEveryPicture()
{
    QFETCH(QString, codec);
    QFETCH(QString, file);
    constexpr int Count = 100;
    PatternVideo video = patternVideo(Count);
    video.width = 318;
    video.height = 182;
    QVERIFY(video.write(path("in.mkv")));
    QCOMPARE(ToolProcess::run({ "encode", path("in.mkv"), path(file), "--codec", codec }).exitCode,
             0);
    const ToolResult result = ToolProcess::run({ "play", path(file), "--rate", "max", "--json",
                                                 "--snapshot", path("last.png"), "--no-window" });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    QCOMPARE(result.errors, QByteArray());
    const QJsonObject report = object(result);
    QCOMPARE(report.value("in").toInt(), Count);
    QCOMPARE(report.value("out").toInt(), Count);
    QCOMPARE(report.value("lost").toInt(-1), 0);
    QCOMPARE(report.value("dropped").toInt(-1), 0);
    QCOMPARE(report.value("codec").toString(), codec);
    QCOMPARE(report.value("width").toInt(), 318);
    QCOMPARE(report.value("height").toInt(), 182);
    const QImage snapshot(path("last.png"));
    QCOMPARE(snapshot.size(), QSize(318, 182));
    QCOMPARE(numberIn(snapshot), Count - 1);
}

void PlayToolTest::play_keepsTheStreamsTime()
{
    QVERIFY(patternVideo(31, { "-bf", "2" }).write(path("v.mp4")));
    const ToolResult result = ToolProcess::run({ "play", path("v.mp4"), "--json" });
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.errors.contains("There is no display"), result.errors.constData());
    const QJsonObject report = object(result);
    QCOMPARE(report.value("out").toInt(), 31);
    const double seconds = report.value("seconds").toDouble();
    QVERIFY2(seconds > 0.9 && seconds < 2, qPrintable(QString::number(seconds)));
}

void PlayToolTest::play_endsAfterSoManyPictures_andSavesTheLast_data()
{
    QTest::addColumn<int>("pictures");
    QTest::addColumn<int>("shown");
    QTest::newRow("of many") << 60 << 7;
    QTest::newRow("of a file that is inside as a whole") << 3 << 1;
}

void PlayToolTest::play_endsAfterSoManyPictures_andSavesTheLast()
{
    QFETCH(int, pictures);
    QFETCH(int, shown);
    QVERIFY(patternVideo(pictures).write(path("v.mkv")));
    const ToolResult result =
            ToolProcess::run({ "play", path("v.mkv"), "--rate", "max", "--no-window", "--frames",
                               QString::number(shown), "--snapshot", path("last.png"), "--json" });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    QCOMPARE(object(result).value("out").toInt(), shown);
    QCOMPARE(object(result).value("lost").toInt(-1), 0);
    QCOMPARE(numberIn(QImage(path("last.png"))), shown - 1);
}

void PlayToolTest::play_endsWell_whenInterrupted()
{
    QVERIFY(patternVideo(600).write(path("v.mkv")));
    ToolProcess tool({ "play", path("v.mkv"), "--json" }, "pattern");
    QVERIFY(tool.waitForError("v.mkv plays; Ctrl-C ends this.\n"));
    tool.interrupt();
    const ToolResult result = tool.finish();
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const int pictures = object(result).value("out").toInt(-1);
    QVERIFY2(pictures > 0 && pictures < 600, qPrintable(QString::number(pictures)));
    QCOMPARE(object(result).value("lost").toInt(-1), 0);
}

void PlayToolTest::play_showsWhatIsToBeSeen_ofPublishedStreams()
{
    const QString media = QStringLiteral(OCELLE_MEDIA_DIR);
    if (!QFile::exists(media + "/vp8/vp80-00-comprehensive-008.ivf"))
        QSKIP("There are no published streams in " OCELLE_MEDIA_DIR);
    const ToolResult odd = ToolProcess::run({ "play", media + "/vp8/vp80-00-comprehensive-008.ivf",
                                              "--rate", "max", "--json", "--no-window" });
    QVERIFY2(odd.exitCode == 0, odd.errors.constData());
    QCOMPARE(object(odd).value("out").toInt(), object(odd).value("in").toInt());
    const ToolResult bare = ToolProcess::run({ "play", media + "/h264/SVA_BA1_B.264", "--rate",
                                               "max", "--json", "--no-window", "--codec", "h264" });
    QVERIFY2(bare.exitCode == 0, bare.errors.constData());
    QCOMPARE(object(bare).value("out").toInt(), 17);
    QCOMPARE(object(bare).value("width").toInt(), 176);
}

void PlayToolTest::play_showsWhatIsThere_ofACutFile()
{
    QVERIFY(patternVideo(90).write(path("v.mkv")));
    QFile file(path("v.mkv"));
    QVERIFY(file.resize(file.size() / 2));
    const ToolResult result =
            ToolProcess::run({ "play", path("v.mkv"), "--rate", "max", "--no-window", "--json" });
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("v.mkv: is cut off after "), result.errors.constData());
    const int pictures = object(result).value("out").toInt();
    QVERIFY2(pictures > 10 && pictures < 90, qPrintable(QString::number(pictures)));
}

// Everything before the second key frame is of no use, which is more than the queues take.
void PlayToolTest::play_goesOn_withoutAKeyFrameForLong()
{
    QVERIFY(patternVideo(60, { "-g", "40", "-keyint_min", "40", "-sc_threshold", "0" })
                    .write(path("whole.h264")));
    // Leaves out the first picture but not the parameters.
    QCOMPARE(QProcess::execute("ffmpeg",
                               { "-nostdin", "-loglevel", "error", "-i", path("whole.h264"), "-c",
                                 "copy", "-bsf:v", "noise=drop='eq(n\\,0)',dump_extra=freq=all",
                                 path("v.h264") }),
             0);
    const ToolResult result = ToolProcess::run({ "play", path("v.h264"), "--rate", "max", "--json",
                                                 "--no-window", "--snapshot", path("last.png") });
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("waiting for a key frame"), result.errors.constData());
    QCOMPARE(object(result).value("out").toInt(), 20);
    QCOMPARE(object(result).value("lost").toInt(), 39);
    QCOMPARE(numberIn(QImage(path("last.png"))), 59);
}

void PlayToolTest::play_goesOn_whereFewUnitsShowAPicture_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("options"); // %1 is the folder
    QTest::newRow("fields") << "v.h265"
                            << QStringList { "-c:v", "libx265", "-x265-params",
                                             "interlace=tff:log-level=none" };
    QTest::newRow("hidden frames") << "v.ivf"
                                   << QStringList { "-c:v",
                                                    "libvpx",
                                                    "-deadline",
                                                    "good",
                                                    "-b:v",
                                                    "300k",
                                                    "-g",
                                                    "200",
                                                    "-pass",
                                                    "2",
                                                    "-lag-in-frames",
                                                    "16",
                                                    "-auto-alt-ref",
                                                    "1",
                                                    "-arnr-maxframes",
                                                    "7",
                                                    "-passlogfile",
                                                    "%1/first" };
}

// There is no key frame, so that nothing comes out, and the units are more than the queues take.
void PlayToolTest::play_goesOn_whereFewUnitsShowAPicture()
{
    QFETCH(QString, file);
    QFETCH(QStringList, options);
    options.replaceInStrings("%1", m_folder->path());
    const QStringList source { "-nostdin",  "-loglevel",
                               "error",     "-y",
                               "-f",        "lavfi",
                               "-i",        "testsrc=s=160x120:r=30,format=yuv420p",
                               "-frames:v", "90" };
    if (options.contains("-pass")) {
        QStringList first = options;
        first[first.indexOf("-pass") + 1] = "1";
        QCOMPARE(QProcess::execute("ffmpeg", source + first + QStringList { path("first.ivf") }),
                 0);
    }
    QCOMPARE(QProcess::execute("ffmpeg", source + options + QStringList { path("whole-" + file) }),
             0);
    QCOMPARE(QProcess::execute("ffmpeg", { "-nostdin", "-loglevel", "error", "-i",
                                           path("whole-" + file), "-c", "copy", "-bsf:v",
                                           "noise=drop='key',dump_extra=freq=all", path(file) }),
             0);
    const ToolResult result =
            ToolProcess::run({ "play", path(file), "--rate", "max", "--no-window" });
    QCOMPARE(result.exitCode, 1); // and not killed
    QVERIFY2(result.errors.contains(": no picture came out of it\n"), result.errors.constData());
}

// A file that opens well, and then there is no key frame in it.
void PlayToolTest::play_tellsOfNoDisplay_onlyWhereItPlays()
{
    QVERIFY(patternVideo(10, { "-g", "40", "-sc_threshold", "0" }).write(path("whole.h264")));
    QCOMPARE(QProcess::execute("ffmpeg",
                               { "-nostdin", "-loglevel", "error", "-i", path("whole.h264"), "-c",
                                 "copy", "-bsf:v", "noise=drop='eq(n\\,0)',dump_extra=freq=all",
                                 path("v.h264") }),
             0);
    const ToolResult result = ToolProcess::run({ "play", path("v.h264"), "--rate", "max" });
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("v.h264: no picture came out of it\n"),
             result.errors.constData());
    QVERIFY2(!result.errors.contains("There is no display"), result.errors.constData());
}

void PlayToolTest::commands_refuseWhatCannotBe_data()
{
    QTest::addColumn<QStringList>("arguments"); // %1 is the folder
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("no file") << QStringList { "play", "%1/none.mkv" }
                             << QByteArray("none.mkv: No such file or directory");
    QTest::newRow("folder") << QStringList { "play", "%1" } << QByteArray("Is a directory");
    for (const QStringList &command : { QStringList { "play", "" }, QStringList { "verify", "" },
                                        QStringList { "encode", "", "%1/out.mkv" },
                                        QStringList { "transcode", "", "%1/out.mkv" },
                                        QStringList { "encode", "%1/in.mkv", "" } })
        QTest::newRow(qPrintable("no name, " + command.join(' ')))
                << command << QByteArray("\"\" is not the name of a file");
    QTest::newRow("no video") << QStringList { "play", "%1/sound.mkv" }
                              << QByteArray("sound.mkv: has no video");
    QTest::newRow("text") << QStringList { "verify", "%1/text.mkv" }
                          << QByteArray("text.mkv: is no video that can be read (Invalid data");
    QTest::newRow("codec") << QStringList { "play", "%1/mpeg4.mkv" }
                           << QByteArray("mpeg4.mkv: its video is mpeg4, which is none of h264, "
                                         "h265, vp8 and vp9");
    QTest::newRow("other codec") << QStringList { "play", "%1/in.mkv", "--codec", "vp8" }
                                 << QByteArray("in.mkv: its video is h264, not vp8");
    QTest::newRow("rate") << QStringList { "play", "%1/in.mkv", "--rate", "fast" }
                          << QByteArray("--rate");
    QTest::newRow("snapshot") << QStringList { "play", "%1/in.mkv", "--snapshot", "%1/a.txt" }
                              << QByteArray("does not end in a known image format");
    QTest::newRow("snapshot as a folder")
            << QStringList { "play", "%1/in.mkv", "--snapshot", "%1/folder.png" }
            << QByteArray("folder.png\" is a folder");
    QTest::newRow("snapshot as a device")
            << QStringList { "play", "%1/in.mkv", "--snapshot", "%1/device.png" }
            << QByteArray("device.png\" is not an ordinary file");
    QTest::newRow("empty stream") << QStringList { "play", "%1/empty.h264" }
                                  << QByteArray("empty.h264: is no video that can be read (");
    QTest::newRow("empty stream to encode")
            << QStringList { "encode", "%1/empty.h264", "%1/out.mkv" }
            << QByteArray("empty.h264: is no video that can be read (");
    QTest::newRow("container") << QStringList { "transcode", "%1/in.mkv", "%1/out.webm", "--codec",
                                                "h264" }
                               << QByteArray("WebM files cannot hold h264, only vp8 and vp9");
    QTest::newRow("itself") << QStringList { "transcode", "%1/in.mkv", "%1/in.mkv", "--force" }
                            << QByteArray("cannot be transcoded to itself");
    QTest::newRow("what it begins as")
            << QStringList { "transcode", "%1/half.mkv.part", "%1/half.mkv", "--force" }
            << QByteArray("half.mkv.part\" cannot be transcoded to itself");
    QTest::newRow("no input") << QStringList { "transcode", "%1/none.mkv", "%1/out.mkv" }
                              << QByteArray("none.mkv: No such file or directory");
}

void PlayToolTest::commands_refuseWhatCannotBe()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    QVERIFY(PatternVideo().write(path("in.mkv")));
    QVERIFY(QFile::copy(path("in.mkv"), path("half.mkv.part")));
    PatternVideo other;
    other.options = QStringList { "-c:v", "mpeg4" };
    QVERIFY(other.write(path("mpeg4.mkv")));
    QFile text(path("text.mkv"));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no video") > 0);
    text.close();
    QFile empty(path("empty.h264"));
    QVERIFY(empty.open(QIODevice::WriteOnly));
    QVERIFY(QDir(m_folder->path()).mkdir("folder.png"));
    QVERIFY(QFile::link("/dev/null", path("device.png")));
    QCOMPARE(QProcess::execute("ffmpeg", { "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                                           "anullsrc", "-t", "1", path("sound.mkv") }),
             0);
    const QStringList before = QDir(m_folder->path()).entryList(QDir::Files);
    const ToolResult result = ToolProcess::run(arguments.replaceInStrings("%1", m_folder->path()));
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    QVERIFY2(result.errors.contains(error), result.errors.constData());
    QVERIFY2(result.errors.count('\n') == 1, result.errors.constData()); // and no note with it
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), before);
}

void PlayToolTest::play_showsPicturesUpright_data()
{
    QTest::addColumn<int>("degrees"); // clockwise
    for (const int degrees : { 90, 180, 270 })
        QTest::addRow("%d", degrees) << degrees;
}

// Which lie in the file, as a phone's do.
void PlayToolTest::play_showsPicturesUpright()
{
    QFETCH(int, degrees);
    QVERIFY(patternVideo(10).write(path("upright.mkv")));
    QVERIFY(lay(path("upright.mkv"), degrees, path("v.mp4")));
    const ToolResult result = ToolProcess::run(
            { "play", path("v.mp4"), "--rate", "max", "--no-window", "--snapshot", path("s.png") });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    QCOMPARE(result.errors, QByteArray());
    const auto reading = readingOf(QImage(path("s.png")));
    QVERIFY(reading);
    QCOMPARE(int(reading->sequence), 9);
    QCOMPARE(reading->rotation, 0);
}

// As a download may be called.
void PlayToolTest::reports_nameFilesAsTheyAre()
{
    const QString in = path("a%3A%20b%1%2%9.mkv");
    const QString out = path("out%1%5%9.mkv");
    QVERIFY(patternVideo(10).write(path("plain.mkv")));
    QVERIFY(QFile::rename(path("plain.mkv"), in));
    for (const char *command : { "play", "verify" }) {
        const ToolResult read = ToolProcess::run({ command, in });
        const QString begin = in + ": h264 320x240: 10 pictures in, 10 out, 0 lost; ";
        QVERIFY2(read.output.startsWith(begin.toLocal8Bit()), read.output.constData());
    }
    for (const char *command : { "transcode", "encode" }) {
        const ToolResult written = ToolProcess::run({ command, in, out, "--force" });
        const QString begin = out + ": h264 320x240 from " + in + ": 10 pictures, 0.33 s, ";
        QVERIFY2(written.output.startsWith(begin.toLocal8Bit()), written.output.constData());
    }
    QVERIFY(patternVideo(90).write(path("plain.mkv")));
    QFile file(path("plain.mkv"));
    QVERIFY(file.resize(file.size() / 2));
    QVERIFY(file.rename(path("cut%2%3.mkv")));
    const ToolResult cut = ToolProcess::run({ "play", path("cut%2%3.mkv"), "--rate", "max" });
    QVERIFY2(cut.errors.contains("cut%2%3.mkv: is cut off after "), cut.errors.constData());
}

QTEST_GUILESS_MAIN(PlayToolTest)
#include "tst_playtool.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "patternvideo.h"
#include "recordedvideo.h"
#include "toolprocess.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/*! "ocelle encode" with the real plugins. */
class EncodeToolTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void encode_losesNothing_data();
    void encode_losesNothing();
    void encode_keepsFootagesQualityAndTimes();
    void encode_turnsAndMirrors_data();
    void encode_turnsAndMirrors();
    void encode_takesOddSizesAndOtherFormats();
    void encode_endsWell_whenInterrupted();
    void encode_refusesWhatCannotBe_data();
    void encode_refusesWhatCannotBe();
    void encode_keepsTheExistingFile_unlessForced();
    void encode_keepsWhatItHas_whenTheDiskIsFull();
    void encode_tellsTheEncodersReason();
    void encode_keepsWhatIsThere_ofACutFile();
    void encode_tellsOfDamage();
    void encode_tellsOfPicturesThatChangeTheirSize();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void EncodeToolTest::encode_losesNothing_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("file");
    QTest::newRow("h264") << "h264"
                          << "out.mp4";
    QTest::newRow("h265") << "h265"
                          << "out.mkv";
    QTest::newRow("vp8") << "vp8"
                         << "out.ivf";
    QTest::newRow("vp9") << "vp9"
                         << "out.webm";
}

// More pictures than the encoder's queue takes, all at once.
void EncodeToolTest::encode_losesNothing()
{
    QFETCH(QString, codec);
    QFETCH(QString, file);
    constexpr int Count = 100;
    PatternVideo video;
    video.pictures = Count;
    QVERIFY(video.write(path("in.mp4")));
    const ToolResult result = ToolProcess::run({ "encode", path("in.mp4"), path(file), "--codec",
                                                 codec, "--bitrate", "500k", "--json" });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    QCOMPARE(result.errors, QByteArray());
    const QJsonObject report = QJsonDocument::fromJson(result.output).object();
    QCOMPARE(report.value("pictures").toInt(), Count);
    QCOMPARE(report.value("dropped").toInt(-1), 0);
    QCOMPARE(report.value("codec").toString(), codec);
    QCOMPARE(report.value("complete").toBool(), true);

    const RecordedVideo written = RecordedVideo::read(path(file));
    QCOMPARE(written.packets, Count);
    QCOMPARE(written.size, QSize(320, 240));
    for (int i = 0; i < Count; ++i) {
        QCOMPARE(written.numbers.value(i, -2), i);
        QVERIFY(qAbs(written.times.at(i) - qint64(i) * 100000 / 3) <= 500);
    }
}

void EncodeToolTest::encode_keepsFootagesQualityAndTimes()
{
    const QString footage = QStringLiteral(OCELLE_MEDIA_DIR "/ship-cif.mkv");
    if (!QFile::exists(footage))
        QSKIP(qPrintable(QStringLiteral("There is no ") + footage));
    const ToolResult result = ToolProcess::run({ "encode", footage, path("out.mkv") });
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.output.contains("300 pictures, 12.00 s"), result.output.constData());
    const RecordedVideo before = RecordedVideo::read(footage);
    const RecordedVideo after = RecordedVideo::read(path("out.mkv"));
    QCOMPARE(after.codec, QStringLiteral("h264"));
    QCOMPARE(after.rate, 25.0);
    QCOMPARE(after.packets, 300);
    QCOMPARE(after.pictures.size(), before.pictures.size());
    double sum = 0; // decibels
    for (std::size_t i = 0; i < after.pictures.size(); ++i) {
        sum += psnr(before.pictures[i], after.pictures[i]);
        const auto index = int(i);
        QCOMPARE(after.times[index], before.times[index] - before.times[0]);
    }
    const double mean = sum / double(after.pictures.size());
    QVERIFY2(mean > 32, qPrintable(QString::number(mean)));
}

void EncodeToolTest::encode_turnsAndMirrors_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("rotation"); // of the picture, mirrored left to right first
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("plain") << QStringList {} << QSize(320, 240) << 0 << false;
    QTest::newRow("90") << QStringList { "--rotate", "90" } << QSize(240, 320) << 90 << false;
    QTest::newRow("-90") << QStringList { "--rotate=-90" } << QSize(240, 320) << 270 << false;
    // Top to bottom is left to right and half a turn.
    QTest::newRow("mirrored") << QStringList { "--mirror" } << QSize(320, 240) << 180 << true;
    QTest::newRow("left to right")
            << QStringList { "--mirror", "--rotate", "180" } << QSize(320, 240) << 0 << true;
}

void EncodeToolTest::encode_turnsAndMirrors()
{
    QFETCH(QStringList, options);
    QVERIFY(PatternVideo().write(path("in.mkv")));
    const ToolResult result =
            ToolProcess::run(QStringList { "encode", path("in.mkv"), path("out.mp4") } + options);
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const RecordedVideo video = RecordedVideo::read(path("out.mp4"));
    QTEST(video.size, "size");
    QCOMPARE(video.numbers.value(11), 11);
    QTEST(video.rotations.value(11), "rotation");
    QTEST(video.mirrored.value(11), "mirrored");
}

void EncodeToolTest::encode_takesOddSizesAndOtherFormats()
{
    PatternVideo video;
    video.width = 321;
    video.height = 241;
    video.options = QStringList { "-pix_fmt", "rgb24", "-c:v", "ffv1" };
    QVERIFY(video.write(path("in.mkv")));
    for (const char *file : { "out.mp4", "out.webm" }) {
        const ToolResult result = ToolProcess::run({ "encode", path("in.mkv"), path(file) });
        QVERIFY2(result.exitCode == 0, result.errors.constData());
        const RecordedVideo written = RecordedVideo::read(path(file));
        QCOMPARE(written.numbers.size(), 12);
        QCOMPARE(written.numbers.last(), 11);
        // What the container says of the size is what is decoded.
        QCOMPARE(QSize(written.pictures[0].width, written.pictures[0].height), written.size);
    }
}

void EncodeToolTest::encode_endsWell_whenInterrupted()
{
    PatternVideo video;
    video.width = 1280;
    video.height = 720;
    video.pictures = 40;
    QVERIFY(video.write(path("short.mkv"))); // a long one is made of it
    QCOMPARE(QProcess::execute("ffmpeg", { "-nostdin", "-loglevel", "error", "-stream_loop", "60",
                                           "-i", path("short.mkv"), "-c", "copy", path("in.mkv") }),
             0);
    ToolProcess tool({ "encode", path("in.mkv"), path("out.mp4"), "--json" }, "pattern");
    QTRY_VERIFY(QFileInfo(path("out.mp4.part")).size() > 0);
    tool.interrupt();
    const ToolResult result = tool.finish();
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const int pictures = QJsonDocument::fromJson(result.output).object().value("pictures").toInt();
    const RecordedVideo written = RecordedVideo::read(path("out.mp4"));
    QVERIFY2(pictures > 0 && pictures < 2400, qPrintable(QString::number(pictures)));
    QCOMPARE(written.packets, pictures);
    for (int i = 0; i < pictures; ++i)
        QCOMPARE(written.numbers.value(i, -2), i % 40);
}

void EncodeToolTest::encode_refusesWhatCannotBe_data()
{
    QTest::addColumn<QStringList>("arguments"); // %1 is the folder
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("container") << QStringList { "%1/in.mkv", "%1/out.webm", "--codec", "h264" }
                               << QByteArray("WebM files cannot hold h264, only vp8 and vp9");
    QTest::newRow("ivf") << QStringList { "%1/in.mkv", "%1/out.ivf", "--codec", "h265" }
                         << QByteArray("IVF files cannot hold h265, only vp8 and vp9");
    QTest::newRow("suffix") << QStringList { "%1/in.mkv", "%1/out.avi" }
                            << QByteArray("ends in none of .mkv, .mp4, .webm and .ivf");
    QTest::newRow("no input") << QStringList { "%1/none.mkv", "%1/out.mkv" }
                              << QByteArray("none.mkv: No such file or directory");
    QTest::newRow("no video") << QStringList { "%1/text.mkv", "%1/out.mkv" }
                              << QByteArray("text.mkv: is no video that can be read (Invalid data");
    QTest::newRow("no folder") << QStringList { "%1/in.mkv", "%1/none/out.mkv" }
                               << QByteArray("does not exist");
    QTest::newRow("itself") << QStringList { "%1/in.mkv", "%1/in.mkv", "--force" }
                            << QByteArray("cannot be encoded to itself");
    QTest::newRow("what it begins as")
            << QStringList { "%1/half.mkv.part", "%1/half.mkv", "--force" }
            << QByteArray("half.mkv.part\" cannot be encoded to itself");
}

void EncodeToolTest::encode_refusesWhatCannotBe()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    QVERIFY(PatternVideo().write(path("in.mkv")));
    QVERIFY(QFile::copy(path("in.mkv"), path("half.mkv.part")));
    QFile text(path("text.mkv"));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no video") > 0);
    text.close();
    const QStringList before = QDir(m_folder->path()).entryList(QDir::Files);
    const ToolResult result = ToolProcess::run(QStringList { "encode" } +
                                               arguments.replaceInStrings("%1", m_folder->path()));
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    QVERIFY2(result.errors.contains(error), result.errors.constData());
    QVERIFY2(result.errors.count('\n') == 1, result.errors.constData());
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), before);
}

void EncodeToolTest::encode_keepsTheExistingFile_unlessForced()
{
    QVERIFY(PatternVideo().write(path("in.mkv")));
    QVERIFY(QFile::copy(path("in.mkv"), path("out.mkv")));
    const qint64 size = QFileInfo(path("out.mkv")).size();
    const QStringList arguments { "encode", path("in.mkv"), path("out.mkv") };
    const ToolResult refused = ToolProcess::run(arguments);
    QCOMPARE(refused.exitCode, 2);
    QVERIFY(refused.errors.contains("exists already; --force replaces it"));
    QCOMPARE(QFileInfo(path("out.mkv")).size(), size);
    const ToolResult forced = ToolProcess::run(arguments + QStringList { "--force" });
    QCOMPARE(forced.exitCode, 0);
    QVERIFY(QFileInfo(path("out.mkv")).size() != size);
    QCOMPARE(RecordedVideo::read(path("out.mkv")).packets, 12);
}

// A limit of the file size is as good as a full disk.
void EncodeToolTest::encode_keepsWhatItHas_whenTheDiskIsFull()
{
    PatternVideo video;
    video.pictures = 100;
    QVERIFY(video.write(path("in.mkv")));
    QProcess shell;
    shell.start("bash", { "-c", "trap '' XFSZ; ulimit -f 8; exec \"$@\"", "-", OCELLE_TOOL,
                          "encode", path("in.mkv"), path("out.mkv"), "--bitrate", "2M" });
    QVERIFY(shell.waitForFinished(60000));
    const QByteArray errors = shell.readAllStandardError();
    QCOMPARE(shell.exitCode(), 1);
    QVERIFY2(errors.contains("out.mkv: File too large; what was written so far is in "), errors);
    QVERIFY(!QFileInfo::exists(path("out.mkv")));
    QVERIFY(RecordedVideo::read(path("out.mkv.part")).packets > 0);
}

void EncodeToolTest::encode_tellsTheEncodersReason()
{
    QVERIFY(PatternVideo().write(path("in.mkv")));
    const ToolResult result =
            ToolProcess::run({ "encode", path("in.mkv"), path("out.mkv"), "--bitrate", "10" });
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errors, QByteArray("ocelle: H.264: a bit rate of 10 is out of range\n"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList { "in.mkv" });
}

void EncodeToolTest::encode_keepsWhatIsThere_ofACutFile()
{
    PatternVideo video;
    video.pictures = 90;
    QVERIFY(video.write(path("in.mkv")));
    QFile file(path("in.mkv"));
    QVERIFY(file.resize(file.size() / 2));
    const ToolResult result =
            ToolProcess::run({ "encode", path("in.mkv"), path("out.mkv"), "--json" });
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("in.mkv: is cut off after "), result.errors.constData());
    const int pictures = QJsonDocument::fromJson(result.output).object().value("pictures").toInt();
    QVERIFY2(pictures > 10 && pictures < 90, qPrintable(QString::number(pictures)));
    QCOMPARE(RecordedVideo::read(path("out.mkv")).packets, pictures);
}

// The last picture of what is left is not whole, which only its decoder sees.
void EncodeToolTest::encode_tellsOfDamage()
{
    PatternVideo video;
    video.pictures = 30;
    video.options = QStringList { "-g", "1" };
    QVERIFY(video.write(path("in.h264")));
    QFile file(path("in.h264"));
    QVERIFY(file.resize(file.size() / 2));
    const ToolResult result = ToolProcess::run({ "encode", path("in.h264"), path("out.mkv") });
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("in.h264: is damaged in 1 places"), result.errors.constData());
    QVERIFY(RecordedVideo::read(path("out.mkv")).packets > 10);
}

void EncodeToolTest::encode_tellsOfPicturesThatChangeTheirSize()
{
    QFile all(path("in.h264"));
    QVERIFY(all.open(QIODevice::WriteOnly));
    for (const int width : { 320, 640 }) {
        PatternVideo video;
        video.width = width;
        QVERIFY(video.write(path("part.h264")));
        QFile part(path("part.h264"));
        QVERIFY(part.open(QIODevice::ReadOnly));
        QVERIFY(all.write(part.readAll()) > 0);
        QVERIFY(part.remove());
    }
    all.close();
    const ToolResult result = ToolProcess::run({ "encode", path("in.h264"), path("out.mkv") });
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("the pictures change from 320x240 to 640x240"),
             result.errors.constData());
    QCOMPARE(RecordedVideo::read(path("out.mkv")).packets, 12); // what could be kept
}

QTEST_GUILESS_MAIN(EncodeToolTest)
#include "tst_encodetool.moc"

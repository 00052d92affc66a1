// SPDX-License-Identifier: BSD-3-Clause
#include "patternfiles.h"
#include "recordedvideo.h"
#include "toolprocess.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/*! "ocelle transcode" with the real plugins. */
class TranscodeToolTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void transcode_losesNothing_data();
    void transcode_losesNothing();
    void transcode_keepsTheTimes();
    void transcode_isNoSlower_withABareStream();
    void transcode_endsWell_whenInterrupted();
    void transcode_leavesOutWhatIsCropped();
    void commands_writePicturesUpright_data();
    void commands_writePicturesUpright();
    void transcode_tellsOfPicturesThatChangeTheirSize();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TranscodeToolTest::transcode_losesNothing_data()
{
    addCodecFiles();
}

void TranscodeToolTest::transcode_losesNothing()
{
    QFETCH(QString, codec);
    QFETCH(QString, file);
    constexpr int Count = 100;
    PatternVideo video = patternVideo(Count, { "-bf", "3" }); // in another order than shown
    video.width = 326;
    video.height = 246;
    QVERIFY(video.write(path("in.mkv")));
    const ToolResult result = ToolProcess::run({ "transcode", path("in.mkv"), path(file), "--codec",
                                                 codec, "--bitrate", "500k", "--json" });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(object(result).value("pictures").toInt(), Count);
    QCOMPARE(object(result).value("dropped").toInt(-1), 0);
    QCOMPARE(object(result).value("complete").toBool(), true);
    const RecordedVideo written = RecordedVideo::read(path(file));
    QCOMPARE(written.packets, Count);
    QCOMPARE(written.size, QSize(326, 246));
    for (int i = 0; i < Count; ++i) {
        QCOMPARE(written.numbers.value(i, -2), i);
        QVERIFY(qAbs(written.times.at(i) - qint64(i) * 100000 / 3) <= 1000);
    }
}

void TranscodeToolTest::transcode_keepsTheTimes()
{
    const QString footage = QStringLiteral(OCELLE_MEDIA_DIR "/ship-cif.mkv");
    if (!QFile::exists(footage))
        QSKIP(qPrintable(QStringLiteral("There is no ") + footage));
    const ToolResult result = ToolProcess::run({ "transcode", footage, path("out.mkv") });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    QVERIFY2(result.output.contains("300 pictures, 12.00 s"), result.output.constData());
    const RecordedVideo before = RecordedVideo::read(footage);
    const RecordedVideo after = RecordedVideo::read(path("out.mkv"));
    QCOMPARE(after.packets, 300);
    double sum = 0; // decibels
    for (int i = 0; i < 300; ++i) {
        QCOMPARE(after.times.at(i), before.times.at(i) - before.times.at(0));
        sum += psnr(before.pictures[std::size_t(i)], after.pictures[std::size_t(i)]);
    }
    QVERIFY2(sum / 300 > 32, qPrintable(QString::number(sum / 300)));
}

// It has no times of its own, and those that it is given must not be mistaken for others.
void TranscodeToolTest::transcode_isNoSlower_withABareStream()
{
    QVERIFY(patternVideo(150).write(path("in.h264")));
    QCOMPARE(QProcess::execute("ffmpeg", { "-nostdin", "-loglevel", "error", "-r", "30", "-i",
                                           path("in.h264"), "-c", "copy", path("in.mp4") }),
             0);
    double rates[2] = {}; // pictures per second
    for (const char *name : { "in.mp4", "in.h264" }) {
        const ToolResult result =
                ToolProcess::run({ "transcode", path(name), path("out.mkv"), "--json", "--force" });
        QVERIFY2(result.exitCode == 0, result.errors.constData());
        QCOMPARE(object(result).value("pictures").toInt(), 150);
        rates[name == QByteArray("in.h264")] =
                object(result).value("pictures_per_second").toDouble();
    }
    QVERIFY(rates[0] > 0);
    QVERIFY2(rates[1] > rates[0] / 4, qPrintable(QString::number(rates[1])));
}

void TranscodeToolTest::transcode_endsWell_whenInterrupted()
{
    PatternVideo video = patternVideo(40);
    video.width = 1280;
    video.height = 720;
    QVERIFY(video.write(path("short.mkv"))); // a long one is made of it
    QCOMPARE(QProcess::execute("ffmpeg", { "-nostdin", "-loglevel", "error", "-stream_loop", "60",
                                           "-i", path("short.mkv"), "-c", "copy", path("in.mkv") }),
             0);
    ToolProcess tool({ "transcode", path("in.mkv"), path("out.mp4"), "--json" }, "pattern");
    QTRY_VERIFY(QFileInfo(path("out.mp4.part")).size() > 0);
    tool.interrupt();
    const ToolResult result = tool.finish();
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const int pictures = object(result).value("pictures").toInt();
    QVERIFY2(pictures > 0 && pictures < 2400, qPrintable(QString::number(pictures)));
    const RecordedVideo written = RecordedVideo::read(path("out.mp4"));
    QCOMPARE(written.packets, pictures);
    for (int i = 0; i < pictures; ++i)
        QCOMPARE(written.numbers.value(i, -2), i % 40);
}

// Where that begins at an odd pixel, as only pictures with whole chroma tell it.
void TranscodeToolTest::transcode_leavesOutWhatIsCropped()
{
    QCOMPARE(QProcess::execute("ffmpeg",
                               { "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                                 "testsrc=s=320x240:r=30,format=yuv444p", "-frames:v", "12", "-c:v",
                                 "libx264", "-qp", "10", "-bsf:v",
                                 "h264_metadata=crop_left=3:crop_right=1:crop_top=5:crop_bottom=1",
                                 path("in.h264") }),
             0);
    const ToolResult result =
            ToolProcess::run({ "transcode", path("in.h264"), path("out.mkv"), "--bitrate", "8M" });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    QVERIFY2(result.output.contains(" 316x234 from "), result.output.constData());
    QCOMPARE(QProcess::execute("ffmpeg", { "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                                           "testsrc=s=320x240:r=30,format=yuv444p,crop=316:234:3:5,"
                                           "format=yuv420p",
                                           "-frames:v", "12", "-c:v", "ffv1", path("due.mkv") }),
             0);
    const RecordedVideo due = RecordedVideo::read(path("due.mkv"));
    const RecordedVideo written = RecordedVideo::read(path("out.mkv"));
    QCOMPARE(written.size, QSize(316, 234));
    QCOMPARE(written.packets, 12);
    const double decibels = psnr(due.pictures.back().y, written.pictures.back().y);
    QVERIFY2(decibels > 45, qPrintable(QString::number(decibels)));
}

void TranscodeToolTest::commands_writePicturesUpright_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("rotation"); // of what is written
    QTest::addColumn<bool>("mirrored");
    for (const char *command : { "transcode", "encode" }) {
        QTest::addRow("%s", command) << QStringList { command } << 0 << false;
        QTest::addRow("%s, turned", command)
                << QStringList { command, "--rotate", "270" } << 270 << false;
        QTest::addRow("%s, mirrored", command)
                << QStringList { command, "--mirror", "--rotate", "180" } << 0 << true;
    }
}

// Which lie in the file, as a phone's do.
void TranscodeToolTest::commands_writePicturesUpright()
{
    QFETCH(QStringList, arguments);
    QVERIFY(patternVideo(10).write(path("upright.mkv")));
    QVERIFY(lay(path("upright.mkv"), 90, path("v.mp4")));
    const ToolResult result = ToolProcess::run(arguments << path("v.mp4") << path("out.mkv"));
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const RecordedVideo written = RecordedVideo::read(path("out.mkv"));
    QCOMPARE(written.numbers.value(9, -2), 9);
    QTEST(written.rotations.last(), "rotation");
    QTEST(written.mirrored.last(), "mirrored");
}

void TranscodeToolTest::transcode_tellsOfPicturesThatChangeTheirSize()
{
    QVERIFY(patternVideo(30).write(path("a.h264")));
    PatternVideo larger = patternVideo(30);
    larger.width = 640;
    larger.height = 480;
    QVERIFY(larger.write(path("b.h264")));
    QFile all(path("in.h264"));
    QVERIFY(all.open(QIODevice::WriteOnly));
    for (const char *name : { "a.h264", "b.h264" }) {
        QFile part(path(name));
        QVERIFY(part.open(QIODevice::ReadOnly));
        all.write(part.readAll());
    }
    all.close();
    const ToolResult result = ToolProcess::run({ "transcode", path("in.h264"), path("out.mkv") });
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("the pictures change from 320x240 to 640x480"),
             result.errors.constData());
    QCOMPARE(RecordedVideo::read(path("out.mkv")).packets, 30); // what could be kept
}

QTEST_GUILESS_MAIN(TranscodeToolTest)
#include "tst_transcodetool.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "patternfiles.h"
#include "recordedvideo.h"
#include "toolprocess.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/*! "ocelle verify" with the real plugins. */
class VerifyToolTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void verify_findsNothing_inAGoodRecording_data();
    void verify_findsNothing_inAGoodRecording();
    void verify_findsLostAndRepeatedPictures();
    void verify_refusesAVideoWithoutThePattern();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void VerifyToolTest::verify_findsNothing_inAGoodRecording_data()
{
    addCodecFiles();
}

void VerifyToolTest::verify_findsNothing_inAGoodRecording()
{
    QFETCH(QString, codec);
    QFETCH(QString, file);
    PatternVideo video = patternVideo(50);
    video.width = 640; // where a cell is half of what VP9 has as a block
    video.height = 480;
    QVERIFY(video.write(path("in.mkv")));
    QCOMPARE(ToolProcess::run({ "encode", path("in.mkv"), path(file), "--codec", codec }).exitCode,
             0);
    const ToolResult result = ToolProcess::run({ "verify", path(file) });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    QVERIFY2(result.output.contains(": 50 pictures in, 50 out, 0 lost; "), result.output);
    QVERIFY2(result.output.contains("numbers 0 to 49: 50 read, 0 lost, 0 repeated, 0 reordered, "
                                    "0 unreadable\n"),
             result.output);
}

void VerifyToolTest::verify_findsLostAndRepeatedPictures()
{
    // Leaves out 10 to 12 and shows 20 twice.
    QVERIFY(patternVideo(40).write(path("whole.mkv")));
    QCOMPARE(QProcess::execute("ffmpeg",
                               { "-nostdin", "-loglevel", "error", "-i", path("whole.mkv"), "-vf",
                                 "select='not(between(n,10,12))',loop=1:1:17,"
                                 "setpts=N/30/TB",
                                 "-c:v", "libx264", "-crf", "20", path("v.mkv") }),
             0);
    const ToolResult result = ToolProcess::run({ "verify", path("v.mkv"), "--json" });
    QCOMPARE(result.exitCode, 1);
    const QJsonObject pattern = object(result).value("pattern").toObject();
    QCOMPARE(pattern.value("read").toInt(), 38);
    QCOMPARE(pattern.value("lost").toInt(), 3);
    QCOMPARE(pattern.value("repeated").toInt(), 1);
    QCOMPARE(pattern.value("reordered").toInt(-1), 0);
    QCOMPARE(pattern.value("unreadable").toInt(-1), 0);
    const ToolResult text = ToolProcess::run({ "verify", path("v.mkv") });
    QVERIFY2(text.output.contains("; missing are 10 to 12\n"), text.output);
}

void VerifyToolTest::verify_refusesAVideoWithoutThePattern()
{
    QCOMPARE(QProcess::execute("ffmpeg", { "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                                           "testsrc=s=320x240:r=30", "-t", "1", "-c:v", "libx264",
                                           path("v.mkv") }),
             0);
    const ToolResult result = ToolProcess::run({ "verify", path("v.mkv") });
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.errors,
             QByteArray("ocelle: ") + path("v.mkv").toLocal8Bit() + ": shows no test pattern\n");
}

QTEST_GUILESS_MAIN(VerifyToolTest)
#include "tst_verifytool.moc"

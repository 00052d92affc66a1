// SPDX-License-Identifier: BSD-3-Clause
#include "recordedvideo.h"
#include "toolprocess.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/*! "ocelle record" with the real plugins. */
class RecordToolTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void record_holdsTheCamerasPictures_data();
    void record_holdsTheCamerasPictures();
    void record_decodesAtOnceWhatItRecords_data();
    void record_decodesAtOnceWhatItRecords();
    void record_doesNotCompareTurnedPictures();
    void record_tellsInWordsToo();
    void record_recordsFootage();
    void record_endsWell_whenInterrupted_data();
    void record_endsWell_whenInterrupted();
    void record_isWhole_withoutStandardStreams();
    void record_keepsWhatItHas_whenTheCameraGoes();
    void record_refusesWhatCannotBe_data();
    void record_refusesWhatCannotBe();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void RecordToolTest::record_holdsTheCamerasPictures_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("decoder");
    QTest::addColumn<QString>("file");
    QTest::newRow("h264") << "h264"
                          << "h264"
                          << "out.mp4";
    QTest::newRow("h265") << "h265"
                          << "hevc"
                          << "out.mp4";
    QTest::newRow("vp8") << "vp8"
                         << "vp8"
                         << "out.webm";
    QTest::newRow("vp9") << "vp9"
                         << "vp9"
                         << "out.mkv";
}

void RecordToolTest::record_holdsTheCamerasPictures()
{
    QFETCH(QString, codec);
    QFETCH(QString, file);
    const ToolResult result =
            ToolProcess::run({ "record", "--camera", "pattern:back", "--size", "320x240", "--fps",
                               "30", "--codec", codec, "--bitrate", "500k", "--seconds", "1",
                               "--rotate", "90", "--json", path(file) });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const QJsonObject report = QJsonDocument::fromJson(result.output).object();
    const int pictures = report.value("pictures").toInt();
    const int lost = report.value("dropped").toInt() + report.value("missing").toInt();
    // Each picture of that second is in the file or accounted for.
    QVERIFY2(pictures <= 30 && pictures + lost >= 30, result.output.constData());
    QVERIFY2(pictures >= 3, result.output.constData());
    QCOMPARE(report.value("width").toInt(), 240);
    QCOMPARE(report.value("height").toInt(), 320);

    const RecordedVideo video = RecordedVideo::read(path(file));
    QTEST(video.codec, "decoder");
    QCOMPARE(video.size, QSize(240, 320));
    QCOMPARE(video.packets, pictures);
    QVERIFY(qAbs(video.duration - report.value("seconds").toDouble()) < 0.04);
    QVERIFY(video.keyFrames.first());
    for (int i = 0; i < pictures; ++i) {
        QVERIFY(video.numbers[i] >= 0);
        QCOMPARE(video.rotations[i], 90);
        QVERIFY(i == 0 || video.numbers[i] > video.numbers[i - 1]);
        QVERIFY(i == 0 || video.times[i] > video.times[i - 1]);
        // The camera stamps a picture when it is made, which on a busy machine is late.
        const qint64 due = qint64(video.numbers[i] - video.numbers[0]) * 100000 / 3;
        QVERIFY2(qAbs(video.times[i] - due) < 200000,
                 qPrintable(QStringLiteral("%1: %2").arg(i).arg(video.times[i] - due)));
    }
}

void RecordToolTest::record_decodesAtOnceWhatItRecords_data()
{
    record_holdsTheCamerasPictures_data();
}

void RecordToolTest::record_decodesAtOnceWhatItRecords()
{
    QFETCH(QString, codec);
    const ToolResult result =
            ToolProcess::run({ "record", "--camera", "pattern:back", "--size", "320x240", "--fps",
                               "30", "--codec", codec, "--bitrate", "500k", "--seconds", "1",
                               "--json", "--check", "--pictures", path("c"), path("out.mkv") });
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const QJsonObject report = QJsonDocument::fromJson(result.output).object();
    const QJsonObject check = report.value("check").toObject();
    const int pictures = report.value("pictures").toInt();
    QVERIFY2(pictures >= 3, result.output.constData());
    QCOMPARE(check.value("units").toInt(), pictures);
    QCOMPARE(check.value("decoded").toInt(), pictures);
    QCOMPARE(check.value("compared").toInt(), pictures);
    QCOMPARE(check.value("undecoded").toInt(-1), 0);
    QVERIFY(check.value("previewed").toInt() > 0);
    QVERIFY2(check.value("lowest_psnr").toDouble() > 25, result.output.constData());
    QVERIFY2(check.value("psnr").toDouble() > 30, result.output.constData());
    const double latency = check.value("latency_mean_ms").toDouble();
    QVERIFY2(latency > 0 && latency < 5000, result.output.constData());
    QCOMPARE(RecordedVideo::read(path("out.mkv")).packets, pictures);

    const QImage camera(path("c-camera.png"));
    const QImage decoded(path("c-decoded.png"));
    const QImage difference(path("c-difference.png"));
    QCOMPARE(camera.size(), QSize(320, 240));
    QCOMPARE(decoded.size(), camera.size());
    for (int y = 0; y < camera.height(); ++y) {
        for (int x = 0; x < camera.width(); ++x) {
            const int far = qAbs(qRed(camera.pixel(x, y)) - qRed(decoded.pixel(x, y)));
            QCOMPARE(qRed(difference.pixel(x, y)), qMin(255, 8 * far));
        }
    }
}

void RecordToolTest::record_doesNotCompareTurnedPictures()
{
    const ToolResult result = ToolProcess::run(
            { "record", "--camera", "pattern:back", "--check", "--rotate", "90", path("out.mkv") });
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.errors, QByteArray("ocelle: --check does not compare pictures that are turned "
                                       "or mirrored\n"));
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void RecordToolTest::record_tellsInWordsToo()
{
    const ToolResult result = ToolProcess::run(
            { "record", "--camera", "pattern:front", "--seconds", "0.5", path("out.mkv") });
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.errors, QByteArray());
    QVERIFY2(result.output.startsWith(path("out.mkv").toUtf8() +
                                      ": h264 640x480 from pattern:front: "),
             result.output.constData());
    QVERIFY(result.output.contains(" dropped, "));
    QCOMPARE(result.output.count('\n'), 1);
}

void RecordToolTest::record_recordsFootage()
{
    const QString footage = QFileInfo(OCELLE_MEDIA_DIR "/ship-cif.mkv").canonicalFilePath();
    if (footage.isEmpty())
        QSKIP("There is no " OCELLE_MEDIA_DIR "/ship-cif.mkv");
    const QString camera = QStringLiteral("file:") + footage;
    ToolProcess tool({ "record", "--camera", camera, "--seconds", "1", "--json", path("out.webm") },
                     camera);
    const ToolResult result = tool.finish();
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const RecordedVideo video = RecordedVideo::read(path("out.webm"));
    QCOMPARE(video.codec, QStringLiteral("vp8"));
    QCOMPARE(video.size, QSize(352, 288));
    QCOMPARE(video.packets,
             QJsonDocument::fromJson(result.output).object().value("pictures").toInt());
    QCOMPARE(int(video.pictures.size()), video.packets);
}

void RecordToolTest::record_endsWell_whenInterrupted_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("kill") << SIGTERM;
    QTest::newRow("terminal that closes") << SIGHUP;
}

void RecordToolTest::record_endsWell_whenInterrupted()
{
    QFETCH(int, signal);
    ToolProcess tool({ "record", "--camera", "pattern:back", "--json", path("out.mp4") },
                     "pattern");
    QVERIFY(tool.waitForError("Pictures of pattern:back come in"));
    QTRY_VERIFY(QFileInfo(path("out.mp4.part")).size() > 0);
    tool.send(signal);
    const ToolResult result = tool.finish();
    QVERIFY2(result.exitCode == 0, result.errors.constData());
    const int pictures = QJsonDocument::fromJson(result.output).object().value("pictures").toInt();
    QVERIFY(pictures > 0);
    const RecordedVideo video = RecordedVideo::read(path("out.mp4"));
    QCOMPARE(video.packets, pictures);
    QCOMPARE(int(video.pictures.size()), pictures);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList { "out.mp4" });
}

// What it writes is not mixed up with what it has to tell.
void RecordToolTest::record_isWhole_withoutStandardStreams()
{
    QProcess shell;
    shell.start("sh", { "-c", "exec \"$@\" <&- >&- 2>&-", "-", OCELLE_TOOL, "record", "--camera",
                        "pattern:back", "--seconds", "0.5", path("out.mkv") });
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitCode(), 1); // for its report
    const RecordedVideo video = RecordedVideo::read(path("out.mkv"));
    QVERIFY(video.packets > 0);
    QCOMPARE(int(video.pictures.size()), video.packets);
    QFile file(path("out.mkv"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(!file.readAll().contains("pattern:back"));
}

void RecordToolTest::record_keepsWhatItHas_whenTheCameraGoes()
{
    const QString footage = QStringLiteral(OCELLE_MEDIA_DIR "/ship-cif.mkv");
    if (!QFile::exists(footage))
        QSKIP(qPrintable(QStringLiteral("There is no ") + footage));
    const QTemporaryDir cameras;
    QVERIFY(QFile::copy(footage, cameras.filePath("ship.mkv")));
    const QString entry = QStringLiteral("dir:") + cameras.path();
    ToolProcess list({ "watch" }, entry);
    const QString camera = QString::fromUtf8(list.nextLine().split(' ').value(1));
    list.interrupt();
    ToolProcess tool({ "record", "--camera", camera, path("out.mp4") }, entry);
    QVERIFY(tool.waitForError("come in"));
    QTRY_VERIFY(QFileInfo(path("out.mp4.part")).size() > 0);
    QVERIFY(QFile::remove(cameras.filePath("ship.mkv")));
    const ToolResult result = tool.finish();
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("camera " + camera.toUtf8()), result.errors.constData());
    QVERIFY2(result.output.startsWith(path("out.mp4").toUtf8() + ": h264 352x288"),
             result.output.constData());
    QVERIFY(RecordedVideo::read(path("out.mp4")).packets > 0);
}

void RecordToolTest::record_refusesWhatCannotBe_data()
{
    QTest::addColumn<QStringList>("arguments"); // %1 is the folder
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("camera") << QStringList { "--camera", "pattern:left", "%1/out.mkv" }
                            << QByteArray("there is no camera \"pattern:left\"; there are");
    QTest::newRow("container") << QStringList { "--camera", "pattern:back", "--codec", "h264",
                                                "%1/out.ivf" }
                               << QByteArray("IVF files cannot hold h264");
    QTest::newRow("size") << QStringList { "--camera", "pattern:back", "--size", "800x600",
                                           "%1/out.mkv" }
                          << QByteArray("size 800x600 is not offered; the nearest are");
    QTest::newRow("folder") << QStringList { "--camera", "pattern:back", "%1/none/out.mkv" }
                            << QByteArray("does not exist");
}

void RecordToolTest::record_refusesWhatCannotBe()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    const ToolResult result = ToolProcess::run(QStringList { "record" } +
                                               arguments.replaceInStrings("%1", m_folder->path()));
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    QVERIFY2(result.errors.contains(error), result.errors.constData());
    QVERIFY2(result.errors.count('\n') == 1, result.errors.constData());
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

QTEST_GUILESS_MAIN(RecordToolTest)
#include "tst_recordtool.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "patternreader.h"
#include "toolprocess.h"

#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace Veltra::Ocelle;

/*! "ocelle preview" with the real plugins. */
class PreviewToolTest : public QObject
{
    Q_OBJECT
private slots:
    void preview_takesPicturesAndTellsWhatTheyCameTo_data();
    void preview_takesPicturesAndTellsWhatTheyCameTo();
    void preview_tellsInWordsToo();
    void preview_showsRealFootage();
    void preview_takesAnyFileName_data();
    void preview_takesAnyFileName();
    void preview_endsWell_whenInterrupted();
    void preview_fails_whenTheCameraGoes();
    void preview_namesWhatThereIs_whenAskedForSomethingElse_data();
    void preview_namesWhatThereIs_whenAskedForSomethingElse();
    void preview_fails_whenTheSnapshotCannotBeSaved();

private:
    const QString m_preview = QStringLiteral("preview");
};

void PreviewToolTest::preview_takesPicturesAndTellsWhatTheyCameTo_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<QString>("size");
    QTest::addColumn<int>("rate");
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("back") << "pattern:back"
                          << "320x240" << 60 << false;
    QTest::newRow("front") << "pattern:front"
                           << "640x480" << 30 << true;
    QTest::newRow("wide") << "pattern:back"
                          << "1280x720" << 30 << false;
}

void PreviewToolTest::preview_takesPicturesAndTellsWhatTheyCameTo()
{
    QFETCH(QString, camera);
    QFETCH(QString, size);
    QFETCH(int, rate);
    QFETCH(bool, mirrored);
    const QTemporaryDir folder;
    const QString snapshot = folder.filePath(QStringLiteral("last.png"));
    const ToolResult result = ToolProcess::run(
            { m_preview, camera, QStringLiteral("--size"), size, QStringLiteral("--fps"),
              QString::number(rate), QStringLiteral("--frames"), QStringLiteral("30"),
              QStringLiteral("--snapshot"), snapshot, QStringLiteral("--json") });
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.errors.contains("There is no display"));
    const QJsonObject report = QJsonDocument::fromJson(result.output).object();
    const auto number = [&report](const char *name) {
        return report.value(QLatin1String(name)).toDouble(-1);
    };
    QCOMPARE(report.value(QStringLiteral("camera")).toString(), camera);
    QCOMPARE(QStringLiteral("%1x%2").arg(number("width")).arg(number("height")), size);
    QCOMPARE(number("fps"), double(rate));
    QCOMPARE(number("presented"), 30.0);
    // One more picture may have come before the tool had stopped.
    QVERIFY(number("delivered") >= 30 + number("dropped"));
    QVERIFY(number("delivered") <= 31 + number("dropped"));
    QCOMPARE(number("duplicated"), 0.0);
    QVERIFY(number("rate") > 0);
    QCOMPARE(report.value(QStringLiteral("mirrored")).toBool(), mirrored);
    const QJsonObject latency = report.value(QStringLiteral("latency_ms")).toObject();
    QVERIFY(latency.value(QStringLiteral("max")).toDouble() > 0);
    QVERIFY(latency.value(QStringLiteral("max")).toDouble() < 10000);
    QVERIFY(latency.value(QStringLiteral("mean")).toDouble() <=
            latency.value(QStringLiteral("max")).toDouble());

    const QImage image = QImage(snapshot).convertToFormat(QImage::Format_RGB32);
    QCOMPARE(QStringLiteral("%1x%2").arg(image.width()).arg(image.height()), size);
    const auto reading = readPatternRgb32(image.constBits(), image.bytesPerLine(), image.width(),
                                          image.height());
    QVERIFY(reading.has_value());
    QCOMPARE(reading->mirrored, mirrored);
    // The number of the last picture: 30 were shown, others were dropped or lost before it.
    QVERIFY(reading->sequence >= 29);
    QVERIFY(reading->sequence <= 29 + number("dropped") + number("missing") + 3);
}

void PreviewToolTest::preview_tellsInWordsToo()
{
    const ToolResult result = ToolProcess::run({ m_preview, QStringLiteral("pattern:back"),
                                                 QStringLiteral("--frames"), QStringLiteral("5"),
                                                 QStringLiteral("--no-window") });
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.errors, QByteArray());
    QVERIFY(result.output.startsWith("pattern:back 640x480 "));
    QVERIFY(result.output.contains("presented 5, dropped "));
    QVERIFY(result.output.contains("latency mean "));
    QCOMPARE(result.output.count('\n'), 1);
}

void PreviewToolTest::preview_showsRealFootage()
{
    const QString video = QStringLiteral(OCELLE_MEDIA_DIR "/ship-cif.mkv");
    if (!QFile::exists(video))
        QSKIP(qPrintable(QStringLiteral("There is no ") + video));
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QStringLiteral("ship.mkv"));
    QVERIFY(QFile::copy(video, copy));
    const QString camera = QStringLiteral("file:") + copy;
    const QString snapshot = folder.filePath(QStringLiteral("ship.png"));
    const ToolResult result = ToolProcess::run(
            { m_preview, camera, QStringLiteral("--size"), QStringLiteral("352x288"),
              QStringLiteral("--frames"), QStringLiteral("10"), QStringLiteral("--snapshot"),
              snapshot, QStringLiteral("--json") },
            camera);
    QCOMPARE(result.exitCode, 0);
    const QJsonObject report = QJsonDocument::fromJson(result.output).object();
    QCOMPARE(report.value(QStringLiteral("presented")).toInt(), 10);
    const QImage image = QImage(snapshot).convertToFormat(QImage::Format_RGB32);
    QCOMPARE(image.size(), QSize(352, 288));
    QSet<QRgb> colours; // of real footage there are many
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            colours.insert(image.pixel(x, y));
    }
    QVERIFY2(colours.size() > 1000, qPrintable(QString::number(colours.size())));
}

void PreviewToolTest::preview_takesAnyFileName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("spaces") << QStringLiteral("two words.mkv");
    QTest::newRow("accents") << QString::fromUtf8("caf\xc3\xa9.mkv");
    QTest::newRow("beyond Latin") << QString::fromUtf8("\xe6\x97\xa5\xe6\x9c\xac.mkv");
    QTest::newRow("percent signs") << QStringLiteral("100%41%.mkv");
}

// Beside a camera that would be taken instead if the id did not arrive as it was given.
void PreviewToolTest::preview_takesAnyFileName()
{
    QFETCH(QString, name);
    const QString video = QStringLiteral(OCELLE_MEDIA_DIR "/ship-cif.mkv");
    if (!QFile::exists(video))
        QSKIP(qPrintable(QStringLiteral("There is no ") + video));
    const QTemporaryDir folder;
    QVERIFY(QFile::copy(video, folder.filePath(name)));
    const QString camera = QStringLiteral("file:") + folder.filePath(name);
    const ToolResult result = ToolProcess::run({ m_preview, camera, QStringLiteral("--frames"),
                                                 QStringLiteral("2"), QStringLiteral("--json") },
                                               QStringLiteral("pattern,") + camera);
    QCOMPARE(result.exitCode, 0);
    const QJsonObject report = QJsonDocument::fromJson(result.output).object();
    QCOMPARE(report.value(QStringLiteral("camera")).toString(), camera);
    QCOMPARE(report.value(QStringLiteral("width")).toInt(), 352); // not the pattern's
}

void PreviewToolTest::preview_endsWell_whenInterrupted()
{
    const QTemporaryDir folder;
    const QString snapshot = folder.filePath(QStringLiteral("last.png"));
    ToolProcess preview(
            { m_preview, QStringLiteral("pattern:back"), QStringLiteral("--snapshot"), snapshot },
            QStringLiteral("pattern"));
    QVERIFY(preview.waitForError("Pictures of pattern:back come in"));
    preview.interrupt();
    const ToolResult result = preview.finish();
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.output.contains("presented "));
    QVERIFY(QFile::exists(snapshot));
}

void PreviewToolTest::preview_fails_whenTheCameraGoes()
{
    const QString video = QStringLiteral(OCELLE_MEDIA_DIR "/ship-cif.mkv");
    if (!QFile::exists(video))
        QSKIP(qPrintable(QStringLiteral("There is no ") + video));
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QStringLiteral("ship.mkv"));
    QVERIFY(QFile::copy(video, copy));
    QVERIFY(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
    const QString cameras = QStringLiteral("pattern,dir:") + folder.path();
    ToolProcess watch({ QStringLiteral("watch") }, cameras);
    QString camera;
    while (!camera.contains(QStringLiteral("ship.mkv"))) {
        const QList<QByteArray> words = watch.nextLine().split(' ');
        QVERIFY(words.size() > 1);
        camera = QString::fromUtf8(words.at(1));
    }
    ToolProcess preview({ m_preview, camera }, cameras);
    QVERIFY(preview.waitForError("come in"));
    QVERIFY(QFile::remove(copy));
    const ToolResult result = preview.finish();
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("camera " + camera.toUtf8()), result.errors.constData());
    QVERIFY2(result.errors.count("ocelle: ") == 1, result.errors.constData()); // once is enough
    // Whether the camera tells first or the list, it is not the next camera's trouble that is told.
    QVERIFY2(result.errors.contains(" was unplugged") || result.errors.contains(" has gone"),
             result.errors.constData());
    watch.interrupt();
    QCOMPARE(watch.finish().exitCode, 0);
}

void PreviewToolTest::preview_namesWhatThereIs_whenAskedForSomethingElse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("error");
    const QString back = QStringLiteral("pattern:back");
    QTest::newRow("camera") << QStringList { QStringLiteral("pattern:left") }
                            << QByteArray("there is no camera \"pattern:left\"; there are "
                                          "pattern:back and pattern:front");
    QTest::newRow("size") << QStringList { back, QStringLiteral("--size"),
                                           QStringLiteral("800x600") }
                          << QByteArray("size 800x600 is not offered; the nearest are 640x480 and "
                                        "1280x720");
    QTest::newRow("rate") << QStringList { back, QStringLiteral("--fps"), QStringLiteral("25") }
                          << QByteArray("25 fps is not offered; the nearest are 30 and 15 fps");
    QTest::newRow("rate at a size")
            << QStringList { back, QStringLiteral("--size"), QStringLiteral("320x240"),
                             QStringLiteral("--fps"), QStringLiteral("100") }
            << QByteArray("100 fps is not offered at 320x240; the nearest are 60 and 30 fps");
}

void PreviewToolTest::preview_namesWhatThereIs_whenAskedForSomethingElse()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    const ToolResult result = ToolProcess::run(QStringList { m_preview } + arguments);
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    QVERIFY2(result.errors.contains(error), result.errors.constData());
    QVERIFY2(result.errors.count('\n') == 1, result.errors.constData()); // and no note with it
}

void PreviewToolTest::preview_fails_whenTheSnapshotCannotBeSaved()
{
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("gone")));
    const QString snapshot = folder.filePath(QStringLiteral("gone/last.png"));
    ToolProcess tool(
            { m_preview, QStringLiteral("pattern:back"), QStringLiteral("--snapshot"), snapshot },
            QStringLiteral("pattern"));
    QVERIFY(tool.waitForError("runs without a window"));
    QVERIFY(QDir(folder.path()).rmdir(QStringLiteral("gone")));
    tool.interrupt();
    const ToolResult result = tool.finish();
    QCOMPARE(result.exitCode, 1);
    QVERIFY(result.errors.contains("the snapshot " + snapshot.toUtf8() + " was not saved"));
    QVERIFY(result.output.contains("presented"));
}

QTEST_GUILESS_MAIN(PreviewToolTest)
#include "tst_previewtool.moc"

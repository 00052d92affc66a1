// SPDX-License-Identifier: BSD-3-Clause
#include "cameraselection.h"
#include "stderrcapture.h"

#include <QDir>
#include <QtTest>

using namespace Veltra::Ocelle;

class TestCameraSelection : public QObject
{
    Q_OBJECT
private slots:
    void parse_takesEveryKindOfEntry_data();
    void parse_takesEveryKindOfEntry();
    void parse_unset_meansDevicesAndPattern();
    void parse_namesEachWrongEntryOnce_andKeepsTheOthers();
    void parse_makesPathsAbsolute();
    void selectedSources_writesOneLineForEachWrongEntry();
    void selectedSources_writesOneLineForAWrongPatternFormat();
    void selectedSources_writesOneLineForAWrongWatchdog();
    void selectedSources_deliversTheWantedPatternFormat();

private:
    static QString toText(const CameraSelection &selection);
};

QString TestCameraSelection::toText(const CameraSelection &selection)
{
    QStringList texts;
    for (const CameraSelection::Entry &entry : selection.entries) {
        const char *const kinds[] = { "v4l2", "pattern", "file", "folder" };
        texts += QString(kinds[int(entry.kind)]) + '=' + QString::fromStdString(entry.path);
    }
    return texts.join('|');
}

void TestCameraSelection::parse_takesEveryKindOfEntry_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("devices") << QByteArray("v4l2") << "v4l2=";
    QTest::newRow("pattern") << QByteArray("pattern") << "pattern=";
    QTest::newRow("empty") << QByteArray("") << "";
    QTest::newRow("blank") << QByteArray("  ") << "";
    QTest::newRow("file") << QByteArray("file:/a/b.mkv") << "file=/a/b.mkv";
    QTest::newRow("folder") << QByteArray("dir:/a/b/") << "folder=/a/b";
    QTest::newRow("several") << QByteArray("dir:/a, pattern ,file:/b c.mkv")
                             << "folder=/a|pattern=|file=/b c.mkv";
    QTest::newRow("comma") << QByteArray("file:/a\\,b.mkv,pattern") << "file=/a,b.mkv|pattern=";
    QTest::newRow("backslash") << QByteArray("file:/a\\\\,pattern") << "file=/a\\|pattern=";
    QTest::newRow("plain backslash") << QByteArray("file:/a\\b") << "file=/a\\b";
    QTest::newRow("given twice") << QByteArray("pattern,file:/a,pattern,file:/x/../a")
                                 << "pattern=|file=/a";
}

void TestCameraSelection::parse_takesEveryKindOfEntry()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, expected);
    const CameraSelection selection = CameraSelection::parse(text.constData());
    QCOMPARE(toText(selection), expected);
    QVERIFY(selection.errors.empty());
}

void TestCameraSelection::parse_unset_meansDevicesAndPattern()
{
    QCOMPARE(toText(CameraSelection::parse(nullptr)), QString("v4l2=|pattern="));
}

void TestCameraSelection::parse_namesEachWrongEntryOnce_andKeepsTheOthers()
{
    const CameraSelection selection =
            CameraSelection::parse("webcam,pattern:back,file:,,pattern,Dir:/x");
    QCOMPARE(toText(selection), QString("pattern="));
    QCOMPARE(selection.errors.size(), std::size_t(5));
    const char *const names[] = { "\"webcam\"", "\"pattern:back\"", "\"file:\"", "\"\"",
                                  "\"Dir:/x\"" };
    for (std::size_t i = 0; i < selection.errors.size(); ++i) {
        const QString error = QString::fromStdString(selection.errors[i]);
        QVERIFY2(error.startsWith(names[i]), qPrintable(error));
        QVERIFY(error.contains("pattern, file:PATH and dir:PATH"));
    }
}

void TestCameraSelection::parse_makesPathsAbsolute()
{
    QCOMPARE(toText(CameraSelection::parse("file:b.mkv,dir:.")),
             QString("file=%1/b.mkv|folder=%1").arg(QDir::currentPath()));
}

void TestCameraSelection::selectedSources_writesOneLineForEachWrongEntry()
{
    StderrCapture capture;
    const auto sources =
            selectedSources("webcam,file:/no/such.mkv,dir:/no/such/folder,pattern", nullptr);
    const QStringList lines = capture.lines();
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines[0].startsWith("ocelle: OCELLE_CAMERAS: \"webcam\" is not a source"));
    QVERIFY(lines[1].contains("\"/no/such.mkv\", which cannot be read: No such file"));
    QVERIFY(lines[2].contains("\"/no/such/folder\", which cannot be watched: No such file"));

    std::size_t cameras = 0;
    for (const auto &source : sources)
        cameras += source->cameras().size();
    QCOMPARE(cameras, std::size_t(2)); // those of the pattern
}

void TestCameraSelection::selectedSources_writesOneLineForAWrongPatternFormat()
{
    StderrCapture capture;
    const auto sources = selectedSources("pattern", "rgb");
    const QStringList lines = capture.lines();
    QCOMPARE(lines.size(), 1);
    QCOMPARE(lines[0],
             QString("ocelle: OCELLE_PATTERN_FORMAT: \"rgb\" is not a format; nv12 and yu12 are"));
    QVERIFY(sources.front()->cameras().front().formats.front() == PixelFormat::NV12);
}

void TestCameraSelection::selectedSources_writesOneLineForAWrongWatchdog()
{
    StderrCapture capture;
    for (const char *const choice : { "on", "off" })
        QCOMPARE(selectedSources("pattern", nullptr, choice).size(), std::size_t(1));
    QCOMPARE(selectedSources("pattern", nullptr, "never").size(), std::size_t(1));
    QCOMPARE(
            capture.lines(),
            QStringList("ocelle: OCELLE_V4L2_WATCHDOG: \"never\" is not a choice; on and off are"));
}

void TestCameraSelection::selectedSources_deliversTheWantedPatternFormat()
{
    const auto first = [](const char *format) {
        return selectedSources("pattern", format).front()->cameras().front().formats;
    };
    const std::vector<PixelFormat> nv12 { PixelFormat::NV12, PixelFormat::YU12 };
    const std::vector<PixelFormat> yu12 { PixelFormat::YU12, PixelFormat::NV12 };
    QVERIFY(first(nullptr) == nv12);
    QVERIFY(first("nv12") == nv12);
    QVERIFY(first("yu12") == yu12);
}

QTEST_GUILESS_MAIN(TestCameraSelection)
#include "tst_cameraselection.moc"

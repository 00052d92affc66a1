// SPDX-License-Identifier: BSD-3-Clause
#include "homefolder.h"
#include "videofiles.h"

#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

/*! The program as a process of its own, on an X server, with keys from outside. */
class TestViewerProgram : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void help_fitsTerminal_andTellsTheOptions();
    void version_isPrinted();
    void wrongArguments_areToldInOneLine_data();
    void wrongArguments_areToldInOneLine();
    void withoutDisplay_itSaysSo();
    void keys_takePicture_recordAndQuit();
    void terminated_itCompletesTheRecording();
    void closedTwice_itEnds_thoughTheRecordingCannot_data();
    void closedTwice_itEnds_thoughTheRecordingCannot();

private:
    struct Result
    {
        int exitCode;
        QByteArray output;
        QByteArray errors;
    };

    void start(QProcess *process, const QStringList &arguments,
               const QString &preloaded = QString(),
               const QByteArray &cameras = QByteArray()) const;
    static Result finish(QProcess *process);
    bool press(const QString &key) const;
    qint64 recordedBytes() const; // of a recording that goes on

    HomeFolder m_home;
    QTemporaryDir m_media;
};

namespace {
constexpr int Patience = 30000; // ms
} // namespace

/*! A camera whose pictures do not compress to next to nothing: a file is written in large pieces. */
void TestViewerProgram::initTestCase()
{
    const QString video = m_media.filePath(QStringLiteral("moving.mkv"));
    QVERIFY(makeVideo(video, 2));
    qputenv("OCELLE_CAMERAS", "file:" + QFile::encodeName(video));
}

void TestViewerProgram::init()
{
    m_home.clear();
}

void TestViewerProgram::start(QProcess *process, const QStringList &arguments,
                              const QString &preloaded, const QByteArray &cameras) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // It has to find its plugins by itself.
    for (const char *name :
         { "QT_PLUGIN_PATH", "QT_QPA_PLATFORM", "QT_MULTIMEDIA_PREFERRED_PLUGINS" })
        environment.remove(QLatin1String(name));
    if (!preloaded.isEmpty()) {
        const QString asan = QStringLiteral("ASAN_OPTIONS");
        environment.insert(asan, environment.value(asan) + ":verify_asan_link_order=0");
        environment.insert(QStringLiteral("LD_PRELOAD"), preloaded);
    }
    if (!cameras.isEmpty())
        environment.insert(QStringLiteral("OCELLE_CAMERAS"), QFile::decodeName(cameras));
    process->setProcessEnvironment(environment);
    process->start(QStringLiteral(OCELLE_VIEWER), arguments);
    QVERIFY(process->waitForStarted(Patience));
}

TestViewerProgram::Result TestViewerProgram::finish(QProcess *process)
{
    const bool isOver =
            process->state() == QProcess::NotRunning || process->waitForFinished(Patience);
    const bool isNormal = isOver && process->exitStatus() == QProcess::NormalExit;
    return { isNormal ? process->exitCode() : -1, process->readAllStandardOutput(),
             process->readAllStandardError() };
}

/*! Waits for the window, too. */
bool TestViewerProgram::press(const QString &key) const
{
    return QProcess::execute(QStringLiteral("xdotool"),
                             { QStringLiteral("search"), QStringLiteral("--sync"),
                               QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                               QStringLiteral("moving|Pattern"), QStringLiteral("windowfocus"),
                               QStringLiteral("--sync"), QStringLiteral("key"), key }) == 0;
}

qint64 TestViewerProgram::recordedBytes() const
{
    return QFileInfo(HomeFolder::files(m_home.videos(), QStringLiteral(".part")).value(0)).size();
}

void TestViewerProgram::help_fitsTerminal_andTellsTheOptions()
{
    QProcess process;
    start(&process, { QStringLiteral("--help") });
    const Result result = finish(&process);
    QCOMPARE(result.exitCode, 0);
    for (const char *option : { "--camera", "--size", "--fps", "--version" })
        QVERIFY2(result.output.contains(option), option);
    for (const QByteArray &line : result.output.split('\n'))
        QVERIFY2(line.size() <= 80, line.constData());
}

void TestViewerProgram::version_isPrinted()
{
    QProcess process;
    start(&process, { QStringLiteral("--version") });
    const Result result = finish(&process);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output, QByteArray(OCELLE_VERSION "\n"));
}

void TestViewerProgram::wrongArguments_areToldInOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("words");
    QTest::newRow("unknown option")
            << QStringList { QStringLiteral("--bogus") } << QByteArray("--bogus");
    QTest::newRow("file") << QStringList { QStringLiteral("video.mkv") } << QByteArray("video.mkv");
    QTest::newRow("size") << QStringList { QStringLiteral("--size"), QStringLiteral("large") }
                          << QByteArray("\"large\" is not a size");
    QTest::newRow("rate") << QStringList { QStringLiteral("--fps"), QStringLiteral("0") }
                          << QByteArray("\"0\" is not a number of pictures per second");
    QTest::newRow("no id") << QStringList { QStringLiteral("--camera") } << QByteArray("--camera");
}

void TestViewerProgram::wrongArguments_areToldInOneLine()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, words);
    QProcess process;
    start(&process, arguments);
    const Result result = finish(&process);
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.errors.count('\n'), 1);
    QVERIFY2(result.errors.contains(words), result.errors.constData());
    QVERIFY2(result.errors.endsWith("; ocelle-viewer --help tells more\n"),
             result.errors.constData());
}

void TestViewerProgram::withoutDisplay_itSaysSo()
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : { "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM" })
        environment.remove(QLatin1String(name));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(OCELLE_VIEWER), QStringList());
    const Result result = finish(&process);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("there is no display"), result.errors.constData());
    QCOMPARE(result.errors.count('\n'), 1);
}

void TestViewerProgram::keys_takePicture_recordAndQuit()
{
    QProcess process;
    start(&process, { QStringLiteral("--size"), QStringLiteral("320x240") });
    const auto pictures = [this] {
        return HomeFolder::files(m_home.pictures(), QStringLiteral(".png"));
    };
    QTRY_VERIFY_WITH_TIMEOUT(press(QStringLiteral("p")) && !pictures().isEmpty(), Patience);
    QTRY_COMPARE(QImage(pictures().first()).size(), QSize(320, 240));
    QVERIFY(press(QStringLiteral("r")));
    QTRY_COMPARE(HomeFolder::files(m_home.videos(), QStringLiteral(".part")).size(), 1);
    QTRY_VERIFY_WITH_TIMEOUT(recordedBytes() > 0, Patience);
    QVERIFY(press(QStringLiteral("r")));
    QTRY_COMPARE(HomeFolder::files(m_home.videos(), QStringLiteral(".mkv")).size(), 1);
    QVERIFY(decodedPictures(HomeFolder::files(m_home.videos(), QStringLiteral(".mkv")).first()) >
            0);
    press(QStringLiteral("ctrl+q")); // the window may be gone before xdotool is
    const Result result = finish(&process);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.errors, QByteArray());
}

void TestViewerProgram::terminated_itCompletesTheRecording()
{
    QProcess process;
    start(&process, { QStringLiteral("--size"), QStringLiteral("320x240") });
    QTRY_VERIFY_WITH_TIMEOUT(
            press(QStringLiteral("p")) &&
                    !HomeFolder::files(m_home.pictures(), QStringLiteral(".png")).isEmpty(),
            Patience);
    QVERIFY(press(QStringLiteral("r")));
    QTRY_VERIFY_WITH_TIMEOUT(recordedBytes() > 0, Patience);
    ::kill(pid_t(process.processId()), SIGTERM);
    const Result result = finish(&process);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(HomeFolder::files(m_home.videos(), QStringLiteral(".part")), QStringList());
    const QStringList files = HomeFolder::files(m_home.videos(), QStringLiteral(".mkv"));
    QCOMPARE(files.size(), 1);
    QVERIFY(decodedPictures(files.first()) > 0);
}

/*! On a disk that stops taking data, so that the encoder's thread never returns. */
void TestViewerProgram::closedTwice_itEnds_thoughTheRecordingCannot_data()
{
    QTest::addColumn<QByteArray>("cameras");
    QTest::addColumn<bool>("isWrittenAtOnce");
    QTest::newRow("while it is written") << qgetenv("OCELLE_CAMERAS") << true;
    QTest::newRow("while it is completed") << QByteArray("pattern") << false;
}

void TestViewerProgram::closedTwice_itEnds_thoughTheRecordingCannot()
{
    QFETCH(QByteArray, cameras);
    QFETCH(bool, isWrittenAtOnce);
    const auto isStuck = [this] {
        return !HomeFolder::files(m_home.videos(), QStringLiteral(".part.stuck")).isEmpty();
    };
    const auto pictures = [this] {
        return HomeFolder::files(m_home.pictures(), QStringLiteral(".png")).size();
    };
    QProcess process;
    start(&process, { QStringLiteral("--size"), QStringLiteral("320x240") },
          QStringLiteral(STUCK_DISK), cameras);
    QTRY_VERIFY_WITH_TIMEOUT(press(QStringLiteral("p")) && pictures() > 0, Patience);
    QVERIFY(press(QStringLiteral("r")));
    if (isWrittenAtOnce) {
        QTRY_VERIFY_WITH_TIMEOUT(isStuck(), Patience);
    } else { // what is so small waits for the end
        const int before = pictures();
        QTRY_VERIFY_WITH_TIMEOUT(press(QStringLiteral("p")) && pictures() > before + 2, Patience);
        QVERIFY(!isStuck());
    }
    QVERIFY(press(QStringLiteral("ctrl+q"))); // waits for the recording
    QTRY_VERIFY_WITH_TIMEOUT(isStuck(), Patience);
    press(QStringLiteral("ctrl+q")); // the window may be gone before xdotool is
    const Result result = finish(&process);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("does not answer; it stays in FILE.part"),
             result.errors.constData());
}

QTEST_GUILESS_MAIN(TestViewerProgram)
#include "tst_viewerprogram.moc"

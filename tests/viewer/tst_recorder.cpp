// SPDX-License-Identifier: BSD-3-Clause
#include "homefolder.h"
#include "streamingcamera.h"
#include "videofiles.h"

#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <recorder.h>
#include <recordinglist.h>
#include <sys/resource.h>

#include <csignal>

using Viewer::RawPictures;
using Viewer::Recorder;

class TestRecorder : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void recording_isWholeFile_withEveryCodec_data();
    void recording_isWholeFile_withEveryCodec();
    void recordings_areListed_newestFirst();
    void start_withoutCamera_isToldOf();
    void start_withUnknownCodec_isToldOf();
    void start_withoutFolder_isToldOf();
    void start_neverTakesTheNameOfAnother();
    void start_takesAnotherName_ifSomebodyTookItMeanwhile();
    void diskThatIsFull_isToldOfOnce();
    void cameraThatGoes_leavesWhatWasRecorded();
    void sourceThatGoes_leavesWhatWasRecorded();

private:
    void useCamera(const QByteArray &id, QSize size);

    HomeFolder m_home;
    QTemporaryDir m_media;
    std::unique_ptr<StreamingCamera> m_camera;
    std::unique_ptr<RawPictures> m_source;
};

namespace {

const QSize Size(640, 480);
constexpr int BitRate = 1000000;

} // namespace

void TestRecorder::initTestCase()
{
    const QString video = m_media.filePath(QStringLiteral("moving.mkv"));
    QVERIFY(makeVideo(video, 2));
    qputenv("OCELLE_CAMERAS", "pattern,file:" + QFile::encodeName(video));
}

void TestRecorder::init()
{
    m_home.clear();
    useCamera("pattern:back", Size);
}

void TestRecorder::useCamera(const QByteArray &id, QSize size)
{
    cleanup();
    m_camera = std::make_unique<StreamingCamera>(id);
    QCameraViewfinderSettings settings;
    settings.setResolution(size);
    settings.setMinimumFrameRate(30);
    settings.setMaximumFrameRate(30);
    m_camera->camera()->setViewfinderSettings(settings);
    m_camera->camera()->start();
    m_source = std::make_unique<RawPictures>();
    m_source->setCamera(m_camera->item());
    QTRY_COMPARE(m_camera->camera()->status(), QCamera::ActiveStatus);
}

void TestRecorder::cleanup()
{
    m_source.reset();
    m_camera.reset();
}

void TestRecorder::recording_isWholeFile_withEveryCodec_data()
{
    QTest::addColumn<QString>("codec");
    for (const char *codec : { "h264", "h265", "vp8", "vp9" })
        QTest::newRow(codec) << QString::fromLatin1(codec);
}

void TestRecorder::recording_isWholeFile_withEveryCodec()
{
    QFETCH(QString, codec);
    Recorder recorder;
    recorder.setProperty("source", QVariant::fromValue(m_source.get()));
    QVERIFY(recorder.codecs().contains(codec));
    QSignalSpy finished(&recorder, &Recorder::finished);
    QSignalSpy failed(&recorder, &Recorder::failed);

    recorder.start(codec, BitRate, Size, 30);
    QVERIFY(recorder.isActive());
    QTRY_VERIFY(recorder.seconds() > 1);
    QVERIFY(recorder.bytes() > 0);
    QVERIFY(finished.isEmpty());
    recorder.stop();
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(!recorder.isActive());
    QVERIFY2(failed.isEmpty(), qPrintable(failed.value(0).value(0).toString()));

    const QString file = finished.first().first().toString();
    QCOMPARE(HomeFolder::files(m_home.videos(), QString()), QStringList({ file }));
    QVERIFY(decodedPictures(file) > 1);
}

void TestRecorder::recordings_areListed_newestFirst()
{
    Viewer::RecordingList list;
    QVERIFY(list.files().isEmpty());
    QVERIFY(QDir().mkpath(m_home.videos()));
    const auto make = [this](const QString &name, const QDateTime &time) {
        QFile file(m_home.videos() + QLatin1Char('/') + name);
        return file.open(QFile::WriteOnly) && file.write("12345") == 5 && file.flush() &&
               file.setFileTime(time, QFileDevice::FileModificationTime);
    };
    const QDateTime now = QDateTime::currentDateTime();
    QVERIFY(make(QStringLiteral("Camera one.mkv"), now.addSecs(-60)));
    QVERIFY(make(QStringLiteral("Camera two.mkv"), now));
    QVERIFY(make(QStringLiteral("Camera three.mkv.part"), now));
    QVERIFY(make(QStringLiteral("other.mkv"), now));
    list.refresh();
    QStringList names;
    for (const QVariant &file : list.files())
        names.append(file.toMap().value(QStringLiteral("name")).toString());
    QCOMPARE(names, QStringList({ QStringLiteral("Camera two"), QStringLiteral("Camera one") }));
    QCOMPARE(list.files().first().toMap().value(QStringLiteral("size")).toString(),
             QStringLiteral("5 bytes"));
}

void TestRecorder::start_withoutCamera_isToldOf()
{
    RawPictures none;
    Recorder recorder;
    recorder.setProperty("source", QVariant::fromValue(&none));
    QSignalSpy failed(&recorder, &Recorder::failed);
    recorder.start(QStringLiteral("h264"), BitRate, Size, 30);
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(),
             QStringLiteral("The recording failed: there is no camera to record."));
    QVERIFY(!recorder.isActive());
}

void TestRecorder::start_withUnknownCodec_isToldOf()
{
    Recorder recorder;
    recorder.setProperty("source", QVariant::fromValue(m_source.get()));
    QSignalSpy failed(&recorder, &Recorder::failed);
    recorder.start(QString(), BitRate, Size, 30);
    QCOMPARE(failed.count(), 1);
    QVERIFY(!recorder.isActive());
    QVERIFY(!QFileInfo::exists(m_home.videos()));
}

void TestRecorder::start_withoutFolder_isToldOf()
{
    QFile inTheWay(m_home.videos());
    QVERIFY(inTheWay.open(QFile::WriteOnly));
    Recorder recorder;
    recorder.setProperty("source", QVariant::fromValue(m_source.get()));
    QSignalSpy failed(&recorder, &Recorder::failed);
    recorder.start(QStringLiteral("h264"), BitRate, Size, 30);
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(),
             QStringLiteral("The recording failed: the folder %1 cannot be made.")
                     .arg(m_home.videos()));
    QVERIFY(!recorder.isActive());
}

/*! Whose file has its own name only once it is complete. */
void TestRecorder::start_neverTakesTheNameOfAnother()
{
    Recorder one;
    Recorder other;
    QStringList files;
    for (Recorder *recorder : { &one, &other }) {
        recorder->setSource(m_source.get());
        connect(recorder, &Recorder::finished, this,
                [&files](const QString &file) { files.append(file); });
        recorder->start(QStringLiteral("h264"), BitRate, Size, 30); // in the same second
    }
    QTRY_VERIFY(one.seconds() > 0.5 && other.seconds() > 0.5);
    one.stop();
    other.stop();
    QTRY_COMPARE(files.size(), 2);
    QVERIFY(files.first() != files.last());
    for (const QString &file : qAsConst(files))
        QVERIFY2(decodedPictures(file) > 1, qPrintable(file));
}

/*! Between the choice of a name and the file's creation. */
void TestRecorder::start_takesAnotherName_ifSomebodyTookItMeanwhile()
{
    Recorder recorder;
    recorder.setSource(m_source.get());
    QSignalSpy finished(&recorder, &Recorder::finished);
    QSignalSpy failed(&recorder, &Recorder::failed);
    QStringList taken;
    const auto takeNames = [this, &recorder, &taken] {
        const QDateTime now = QDateTime::currentDateTime();
        for (int second = -1; taken.size() < 3 && recorder.isActive(); ++second) {
            QFile file(QStringLiteral("%1/Camera %2.mkv.part")
                               .arg(m_home.videos(), now.addSecs(second).toString(QStringLiteral(
                                                             "yyyy-MM-dd HH-mm-ss"))));
            QVERIFY(file.open(QFile::WriteOnly) && file.write("other") == 5);
            taken.append(file.fileName());
        }
    };
    connect(&recorder, &Recorder::activeChanged, this, takeNames);
    recorder.start(QStringLiteral("h264"), BitRate, Size, 30);
    QCOMPARE(taken.size(), 3);
    QVERIFY2(failed.isEmpty(), qPrintable(failed.value(0).value(0).toString()));
    QTRY_VERIFY(recorder.seconds() > 0.5);
    recorder.stop();
    QTRY_COMPARE(finished.count(), 1);
    const QString file = finished.first().first().toString();
    QVERIFY2(file.endsWith(QStringLiteral(" (2).mkv")), qPrintable(file));
    QVERIFY(decodedPictures(file) > 1);
    QCOMPARE(HomeFolder::files(m_home.videos(), QStringLiteral(".part")), taken);
}

/*! A limit of the file size is as good as that. */
void TestRecorder::diskThatIsFull_isToldOfOnce()
{
    const QSize size(320, 240);
    useCamera("file:" + QFile::encodeName(m_media.filePath(QStringLiteral("moving.mkv"))), size);
    Recorder recorder;
    recorder.setSource(m_source.get());
    QSignalSpy finished(&recorder, &Recorder::finished);
    QSignalSpy failed(&recorder, &Recorder::failed);
    recorder.start(QStringLiteral("h264"), 16 * BitRate, size, 30);
    QTRY_VERIFY(recorder.seconds() > 0);
    rlimit before = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full = { 1, before.rlim_max }; // bytes
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &full), 0);
    const bool hasEnded = QTest::qWaitFor([&recorder] { return !recorder.isActive(); }, 30000);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QVERIFY(hasEnded);
    QCOMPARE(failed.count(), 1);
    const QString part = HomeFolder::files(m_home.videos(), QStringLiteral(".part")).value(0);
    QVERIFY(!part.isEmpty());
    QCOMPARE(failed.first().first().toString(),
             QStringLiteral("The recording failed: %1: File too large; what was written so far is "
                            "in %2.")
                     .arg(part.chopped(5), part));
    QVERIFY(finished.isEmpty());
}

void TestRecorder::cameraThatGoes_leavesWhatWasRecorded()
{
    Recorder recorder;
    recorder.setProperty("source", QVariant::fromValue(m_source.get()));
    QSignalSpy finished(&recorder, &Recorder::finished);
    recorder.start(QStringLiteral("h264"), BitRate, Size, 30);
    QTRY_VERIFY(recorder.seconds() > 0.5);
    m_source->setCamera(nullptr);
    m_camera.reset();
    recorder.stop();
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(decodedPictures(finished.first().first().toString()) > 1);
}

/*! As in a window that is closed: of its parts, that which was made first goes first. */
void TestRecorder::sourceThatGoes_leavesWhatWasRecorded()
{
    Recorder recorder;
    recorder.setSource(m_source.get());
    QSignalSpy finished(&recorder, &Recorder::finished);
    recorder.start(QStringLiteral("h264"), BitRate, Size, 30);
    QTRY_VERIFY(recorder.seconds() > 0.5);
    m_source.reset();
    QVERIFY(!recorder.source());
    QCOMPARE(recorder.dropped(), 0);
    recorder.stop();
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(decodedPictures(finished.first().first().toString()) > 1);
}

QTEST_GUILESS_MAIN(TestRecorder)
#include "tst_recorder.moc"

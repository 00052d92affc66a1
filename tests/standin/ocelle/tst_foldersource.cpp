// SPDX-License-Identifier: BSD-3-Clause
#include "foldersource.h"
#include "localcameramanager.h"
#include "patternvideo.h"
#include "recordinglistener.h"
#include "stderrcapture.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <mutex>

using namespace Veltra::Ocelle;

namespace {

/*! Writes down "+name" and "-name". */
class HotplugListener : public CameraManagerListener
{
public:
    void onCameraAdded(const std::string &id) override { note('+', id); }
    void onCameraRemoved(const std::string &id) override { note('-', id); }

    QStringList events() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }

private:
    void note(char sign, const std::string &id)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_events += QChar(sign) + QString::fromStdString(id).section('/', -1);
    }

    mutable std::mutex m_mutex;
    QStringList m_events;
};

} // namespace

class TestFolderSource : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void videosThere_areCameras_byName();
    void videoMovedIn_isPluggedIn();
    void videoWritten_isPluggedIn_onceItIsClosed();
    void linkedVideo_isPluggedIn();
    void videoRemoved_isUnplugged();
    void videoRenamed_isUnpluggedAndPluggedIn();
    void videoReplaced_isAnotherCameraBehindTheSameId();
    void fileOpenedForWriting_butLeftAsItIs_changesNothing();
    void otherFiles_areIgnoredSilently();
    void brokenVideo_isToldOnce();
    void streamingCamera_reportsUnplugged_andWorksWhenBack();
    void folderRemoved_unplugsAll();
    void manyChanges_endWithTheRightList();
    void destruction_whileFilesCome_isClean();

private:
    QString stock(const QString &name) const { return m_stock.filePath(name); }
    QString inFolder(const QString &name) const { return m_folder->filePath(name); }
    QStringList names();
    void moveIn(const QString &name);
    void watch();

    QTemporaryDir m_stock;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<LocalCameraManager> m_manager;
    HotplugListener *m_listener = nullptr;
    std::unique_ptr<HotplugListener> m_ownedListener;
};

void TestFolderSource::initTestCase()
{
    QVERIFY(PatternVideo().write(stock("small.mkv")));
    PatternVideo other;
    other.width = 640;
    other.height = 480;
    QVERIFY(other.write(stock("large.mkv")));
}

void TestFolderSource::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_ownedListener = std::make_unique<HotplugListener>();
    m_listener = m_ownedListener.get();
}

void TestFolderSource::cleanup()
{
    m_manager.reset();
}

/*! Begins to watch the folder as it is now. */
void TestFolderSource::watch()
{
    std::vector<std::unique_ptr<CameraSource>> sources;
    sources.push_back(std::make_unique<FolderSource>(m_folder->path().toStdString()));
    m_manager = std::make_unique<LocalCameraManager>(std::move(sources));
    m_manager->setListener(m_listener);
}

QStringList TestFolderSource::names()
{
    QStringList names;
    CameraInfo info;
    for (int i = 0; m_manager->getCameraInfo(i, info); ++i)
        names += QString::fromStdString(info.name);
    return names;
}

/*! Puts a complete video into the folder in one step. */
void TestFolderSource::moveIn(const QString &name)
{
    QVERIFY(QFile::copy(stock("small.mkv"), stock("moving")));
    QVERIFY(QFile::rename(stock("moving"), inFolder(name)));
}

void TestFolderSource::videosThere_areCameras_byName()
{
    moveIn("b.mkv");
    moveIn("a.mkv");
    moveIn("no extension");
    moveIn(".hidden.mkv");
    QVERIFY(QDir(m_folder->path()).mkdir("folder.mkv"));
    watch();
    QCOMPARE(names(), QStringList({ "a.mkv", "b.mkv", "no extension" }));
    CameraInfo info;
    QVERIFY(m_manager->getCameraInfo(0, info));
    QCOMPARE(QString::fromStdString(info.id), "file:" + inFolder("a.mkv"));
}

void TestFolderSource::videoMovedIn_isPluggedIn()
{
    watch();
    QCOMPARE(m_manager->getNumberOfCameras(), 0);
    moveIn("a.mkv");
    QTRY_COMPARE(m_listener->events(), QStringList { "+a.mkv" });
    QCOMPARE(names(), QStringList { "a.mkv" });
}

void TestFolderSource::videoWritten_isPluggedIn_onceItIsClosed()
{
    QFile original(stock("small.mkv"));
    QVERIFY(original.open(QIODevice::ReadOnly));
    const QByteArray bytes = original.readAll();
    watch();
    QFile slow(inFolder("slow.mkv"));
    QVERIFY(slow.open(QIODevice::WriteOnly));
    slow.write(bytes.left(bytes.size() - 100));
    slow.flush();
    moveIn("other.mkv"); // seen after the half of the slow one
    QTRY_COMPARE(m_listener->events(), QStringList { "+other.mkv" });
    slow.write(bytes.right(100));
    slow.close();
    QTRY_COMPARE(m_listener->events(), QStringList({ "+other.mkv", "+slow.mkv" }));
}

void TestFolderSource::linkedVideo_isPluggedIn()
{
    watch();
    QVERIFY(QFile::link(stock("small.mkv"), inFolder("link.mkv")));
    QTRY_COMPARE(m_listener->events(), QStringList { "+link.mkv" });
    QVERIFY(QFile::remove(inFolder("link.mkv")));
    QTRY_COMPARE(m_listener->events(), QStringList({ "+link.mkv", "-link.mkv" }));
}

void TestFolderSource::videoRemoved_isUnplugged()
{
    moveIn("a.mkv");
    moveIn("b.mkv");
    watch();
    QVERIFY(QFile::remove(inFolder("a.mkv")));
    QTRY_COMPARE(m_listener->events(), QStringList { "-a.mkv" });
    QCOMPARE(names(), QStringList { "b.mkv" });
    StderrCapture capture;
    QVERIFY(!m_manager->openCamera("file:" + inFolder("a.mkv").toStdString()));
    QCOMPARE(capture.lines().size(), 1);
}

void TestFolderSource::videoRenamed_isUnpluggedAndPluggedIn()
{
    moveIn("a.mkv");
    watch();
    QVERIFY(QFile::rename(inFolder("a.mkv"), inFolder("z.mkv")));
    QTRY_COMPARE(m_listener->events().size(), 2);
    QCOMPARE(m_listener->events(), QStringList({ "-a.mkv", "+z.mkv" }));
}

void TestFolderSource::videoReplaced_isAnotherCameraBehindTheSameId()
{
    moveIn("a.mkv");
    watch();
    CameraInfo info;
    std::vector<CameraCapability> capabilities;
    QVERIFY(m_manager->getCameraInfo(0, info));
    QVERIFY(m_manager->getCameraCapabilities(info, capabilities));
    QCOMPARE(capabilities.front().width, 320);
    QVERIFY(QFile::copy(stock("large.mkv"), stock("moving")));
    QCOMPARE(std::rename(qPrintable(stock("moving")), qPrintable(inFolder("a.mkv"))), 0);
    QTRY_COMPARE(m_listener->events(), QStringList({ "-a.mkv", "+a.mkv" }));
    QVERIFY(m_manager->getCameraCapabilities(info, capabilities));
    QCOMPARE(capabilities.front().width, 640);
}

void TestFolderSource::fileOpenedForWriting_butLeftAsItIs_changesNothing()
{
    moveIn("a.mkv");
    watch();
    QFile file(inFolder("a.mkv"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.close();
    moveIn("b.mkv"); // seen after that
    QTRY_COMPARE(m_listener->events(), QStringList { "+b.mkv" });
}

void TestFolderSource::otherFiles_areIgnoredSilently()
{
    const auto write = [this](const QString &name) {
        QFile file(inFolder(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("Not a video at all.\n");
    };
    StderrCapture capture;
    write("readme.txt");
    watch();
    write("later.txt");
    write(".hidden.mkv");
    moveIn("a.mkv");
    QTRY_COMPARE(m_listener->events(), QStringList { "+a.mkv" });
    QCOMPARE(capture.lines(), QStringList());
}

void TestFolderSource::brokenVideo_isToldOnce()
{
    watch();
    StderrCapture capture;
    QFile file(inFolder("broken.MKV"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Not a video at all.\n");
    file.close();
    moveIn("a.mkv");
    QTRY_COMPARE(m_listener->events(), QStringList { "+a.mkv" });
    const QStringList lines = capture.lines();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines[0].startsWith("ocelle: no camera for \"" + inFolder("broken.MKV") +
                                "\", which cannot be read as video"));
}

void TestFolderSource::streamingCamera_reportsUnplugged_andWorksWhenBack()
{
    moveIn("a.mkv");
    watch();
    const std::string id = "file:" + inFolder("a.mkv").toStdString();
    std::shared_ptr<Camera> camera = m_manager->openCamera(id);
    const std::shared_ptr<Camera> idle = m_manager->openCamera(id);
    RecordingListener listener;
    RecordingListener idleListener;
    camera->setListener(&listener);
    idle->setListener(&idleListener);
    QVERIFY(camera->startCapture({ 320, 240, 30 }, 255));
    QTRY_VERIFY(listener.frames() >= 2);
    QVERIFY(QFile::remove(inFolder("a.mkv")));
    QTRY_VERIFY(!listener.errors().empty());
    QVERIFY(!camera->captureStarted());
    camera->stopCapture();
    QCOMPARE(listener.errors(), std::vector<std::string> { "Camera \"a.mkv\" was unplugged" });
    QTRY_COMPARE(m_listener->events(), QStringList { "-a.mkv" });
    {
        const StderrCapture quiet;
        QVERIFY(!camera->startCapture({ 320, 240, 30 }, 255));
        QVERIFY(!idle->startCapture({ 320, 240, 30 }, 255));
    }
    QVERIFY(idleListener.errors().empty());

    moveIn("a.mkv");
    QTRY_COMPARE(m_listener->events(), QStringList({ "-a.mkv", "+a.mkv" }));
    camera = m_manager->openCamera(id);
    QVERIFY(camera);
    RecordingListener again;
    camera->setListener(&again);
    QVERIFY(camera->startCapture({ 320, 240, 30 }, 255));
    QTRY_VERIFY(again.frames() >= 2);
    camera.reset();
    QVERIFY(again.errors().empty());
}

void TestFolderSource::folderRemoved_unplugsAll()
{
    moveIn("a.mkv");
    moveIn("b.mkv");
    watch();
    StderrCapture capture;
    QVERIFY(QDir().rename(m_folder->path(), m_folder->path() + ".gone"));
    QTRY_COMPARE(m_listener->events(), QStringList({ "-a.mkv", "-b.mkv" }));
    QCOMPARE(m_manager->getNumberOfCameras(), 0);
    QCOMPARE(capture.lines(), QStringList { "ocelle: folder \"" + m_folder->path() +
                                            "\" is gone, and its cameras with it" });
    QVERIFY(QDir(m_folder->path() + ".gone").removeRecursively());
}

void TestFolderSource::manyChanges_endWithTheRightList()
{
    watch();
    QStringList expected;
    for (int i = 0; i < 20; ++i) {
        const QString name = QString("%1.mkv").arg(i, 2, 10, QLatin1Char('0'));
        moveIn(name);
        if (i % 2)
            QVERIFY(QFile::remove(inFolder(name)));
        else
            expected += name;
    }
    QTRY_COMPARE_WITH_TIMEOUT(names(), expected, 20000);
}

void TestFolderSource::destruction_whileFilesCome_isClean()
{
    const StderrCapture quiet; // of a file that is removed while it is looked into
    for (int round = 0; round < 20; ++round) {
        watch();
        moveIn("a.mkv");
        if (round % 2)
            QTRY_VERIFY(m_listener->events().size() > 0);
        m_manager.reset();
        QVERIFY(QFile::remove(inFolder("a.mkv")));
    }
    watch();
    QCOMPARE(m_manager->getNumberOfCameras(), 0);
}

QTEST_GUILESS_MAIN(TestFolderSource)
#include "tst_foldersource.moc"

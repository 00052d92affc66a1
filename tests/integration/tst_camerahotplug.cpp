// SPDX-License-Identifier: BSD-3-Clause
#include "picturesurface.h"

#include <QCamera>
#include <QCameraInfo>
#include <QDir>
#include <QFile>
#include <QMediaService>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QVideoDeviceSelectorControl>

/*!
 * Cameras that come and go under a running application: files in a folder that is watched.
 */
class TestCameraHotplug : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();
    void addedCamera_isListed_andStreams();
    void removedCamera_isListedNoMore();
    void selector_tellsOfComingAndGoing();
    void unplugWhileStreaming_givesError_andStopsPictures();
    void unpluggedCamera_doesNotOpen();
    void replugged_camera_worksWhenOpenedAnew();
    void storm_ofPluggingWhileStreaming_leavesOtherCameraAlone();

private:
    void plug(const QString &name);
    void unplug(const QString &name);

    QTemporaryDir m_media; // one file to copy from
};

namespace {

QTemporaryDir &folder()
{
    static QTemporaryDir the;
    return the;
}

QString path(const QString &name)
{
    return folder().filePath(name);
}

QByteArray idOf(const QString &name)
{
    return "file:" + QFileInfo(folder().path()).canonicalFilePath().toUtf8() + '/' + name.toUtf8();
}

QStringList fileCameras()
{
    QStringList names;
    for (const QCameraInfo &info : QCameraInfo::availableCameras()) {
        if (info.deviceName().startsWith(QStringLiteral("file:")))
            names.append(info.deviceName());
    }
    return names;
}

QStringList ids(const QStringList &names)
{
    QStringList list;
    for (const QString &name : names)
        list.append(QString::fromUtf8(idOf(name)));
    return list;
}

const QString One = QStringLiteral("one.mkv");
const QString Two = QStringLiteral("two.mkv");

/*! A streaming camera and what it says. */
struct Streaming
{
    explicit Streaming(const QByteArray &id)
        : camera(id)
    {
        camera.setViewfinder(&surface);
        QObject::connect(&camera, &QCamera::errorOccurred, [this](QCamera::Error error) {
            if (error != QCamera::NoError)
                errors.append(camera.errorString());
        });
        camera.start();
    }
    bool hasPictures(int count) const { return surface.pictures.size() >= count; }

    PictureSurface surface; // outlives the camera
    QStringList errors;
    QCamera camera;
};

} // namespace

void TestCameraHotplug::initTestCase()
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 { QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                   QStringLiteral("lavfi"), QStringLiteral("-i"),
                   QStringLiteral("testsrc2=size=320x240:rate=30:duration=2"),
                   QStringLiteral("-c:v"), QStringLiteral("mpeg4"),
                   m_media.filePath(QStringLiteral("source.mkv")) });
    QVERIFY(ffmpeg.waitForFinished(60000));
    QVERIFY2(ffmpeg.exitCode() == 0, ffmpeg.readAllStandardError().constData());
    QCOMPARE(fileCameras(), QStringList());
}

void TestCameraHotplug::cleanup()
{
    QDir all(folder().path());
    const QStringList names = all.entryList(QDir::Files);
    for (const QString &name : names)
        all.remove(name);
    QTRY_COMPARE(fileCameras(), QStringList());
}

/*! A whole file appears at once, as a camera does. */
void TestCameraHotplug::plug(const QString &name)
{
    const QString beside = m_media.filePath(name);
    QVERIFY(QFile::copy(m_media.filePath(QStringLiteral("source.mkv")), beside));
    QVERIFY(QFile::rename(beside, path(name)));
}

void TestCameraHotplug::unplug(const QString &name)
{
    QVERIFY(QFile::remove(path(name)));
}

void TestCameraHotplug::addedCamera_isListed_andStreams()
{
    plug(One);
    QTRY_COMPARE(fileCameras(), ids({ One }));
    plug(Two);
    QTRY_COMPARE(fileCameras(), ids({ One, Two }));
    Streaming streaming(idOf(Two));
    QTRY_VERIFY(streaming.hasPictures(5));
    QCOMPARE(streaming.surface.pictures.last().size, QSize(320, 240));
    QCOMPARE(streaming.errors, QStringList());
}

void TestCameraHotplug::removedCamera_isListedNoMore()
{
    plug(One);
    plug(Two);
    QTRY_COMPARE(fileCameras(), ids({ One, Two }));
    unplug(One);
    QTRY_COMPARE(fileCameras(), ids({ Two }));
    QVERIFY(QCameraInfo(idOf(One)).isNull());
}

void TestCameraHotplug::selector_tellsOfComingAndGoing()
{
    QCamera camera;
    auto *const selector = camera.service()->requestControl<QVideoDeviceSelectorControl *>();
    QVERIFY(selector);
    QObject here; // the back end tells on a thread of the camera library
    int changes = 0;
    connect(selector, &QVideoDeviceSelectorControl::devicesChanged, &here, [&] { ++changes; });
    const int before = selector->deviceCount();
    plug(One);
    QTRY_COMPARE(selector->deviceCount(), before + 1);
    QTRY_VERIFY(changes >= 1);
    const int after = changes;
    unplug(One);
    QTRY_COMPARE(selector->deviceCount(), before);
    QTRY_VERIFY(changes > after);
    camera.service()->releaseControl(selector);
}

void TestCameraHotplug::unplugWhileStreaming_givesError_andStopsPictures()
{
    plug(One);
    QTRY_COMPARE(fileCameras(), ids({ One }));
    Streaming streaming(idOf(One));
    QTRY_VERIFY(streaming.hasPictures(5));
    QCOMPARE(streaming.errors, QStringList());

    unplug(One);
    QTRY_COMPARE(streaming.errors.size(), 1);
    QVERIFY2(streaming.errors.first().startsWith(QStringLiteral("Hardware error Camera ")),
             qPrintable(streaming.errors.first()));
    QVERIFY2(streaming.errors.first().contains(QStringLiteral("was unplugged")),
             qPrintable(streaming.errors.first()));
    streaming.camera.unload();
    QTRY_COMPARE(streaming.camera.status(), QCamera::UnloadedStatus);
    QCOMPARE(streaming.errors.size(), 1);
}

void TestCameraHotplug::unpluggedCamera_doesNotOpen()
{
    plug(One);
    QTRY_COMPARE(fileCameras(), ids({ One }));
    Streaming streaming(idOf(One));
    QTRY_VERIFY(streaming.hasPictures(1));
    streaming.camera.unload();
    QTRY_COMPARE(streaming.camera.status(), QCamera::UnloadedStatus);
    unplug(One);
    QTRY_COMPARE(fileCameras(), QStringList());
    Streaming gone(idOf(One));
    QTRY_VERIFY(!gone.errors.isEmpty());
    QTRY_COMPARE(gone.camera.state(), QCamera::UnloadedState);
    QVERIFY(gone.surface.pictures.isEmpty());
}

void TestCameraHotplug::replugged_camera_worksWhenOpenedAnew()
{
    plug(One);
    QTRY_COMPARE(fileCameras(), ids({ One }));
    {
        Streaming streaming(idOf(One));
        QTRY_VERIFY(streaming.hasPictures(5));
        unplug(One);
        QTRY_COMPARE(streaming.errors.size(), 1);
    }
    QTRY_COMPARE(fileCameras(), QStringList());
    plug(One);
    QTRY_COMPARE(fileCameras(), ids({ One }));
    Streaming anew(idOf(One));
    QTRY_VERIFY(anew.hasPictures(5));
    QCOMPARE(anew.errors, QStringList());
}

void TestCameraHotplug::storm_ofPluggingWhileStreaming_leavesOtherCameraAlone()
{
    plug(One);
    QTRY_COMPARE(fileCameras(), ids({ One }));
    Streaming streaming(idOf(One));
    QTRY_VERIFY(streaming.hasPictures(1));
    for (int i = 0; i < 20; ++i) {
        plug(Two);
        if (i % 2)
            QTRY_COMPARE(fileCameras(), ids({ One, Two }));
        unplug(Two);
    }
    QTRY_COMPARE(fileCameras(), ids({ One }));
    const int soFar = streaming.surface.pictures.size();
    QTRY_VERIFY(streaming.hasPictures(soFar + 5));
    QCOMPARE(streaming.errors, QStringList());
}

/*! The folder is fixed when the back end is first used, so before anything of Qt's is. */
int main(int argc, char **argv)
{
    qputenv("OCELLE_CAMERAS",
            "pattern,dir:" + QFile::encodeName(QFileInfo(folder().path()).canonicalFilePath()));
    QCoreApplication application(argc, argv);
    TestCameraHotplug test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_camerahotplug.moc"

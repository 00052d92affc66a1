// SPDX-License-Identifier: BSD-3-Clause
#include "camerastatistics.h"
#include "filesource.h"
#include "patternreader.h"
#include "patternvideo.h"
#include "recordinglistener.h"
#include "stderrcapture.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Veltra::Ocelle;

class TestFileSource : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void camera_isDescribedByItsFile();
    void pictures_comeInOrder_overAndOver_atTheFilesRate();
    void scaledPictures_showTheSame_data();
    void scaledPictures_showTheSame();
    void otherFormats_areConverted_data();
    void otherFormats_areConverted();
    void picturesOfItsOwnSize_areNotCopied();
    void restart_beginsWithTheFirstPicture();
    void openedTwice_playsIndependently();
    void buffers_outliveTheCamera();
    void heldBuffers_dropPictures_andGoOn();
    void fileThatLosesItsPictures_reportsOneError();
    void missingFile_isToldOnce_andNoCamera();
    void fileGoneAfterListing_doesNotOpen_andOpensWhenBack();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    std::unique_ptr<FileSource> source(const QString &name) const;
    static std::shared_ptr<Camera> open(FileSource &source);
    static int numberIn(const GraphicBuffer &picture);

    QTemporaryDir m_folder;
};

std::unique_ptr<FileSource> TestFileSource::source(const QString &name) const
{
    return std::make_unique<FileSource>(path(name).toStdString());
}

std::shared_ptr<Camera> TestFileSource::open(FileSource &source)
{
    return source.open(source.cameras().front().info.id);
}

int TestFileSource::numberIn(const GraphicBuffer &picture)
{
    const auto reading = readPattern(picture.planes[0].data, picture.planes[0].stride,
                                     picture.width, picture.height);
    return reading ? int(reading->sequence) : -1;
}

void TestFileSource::initTestCase()
{
    QVERIFY(m_folder.isValid());
    QVERIFY(PatternVideo().write(path("plain.mkv")));
}

void TestFileSource::camera_isDescribedByItsFile()
{
    const std::vector<CameraDescription> cameras = source("plain.mkv")->cameras();
    QCOMPARE(cameras.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(cameras[0].info.id), "file:" + path("plain.mkv"));
    QCOMPARE(QString::fromStdString(cameras[0].info.name), QString("plain.mkv"));
    QVERIFY(cameras[0].formats == std::vector<PixelFormat> { PixelFormat::YU12 });
    QStringList capabilities;
    for (const CameraCapability &one : cameras[0].capabilities)
        capabilities += QString("%1x%2@%3").arg(one.width).arg(one.height).arg(one.frameRate);
    QCOMPARE(capabilities, QStringList({ "320x240@30", "640x480@30" }));
}

void TestFileSource::pictures_comeInOrder_overAndOver_atTheFilesRate()
{
    const auto files = source("plain.mkv");
    const std::shared_ptr<Camera> camera = open(*files);
    std::int64_t drift = 1000000;
    for (int attempt = 0; attempt < 5 && qAbs(drift) >= 5000;
         ++attempt) { // others use this machine
        RecordingListener listener;
        std::atomic<int> wrong { 0 };
        listener.onFrame = [&](RecordingListener::Buffer &buffer) {
            if (numberIn(*buffer) != int(buffer->sequence % 12) || !buffer->live)
                ++wrong;
        };
        camera->setListener(&listener);
        QVERIFY(camera->startCapture({ 320, 240, 30 }, 255));
        QTRY_VERIFY_WITH_TIMEOUT(listener.frames() >= 50, 20000);
        camera->stopCapture();
        camera->setListener(nullptr);
        QCOMPARE(wrong.load(), 0);
        drift = listener.drift(30);
    }
    QVERIFY2(qAbs(drift) < 5000, qPrintable(QString("%1 us in a second").arg(drift)));
}

void TestFileSource::scaledPictures_showTheSame_data()
{
    QTest::addColumn<QString>("pixelFormat");
    QTest::newRow("planar") << "yuv420p";
    QTest::newRow("semiplanar") << "nv12";
}

void TestFileSource::scaledPictures_showTheSame()
{
    QFETCH(QString, pixelFormat);
    PatternVideo video;
    video.width = 480;
    video.height = 360;
    video.options = QStringList { "-c:v", "rawvideo", "-pix_fmt", pixelFormat };
    QVERIFY(video.write(path("scaled.nut")));
    const auto files = source("scaled.nut");
    const CameraDescription description = files->cameras().front();
    QCOMPARE(description.capabilities.size(), std::size_t(3));
    for (const CameraCapability &capability : description.capabilities) {
        const std::shared_ptr<Camera> camera = open(*files);
        RecordingListener listener;
        listener.buffersToKeep = 3;
        camera->setListener(&listener);
        QVERIFY(camera->startCapture(capability, 255));
        QTRY_COMPARE(listener.buffers().size(), std::size_t(3));
        camera->stopCapture();
        for (const RecordingListener::Buffer &buffer : listener.buffers()) {
            QCOMPARE(buffer->width, capability.width);
            QCOMPARE(buffer->height, capability.height);
            QVERIFY(buffer->format == description.formats.front());
            QVERIFY(buffer->format ==
                    (pixelFormat == "nv12" ? PixelFormat::NV12 : PixelFormat::YU12));
            QCOMPARE(numberIn(*buffer), int(buffer->sequence % 12));
        }
    }
}

void TestFileSource::otherFormats_areConverted_data()
{
    QTest::addColumn<QString>("pixelFormat");
    QTest::addColumn<QString>("scale");
    for (const char *format : { "yuv422p", "yuv420p10le", "yuv444p", "gbrp", "gray" })
        QTest::newRow(format) << format << "320:240";
    QTest::newRow("odd size") << "yuv420p"
                              << "321:241";
    QTest::newRow("odd size, 4:2:2") << "yuv422p"
                                     << "321:241";
}

void TestFileSource::otherFormats_areConverted()
{
    QFETCH(QString, pixelFormat);
    QFETCH(QString, scale);
    PatternVideo video;
    video.options =
            QStringList { "-vf", "scale=" + scale, "-c:v", "ffv1", "-pix_fmt", pixelFormat };
    QVERIFY(video.write(path("other.mkv")));
    const auto files = source("other.mkv");
    const CameraDescription description = files->cameras().front();
    for (const CameraCapability &capability : description.capabilities) {
        const std::shared_ptr<Camera> camera = open(*files);
        RecordingListener listener;
        listener.buffersToKeep = 2;
        camera->setListener(&listener);
        QVERIFY(camera->startCapture(capability, 255));
        QTRY_COMPARE(listener.buffers().size(), std::size_t(2));
        camera->stopCapture();
        QVERIFY(listener.errors().empty());
        for (const RecordingListener::Buffer &buffer : listener.buffers()) {
            QVERIFY(buffer->format == PixelFormat::YU12);
            QCOMPARE(buffer->width, capability.width);
            QCOMPARE(buffer->planeCount, 3);
            QCOMPARE(buffer->planes[1].lines, (capability.height + 1) / 2);
            QCOMPARE(numberIn(*buffer), int(buffer->sequence % 12));
        }
    }
}

void TestFileSource::picturesOfItsOwnSize_areNotCopied()
{
    // The planes of a decoder lie apart by more than the picture needs; copies lie side by side.
    const auto files = source("plain.mkv");
    const std::shared_ptr<Camera> camera = open(*files);
    RecordingListener listener;
    listener.buffersToKeep = 1;
    camera->setListener(&listener);
    camera->startCapture({ 320, 240, 30 }, 255);
    QTRY_COMPARE(listener.buffers().size(), std::size_t(1));
    camera->stopCapture();
    const RecordingListener::Buffer buffer = listener.buffers().front();
    const auto *const end = buffer->planes[0].data + std::ptrdiff_t(buffer->planes[0].stride) * 240;
    QVERIFY(buffer->planes[1].data != end);
}

void TestFileSource::restart_beginsWithTheFirstPicture()
{
    const auto files = source("plain.mkv");
    const std::shared_ptr<Camera> camera = open(*files);
    for (int round = 0; round < 10; ++round) {
        RecordingListener listener;
        listener.buffersToKeep = 1;
        camera->setListener(&listener);
        QVERIFY(camera->startCapture({ 320, 240, 30 }, 255));
        QTRY_VERIFY(listener.frames() >= 2);
        camera->stopCapture();
        camera->setListener(nullptr);
        QCOMPARE(numberIn(*listener.buffers().front()), 0);
    }
}

void TestFileSource::openedTwice_playsIndependently()
{
    const auto files = source("plain.mkv");
    const std::shared_ptr<Camera> first = open(*files);
    const std::shared_ptr<Camera> second = open(*files);
    RecordingListener firstListener;
    RecordingListener secondListener;
    secondListener.buffersToKeep = 1;
    first->setListener(&firstListener);
    second->setListener(&secondListener);
    first->startCapture({ 320, 240, 30 }, 255);
    QTRY_VERIFY(firstListener.frames() >= 3);
    second->startCapture({ 640, 480, 30 }, 255);
    QTRY_VERIFY(secondListener.frames() >= 3);
    QCOMPARE(numberIn(*secondListener.buffers().front()), 0);
    first->stopCapture();
    const int frames = secondListener.frames();
    QTRY_VERIFY(secondListener.frames() > frames);
    second->stopCapture();
}

void TestFileSource::buffers_outliveTheCamera()
{
    RecordingListener listener;
    listener.buffersToKeep = 4;
    {
        auto files = source("plain.mkv");
        const std::shared_ptr<Camera> camera = open(*files);
        camera->setListener(&listener);
        camera->startCapture({ 320, 240, 30 }, 255);
        QTRY_COMPARE(listener.buffers().size(), std::size_t(4));
        files.reset();
    }
    for (const RecordingListener::Buffer &buffer : listener.buffers())
        QCOMPARE(numberIn(*buffer), int(buffer->sequence));
    listener.dropBuffers();
}

void TestFileSource::heldBuffers_dropPictures_andGoOn()
{
    const auto files = source("plain.mkv");
    const std::string id = files->cameras().front().info.id;
    const auto dropped = [&id] {
        for (const CameraStatistics &statistics : cameraStatistics()) {
            if (statistics.id == id)
                return statistics.dropped;
        }
        return std::uint64_t(0);
    };
    const std::shared_ptr<Camera> camera = open(*files);
    RecordingListener listener;
    listener.buffersToKeep = 100;
    camera->setListener(&listener);
    const std::uint64_t before = dropped();
    camera->startCapture({ 320, 240, 30 }, 255);
    QTRY_VERIFY(dropped() >= before + 15); // more than once round
    const int frames = listener.frames();
    for (const RecordingListener::Buffer &buffer : listener.buffers())
        QCOMPARE(numberIn(*buffer), int(buffer->sequence % 12));
    listener.dropBuffers();
    QTRY_VERIFY(listener.frames() > frames);
    camera->stopCapture();
}

void TestFileSource::fileThatLosesItsPictures_reportsOneError()
{
    QVERIFY(PatternVideo().write(path("emptied.264")));
    const auto files = source("emptied.264");
    const std::shared_ptr<Camera> camera = open(*files);
    RecordingListener listener;
    camera->setListener(&listener);
    QVERIFY(camera->startCapture(files->cameras().front().capabilities.front(), 255));
    QTRY_VERIFY(listener.frames() >= 2);
    QVERIFY(QFile::resize(path("emptied.264"), 0));
    QTRY_VERIFY(!listener.errors().empty());
    QVERIFY(!camera->captureStarted());
    camera->stopCapture();
    QCOMPARE(listener.errors(),
             std::vector<std::string> { "Camera \"emptied.264\" stopped: its file has no picture "
                                        "that can be decoded" });
    StderrCapture capture;
    QVERIFY(!camera->startCapture(files->cameras().front().capabilities.front(), 255));
    const QStringList lines = capture.lines();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines[0].startsWith("ocelle: camera \"emptied.264\" does not start: "));
}

void TestFileSource::missingFile_isToldOnce_andNoCamera()
{
    StderrCapture capture;
    const auto files = source("none.mkv");
    QVERIFY(files->cameras().empty());
    QVERIFY(files->cameras().empty());
    QVERIFY(!files->open("file:" + path("none.mkv").toStdString()));
    QCOMPARE(capture.lines(),
             QStringList { "ocelle: OCELLE_CAMERAS: no camera for \"" + path("none.mkv") +
                           "\", which cannot be read: No such file or directory; file:PATH needs "
                           "a video file" });
}

void TestFileSource::fileGoneAfterListing_doesNotOpen_andOpensWhenBack()
{
    QVERIFY(QFile::copy(path("plain.mkv"), path("moving.mkv")));
    const auto files = source("moving.mkv");
    QVERIFY(QFile::rename(path("moving.mkv"), path("moved.mkv")));
    StderrCapture capture;
    QVERIFY(!open(*files));
    const QStringList lines = capture.lines();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines[0].startsWith("ocelle: camera \"moving.mkv\" does not open: "));
    QVERIFY(QFile::rename(path("moved.mkv"), path("moving.mkv")));
    QVERIFY(open(*files));
}

QTEST_GUILESS_MAIN(TestFileSource)
#include "tst_filesource.moc"

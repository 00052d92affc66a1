// SPDX-License-Identifier: BSD-3-Clause
#include "patternreader.h"
#include "patternvideo.h"
#include "videofile.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

extern "C" {
#include <libavutil/frame.h>
}

#include <atomic>
#include <memory>

using namespace Veltra::Ocelle;
using namespace std::chrono_literals;

namespace {

/*! The number in the picture that was read last; -1 where there is none. */
int numberIn(VideoFile &file)
{
    const AVFrame *const frame = file.picture();
    const auto reading =
            readPattern(frame->data[0], frame->linesize[0], frame->width, frame->height);
    return reading ? int(reading->sequence) : -1;
}

} // namespace

class TestVideoFile : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void everyContainer_loopsWithAllPicturesInOrder_data();
    void everyContainer_loopsWithAllPicturesInOrder();
    void time_goesOnOverTheEnd();
    void time_ofAVariableRate_isTheFilesOwn();
    void restart_beginsWithTheFirstPictureAtZero();
    void properties_areTheFiles_data();
    void properties_areTheFiles();
    void open_refusesWhatIsNoVideo_data();
    void open_refusesWhatIsNoVideo();
    void damage_costsTheConcernedPicturesOnly();
    void fileThatLosesItsPictures_fails();
    void stop_endsReading();
    void publishedFootage_isReadToTheEnd_data();
    void publishedFootage_isReadToTheEnd();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    std::unique_ptr<VideoFile> open(const QString &name);
    bool makeWithFfmpeg(const QStringList &arguments);

    QTemporaryDir m_folder;
    const std::atomic<bool> m_never { false };
};

std::unique_ptr<VideoFile> TestVideoFile::open(const QString &name)
{
    std::string error;
    std::unique_ptr<VideoFile> file =
            VideoFile::open(QFile::encodeName(path(name)).toStdString(), error);
    if (!file)
        qWarning("%s", error.c_str());
    return file;
}

bool TestVideoFile::makeWithFfmpeg(const QStringList &arguments)
{
    return QProcess::execute("ffmpeg", QStringList { "-nostdin", "-loglevel", "error", "-y" } +
                                               arguments) == 0;
}

void TestVideoFile::initTestCase()
{
    QVERIFY(m_folder.isValid());
    QVERIFY(PatternVideo().write(path("plain.mkv")));
}

void TestVideoFile::everyContainer_loopsWithAllPicturesInOrder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("options");
    const QStringList h264 = PatternVideo().options;
    const QStringList bFrames { "-c:v", "libx264", "-preset", "fast", "-bf", "3", "-g", "5" };
    QTest::newRow("mkv") << "a.mkv" << h264;
    QTest::newRow("mp4") << "a.mp4" << h264;
    QTest::newRow("mov") << "a.mov" << h264;
    QTest::newRow("avi") << "a.avi" << QStringList { "-c:v", "mpeg4", "-q:v", "2" };
    QTest::newRow("ts") << "a.ts" << h264;
    QTest::newRow("webm") << "a.webm" << QStringList { "-c:v", "libvpx", "-b:v", "1M" };
    QTest::newRow("ivf") << "a.ivf" << QStringList { "-c:v", "libvpx", "-b:v", "1M" };
    QTest::newRow("raw H.264") << "a.264" << h264;
    QTest::newRow("uncompressed") << "a.y4m" << QStringList();
    QTest::newRow("mkv, B frames") << "b.mkv" << bFrames;
    QTest::newRow("mp4, B frames") << "b.mp4" << bFrames;
    QTest::newRow("ts, B frames") << "b.ts" << bFrames;
    QTest::newRow("raw H.264, B frames") << "b.264" << bFrames;
}

void TestVideoFile::everyContainer_loopsWithAllPicturesInOrder()
{
    QFETCH(QString, name);
    QFETCH(QStringList, options);
    PatternVideo video;
    video.options = options;
    QVERIFY(video.write(path(name)));
    const std::unique_ptr<VideoFile> file = open(name);
    QVERIFY(file);
    std::chrono::nanoseconds last = -1ns;
    for (int i = 0; i < video.pictures * 3; ++i) {
        QVERIFY(file->read(m_never) == VideoFile::Result::Picture);
        QCOMPARE(numberIn(*file), i % video.pictures);
        QCOMPARE(file->passes(), i / video.pictures);
        QVERIFY(file->offset() > last);
        last = file->offset();
    }
}

void TestVideoFile::time_goesOnOverTheEnd()
{
    const std::unique_ptr<VideoFile> file = open("plain.mkv");
    for (int i = 0; i < 40; ++i) {
        QVERIFY(file->read(m_never) == VideoFile::Result::Picture);
        const auto expected = i * 1000000000LL / 30;
        const auto error = file->offset().count() - expected;
        QVERIFY2(qAbs(error) < 4000000, qPrintable(QString("%1: %2 ns").arg(i).arg(error)));
    }
}

void TestVideoFile::time_ofAVariableRate_isTheFilesOwn()
{
    PatternVideo video;
    // The second half at a quarter of the rate.
    video.options += QStringList { "-vf", "setpts='if(lt(N,6),N,6+4*(N-6))/(30*TB)'", "-vsync",
                                   "passthrough" };
    QVERIFY(video.write(path("variable.mkv")));
    const std::unique_ptr<VideoFile> file = open("variable.mkv");
    for (int i = 0; i < video.pictures; ++i) {
        QVERIFY(file->read(m_never) == VideoFile::Result::Picture);
        const auto expected = (i < 6 ? i : 6 + 4 * (i - 6)) * 1000LL / 30;
        QVERIFY(qAbs(file->offset().count() / 1000000 - expected) <= 2);
    }
}

void TestVideoFile::restart_beginsWithTheFirstPictureAtZero()
{
    const std::unique_ptr<VideoFile> file = open("plain.mkv");
    for (int i = 0; i < 17; ++i)
        file->read(m_never);
    QVERIFY(file->restart());
    QVERIFY(file->read(m_never) == VideoFile::Result::Picture);
    QCOMPARE(numberIn(*file), 0);
    QCOMPARE(file->offset().count(), 0);
    QCOMPARE(file->passes(), 0);
}

void TestVideoFile::properties_areTheFiles_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("expectedRate");
    QTest::addColumn<QSize>("size");
    QTest::newRow("plain") << QStringList { "-c:v", "libx264" } << 30 << 30 << QSize(320, 240);
    QTest::newRow("29.97") << QStringList { "-c:v", "libx264", "-r", "30000/1001" } << 30 << 30
                           << QSize(320, 240);
    QTest::newRow("a picture in four seconds")
            << QStringList { "-c:v", "libx264", "-r", "1/4" } << 1 << 1 << QSize(320, 240);
    QTest::newRow("cropped") << QStringList { "-c:v", "libx264", "-vf", "scale=322:242" } << 25
                             << 25 << QSize(322, 242);
    QTest::newRow("odd") << QStringList { "-c:v", "ffv1", "-vf", "scale=321:241" } << 25 << 25
                         << QSize(321, 241);
}

void TestVideoFile::properties_areTheFiles()
{
    QFETCH(QStringList, options);
    QFETCH(int, rate);
    QFETCH(int, expectedRate);
    QFETCH(QSize, size);
    PatternVideo video;
    video.options = options;
    video.rate = rate;
    QVERIFY(video.write(path("properties.mkv")));
    const std::unique_ptr<VideoFile> file = open("properties.mkv");
    QVERIFY(file);
    QCOMPARE(file->properties().frameRate, expectedRate);
    QCOMPARE(QSize(file->properties().width, file->properties().height), size);
    QVERIFY(file->read(m_never) == VideoFile::Result::Picture);
    QCOMPARE(QSize(file->picture()->width, file->picture()->height), size);
}

void TestVideoFile::open_refusesWhatIsNoVideo_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("error");
    QTest::newRow("missing") << "none.mkv"
                             << "cannot be read: No such file or directory";
    QTest::newRow("folder") << "."
                            << "is not a file";
    QTest::newRow("text") << "text.txt"
                          << "is not a video";
    QTest::newRow("text called video") << "text.mkv"
                                       << "cannot be read as video: ";
    QTest::newRow("empty") << "empty.mp4"
                           << "cannot be read as video: ";
    QTest::newRow("picture") << "picture.png"
                             << "is not a video";
    QTest::newRow("sound") << "sound.wav"
                           << "has no video";
    QTest::newRow("sound with a cover") << "cover.mp3"
                                        << "has no video";
}

void TestVideoFile::open_refusesWhatIsNoVideo()
{
    const auto write = [this](const QString &name, const QByteArray &text) {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    };
    const QString still = path("picture.png");
    const QString sound = path("sound.wav");
    QVERIFY(write("text.txt", QByteArray("Just some words.\n").repeated(100)));
    QVERIFY(write("text.mkv", QByteArray("Just some words.\n").repeated(100)));
    QVERIFY(write("empty.mp4", {}));
    QVERIFY(makeWithFfmpeg({ "-f", "lavfi", "-i", "testsrc", "-frames:v", "1", still }));
    QVERIFY(makeWithFfmpeg({ "-f", "lavfi", "-i", "sine", "-t", "0.2", sound }));
    QVERIFY(makeWithFfmpeg({ "-i", sound, "-i", still, "-map", "0", "-map", "1", "-disposition:v",
                             "attached_pic", path("cover.mp3") }));

    QFETCH(QString, name);
    QFETCH(QString, error);
    std::string told;
    QVERIFY(!VideoFile::open(path(name).toStdString(), told));
    QVERIFY2(QString::fromStdString(told).startsWith(error), told.c_str());
}

void TestVideoFile::damage_costsTheConcernedPicturesOnly()
{
    PatternVideo video;
    video.pictures = 60;
    video.options += QStringList { "-g", "10" };
    QVERIFY(video.write(path("damaged.ts")));
    QFile bytes(path("damaged.ts"));
    QVERIFY(bytes.open(QIODevice::ReadWrite));
    const qint64 size = bytes.size();
    QVERIFY(bytes.seek(size / 2));
    bytes.write(QByteArray(int(size / 8), '\x5a'));
    bytes.close();

    const std::unique_ptr<VideoFile> file = open("damaged.ts");
    QVERIFY(file);
    QSet<int> found;
    while (file->passes() < 2) {
        QVERIFY(file->read(m_never) == VideoFile::Result::Picture);
        found += numberIn(*file);
    }
    QVERIFY(found.contains(0) && found.contains(59));
    QVERIFY(found.size() >= 40);
}

void TestVideoFile::fileThatLosesItsPictures_fails()
{
    QVERIFY(PatternVideo().write(path("emptied.264")));
    const std::unique_ptr<VideoFile> file = open("emptied.264");
    QVERIFY(file);
    for (int i = 0; i < 5; ++i)
        QVERIFY(file->read(m_never) == VideoFile::Result::Picture);
    QVERIFY(QFile::resize(path("emptied.264"), 0));
    VideoFile::Result result = VideoFile::Result::Picture;
    for (int i = 0; i < 100 && result == VideoFile::Result::Picture; ++i)
        result = file->read(m_never);
    QVERIFY(result == VideoFile::Result::Failed);
    QCOMPARE(QString::fromStdString(file->error()), QString("has no picture that can be decoded"));
}

void TestVideoFile::stop_endsReading()
{
    const std::unique_ptr<VideoFile> file = open("plain.mkv");
    const std::atomic<bool> stop { true };
    QVERIFY(file->read(stop) == VideoFile::Result::Stopped);
    QVERIFY(file->read(m_never) == VideoFile::Result::Picture);
    QCOMPARE(numberIn(*file), 0);
}

void TestVideoFile::publishedFootage_isReadToTheEnd_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("rate");
    QTest::newRow("flower") << "flower-720p.mkv" << 30;
    QTest::newRow("ship") << "ship-cif.mkv" << 25;
}

void TestVideoFile::publishedFootage_isReadToTheEnd()
{
    QFETCH(QString, name);
    QFETCH(int, rate);
    const QString footage = QString(OCELLE_MEDIA_DIR "/") + name;
    if (!QFile::exists(footage))
        QSKIP(qPrintable(footage + " is not there"));
    std::string error;
    const std::unique_ptr<VideoFile> file = VideoFile::open(footage.toStdString(), error);
    QVERIFY2(file, error.c_str());
    QCOMPARE(file->properties().frameRate, rate);
    int pictures = 0;
    while (file->read(m_never) == VideoFile::Result::Picture && file->passes() == 0)
        ++pictures;
    QCOMPARE(pictures, 300);
    QCOMPARE(file->passes(), 1);
}

QTEST_GUILESS_MAIN(TestVideoFile)
#include "tst_videofile.moc"

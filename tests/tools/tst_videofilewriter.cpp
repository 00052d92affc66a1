// SPDX-License-Identifier: BSD-3-Clause
#include "recordedvideo.h"
#include "videofilewriter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <libyuv/planar_functions.h>
#include <sys/stat.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <memory>

using namespace Tool;

namespace {

struct Unit
{
    QByteArray data;
    bool isKey;
};

/*! Test pictures numbered from 0, compressed by libavcodec. */
QList<Unit> units(VideoCodec codec, int count)
{
    const char *const names[] = { "libx264", "libx265", "libvpx", "libvpx-vp9" };
    AVCodecContext *encoder =
            avcodec_alloc_context3(avcodec_find_encoder_by_name(names[int(codec)]));
    encoder->width = 160;
    encoder->height = 120;
    encoder->pix_fmt = AV_PIX_FMT_YUV420P;
    encoder->time_base = { 1, 30 };
    encoder->max_b_frames = 0;
    AVDictionary *options = nullptr;
    if (codec == VideoCodec::H264 || codec == VideoCodec::H265)
        av_dict_set(&options, "tune", "zerolatency", 0);
    else
        av_dict_set(&options, "lag-in-frames", "0", 0);
    if (codec == VideoCodec::H265)
        av_dict_set(&options, "x265-params", "log-level=error:repeat-headers=1", 0);
    QList<Unit> all;
    if (avcodec_open2(encoder, encoder->codec, &options) != 0)
        qFatal("There is no encoder for the test");
    AVPacket *packet = av_packet_alloc();
    for (int i = 0; i <= count; ++i) {
        RawPicture picture = RawPicture::pattern(160, 120, std::uint32_t(i));
        AVFrame *frame = av_frame_alloc();
        frame->format = AV_PIX_FMT_YUV420P;
        frame->width = 160;
        frame->height = 120;
        frame->pts = i;
        av_frame_get_buffer(frame, 0);
        libyuv::I420Copy(picture.y.data(), 160, picture.cb.data(), 80, picture.cr.data(), 80,
                         frame->data[0], frame->linesize[0], frame->data[1], frame->linesize[1],
                         frame->data[2], frame->linesize[2], 160, 120);
        avcodec_send_frame(encoder, i < count ? frame : nullptr);
        av_frame_free(&frame);
        while (avcodec_receive_packet(encoder, packet) == 0) {
            all.append({ QByteArray(reinterpret_cast<const char *>(packet->data), packet->size),
                         bool(packet->flags & AV_PKT_FLAG_KEY) });
            av_packet_unref(packet);
        }
    }
    av_packet_free(&packet);
    av_dict_free(&options);
    avcodec_free_context(&encoder);
    return all;
}

VideoFileWriter::Format format(VideoCodec codec)
{
    return { codec, QSize(160, 120), 30, 30000 };
}

} // namespace

class VideoFileWriterTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { av_log_set_level(AV_LOG_ERROR); }
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void file_holdsWhatWasWritten_data();
    void file_holdsWhatWasWritten();
    void file_hasItsNameOnlyWhenItIsComplete();
    void file_isGone_whenNothingWasWritten();
    void times_beginAtZeroAndAlwaysRise();
    void unitWithoutTime_comesOnePeriodLater();
    void existingFile_isReplacedOnlyWhenAskedTo();
    void existingFile_isKept_whenItCameMeanwhile();
    void partOfAnotherWriter_isLeftAlone();
    void partOfACrash_isReplacedWhenAskedTo();
    void problem_namesWhatSpeaksAgainstIt_data();
    void problem_namesWhatSpeaksAgainstIt();
    void open_leavesAloneWhatIsNoFile();
    void write_fails_withoutParameterSets();
    void open_fails_whereNothingCanBeWritten();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_error;
};

void VideoFileWriterTest::file_holdsWhatWasWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("decoder");
    for (const char *suffix : { "mkv", "mp4", "webm", "ivf" }) {
        const QString file = QStringLiteral("a.") + QLatin1String(suffix);
        const VideoContainer container = containerOf(file).value();
        for (const VideoCodec codec : container.codecs) {
            const QString name = codecName(codec);
            QTest::newRow(qPrintable(file + QLatin1Char(' ') + name))
                    << file << name << (codec == VideoCodec::H265 ? QStringLiteral("hevc") : name);
        }
    }
}

void VideoFileWriterTest::file_holdsWhatWasWritten()
{
    QFETCH(QString, name);
    QFETCH(QString, codec);
    constexpr int Count = 12;
    const VideoCodec kind = *codecNamed(codec);
    VideoFileWriter writer;
    QVERIFY2(writer.open(path(name), format(kind), false, &m_error), qPrintable(m_error));
    const QList<Unit> all = units(kind, Count);
    QCOMPARE(all.size(), Count);
    for (int i = 0; i < Count; ++i)
        QVERIFY2(
                writer.write(all[i].data, 7000000 + qint64(i) * 100000 / 3, all[i].isKey, &m_error),
                qPrintable(m_error));
    QVERIFY2(writer.close(&m_error), qPrintable(m_error));

    const RecordedVideo video = RecordedVideo::read(path(name));
    QTEST(video.codec, "decoder");
    QCOMPARE(video.size, QSize(160, 120));
    QCOMPARE(video.packets, Count);
    QVERIFY2(qAbs(video.duration - Count / 30.0) < 0.002,
             qPrintable(QString::number(video.duration)));
    for (int i = 0; i < Count; ++i) {
        QCOMPARE(video.numbers.value(i, -2), i);
        QCOMPARE(video.keyFrames.at(i), all[i].isKey);
        QVERIFY(qAbs(video.times.at(i) - qint64(i) * 100000 / 3) <=
                500); // Matroska has milliseconds
    }
}

void VideoFileWriterTest::file_hasItsNameOnlyWhenItIsComplete()
{
    const QList<Unit> all = units(VideoCodec::VP8, 2);
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.webm"), format(VideoCodec::VP8), false, &m_error));
    QVERIFY(writer.write(all[0].data, 0, true, &m_error));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList { "a.webm.part" });
    QVERIFY(writer.close(&m_error));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList { "a.webm" });
    QVERIFY(!writer.write(all[1].data, 1, false, &m_error));
}

void VideoFileWriterTest::file_isGone_whenNothingWasWritten()
{
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.mkv"), format(VideoCodec::H264), false, &m_error));
    QVERIFY(!writer.close(&m_error));
    QCOMPARE(m_error, path("a.mkv") + ": nothing was recorded");
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void VideoFileWriterTest::times_beginAtZeroAndAlwaysRise()
{
    const QList<Unit> all = units(VideoCodec::VP8, 4);
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.webm"), format(VideoCodec::VP8), false, &m_error));
    const qint64 times[] = { 5000000, 5040000, 5040000, 5020000 };
    for (int i = 0; i < 4; ++i)
        QVERIFY(writer.write(all[i].data, times[i], all[i].isKey, &m_error));
    QVERIFY(writer.close(&m_error));
    QCOMPARE(RecordedVideo::read(path("a.webm")).times, (QList<qint64> { 0, 40000, 41000, 42000 }));
}

void VideoFileWriterTest::unitWithoutTime_comesOnePeriodLater()
{
    const QList<Unit> all = units(VideoCodec::VP8, 3);
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.ivf"), format(VideoCodec::VP8), false, &m_error));
    for (const Unit &unit : all)
        QVERIFY(writer.write(unit.data, -1, unit.isKey, &m_error));
    QVERIFY(writer.close(&m_error));
    QCOMPARE(RecordedVideo::read(path("a.ivf")).times, (QList<qint64> { 0, 33333, 66667 }));
}

void VideoFileWriterTest::existingFile_isReplacedOnlyWhenAskedTo()
{
    QFile file(path("a.webm"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QVERIFY(VideoFileWriter::problem(path("a.webm"), false).contains("exists already; --force"));
    QCOMPARE(VideoFileWriter::problem(path("a.webm"), true), QString());
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.webm"), format(VideoCodec::VP8), true, &m_error));
    QVERIFY(writer.write(units(VideoCodec::VP8, 1)[0].data, 0, true, &m_error));
    QCOMPARE(QFileInfo(path("a.webm")).size(), 0); // until the new one is complete
    QVERIFY(writer.close(&m_error));
    QCOMPARE(RecordedVideo::read(path("a.webm")).packets, 1);
}

void VideoFileWriterTest::existingFile_isKept_whenItCameMeanwhile()
{
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.webm"), format(VideoCodec::VP8), false, &m_error));
    QVERIFY(writer.write(units(VideoCodec::VP8, 1)[0].data, 0, true, &m_error));
    QFile file(path("a.webm"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QVERIFY(!writer.close(&m_error));
    QVERIFY2(m_error.contains("come meanwhile; what was written so far is in"),
             qPrintable(m_error));
    QCOMPARE(QFileInfo(path("a.webm")).size(), 0);
    QCOMPARE(RecordedVideo::read(path("a.webm.part")).packets, 1);
}

void VideoFileWriterTest::partOfAnotherWriter_isLeftAlone()
{
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.mkv"), format(VideoCodec::VP8), false, &m_error));
    VideoFileWriter other; // as of a program that looked before the first had begun
    QVERIFY(!other.open(path("a.mkv"), format(VideoCodec::VP8), false, &m_error));
    QVERIFY2(m_error.contains("a.mkv.part\" is there already"), qPrintable(m_error));
    QVERIFY2(m_error.contains("delete it, or replace it with --force"), qPrintable(m_error));
    QString ignored;
    QVERIFY(!other.close(&ignored));
    QVERIFY(writer.write(units(VideoCodec::VP8, 1)[0].data, 0, true, &m_error));
    QVERIFY2(writer.close(&m_error), qPrintable(m_error));
    QCOMPARE(RecordedVideo::read(path("a.mkv")).packets, 1);
}

void VideoFileWriterTest::partOfACrash_isReplacedWhenAskedTo()
{
    QFile leftOver(path("a.mkv.part"));
    QVERIFY(leftOver.open(QIODevice::WriteOnly) && leftOver.write("rest") == 4);
    leftOver.close();
    VideoFileWriter refused;
    QVERIFY(!refused.open(path("a.mkv"), format(VideoCodec::VP8), false, &m_error));
    QCOMPARE(QFileInfo(path("a.mkv.part")).size(), 4);
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.mkv"), format(VideoCodec::VP8), true, &m_error));
    QVERIFY(writer.write(units(VideoCodec::VP8, 1)[0].data, 0, true, &m_error));
    QVERIFY2(writer.close(&m_error), qPrintable(m_error));
    QCOMPARE(RecordedVideo::read(path("a.mkv")).packets, 1);
    QVERIFY(!QFileInfo::exists(path("a.mkv.part")));
}

void VideoFileWriterTest::problem_namesWhatSpeaksAgainstIt_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("problem");
    QTest::newRow("nothing") << "new.mkv"
                             << "";
    QTest::newRow("no folder") << "none/a.mkv"
                               << "does not exist";
    QTest::newRow("a folder") << "folder.mkv"
                              << "is a folder";
    QTest::newRow("left over") << "b.mkv"
                               << "b.mkv.part\" is there already";
    QTest::newRow("a pipe") << "pipe.mkv"
                            << "pipe.mkv\" is not an ordinary file";
    QTest::newRow("link to a device") << "device.mkv"
                                      << "device.mkv\" is not an ordinary file";
    QTest::newRow("what it begins as is a folder") << "c.mkv"
                                                   << "c.mkv.part\" is a folder";
}

void VideoFileWriterTest::problem_namesWhatSpeaksAgainstIt()
{
    QFETCH(QString, name);
    QFETCH(QString, problem);
    QVERIFY(QDir(m_folder->path()).mkdir("folder.mkv"));
    QFile leftOver(path("b.mkv.part"));
    QVERIFY(leftOver.open(QIODevice::WriteOnly));
    QVERIFY(QDir(m_folder->path()).mkdir("c.mkv.part"));
    QCOMPARE(mkfifo(QFile::encodeName(path("pipe.mkv")), 0600), 0);
    QVERIFY(QFile::link("/dev/null", path("device.mkv")));
    const QString found = VideoFileWriter::problem(path(name), false);
    QCOMPARE(found.isEmpty(), problem.isEmpty());
    QVERIFY2(found.contains(problem), qPrintable(found));
    const QString forced = VideoFileWriter::problem(path(name), true);
    QCOMPARE(forced, name == QLatin1String("b.mkv") ? QString() : found); // which is only a file
}

// Which came after problem() had looked.
void VideoFileWriterTest::open_leavesAloneWhatIsNoFile()
{
    QVERIFY(QDir(m_folder->path()).mkdir("a.mkv.part"));
    QCOMPARE(mkfifo(QFile::encodeName(path("b.mkv.part")), 0600), 0);
    VideoFileWriter folder;
    QVERIFY(!folder.open(path("a.mkv"), format(VideoCodec::VP8), true, &m_error));
    QVERIFY2(m_error.contains("a.mkv.part\" is a folder"), qPrintable(m_error));
    VideoFileWriter pipe;
    QVERIFY(!pipe.open(path("b.mkv"), format(VideoCodec::VP8), true, &m_error));
    QVERIFY2(m_error.contains("b.mkv.part\" is not an ordinary file"), qPrintable(m_error));
    QVERIFY(QFileInfo::exists(path("b.mkv.part")));
}

void VideoFileWriterTest::write_fails_withoutParameterSets()
{
    const QList<Unit> all = units(VideoCodec::H264, 2);
    VideoFileWriter writer;
    QVERIFY(writer.open(path("a.mp4"), format(VideoCodec::H264), false, &m_error));
    QVERIFY(!all[1].isKey);
    QVERIFY(!writer.write(all[1].data, 0, false, &m_error));
    QVERIFY2(m_error.contains("without parameter sets"), qPrintable(m_error));
    QVERIFY(!writer.close(&m_error));
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void VideoFileWriterTest::open_fails_whereNothingCanBeWritten()
{
    VideoFileWriter writer;
    QVERIFY(!writer.open(path("none/a.mkv"), format(VideoCodec::H264), false, &m_error));
    QCOMPARE(m_error, path("none/a.mkv") + ": No such file or directory");
    VideoFileWriter other;
    QVERIFY(!other.open(path("a.txt"), format(VideoCodec::H264), false, &m_error));
    QVERIFY(m_error.contains("ends in none of .mkv, .mp4, .webm and .ivf"));
    VideoFileWriter never;
    QVERIFY(!never.close(&m_error));
    QCOMPARE(m_error, QStringLiteral("nothing was recorded"));
}

QTEST_GUILESS_MAIN(VideoFileWriterTest)
#include "tst_videofilewriter.moc"

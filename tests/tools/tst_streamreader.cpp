// SPDX-License-Identifier: BSD-3-Clause
#include "streamreader.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Tool::StreamReader;
using Tool::StreamUnit;

Q_DECLARE_METATYPE(Tool::VideoCodec)

class StreamReaderTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { av_log_set_level(AV_LOG_FATAL); }
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void units_areReadFromEveryKindOfFile_data();
    void units_areReadFromEveryKindOfFile();
    void reorderedPictures_haveTheirTimes();
    void hiddenFrames_areNotCountedAsPictures();
    void fieldsOfH265_areCountedAsPictures();
    void cutFile_isToldOf_data();
    void cutFile_isToldOf();
    void unrecognisedStream_needsItsCodec();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

constexpr int Pictures = 12;

/*! A video of moving bars of 320x240 pixels, 30 of them a second. */
bool makeVideo(const QString &path, const QStringList &options, int pictures = Pictures)
{
    return QProcess::execute("ffmpeg",
                             QStringList { "-nostdin", "-loglevel", "error", "-y", "-f", "lavfi",
                                           "-i", "testsrc=s=320x240:r=30,format=yuv420p",
                                           "-frames:v", QString::number(pictures) } +
                                     options + QStringList { path }) == 0;
}

QList<StreamUnit> readAll(StreamReader *reader)
{
    QList<StreamUnit> units;
    StreamUnit unit;
    QString error;
    while (reader->read(&unit, &error) == StreamReader::Result::Unit)
        units.append(unit);
    return error.isEmpty() ? units : QList<StreamUnit>();
}

} // namespace

void StreamReaderTest::units_areReadFromEveryKindOfFile_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("encoder");
    QTest::addColumn<Tool::VideoCodec>("codec");
    using C = Tool::VideoCodec;
    for (const char *file : { "v.mp4", "v.mkv", "v.h264", "v.ts", "v.mov" })
        QTest::newRow(qPrintable(QStringLiteral("h264 ") + file)) << file << "libx264" << C::H264;
    for (const char *file : { "v.mp4", "v.mkv", "v.h265" })
        QTest::newRow(qPrintable(QStringLiteral("h265 ") + file)) << file << "libx265" << C::H265;
    for (const char *file : { "v.mkv", "v.webm", "v.ivf" })
        QTest::newRow(qPrintable(QStringLiteral("vp8 ") + file)) << file << "libvpx" << C::VP8;
    for (const char *file : { "v.mp4", "v.webm", "v.ivf" })
        QTest::newRow(qPrintable(QStringLiteral("vp9 ") + file)) << file << "libvpx-vp9" << C::VP9;
}

void StreamReaderTest::units_areReadFromEveryKindOfFile()
{
    QFETCH(QString, file);
    QFETCH(QString, encoder);
    QStringList options { "-c:v", encoder, "-g", "6", "-b:v", "300k" };
    if (encoder == "libx265")
        options += QStringList { "-x265-params", "log-level=none:bframes=0" };
    else if (encoder == "libx264")
        options += QStringList { "-bf", "0" };
    else
        options += QStringList { "-deadline", "realtime", "-lag-in-frames", "0" };
    QVERIFY(makeVideo(path(file), options));
    QString error;
    const auto reader = StreamReader::open(path(file), std::nullopt, &error);
    QVERIFY2(reader, qPrintable(error));
    QTEST(reader->properties().codec, "codec");
    QCOMPARE(reader->properties().size, QSize(320, 240));
    const QList<StreamUnit> units = readAll(reader.get());
    QCOMPARE(units.size(), Pictures);
    QCOMPARE(reader->missingEnd(), QString());
    const bool hasStartCodes = encoder.startsWith("libx26");
    for (int i = 0; i < units.size(); ++i) {
        QCOMPARE(units.at(i).isKey, i % 6 == 0);
        QCOMPARE(units.at(i).fields, 2);
        if (hasStartCodes)
            QVERIFY(units.at(i).data.startsWith(QByteArray("\0\0\0\1", 4)) ||
                    units.at(i).data.startsWith(QByteArray("\0\0\1", 3)));
        if (reader->hasTimes()) // bare streams have none and a rate of their demuxer's
            QVERIFY(qAbs(units.at(i).time - qint64(i) * 100000 / 3) <= 1000);
    }
}

void StreamReaderTest::reorderedPictures_haveTheirTimes()
{
    QVERIFY(makeVideo(path("v.mp4"), { "-c:v", "libx264", "-bf", "3", "-b_strategy", "0" }));
    QString error;
    const auto reader = StreamReader::open(path("v.mp4"), std::nullopt, &error);
    QVERIFY2(reader, qPrintable(error));
    QList<qint64> times;
    qint64 due = -1;
    bool isReordered = false;
    for (const StreamUnit &unit : readAll(reader.get())) {
        isReordered = isReordered || (!times.isEmpty() && unit.time < times.last());
        times.append(unit.time);
        QVERIFY(unit.due > due);
        due = unit.due;
    }
    QVERIFY(isReordered);
    std::sort(times.begin(), times.end());
    QCOMPARE(times.size(), 12);
    for (int i = 0; i < times.size(); ++i)
        QVERIFY(qAbs(times.at(i) - qint64(i) * 100000 / 3) <= 1000);
}

void StreamReaderTest::hiddenFrames_areNotCountedAsPictures()
{
    const QStringList options {
        "-c:v", "libvpx",       "-auto-alt-ref",  "1", "-lag-in-frames", "25", "-b:v",
        "300k", "-passlogfile", path("firstpass")
    };
    QVERIFY(makeVideo(path("first.ivf"), options + QStringList { "-pass", "1" }, 100));
    QVERIFY(makeVideo(path("v.ivf"), options + QStringList { "-pass", "2" }, 100));
    QString error;
    const auto reader = StreamReader::open(path("v.ivf"), std::nullopt, &error);
    QVERIFY2(reader, qPrintable(error));
    const QList<StreamUnit> units = readAll(reader.get());
    QVERIFY(units.size() > 100);
    int fields = 0;
    for (const StreamUnit &unit : units)
        fields += unit.fields;
    QCOMPARE(fields, 2 * 100);
}

// Unlike those of H.264, each comes out of the decoder by itself.
void StreamReaderTest::fieldsOfH265_areCountedAsPictures()
{
    QVERIFY(makeVideo(path("v.h265"),
                      { "-c:v", "libx265", "-x265-params", "interlace=tff:log-level=none" }));
    QString error;
    const auto reader = StreamReader::open(path("v.h265"), std::nullopt, &error);
    QVERIFY2(reader, qPrintable(error));
    const QList<StreamUnit> units = readAll(reader.get());
    QCOMPARE(units.size(), Pictures);
    for (const StreamUnit &unit : units)
        QCOMPARE(unit.fields, 2);
}

void StreamReaderTest::cutFile_isToldOf_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("mkv") << "v.mkv";
    QTest::newRow("mp4") << "v.mp4";
}

void StreamReaderTest::cutFile_isToldOf()
{
    QFETCH(QString, file);
    QVERIFY(makeVideo(path(file), { "-c:v", "libx264", "-movflags", "+faststart" }, 90));
    QFile written(path(file));
    QVERIFY(written.resize(written.size() / 2));
    QString error;
    const auto reader = StreamReader::open(path(file), std::nullopt, &error);
    QVERIFY2(reader, qPrintable(error));
    StreamUnit unit;
    int units = 0;
    StreamReader::Result result;
    while ((result = reader->read(&unit, &error)) == StreamReader::Result::Unit)
        ++units;
    QVERIFY(units > 5 && units < 85);
    const QString missing = result == StreamReader::Result::End ? reader->missingEnd() : error;
    QVERIFY2(missing.startsWith(path(file) + ": is cut off after "), qPrintable(missing));
}

void StreamReaderTest::unrecognisedStream_needsItsCodec()
{
    QVERIFY(makeVideo(path("v.h264"), { "-c:v", "libx264" }));
    QFile whole(path("v.h264"));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    // What is left does not look like anything.
    QFile odd(path("v.bin"));
    QVERIFY(odd.open(QIODevice::WriteOnly));
    odd.write(QByteArray(300, '\x55') + whole.readAll());
    odd.close();
    QString error;
    QVERIFY(!StreamReader::open(path("v.bin"), Tool::VideoCodec::VP8, &error));
    QVERIFY2(!error.isEmpty(), qPrintable(error));
    const auto reader = StreamReader::open(path("v.bin"), Tool::VideoCodec::H264, &error);
    QVERIFY2(reader, qPrintable(error));
    QCOMPARE(readAll(reader.get()).size(), 12);
}

QTEST_GUILESS_MAIN(StreamReaderTest)
#include "tst_streamreader.moc"

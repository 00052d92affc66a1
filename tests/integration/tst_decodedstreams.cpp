// SPDX-License-Identifier: BSD-3-Clause
#include "decodingclient.h"
#include "encodingclient.h"
#include "mediaunits.h"
#include "unitdecoder.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTest>
#include <QVideoEncoderSettingsControl>

#include <memory>

/*! Whole streams through the decoder service, as an application plays them. */
class TestDecodedStreams : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void h264_isBitExact_data();
    void h264_isBitExact();
    void vp8_isBitExact_data();
    void vp8_isBitExact();
    void recordings_decodeAsLibavDecodesThem_data();
    void recordings_decodeAsLibavDecodesThem();
    void lostPictures_areToldOfOnce_andTheRestIsShown();
};

namespace {

const QString Media = QStringLiteral(OCELLE_MEDIA_DIR);
constexpr int MostInside = 20;        // pictures that a decoder may keep until it is drained
constexpr qint64 FramePeriod = 40000; // microseconds

/*! What came out of the service. */
struct Decoded
{
    QList<QByteArray> pictures; // MD5 of what is to be seen of each
    QByteArray all;             // SHA-1 over all of them
    QList<qint64> times;
    QStringList errors;
    int units = 0;
    int strays = 0;
    bool hasEnded = false;
};

/*!
 * How a stream ends: drained, stopped when each unit's picture has come, or stopped although the
 * decoder may keep some.
 */
enum class End { Drain, Stop, StopEarly };

void addPlanes(QCryptographicHash *hash, const RawPicture &picture)
{
    for (const auto *plane : { &picture.y, &picture.cb, &picture.cr })
        hash->addData(reinterpret_cast<const char *>(plane->data()), int(plane->size()));
}

QByteArray md5(const RawPicture &picture)
{
    QCryptographicHash hash(QCryptographicHash::Md5);
    addPlanes(&hash, picture);
    return hash.result().toHex();
}

bool decodesLate()
{
    return qgetenv("OCELLE_DECODER_THREADS") == "throughput";
}

/*! All \a units through a service of their own; fewer in units where one was refused. */
Decoded decoded(const QString &codec, const std::vector<MediaUnit> &units, End end)
{
    Decoded result;
    QCryptographicHash all(QCryptographicHash::Sha1);
    DecodingClient client;
    client.surface.onPicture = [&](const RawPicture &picture) {
        result.pictures.append(md5(picture));
        addPlanes(&all, picture);
    };
    if (!client.isValid() || !client.start(codec))
        return result;
    for (const MediaUnit &unit : units) {
        const QByteArray data(reinterpret_cast<const char *>(unit.data.data()),
                              int(unit.data.size()));
        if (!client.decode(data, result.units * FramePeriod, unit.isKey))
            break;
        ++result.units;
    }
    if (end == End::Drain)
        result.hasEnded = client.drain();
    else if (end == End::Stop)
        result.hasEnded = client.waitForPictures() && client.stop();
    else
        result.hasEnded = client.stop();
    result.all = all.result().toHex();
    result.times = client.surface.times;
    result.strays = client.surface.strays;
    QCoreApplication::processEvents(); // errors come queued
    result.errors = client.errors;
    return result;
}

/*! A stopped stream shows what a drained one does, but for what the decoder keeps. */
void compareStopped(const QString &codec, const std::vector<MediaUnit> &units,
                    const Decoded &drained, bool keepsSome)
{
    const Decoded stopped = decoded(codec, units, keepsSome ? End::StopEarly : End::Stop);
    QVERIFY(stopped.hasEnded);
    QCOMPARE(stopped.errors, QStringList());
    QCOMPARE(stopped.units, drained.units);
    const int kept = drained.pictures.size() - stopped.pictures.size();
    QVERIFY2(kept >= 0 && kept <= (keepsSome ? MostInside : 0), qPrintable(QString::number(kept)));
    QCOMPARE(stopped.pictures, drained.pictures.mid(0, stopped.pictures.size()));
}

QStringList linesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLatin1(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

QMap<QString, QString> publishedH264() // file name to hash
{
    QMap<QString, QString> hashes;
    for (const QString &line : linesOf(Media + "/h264/SHA1SUMS")) {
        const QStringList words = line.simplified().split(' ');
        if (words.size() == 2)
            hashes.insert(QString(words[1]).remove('*'), words[0]);
    }
    return hashes;
}

QVideoFrame patternFrame(QSize size, int number)
{
    const RawPicture picture =
            RawPicture::pattern(size.width(), size.height(), std::uint32_t(number));
    QVideoFrame frame(int(picture.y.size() + 2 * picture.cb.size()), size, size.width(),
                      QVideoFrame::Format_YUV420P);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    uchar *to = std::copy(picture.y.begin(), picture.y.end(), frame.bits());
    to = std::copy(picture.cb.begin(), picture.cb.end(), to);
    std::copy(picture.cr.begin(), picture.cr.end(), to);
    frame.unmap();
    frame.setStartTime(number * FramePeriod);
    return frame;
}

/*! Appends \a count pictures, encoded by the encoder service, to \a units. */
bool record(const QString &codec, QSize size, int rotation, int count,
            std::vector<MediaUnit> *units)
{
    EncodingClient client;
    QVideoEncoderSettings wanted = EncodingClient::encoderSettings(codec, 300000);
    wanted.setEncodingOption(QStringLiteral("rotate"), rotation);
    if (!client.start(wanted, size))
        return false;
    for (int i = 0; i < count; ++i) {
        if (!client.encode(patternFrame(size, i)))
            return false;
    }
    if (!client.waitForUnits())
        return false;
    for (const QPVEncodedVideoFrame &unit : client.sink.units()) {
        const QByteArray data = unit.data();
        units->push_back({ Bytes(data.begin(), data.end()), std::int64_t(units->size()),
                           unit.meta().frameType == QPVEncodedVideoFrame::KeyFrame });
    }
    return true;
}

/*! libavcodec's decoder for a MIME type. */
std::string decoderName(const QString &codec)
{
    return codec == QLatin1String("video/h265") ? "hevc" : codec.mid(6).toStdString();
}

} // namespace

void TestDecodedStreams::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("veltra.palaver.*=false"));
    DecodingClient client;
    QVERIFY(client.isValid());
    QCOMPARE(client.control->supportedCodecs(false),
             QStringList({ "video/h264", "video/h265", "video/vp8", "video/vp9" }));
}

void TestDecodedStreams::h264_isBitExact_data()
{
    QTest::addColumn<QString>("file");
    for (const QString &file : publishedH264().keys())
        QTest::newRow(qPrintable(file)) << file;
}

void TestDecodedStreams::h264_isBitExact()
{
    if (publishedH264().isEmpty())
        QSKIP("There are no H.264 streams in " OCELLE_MEDIA_DIR);
    QFETCH(QString, file);
    const auto units = readUnits((Media + "/h264/" + file).toStdString());
    QVERIFY(!units.empty());
    const Decoded drained = decoded("video/h264", units, End::Drain);
    QVERIFY(drained.hasEnded);
    QCOMPARE(drained.errors, QStringList());
    QCOMPARE(drained.units, int(units.size()));
    QCOMPARE(QString(drained.all), publishedH264().value(file));
    QCOMPARE(drained.strays, 0);
    // Some of these do not say that their pictures are in the order they are shown in.
    compareStopped("video/h264", units, drained, true);
}

void TestDecodedStreams::vp8_isBitExact_data()
{
    QTest::addColumn<QString>("file");
    for (const QString &file : QDir(Media + "/vp8").entryList({ "*.ivf" }))
        QTest::newRow(qPrintable(file)) << file;
}

void TestDecodedStreams::vp8_isBitExact()
{
    if (QDir(Media + "/vp8").entryList({ "*.ivf" }).isEmpty())
        QSKIP("There are no VP8 streams in " OCELLE_MEDIA_DIR);
    QFETCH(QString, file);
    const QString path = Media + "/vp8/" + file;
    QList<QByteArray> published;
    for (const QString &line : linesOf(path + ".md5"))
        published.append(line.simplified().section(' ', 0, 0).toLatin1());
    QVERIFY(!published.isEmpty());
    const auto units = readUnits(path.toStdString());
    const Decoded drained = decoded("video/vp8", units, End::Drain);
    QVERIFY(drained.hasEnded);
    QCOMPARE(drained.errors, QStringList());
    QCOMPARE(drained.pictures, published);
    QCOMPARE(drained.strays, 0);
    compareStopped("video/vp8", units, drained, decodesLate());
}

void TestDecodedStreams::recordings_decodeAsLibavDecodesThem_data()
{
    QTest::addColumn<QString>("codec");
    for (const char *codec : { "video/h264", "video/h265", "video/vp8", "video/vp9" })
        QTest::newRow(codec) << codec;
}

// The size changes in the stream, three times; none of them is made of whole blocks.
void TestDecodedStreams::recordings_decodeAsLibavDecodesThem()
{
    QFETCH(QString, codec);
    constexpr int Pictures = 25; // more than the services' queues take
    std::vector<MediaUnit> units;
    QVERIFY(record(codec, QSize(318, 182), 0, Pictures, &units));
    QVERIFY(record(codec, QSize(318, 182), 90, Pictures, &units));
    QVERIFY(record(codec, QSize(160, 120), 180, Pictures, &units));
    QVERIFY(record(codec, QSize(318, 182), 270, Pictures, &units));

    QList<QByteArray> expected;
    UnitDecoder decoder(decoderName(codec));
    QVERIFY(decoder.isValid());
    const auto add = [&expected](const std::vector<RawPicture> &pictures) {
        for (const RawPicture &picture : pictures)
            expected.append(md5(picture));
    };
    for (const MediaUnit &unit : units)
        add(decoder.decode(unit.data));
    add(decoder.finish());
    QCOMPARE(expected.size(), 4 * Pictures);

    const Decoded drained = decoded(codec, units, End::Drain);
    QVERIFY(drained.hasEnded);
    QCOMPARE(drained.errors, QStringList());
    QCOMPARE(drained.pictures, expected);
    QCOMPARE(drained.strays, 0);
    for (int i = 0; i < drained.times.size(); ++i)
        QCOMPARE(drained.times.at(i), i * FramePeriod);
    compareStopped(codec, units, drained, decodesLate());
}

void TestDecodedStreams::lostPictures_areToldOfOnce_andTheRestIsShown()
{
    const auto units = readUnits((Media + "/h264/BA_MW_D_P_LOST.264").toStdString());
    if (units.empty())
        QSKIP("There is no stream with lost pictures in " OCELLE_MEDIA_DIR);
    const Decoded drained = decoded("video/h264", units, End::Drain);
    QCOMPARE(drained.units, int(units.size()));
    QCOMPARE(drained.pictures.size(), int(units.size()));
    QCOMPARE(drained.errors.size(), 1);
    QVERIFY2(drained.errors.first().contains("pictures are missing"),
             qPrintable(drained.errors.first()));
}

QTEST_GUILESS_MAIN(TestDecodedStreams)
#include "tst_decodedstreams.moc"

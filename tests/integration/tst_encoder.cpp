// SPDX-License-Identifier: BSD-3-Clause
#include "encodedpictures.h"
#include "encodingclient.h"
#include "unitdecoder.h"

#include <QLoggingCategory>
#include <QTest>
#include <QVideoEncoderSettingsControl>
#include <QVideoSurfaceFormat>

/*! The encoder service with every real codec of this machine, as an application uses it. */
class TestEncoder : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void pictures_comeOutOnceInOrderWithTheirTimes_data() { addCodecs(); }
    void pictures_comeOutOnceInOrderWithTheirTimes();
    void pictures_ofEveryFormat_showTheSame_data() { addCodecs(); }
    void pictures_ofEveryFormat_showTheSame();
    void keyFrames_areExactlyWhereTheyAreAskedFor_data() { addCodecs(); }
    void keyFrames_areExactlyWhereTheyAreAskedFor();
    void footage_isGoodAndOfTheWantedRate_data() { addCodecs(); }
    void footage_isGoodAndOfTheWantedRate();
    void changedBitRate_isFollowedWithinASecond_data() { addCodecs(); }
    void changedBitRate_isFollowedWithinASecond();
    void rotationAndMirroring_areSeen_data();
    void rotationAndMirroring_areSeen();
    void changedRotation_keepsTheSinkAndLosesOnlyWhatIsQueued_data() { addCodecs(); }
    void changedRotation_keepsTheSinkAndLosesOnlyWhatIsQueued();

private:
    void addCodecs() const;

    QStringList m_codecs;              // MIME types
    std::vector<RawPicture> m_footage; // 640x480, 30 a second
};

namespace {

constexpr int FootageRate = 30; // pictures per second

/*! Bits per second of the units \a from to \a to. */
double bitRate(const QList<QPVEncodedVideoFrame> &units, int from, int to, int rate)
{
    double bits = 0;
    for (int i = from; i < to; ++i)
        bits += 8.0 * units.at(i).data().size();
    return bits * rate / (to - from);
}

QByteArray wrongRate(double measured, double wanted)
{
    return QByteArray::number(measured) + " instead of " + QByteArray::number(wanted);
}

} // namespace

void TestEncoder::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("veltra.palaver.*.debug=false"));
    EncodingClient client;
    QVERIFY(client.isValid());
    m_codecs = client.control->supportedCodecs(false);
    QCOMPARE(m_codecs, (QStringList { "video/h264", "video/h265", "video/vp8", "video/vp9" }));
    m_footage = UnitDecoder::play(OCELLE_MEDIA_DIR "/flower-720p.mkv", 640, 480, 300);
}

void TestEncoder::addCodecs() const
{
    QTest::addColumn<QString>("codec");
    for (const QString &codec : m_codecs)
        QTest::newRow(qPrintable(codec)) << codec;
}

void TestEncoder::pictures_comeOutOnceInOrderWithTheirTimes()
{
    QFETCH(QString, codec);
    constexpr int Count = 90;
    EncodingClient client;
    QList<quint64> emitted; // times
    QMutex mutex;
    connect(
            client.control, &QPVEncodeControl::encodedVideoFrame, this,
            [&](const QPVEncodedVideoFrame &unit) {
                QMutexLocker locker(&mutex);
                emitted.append(unit.meta().timestamp);
            },
            Qt::DirectConnection);
    QVERIFY(client.start(EncodingClient::encoderSettings(codec, 500000), QSize(320, 240)));
    QList<quint64> times;
    for (int i = 0; i < Count; ++i) {
        // Nothing about a time is the encoder's business, not even that it rises.
        const qint64 time = i == 30   ? -1
                            : i == 40 ? 0
                                      : Q_INT64_C(5000000000000) + i * 33333 + i % 7;
        times.append(quint64(time));
        QVERIFY(client.encode(videoFrame(RawPicture::pattern(320, 240, std::uint32_t(i)), time)));
    }
    QVERIFY(client.waitForUnits());
    QVERIFY(client.stop());
    QCOMPARE(client.errors, QStringList());

    const QList<QPVEncodedVideoFrame> units = client.sink.units();
    QList<quint64> presented;
    for (const QPVEncodedVideoFrame &unit : units)
        presented.append(unit.meta().timestamp);
    QCOMPARE(presented, times);
    QCOMPARE(emitted, times);
    const std::vector<RawPicture> pictures = decoded(codec, units);
    QCOMPARE(int(pictures.size()), Count);
    for (int i = 0; i < Count; ++i)
        QCOMPARE(readingOf(pictures[std::size_t(i)]).number, i);
    QCOMPARE(client.sink.calls().lateUnits, 0);
}

void TestEncoder::pictures_ofEveryFormat_showTheSame()
{
    QFETCH(QString, codec);
    const RawPicture original = RawPicture::pattern(320, 240, 77);
    for (const auto &make : { videoFrame, nv12Frame, rgbVideoFrame }) {
        EncodingClient client;
        QVERIFY(client.start(EncodingClient::encoderSettings(codec, 2000000), QSize(320, 240)));
        for (int i = 0; i < 5; ++i)
            QVERIFY(client.encode(make(original, i)));
        QVERIFY(client.waitForUnits());
        const std::vector<RawPicture> pictures = decoded(codec, client.sink.units());
        QCOMPARE(int(pictures.size()), 5);
        // Swapped colours would leave less than 20 dB of each chroma plane.
        QVERIFY(psnr(pictures.back().y, original.y) > 28);
        QVERIFY(psnr(pictures.back().cb, original.cb) > 28);
        QVERIFY(psnr(pictures.back().cr, original.cr) > 28);
    }
}

void TestEncoder::keyFrames_areExactlyWhereTheyAreAskedFor()
{
    QFETCH(QString, codec);
    constexpr int Count = 60;
    const QList<int> wanted { 0, 17, 18, 45 };
    EncodingClient client;
    QVERIFY(client.start(EncodingClient::encoderSettings(codec, 500000), QSize(320, 240)));
    for (int i = 0; i < Count; ++i) {
        QVideoFrame frame = patternFrame(320, 240, i);
        if (i > 0 && wanted.contains(i))
            frame.setMetaData(QStringLiteral("KeyFrame"), true);
        QVERIFY(client.encode(frame));
    }
    QVERIFY(client.waitForUnits());
    const QList<QPVEncodedVideoFrame> units = client.sink.units();
    QList<int> keys;
    for (int i = 0; i < Count; ++i) {
        if (units.at(i).meta().frameType == QPVEncodedVideoFrame::KeyFrame)
            keys.append(i);
    }
    QCOMPARE(keys, wanted);
    // Each is one indeed: decoding can begin there, with nothing of what came before.
    for (const int key : wanted) {
        const std::vector<RawPicture> pictures = decoded(codec, units.mid(key));
        QCOMPARE(int(pictures.size()), Count - key);
        QCOMPARE(readingOf(pictures.front()).number, key);
        QCOMPARE(readingOf(pictures.back()).number, Count - 1);
    }
}

void TestEncoder::footage_isGoodAndOfTheWantedRate()
{
    QFETCH(QString, codec);
    if (m_footage.empty())
        QSKIP("There is no " OCELLE_MEDIA_DIR "/flower-720p.mkv");
    constexpr int Count = 10 * FootageRate;
    EncodingClient client;
    QVERIFY(client.start(EncodingClient::encoderSettings(codec, 1000000), QSize(640, 480),
                         FootageRate));
    for (int i = 0; i < Count; ++i)
        QVERIFY(client.encode(videoFrame(m_footage[std::size_t(i)], qint64(i) * FramePeriod)));
    QVERIFY(client.waitForUnits());
    const QList<QPVEncodedVideoFrame> units = client.sink.units();
    const double rate = bitRate(units, 0, Count, FootageRate);
    QVERIFY2(qAbs(rate - 1000000) < 100000, wrongRate(rate, 1000000));

    const std::vector<RawPicture> pictures = decoded(codec, units);
    QCOMPARE(int(pictures.size()), Count);
    double sum = 0; // decibels
    for (std::size_t i = 0; i < pictures.size(); ++i)
        sum += psnr(pictures[i], m_footage[i]);
    const double mean = sum / Count;
    QVERIFY2(mean > 32, QByteArray::number(mean));
    qInfo("%.0f bit/s, PSNR %.2f dB", rate, mean);
}

void TestEncoder::changedBitRate_isFollowedWithinASecond()
{
    QFETCH(QString, codec);
    if (m_footage.empty())
        QSKIP("There is no " OCELLE_MEDIA_DIR "/flower-720p.mkv");
    constexpr int Part = 3 * FootageRate;
    const int rates[] = { 200000, 800000, 500000 };
    EncodingClient client;
    QVERIFY(client.start(EncodingClient::encoderSettings(codec, rates[0]), QSize(640, 480),
                         FootageRate));
    for (int i = 0; i < 3 * Part; ++i) {
        if (i % Part == 0 && i > 0) {
            QVERIFY(client.waitForUnits()); // so that it is known where the change takes effect
            QVideoEncoderSettings changed = client.settings->videoSettings();
            changed.setBitRate(rates[i / Part]);
            client.settings->setVideoSettings(changed);
        }
        QVERIFY(client.encode(videoFrame(m_footage[std::size_t(i)], qint64(i) * FramePeriod)));
    }
    QVERIFY(client.waitForUnits());
    for (int part = 1; part < 3; ++part) {
        const int from = part * Part + FootageRate;
        const double rate = bitRate(client.sink.units(), from, from + 2 * FootageRate, FootageRate);
        QVERIFY2(qAbs(rate - rates[part]) < 0.15 * rates[part], wrongRate(rate, rates[part]));
        qInfo("%.0f bit/s", rate);
    }
    QCOMPARE(client.sink.calls().starts, 1); // it was no restart
    QCOMPARE(client.errors, QStringList());
}

void TestEncoder::rotationAndMirroring_areSeen_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<int>("rotate");
    QTest::addColumn<QString>("option");
    for (const QString &codec : qAsConst(m_codecs)) {
        for (const int rotate : { 0, 90, 180, -90 }) {
            for (const char *option : { "", "mirrorV", "mirrorH" })
                QTest::newRow(
                        qPrintable(QStringLiteral("%1 %2 %3").arg(codec).arg(rotate).arg(option)))
                        << codec << rotate << option;
        }
    }
}

void TestEncoder::rotationAndMirroring_areSeen()
{
    QFETCH(QString, codec);
    QFETCH(int, rotate);
    QFETCH(QString, option);
    QVideoEncoderSettings wanted = EncodingClient::encoderSettings(codec, 500000);
    wanted.setEncodingOption(QStringLiteral("rotate"), rotate);
    if (!option.isEmpty())
        wanted.setEncodingOption(option, true);
    EncodingClient client;
    QVERIFY(client.start(wanted, QSize(320, 240)));
    for (int i = 0; i < 3; ++i)
        QVERIFY(client.encode(patternFrame(320, 240, i)));
    QVERIFY(client.waitForUnits());
    const std::vector<RawPicture> pictures = decoded(codec, client.sink.units());
    QCOMPARE(int(pictures.size()), 3);
    const Reading reading = readingOf(pictures.back());
    QCOMPARE(reading.number, 2);
    QCOMPARE(reading.size, rotate % 180 == 0 ? QSize(320, 240) : QSize(240, 320));
    // Top to bottom is left to right and half a turn. Left to right is not done by encoders.
    const bool mirrored = option == QLatin1String("mirrorV");
    QCOMPARE(reading.mirrored, mirrored);
    QCOMPARE(reading.rotation, (rotate + 360 + (mirrored ? 180 : 0)) % 360);
}

void TestEncoder::changedRotation_keepsTheSinkAndLosesOnlyWhatIsQueued()
{
    QFETCH(QString, codec);
    constexpr int Queue = 20; // pictures
    EncodingClient client;
    // Enough for every number to be read, though many are skipped between two pictures.
    const QVideoEncoderSettings before = EncodingClient::encoderSettings(codec, 3000000);
    QVERIFY(client.start(before, QSize(320, 240)));
    QList<int> accepted;
    int number = 0;
    const auto offer = [&] {
        if (client.control->encode(patternFrame(320, 240, number)))
            accepted.append(number);
        ++number;
    };
    const auto hasUnits = [&client](int count) { return client.sink.count() >= count; };
    while (!hasUnits(30)) {
        offer();
        QCoreApplication::processEvents();
    }
    QVideoEncoderSettings turned = before;
    turned.setEncodingOption(QStringLiteral("rotate"), 90);
    client.settings->setVideoSettings(turned);
    const int unitsThen = client.sink.count();
    // Enough for a key frame of the second encoder, whatever the first one still put out.
    while (!hasUnits(unitsThen + Queue + 30)) {
        offer();
        QCoreApplication::processEvents();
        QVERIFY2(client.errors.isEmpty(), qPrintable(client.errors.join(';')));
    }
    // What the queue still holds comes out, too.
    const auto numberOf = [](const QPVEncodedVideoFrame &unit) {
        return int(unit.meta().timestamp / FramePeriod);
    };
    QTRY_COMPARE_WITH_TIMEOUT(numberOf(client.sink.units().last()), accepted.last(), 20000);

    const QList<QPVEncodedVideoFrame> units = client.sink.units();
    const std::vector<RawPicture> pictures = decoded(codec, units);
    QCOMPARE(int(pictures.size()), units.size());
    QList<int> lost = accepted;
    int previous = -1;
    int unread = 0; // real-time VP9 may leave a block of cells as it was in the picture before
    bool wasTurned = false;
    for (int i = 0; i < units.size(); ++i) {
        const int unit = numberOf(units.at(i));
        QVERIFY(unit > previous); // none twice, order kept
        previous = unit;
        QCOMPARE(lost.removeAll(unit), 1);
        const Reading reading = readingOf(pictures[std::size_t(i)]);
        const bool isTurned = reading.size == QSize(240, 320);
        QVERIFY(isTurned || (!wasTurned && reading.size == QSize(320, 240)));
        wasTurned = isTurned;
        if (reading.number < 0) {
            ++unread;
            continue;
        }
        QCOMPARE(reading.number, unit);
        QCOMPARE(reading.rotation, isTurned ? 90 : 0);
    }
    QVERIFY2(unread <= units.size() / 10, qPrintable(QString::number(unread)));
    QVERIFY(wasTurned);
    QVERIFY2(lost.size() <= Queue, qPrintable(QString::number(lost.size())));
    if (!lost.isEmpty()) // one gap, where the queue was dropped
        QCOMPARE(accepted.indexOf(lost.last()) - accepted.indexOf(lost.first()), lost.size() - 1);
    QCOMPARE(client.sink.calls().starts, 1);
    QCOMPARE(client.sink.calls().finishes, 0);
    QCOMPARE(client.sink.calls().stops, 0);
    QVERIFY(client.stop());
    QCOMPARE(client.sink.calls().stops, 1);
}

QTEST_GUILESS_MAIN(TestEncoder)
#include "tst_encoder.moc"

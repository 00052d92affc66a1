// SPDX-License-Identifier: BSD-3-Clause
#include "decodingclient.h"
#include "encodingclient.h"
#include "rawpicture.h"

#include <QLoggingCategory>
#include <QMediaServiceProviderPlugin>
#include <QTest>
#include <QVideoEncoderSettings>
#include <QVideoRendererControl>

#include <patternreader.h>

#include <algorithm>
#include <memory>

/*! The decoder service with every real codec of this machine, through its whole life. */
class TestDecoder : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void twoHundredCycles_ofStartAndStop_data() { addCodecs(); }
    void twoHundredCycles_ofStartAndStop();
    void destruction_isHarmless_inEveryStatus_data();
    void destruction_isHarmless_inEveryStatus();
    void anotherCodec_takesOver_data() { addCodecs(); }
    void anotherCodec_takesOver();
    void replacedSurface_getsWhatComesAfter_data() { addCodecs(); }
    void replacedSurface_getsWhatComesAfter();
    void endsInAStream_loseNoPicture_data();
    void endsInAStream_loseNoPicture();
    void decodersOfAllCodecs_workSideBySide();

private:
    void addCodecs() const;
    QList<QByteArray> stream(const QString &codec) const { return m_streams.value(codec); }

    QStringList m_codecs;                       // MIME types
    QMap<QString, QList<QByteArray>> m_streams; // units of 40 numbered pictures, the first a key
};

namespace {

constexpr int Pictures = 40;
const QSize Size(160, 120);

QVideoFrame patternFrame(int number)
{
    const RawPicture picture =
            RawPicture::pattern(Size.width(), Size.height(), std::uint32_t(number));
    QVideoFrame frame(int(picture.y.size() + 2 * picture.cb.size()), Size, Size.width(),
                      QVideoFrame::Format_YUV420P);
    frame.map(QAbstractVideoBuffer::WriteOnly);
    uchar *to = std::copy(picture.y.begin(), picture.y.end(), frame.bits());
    to = std::copy(picture.cb.begin(), picture.cb.end(), to);
    std::copy(picture.cr.begin(), picture.cr.end(), to);
    frame.unmap();
    frame.setStartTime(number * 1000);
    return frame;
}

int numberIn(const RawPicture &picture)
{
    const auto reading = Veltra::Ocelle::readPattern(picture.y.data(), picture.width, picture.width,
                                                     picture.height);
    return reading ? int(reading->sequence) : -1;
}

/*! Starts \a client and brings it into the state of that name. */
bool bringTo(const QString &status, const QString &codec, const QList<QByteArray> &units,
             DecodingClient *client)
{
    if (status == "unloaded")
        return true;
    QVideoEncoderSettings settings;
    settings.setCodec(codec);
    if (status == "requested")
        return client->control->start(settings);
    if (!client->start(codec, Size))
        return false;
    if (status == "starting")
        return true;
    if (!client->decode(units.first(), 0, true))
        return false;
    if (status == "active")
        return client->waitForPictures();
    for (int i = 1; i < 20; ++i) { // no longer waiting for any of them
        if (!client->decode(units.at(i), i))
            return false;
    }
    if (status == "draining")
        client->control->drain();
    if (status == "flushing")
        client->control->flush();
    if (status == "restarting") {
        settings.setCodec(codec == "video/vp8" ? "video/h264" : "video/vp8");
        return client->control->start(settings);
    }
    return true;
}

} // namespace

void TestDecoder::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("veltra.palaver.*=false"));
    m_codecs = DecodingClient().control->supportedCodecs(false);
    QCOMPARE(m_codecs.size(), 4);
    for (const QString &codec : qAsConst(m_codecs)) {
        EncodingClient encoder;
        QVERIFY(encoder.start(EncodingClient::encoderSettings(codec, 300000), Size));
        for (int i = 0; i < Pictures; ++i)
            QVERIFY(encoder.encode(patternFrame(i)));
        QVERIFY(encoder.waitForUnits());
        for (const QPVEncodedVideoFrame &unit : encoder.sink.units())
            m_streams[codec].append(unit.data());
        QCOMPARE(stream(codec).size(), Pictures);
    }
}

void TestDecoder::addCodecs() const
{
    QTest::addColumn<QString>("codec");
    for (const QString &codec : m_codecs)
        QTest::newRow(qPrintable(codec)) << codec;
}

void TestDecoder::twoHundredCycles_ofStartAndStop()
{
    QFETCH(QString, codec);
    constexpr int Cycles = 200;
    DecodingClient client;
    QList<int> numbers;
    client.surface.onPicture = [&](const RawPicture &picture) {
        numbers.append(numberIn(picture));
    };
    for (int i = 0; i < Cycles; ++i) {
        QVERIFY(client.start(codec, Size));
        QVERIFY(client.decode(stream(codec).at(0), 2 * i, true));
        QVERIFY(client.decode(stream(codec).at(1), 2 * i + 1));
        QVERIFY(client.drain());
    }
    QCOMPARE(client.errors, QStringList());
    QCOMPARE(client.surface.presented, 2 * Cycles);
    for (int i = 0; i < 2 * Cycles; ++i) {
        QCOMPARE(client.surface.times.at(i), i);
        QCOMPARE(numbers.at(i), i % 2);
    }
    const QVector<QPVDecoder::Status> cycle {
        QPVDecoder::LoadedStatus,   QPVDecoder::StartingStatus, QPVDecoder::ActiveStatus,
        QPVDecoder::StoppingStatus, QPVDecoder::UnloadedStatus,
    };
    QCOMPARE(client.statuses.size(), Cycles * cycle.size());
    for (int i = 0; i < client.statuses.size(); ++i)
        QCOMPARE(client.statuses.at(i), cycle.at(i % cycle.size()));
}

void TestDecoder::destruction_isHarmless_inEveryStatus_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("status");
    for (const QString &codec : qAsConst(m_codecs)) {
        for (const char *status : { "unloaded", "requested", "starting", "active", "busy",
                                    "draining", "flushing", "restarting" })
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(codec, status)))
                    << codec << status;
    }
}

void TestDecoder::destruction_isHarmless_inEveryStatus()
{
    QFETCH(QString, codec);
    QFETCH(QString, status);
    for (int round = 0; round < 5; ++round) {
        DecodingClient client;
        QVERIFY(bringTo(status, codec, stream(codec), &client));
        EncodingClient::backend()->release(client.service);
        client.service = nullptr;
        const int presented = client.surface.presented;
        QCoreApplication::processEvents();
        QCOMPARE(client.surface.presented, presented); // nothing comes from what is gone
        QVERIFY(!client.surface.isActive());
        QCOMPARE(client.errors, QStringList());
        QCOMPARE(client.surface.strays, 0);
    }
}

void TestDecoder::anotherCodec_takesOver()
{
    QFETCH(QString, codec);
    const QString other = codec == "video/vp9" ? "video/h265" : "video/vp9";
    DecodingClient client;
    QList<int> numbers;
    client.surface.onPicture = [&](const RawPicture &picture) {
        numbers.append(numberIn(picture));
    };
    QVERIFY(client.start(codec, Size));
    QVERIFY(client.decode(stream(codec).first(), 0, true));
    QTRY_COMPARE(client.surface.presented, 1);
    QVideoEncoderSettings settings;
    settings.setCodec(other);
    QVERIFY(client.control->start(settings));
    QTRY_COMPARE(client.statuses.size(), 7);
    QCOMPARE(client.control->codecSettings().codec(), other);
    for (int i = 0; i < Pictures; ++i)
        QVERIFY(client.decode(stream(other).at(i), i, i == 0));
    QVERIFY(client.drain());
    QCOMPARE(client.errors, QStringList());
    QCOMPARE(numbers.size(), 1 + Pictures);
    for (int i = 0; i < Pictures; ++i)
        QCOMPARE(numbers.at(i + 1), i);
}

void TestDecoder::replacedSurface_getsWhatComesAfter()
{
    QFETCH(QString, codec);
    DecodingClient client;
    DecodedSurface second;
    QVERIFY(client.start(codec, Size));
    for (int i = 0; i < 5; ++i)
        QVERIFY(client.decode(stream(codec).at(i), i, i == 0));
    QVERIFY(client.waitForPictures());
    client.renderer->setSurface(&second);
    for (int i = 5; i < 10; ++i)
        QVERIFY(client.decode(stream(codec).at(i), i));
    QTRY_COMPARE(second.presented, 5);
    QCOMPARE(second.times, (QList<qint64> { 5, 6, 7, 8, 9 }));
    QCOMPARE(client.surface.presented, 5);
    QVERIFY(!client.surface.isActive());
    client.renderer->setSurface(nullptr);
    QVERIFY(client.decode(stream(codec).at(10), 10)); // nobody sees it
    QVERIFY(client.drain());
    QCOMPARE(second.presented, 5);
    QCOMPARE(client.errors, QStringList());
}

void TestDecoder::endsInAStream_loseNoPicture_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("end"); // unit that says that the stream ends
    QTest::newRow("h264") << "video/h264" << QByteArray("\0\0\0\1\x0b", 5);
    QTest::newRow("h265") << "video/h265" << QByteArray("\0\0\0\1\x4a\x01", 6);
}

void TestDecoder::endsInAStream_loseNoPicture()
{
    QFETCH(QString, codec);
    QFETCH(QByteArray, end);
    constexpr int Streams = 20;
    constexpr int Length = 10; // pictures
    DecodingClient client;
    QList<int> numbers;
    client.surface.onPicture = [&](const RawPicture &picture) {
        numbers.append(numberIn(picture));
    };
    QVERIFY(client.start(codec, Size));
    for (int i = 0; i < Streams * Length; ++i) {
        const int number = i % Length;
        const QByteArray unit =
                stream(codec).at(number) + (number + 1 == Length ? end : QByteArray());
        QVERIFY(client.decode(unit, i, number == 0));
    }
    QVERIFY(client.drain());
    QCOMPARE(client.errors, QStringList());
    QCOMPARE(numbers.size(), Streams * Length);
    for (int i = 0; i < numbers.size(); ++i) {
        QCOMPARE(numbers.at(i), i % Length);
        QCOMPARE(client.surface.times.at(i), i);
    }
}

void TestDecoder::decodersOfAllCodecs_workSideBySide()
{
    std::vector<std::unique_ptr<DecodingClient>> clients;
    std::vector<QList<int>> numbers(std::size_t(m_codecs.size()));
    for (const QString &codec : qAsConst(m_codecs)) {
        QList<int> &shown = numbers[clients.size()];
        clients.push_back(std::make_unique<DecodingClient>());
        clients.back()->surface.onPicture = [&shown](const RawPicture &picture) {
            shown.append(numberIn(picture));
        };
        QVERIFY(clients.back()->start(codec, Size));
    }
    for (int i = 0; i < Pictures; ++i) {
        for (std::size_t c = 0; c < clients.size(); ++c)
            QVERIFY(clients[c]->decode(stream(m_codecs.at(int(c))).at(i), i, i == 0));
    }
    for (std::size_t c = 0; c < clients.size(); ++c) {
        QVERIFY(clients[c]->drain());
        QCOMPARE(clients[c]->errors, QStringList());
        QCOMPARE(numbers[c].size(), Pictures);
        for (int i = 0; i < Pictures; ++i)
            QCOMPARE(numbers[c].at(i), i);
    }
}

QTEST_GUILESS_MAIN(TestDecoder)
#include "tst_decoder.moc"

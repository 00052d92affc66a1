// SPDX-License-Identifier: BSD-3-Clause
#include "encodedpictures.h"
#include "encodingclient.h"

#include <QLoggingCategory>
#include <QMediaServiceProviderPlugin>
#include <QTest>
#include <QVideoEncoderSettingsControl>
#include <QVideoSurfaceFormat>

#include <memory>

/*! The lives of encoder services with every real codec of this machine. */
class TestEncoderLife : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void twoHundredCycles_ofStartAndStop_data();
    void twoHundredCycles_ofStartAndStop();
    void destruction_isHarmless_inEveryStatus_data();
    void destruction_isHarmless_inEveryStatus();
    void encodersOfAllCodecs_workSideBySide();

private:
    QStringList m_codecs; // MIME types
};

void TestEncoderLife::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("veltra.palaver.*.debug=false"));
    EncodingClient client;
    QVERIFY(client.isValid());
    m_codecs = client.control->supportedCodecs(false);
    QVERIFY(!m_codecs.isEmpty());
}

void TestEncoderLife::twoHundredCycles_ofStartAndStop_data()
{
    QTest::addColumn<QString>("codec");
    for (const QString &codec : qAsConst(m_codecs))
        QTest::newRow(qPrintable(codec)) << codec;
}

void TestEncoderLife::twoHundredCycles_ofStartAndStop()
{
    QFETCH(QString, codec);
    constexpr int Cycles = 200;
    EncodingClient client;
    const QVideoFrame frame = patternFrame(160, 120, 1);
    for (int i = 0; i < Cycles; ++i) {
        QVERIFY(client.start(EncodingClient::encoderSettings(codec, 200000), QSize(160, 120)));
        QVERIFY(client.encode(frame));
        QVERIFY2(client.waitForUnits(), qPrintable(QString::number(i)));
        QVERIFY(client.stop());
    }
    QCOMPARE(client.errors, QStringList());
    QCOMPARE(client.sink.calls().starts, Cycles);
    QCOMPARE(client.sink.calls().finishes, Cycles);
    QCOMPARE(client.sink.calls().lateUnits, 0);
    for (const QPVEncodedVideoFrame &unit : client.sink.units())
        QCOMPARE(unit.meta().frameType, QPVEncodedVideoFrame::KeyFrame);
    QCOMPARE(client.statuses.size(), Cycles * 5);
}

void TestEncoderLife::destruction_isHarmless_inEveryStatus_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("status");
    for (const QString &codec : qAsConst(m_codecs)) {
        for (const char *status : { "unloaded", "requested", "starting", "encoding", "active",
                                    "restarting", "stopping" })
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(codec, status)))
                    << codec << status;
    }
}

void TestEncoderLife::destruction_isHarmless_inEveryStatus()
{
    QFETCH(QString, codec);
    QFETCH(QString, status);
    const QVideoFrame frame = patternFrame(320, 240, 1);
    const QVideoEncoderSettings wanted = EncodingClient::encoderSettings(codec, 500000);
    for (int round = 0; round < 5; ++round) {
        auto client = std::make_unique<EncodingClient>();
        if (status == "requested") {
            client->settings->setVideoSettings(wanted);
            QVERIFY(client->control->start(QVideoSurfaceFormat(frame.size(), frame.pixelFormat())));
        } else if (status != "unloaded") {
            QVERIFY(client->start(wanted, frame.size()));
        }
        if (status != "unloaded" && status != "requested" && status != "starting") {
            QVERIFY(client->encode(frame));
            if (status != "encoding")
                QVERIFY(client->waitForUnits());
            while (client->control->encode(frame)) {
            } // until the queue is full
        }
        if (status == "restarting") {
            QVideoEncoderSettings turned = wanted;
            turned.setEncodingOption(QStringLiteral("rotate"), 180);
            client->settings->setVideoSettings(turned);
        }
        if (status == "stopping")
            client->control->stop();
        const QStringList errors = client->errors;
        const UnitSink::Calls calls = client->sink.calls();
        EncodingClient::backend()->release(client->service);
        client->service = nullptr;
        // A sink that was started has been finished by then.
        const int starts = client->sink.calls().starts;
        QCOMPARE(client->sink.calls().stops, starts);
        QCOMPARE(client->sink.calls().finishes, starts);
        QVERIFY(starts >= calls.starts && starts <= 1);
        QCOMPARE(client->sink.calls().lateUnits, 0);
        QCOMPARE(errors, QStringList());
    }
}

void TestEncoderLife::encodersOfAllCodecs_workSideBySide()
{
    std::vector<std::unique_ptr<EncodingClient>> clients;
    for (const QString &codec : qAsConst(m_codecs)) {
        clients.push_back(std::make_unique<EncodingClient>());
        QVERIFY(clients.back()->start(EncodingClient::encoderSettings(codec, 300000),
                                      QSize(320, 240)));
    }
    for (int i = 0; i < 30; ++i) {
        for (const auto &client : clients)
            QVERIFY(client->encode(patternFrame(320, 240, i)));
    }
    for (std::size_t i = 0; i < clients.size(); ++i) {
        QVERIFY(clients[i]->waitForUnits());
        const std::vector<RawPicture> pictures =
                decoded(m_codecs.at(int(i)), clients[i]->sink.units());
        QCOMPARE(int(pictures.size()), 30);
        for (int number = 0; number < 30; ++number)
            QCOMPARE(readingOf(pictures[std::size_t(number)]).number, number);
    }
}

QTEST_GUILESS_MAIN(TestEncoderLife)
#include "tst_encoderlife.moc"

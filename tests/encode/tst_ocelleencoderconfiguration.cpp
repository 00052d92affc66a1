// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encoderfixture.h"
#include "testpicture.h"

#include <QtTest>

using namespace Statuses;

namespace {

const QString Encoding("veltra.palaver.encoder.ocelle: ");

} // namespace

/*! What the first picture after a start configures an encoder with. */
class TestEncoderConfiguration : public QObject
{
    Q_OBJECT
private slots:
    void codecType_knowsFourNamesExactly_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<int>("type");
        QTest::newRow("h264") << "video/h264" << 3;
        QTest::newRow("h265") << "video/h265" << 4;
        QTest::newRow("vp8") << "video/vp8" << 1;
        QTest::newRow("vp9") << "video/vp9" << 2;
        QTest::newRow("another case") << "video/H264" << 0;
        QTest::newRow("unknown") << "video/av1" << 0;
        QTest::newRow("empty") << "" << 0;
    }

    void codecType_knowsFourNamesExactly()
    {
        QFETCH(QString, codec);
        QFETCH(int, type);
        const MessageLog messages;
        QCOMPARE(static_cast<int>(OcelleEncoder::codecType(codec)), type);
        QStringList expected;
        if (type == 0)
            expected.append("warning " + Encoding + "Unknown encoder \"" + codec + '"');
        QCOMPARE(messages.messages(), expected);
    }

    void firstPicture_configuresThenIsEncoded()
    {
        EncoderFixture f;
        f.start(h264Settings());
        QVERIFY(f.encoder.encode(testPicture(40000)));
        QCOMPARE(int(f.encoder.status()), Active);
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting, Active }));
        QVERIFY(f.encoder.encode(testPicture(80000)));
        QCOMPARE(f.calls(), (QStringList {
                                    "encoder 1: setParameter(2, 0)",
                                    "encoder 1: setParameter(4, false)",
                                    "encoder 1: setParameter(1, variable)",
                                    "encoder 1: initialize(codec 3, 64x48, stride 64, lines 48, "
                                    "500000 bit/s, 25 fps)",
                                    "encoder 1: encode(40000)",
                                    "encoder 1: encode(80000)",
                            }));
        QCOMPARE(f.messages.messages(),
                 QStringList("debug " + Encoding +
                             "options: rotation=0 mirrorV=false mirrorH=false bitrate=variable"));
    }

    void configuration_fillsInWhatTheSettingsLeaveOut_data()
    {
        QTest::addColumn<qreal>("frameRate");
        QTest::addColumn<int>("bitRate");
        QTest::addColumn<int>("configuredRate");
        QTest::addColumn<int>("configuredBitRate");
        QTest::newRow("nothing set") << 0.0 << 0 << 30 << 1000000;
        QTest::newRow("negative") << -1.0 << -1 << 30 << 1000000;
        QTest::newRow("fraction") << 29.97 << 1 << 29 << 1;
        QTest::newRow("less than one") << 0.99 << 8000 << 30 << 8000;
        QTest::newRow("not a number") << qQNaN() << 8000 << 30 << 8000;
        QTest::newRow("no number at all") << qInf() << 8000 << 2147483647 << 8000;
        QTest::newRow("largest") << 1e300 << 2147483647 << 2147483647 << 2147483647;
    }

    void configuration_fillsInWhatTheSettingsLeaveOut()
    {
        QFETCH(qreal, frameRate);
        QFETCH(int, bitRate);
        EncoderFixture f;
        QVideoEncoderSettings settings = h264Settings(bitRate);
        settings.setFrameRate(frameRate);
        f.start(settings);
        QVERIFY(f.encoder.encode(testPicture()));
        QTEST(f.fake->config().frameRate, "configuredRate");
        QTEST(f.fake->config().bitrate, "configuredBitRate");
    }

    void options_reachTheEncoderAsText_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("rotation");
        QTest::addColumn<QString>("mirrorV");
        QTest::addColumn<QString>("mirrorH");
        const auto row = [](const char *name, const char *option, const QVariant &value,
                            const char *rotation, const char *mirrorV, const char *mirrorH) {
            QTest::newRow(name) << option << value << rotation << mirrorV << mirrorH;
        };
        row("quarter turn", "rotate", 90, "90", "false", "false");
        row("quarter turn back", "rotate", -90, "270", "false", "false");
        row("two turns", "rotate", 720, "0", "false", "false");
        row("more than one turn", "rotate", 450, "90", "false", "false");
        row("far back", "rotate", -450, "-90", "false", "false");
        row("largest", "rotate", 2147483647, "127", "false", "false");
        row("least", "rotate", -2147483647 - 1, "-128", "false", "false");
        row("number as text", "rotate", "180", "180", "false", "false");
        row("no number", "rotate", "left", "0", "false", "false");
        row("no value", "rotate", QVariant(), "0", "false", "false");
        row("no such type", "rotate", QStringList { "90" }, "0", "false", "false");
        row("upside down", "mirrorV", true, "0", "true", "false");
        row("upside down as text", "mirrorV", "true", "0", "true", "false");
        row("upside down no", "mirrorV", "false", "0", "false", "false");
        row("upside down no value", "mirrorV", QVariant(), "0", "false", "false");
        row("left to right", "mirrorH", true, "0", "false", "true"); // said, but not passed on
        row("left to right as number", "mirrorH", 1, "0", "false", "true");
    }

    void options_reachTheEncoderAsText()
    {
        QFETCH(QString, option);
        QFETCH(QVariant, value);
        QFETCH(QString, rotation);
        QFETCH(QString, mirrorV);
        QFETCH(QString, mirrorH);
        EncoderFixture f;
        QVideoEncoderSettings settings = h264Settings();
        settings.setEncodingOption(option, value);
        f.start(settings);
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.calls().mid(0, 3), (QStringList { "encoder 1: setParameter(2, " + rotation + ')',
                                                     "encoder 1: setParameter(4, " + mirrorV + ')',
                                                     "encoder 1: setParameter(1, variable)" }));
        QCOMPARE(f.messages.messages(),
                 QStringList("debug " + Encoding + "options: rotation=" + rotation +
                             " mirrorV=" + mirrorV + " mirrorH=" + mirrorH + " bitrate=variable"));
    }

    void mode_isConstantForOneEncodingModeOnly_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("text");
        QTest::newRow("quality") << int(QMultimedia::ConstantQualityEncoding) << "variable";
        QTest::newRow("constant") << int(QMultimedia::ConstantBitRateEncoding) << "constant";
        QTest::newRow("average") << int(QMultimedia::AverageBitRateEncoding) << "variable";
        QTest::newRow("two pass") << int(QMultimedia::TwoPassEncoding) << "variable";
    }

    void mode_isConstantForOneEncodingModeOnly()
    {
        QFETCH(int, mode);
        QFETCH(QString, text);
        EncoderFixture f;
        QVideoEncoderSettings settings = h264Settings();
        settings.setEncodingMode(static_cast<QMultimedia::EncodingMode>(mode));
        f.start(settings);
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.calls().at(2), "encoder 1: setParameter(1, " + text + ')');
        QVERIFY(f.messages.messages().last().endsWith("bitrate=" + text));
    }

    void unknownCodec_isLeftToTheEncoder()
    {
        EncoderFixture f;
        QVideoEncoderSettings settings = h264Settings();
        settings.setCodec("video/x");
        f.start(settings);
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.fake->config().codecType, 0);
        QCOMPARE(f.messages.messages().first(),
                 "warning " + Encoding + "Unknown encoder \"video/x\"");
    }

    void failedConfiguration_isTriedAgainWithTheNextPicture()
    {
        EncoderFixture f;
        f.start(h264Settings());
        f.script->initializeFails = true;
        f.messages.clear();
        QVERIFY(!f.encoder.encode(testPicture()));
        QCOMPARE(int(f.encoder.status()), Starting);
        QCOMPARE(f.messages.messages("warning"),
                 QStringList("warning " + Encoding + "Coundn't start the encoder"));
        QVERIFY(!f.calls().contains("encoder 1: encode(0)"));
        f.script->initializeFails = false;
        QVERIFY(f.encoder.encode(testPicture(1, QVideoFrame::Format_NV12, QSize(32, 16))));
        QCOMPARE(int(f.encoder.status()), Active);
        QCOMPARE(f.fake->config().width, 32);
    }

    void stride_isThatOfTheMappedPicture()
    {
        EncoderFixture f;
        f.start(h264Settings());
        QVideoFrame picture(96 * 48 * 3 / 2, QSize(64, 48), 96, QVideoFrame::Format_NV12);
        QCOMPARE(picture.bytesPerLine(), 0); // not known yet
        QVERIFY(f.encoder.encode(picture));
        QCOMPARE(f.fake->config().stride, 96);
        QCOMPARE(int(f.fake->picture().yStride), 96);
    }
};

QTEST_GUILESS_MAIN(TestEncoderConfiguration)
#include "tst_ocelleencoderconfiguration.moc"

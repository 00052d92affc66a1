// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encodeservicefixture.h"
#include "messagelog.h"
#include "ocelleencodecontrol.h"
#include "ocelleencodedvideosourcecontrol.h"
#include "ocelleencodersettingscontrol.h"
#include "recordingsink.h"
#include "testpicture.h"

#include <QtTest>

using namespace Statuses;
using Veltra::Ocelle::CodecType;

/*! The three controls, which pass on to the session what they are asked. */
class TestEncodeControls : public QObject
{
    Q_OBJECT
private slots:
    void encodeControl_asksTheSession()
    {
        EncodeServiceFixture f;
        f.platform.codecs.supportEncoder(CodecType::VP9);
        CallLog::instance().clear();
        QCOMPARE(f.control->metaObject()->className(), "OcelleEncodeControl");
        QCOMPARE(f.control->supportedCodecs(true), QStringList { "video/vp9" });
        QVERIFY(CallLog::instance().texts().contains("codecs: isEncoderSupported(3, 1)"));
        QCOMPARE(f.control->supportedPixelFormats(), f.session()->supportedPixelFormats());
        QCOMPARE(int(f.control->status()), Unloaded);
        QVERIFY(f.activate());
        QCOMPARE(int(f.control->status()), Active);
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(!f.control->encode(testPicture()));
    }

    void flushAndDrain_areNotImplemented()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        const MessageLog messages;
        f.control->flush();
        f.control->drain();
        QCOMPARE(messages.messages(),
                 (QStringList {
                         "critical default: OcelleEncodeControl::flush is not implemented",
                         "critical default: OcelleEncodeControl::drain is not implemented" }));
        QVERIFY(f.control->encode(testPicture(1)));
        QVERIFY(f.waitForCall("encoder 1: encode(1)"));
        QCOMPARE(int(f.control->status()), Active);
    }

    void settingsControl_describesThreeCodecs_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<QString>("description");
        QTest::newRow("h264") << "video/h264"
                              << "H.264 compression";
        QTest::newRow("vp8") << "video/vp8"
                             << "VP8 compression";
        QTest::newRow("vp9") << "video/vp9"
                             << "VP9 compression";
        QTest::newRow("h265") << "video/h265"
                              << "";
        QTest::newRow("another case") << "VIDEO/VP8"
                                      << "";
        QTest::newRow("none") << ""
                              << "";
    }

    void settingsControl_describesThreeCodecs()
    {
        QFETCH(QString, codec);
        EncodeServiceFixture f;
        QTEST(f.settings->videoCodecDescription(codec), "description");
    }

    void settingsControl_offersWhatTheSessionOffers()
    {
        EncodeServiceFixture f;
        f.platform.codecs.supportEncoder(CodecType::H265);
        CallLog::instance().clear();
        QCOMPARE(f.settings->supportedVideoCodecs(), QStringList { "video/h265" });
        QVERIFY(CallLog::instance().texts().contains("codecs: isEncoderSupported(4, 0)"));
        bool continuous = true;
        QCOMPARE(f.settings->supportedResolutions(encoderSettings(), &continuous),
                 f.session()->supportedResolutions());
        QVERIFY(!continuous);
        continuous = true;
        QCOMPARE(f.settings->supportedFrameRates(encoderSettings(), &continuous),
                 f.session()->supportedFrameRates());
        QVERIFY(!continuous);
        QCOMPARE(f.settings->supportedResolutions(QVideoEncoderSettings(), nullptr).size(), 3);
        QCOMPARE(f.settings->supportedFrameRates(QVideoEncoderSettings(), nullptr).size(), 1);
    }

    void settingsControl_keepsTheSettings()
    {
        EncodeServiceFixture f;
        const QVideoEncoderSettings settings = encoderSettings(1234, "x", "y");
        f.settings->setVideoSettings(settings);
        QCOMPARE(f.settings->videoSettings(), settings);
        QCOMPARE(f.session()->videoSettings(), settings);
    }

    void sourceControl_attachesToTheSession()
    {
        RecordingSink sink;
        EncodeServiceFixture f;
        QVERIFY(f.source->addSink(&sink));
        QVERIFY(f.session()->removeSink(&sink));
        QVERIFY(!f.source->removeSink(&sink));
        f.source->sinkActiveChanged(&sink, true); // nothing
        f.source->sinkError(&sink);
        QCOMPARE(CallLog::instance().texts("sink"), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestEncodeControls)
#include "tst_ocelleencodecontrols.moc"

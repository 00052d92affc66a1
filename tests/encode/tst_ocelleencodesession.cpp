// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encodeservicefixture.h"
#include "librarythread.h"
#include "messagelog.h"
#include "ocelleencodecontrol.h"
#include "recordingsink.h"
#include "testpicture.h"

#include <QThread>
#include <QtTest>

#include <memory>

using namespace Statuses;
using Veltra::Ocelle::CodecType;
using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::VideoEncoderParameter;

namespace {

const QString Encoding("veltra.palaver.encoder.ocelle: ");

QStringList calls(const QString &object = QString())
{
    return CallLog::instance().texts(object);
}

} // namespace

class TestEncodeSession : public QObject
{
    Q_OBJECT
private slots:
    void construction_preparesTheCodecsOnce()
    {
        FakePlatform platform;
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        CallLog::instance().clear();
        QObject parent;
        OcelleEncodeSession session(&provider, &parent);
        QCOMPARE(session.parent(), &parent);
        QCOMPARE(calls(), QStringList { "codecs: prepare()" });
        QCOMPARE(int(session.status()), Unloaded);
        QVERIFY(session.videoSettings().isNull());
        QVERIFY(qobject_cast<OcelleEncodeControl *>(session.encodeControl()));
        QVERIFY(QMetaType::type("QPVEncoder::Status") != QMetaType::UnknownType);
        QVERIFY(session.qt_metacast("Veltra::Ocelle::VideoEncoderListener") ==
                static_cast<Veltra::Ocelle::VideoEncoderListener *>(&session));
    }

    void withoutACodecManager_nothingIsSupportedAndNothingStarts()
    {
        FakePlatform platform;
        OcelleProvider provider(&platform.cameras, nullptr);
        OcelleEncodeSession session(&provider, nullptr);
        QStringList errors;
        connect(session.encodeControl(), &QPVEncodeControl::error, this,
                [&errors](QPVEncoder::Error error, const QString &text) {
                    errors.append(QString::number(error) + QLatin1Char(' ') + text);
                });
        RecordingSink sink;
        QVERIFY(session.addSink(&sink));
        session.setVideoSettings(encoderSettings());
        QCOMPARE(session.supportedCodecs(true), QStringList());
        QVERIFY(!session.startEncoder(surfaceFormat()));
        QCOMPARE(errors, QStringList("1 Couldn't acquire encoder"));
        QVERIFY(session.removeSink(&sink));
    }

    void supportedCodecs_areAskedForInAFixedOrder()
    {
        EncodeServiceFixture f;
        f.platform.codecs.supportEncoder(CodecType::VP8);
        f.platform.codecs.supportEncoder(CodecType::H264);
        for (const bool flag : { false, true }) {
            CallLog::instance().clear();
            QCOMPARE(f.session()->supportedCodecs(flag),
                     (QStringList { "video/h264", "video/vp8" }));
            const QString end = flag ? ", 1)" : ", 0)";
            QCOMPARE(calls(), (QStringList { "codecs: isEncoderSupported(3" + end,
                                             "codecs: isEncoderSupported(4" + end,
                                             "codecs: isEncoderSupported(1" + end,
                                             "codecs: isEncoderSupported(2" + end }));
        }
    }

    void offers_areFixed()
    {
        EncodeServiceFixture f;
        QCOMPARE(f.session()->supportedFrameRates(), QList<qreal> { 30 });
        QCOMPARE(f.session()->supportedResolutions(),
                 (QList<QSize> { QSize(320, 240), QSize(640, 480), QSize(1280, 960) }));
        QCOMPARE(f.session()->supportedPixelFormats(),
                 (QList<QVideoFrame::PixelFormat> {
                         QVideoFrame::Format_YUV420P, QVideoFrame::Format_NV12,
                         QVideoFrame::Format_BGRA32, QVideoFrame::Format_RGB32 }));
    }

    void start_getsAnEncoderAndGoesThroughTheStatuses()
    {
        EncodeServiceFixture f;
        CallLog::instance().clear();
        QVERIFY(f.start());
        QCOMPARE(f.recorder.statuses, (QList<int> { Loaded, Starting }));
        QCOMPARE(calls().mid(0, 2), (QStringList { "codecs: createVideoEncoder(3, 0)",
                                                   "encoder: lockAndSetListener(listener)" }));
        QVERIFY(f.control->encode(testPicture(40000)));
        QVERIFY(f.waitForStatus(Active));
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(f.recorder.statuses,
                 (QList<int> { Loaded, Starting, Active, Stopping, Unloaded }));
        QCOMPARE(f.recorder.errors, QStringList());
        QCOMPARE(CallLog::instance().threadNames("encoder 1"), QStringList { "EncodeWorker" });
        QCOMPARE(CallLog::instance().threadNames("control").size(), 1); // this one
    }

    void start_takesSizeAndRateFromTheFormat()
    {
        EncodeServiceFixture f;
        const MessageLog messages;
        QVideoSurfaceFormat format(QSize(320, 240), QVideoFrame::Format_NV12);
        format.setFrameRate(12.5);
        QVERIFY(f.control->start(format));
        QCOMPARE(f.settings->videoSettings().resolution(), QSize(320, 240));
        QCOMPARE(f.settings->videoSettings().frameRate(), 12.5);
        QCOMPARE(f.settings->videoSettings().bitRate(), 500000);
        const QString first = messages.messages("debug " + Encoding).value(0);
        QVERIFY2(first.startsWith("debug " + Encoding + "changing format to QVideoSurfaceFormat("),
                 qPrintable(first));
    }

    void start_withoutAnEncoder_isAResourceError()
    {
        EncodeServiceFixture f;
        f.script->createFails = true;
        const MessageLog messages;
        QVERIFY(!f.control->start(surfaceFormat()));
        QCOMPARE(f.recorder.errors, QStringList { "1 Couldn't acquire encoder" });
        QCOMPARE(messages.messages("critical"),
                 QStringList("critical " + Encoding +
                             "QPVEncoder::ResourceError \"Couldn't acquire encoder\""));
        QCOMPARE(f.recorder.statuses, QList<int>());
    }

    void start_ofAnUnknownCodec_asksForCodecZero()
    {
        EncodeServiceFixture f;
        QVideoEncoderSettings settings = encoderSettings();
        settings.setCodec("video/x");
        f.settings->setVideoSettings(settings);
        CallLog::instance().clear();
        const MessageLog messages;
        QVERIFY(f.control->start(surfaceFormat()));
        QCOMPARE(calls().value(0), QString("codecs: createVideoEncoder(0, 0)"));
        QCOMPARE(messages.messages("warning").value(0),
                 "warning " + Encoding + "Unknown encoder \"video/x\"");
    }

    void secondStart_replacesTheEncoder()
    {
        RecordingSink sink; // outlives the service
        EncodeServiceFixture f;
        f.source->addSink(&sink);
        QVERIFY(f.activate());
        QVERIFY(f.control->start(surfaceFormat()));
        QVERIFY(f.waitForStatus(Starting));
        QCOMPARE(f.recorder.statuses,
                 (QList<int> { Loaded, Starting, Active, Stopping, Unloaded, Loaded, Starting }));
        QCOMPARE(f.platform.codecs.heldEncoders(), 1);
        QCOMPARE(calls("sink"),
                 (QStringList { "sink: isFormatSupported(video/h264 64x48@25)",
                                "sink: isFormatSupported(video/h264 64x48@25)",
                                "sink: start(video/h264 64x48@25)",
                                "sink: isFormatSupported(video/h264 64x48@25)", "sink: finish()",
                                "sink: stop()", "sink: isFormatSupported(video/h264 64x48@25)",
                                "sink: start(video/h264 64x48@25)" }));
    }

    void stop_dropsWhatIsQueued()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->encodeGate.close();
        const auto track = std::make_shared<BufferTrack>();
        for (int i = 1; i <= 3; ++i)
            QVERIFY(f.control->encode(trackedPicture(track, i)));
        QTRY_COMPARE(f.script->encodeGate.waiting(), 1);
        const MessageLog messages;
        f.control->stop();
        QCOMPARE(messages.messages("debug"), QStringList("debug " + Encoding));
        QVERIFY(!f.control->encode(testPicture(4)));
        f.script->encodeGate.open();
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(calls().filter(": encode(").size(), 2);
        QCOMPARE(track->buffers.load(), 0);
    }

    void fullQueue_refusesTheNextPicture()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->encodeGate.close();
        QVERIFY(f.control->encode(testPicture(1)));
        QTRY_COMPARE(f.script->encodeGate.waiting(), 1);
        for (int i = 2; i < 22; ++i)
            QVERIFY(f.control->encode(testPicture(i)));
        QVERIFY(!f.control->encode(testPicture(22)));
        f.script->encodeGate.open();
        QVERIFY(f.waitForCall("encoder 1: encode(21)"));
        QVERIFY(f.control->encode(testPicture(22)));
        QVERIFY(f.waitForCall("encoder 1: encode(22)"));
    }

    void encodedFrame_carriesBytesTypeAndTime_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("frameType");
        QTest::newRow("0") << 0 << 1;
        QTest::newRow("1") << 1 << 2;
        QTest::newRow("2") << 2 << 2;
        QTest::newRow("-1") << -1 << 2;
    }

    void encodedFrame_carriesBytesTypeAndTime()
    {
        QFETCH(int, type);
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        const auto encoder = f.platform.codecs.encoder();
        LibraryThread::run("FakeEncoder", [&] {
            encoder->deliver(std::string("a\0b", 3), ~0UL, static_cast<FrameType>(type));
        });
        QTRY_COMPARE(f.recorder.frames().size(), 1); // the buffer has gone meanwhile
        const QPVEncodedVideoFrame frame = f.recorder.frames().first();
        QVERIFY(frame.isValid());
        QCOMPARE(frame.data(), QByteArray("a\0b", 3));
        QTEST(int(frame.meta().frameType), "frameType");
        QCOMPARE(frame.meta().timestamp, ~quint64(0));
        QVERIFY(CallLog::instance().threadNames("control").contains("FakeEncoder"));
    }

    void emptyOutput_isAnInvalidFrame()
    {
        EncodeServiceFixture f;
        f.session()->onEncodedFrame(nullptr, 0, 5, FrameType::Key);
        QCOMPARE(f.recorder.frames().size(), 1);
        QVERIFY(!f.recorder.frames().first().isValid());
        QCOMPARE(f.recorder.frames().first().meta().timestamp, quint64(5));
    }

    void encodersError_isReportedWithItsText()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        const MessageLog messages;
        LibraryThread::run("FakeEncoder",
                           [&] { f.platform.codecs.encoder()->fail("Speicher voll \xc3\xbc"); });
        QTRY_COMPARE(f.recorder.errors.size(), 1);
        QCOMPARE(f.recorder.errors.first(), QString::fromUtf8("4 Speicher voll \xc3\xbc"));
        QCOMPARE(int(f.control->status()), Active); // an error changes no status
        QCOMPARE(messages.messages("critical").size(), 1);
    }

    void endOfStream_isPassedOn()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        LibraryThread::run("FakeEncoder", [&] { f.platform.codecs.encoder()->endStream(); });
        QTRY_COMPARE(f.recorder.endsOfStream, 1);
        QCOMPARE(int(f.control->status()), Active);
    }

    void changedParameter_isIgnored()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        CallLog::instance().clear();
        const MessageLog messages;
        f.platform.codecs.encoder()->changeParameter(VideoEncoderParameter::RotationParameter, "9");
        QCOMPARE(calls(), QStringList());
        QCOMPARE(messages.messages(), QStringList());
    }

    void setError_logsAllButNoError_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("key");
        QTest::newRow("none") << 0 << QString();
        QTest::newRow("resource") << 1 << "ResourceError";
        QTest::newRow("format") << 2 << "FormatError";
        QTest::newRow("sink") << 3 << "SinkError";
        QTest::newRow("encoder") << 4 << "EncoderError";
    }

    void setError_logsAllButNoError()
    {
        QFETCH(int, error);
        QFETCH(QString, key);
        EncodeServiceFixture f;
        const MessageLog messages;
        f.session()->setError(static_cast<QPVEncoder::Error>(error), "text");
        QCOMPARE(f.recorder.errors, QStringList(QString::number(error) + " text"));
        QStringList expected;
        if (error != 0)
            expected.append("critical " + Encoding + "QPVEncoder::" + key + " \"text\"");
        QCOMPARE(messages.messages(), expected);
    }

    void setError_emitsOnTheCallingThread()
    {
        EncodeServiceFixture f;
        LibraryThread::run("Caller",
                           [&f] { f.session()->setError(QPVEncoder::EncoderError, "text"); });
        QCOMPARE(CallLog::instance().threadNames("control"), QStringList { "Caller" });
        QTRY_COMPARE(f.recorder.errors.size(), 1);
    }

    void output_keepsItsOrder()
    {
        RecordingSink sink;
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        const auto encoder = f.platform.codecs.encoder();
        const LibraryThread library("FakeEncoder", [encoder] {
            for (unsigned long time = 1; time <= 500; ++time)
                encoder->deliver("x", time);
        });
        for (int i = 0; i < 100; ++i) {
            QVERIFY(f.source->addSink(&sink));
            QVERIFY(f.source->removeSink(&sink));
        }
        QTRY_COMPARE(f.recorder.frames().size(), 500);
        for (int i = 0; i < 500; ++i)
            QCOMPARE(f.recorder.frames().at(i).meta().timestamp, quint64(i + 1));
        int last = 0;
        for (const QString &call : calls("sink").filter("present")) {
            const int time = call.mid(call.indexOf('(') + 1).chopped(1).toInt();
            QVERIFY(time > last);
            last = time;
        }
        QCOMPARE(sink.callsAtOnce.load(), 1);
    }
};

QTEST_GUILESS_MAIN(TestEncodeSession)
#include "tst_ocelleencodesession.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "decodeservicefixture.h"
#include "librarythread.h"
#include "messagelog.h"

#include <QThread>
#include <QtTest>

#include <memory>

using namespace Statuses;
using namespace Veltra::Ocelle;

namespace {

const QString Debug("debug veltra.palaver.decoder.ocelle: ");
const QString Warning("warning veltra.palaver.decoder.ocelle: ");
const QString Critical("critical veltra.palaver.decoder.ocelle: ");

QStringList calls(const QString &object = QString())
{
    return CallLog::instance().texts(object);
}

} // namespace

class TestDecodeSession : public QObject
{
    Q_OBJECT
private slots:
    void supportedCodecs_areInOneOrder_data()
    {
        QTest::addColumn<QList<int>>("types");
        QTest::addColumn<QStringList>("codecs");
        QTest::newRow("none") << QList<int> {} << QStringList {};
        QTest::newRow("all, other order")
                << QList<int> { 1, 2, 4, 3 }
                << QStringList { "video/h264", "video/h265", "video/vp8", "video/vp9" };
        QTest::newRow("two") << QList<int> { 2, 4 } << QStringList { "video/h265", "video/vp9" };
        QTest::newRow("unknown only") << QList<int> { 0 } << QStringList {};
    }

    void supportedCodecs_areInOneOrder()
    {
        QFETCH(QList<int>, types);
        QFETCH(QStringList, codecs);
        FakePlatform platform;
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        OcelleDecodeSession session(&provider, nullptr);
        for (const int type : types)
            platform.codecs.supportDecoder(static_cast<CodecType>(type));
        for (const bool flag : { true, false }) {
            CallLog::instance().clear();
            QCOMPARE(session.supportedCodecs(flag), codecs);
            QCOMPARE(calls("codecs").filter(flag ? ", 1)" : ", 0)").size(), 4);
        }
    }

    void isFormatSupported_looksAtTheCodecOnly()
    {
        FakePlatform platform;
        platform.codecs.supportDecoder(CodecType::VP8);
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        OcelleDecodeSession session(&provider, nullptr);
        CallLog::instance().clear();
        QVERIFY(!session.isFormatSupported(QVideoEncoderSettings()));
        QCOMPARE(calls(), QStringList());
        QVERIFY(session.isFormatSupported(streamSettings("video/vp8", QSize(-1, 1 << 30))));
        QCOMPARE(calls(), QStringList("codecs: isDecoderSupported(1, 1)"));
        QVERIFY(!session.isFormatSupported(streamSettings("video/h264")));
        QVERIFY(!session.isFormatSupported(streamSettings("video/VP8")));
        QVideoEncoderSettings resolutionOnly;
        resolutionOnly.setResolution(64, 48);
        QVERIFY(!session.isFormatSupported(resolutionOnly));
    }

    void metacast_findsTheListener()
    {
        DecodeServiceFixture f;
        QCOMPARE(f.session()->qt_metacast("Veltra::Ocelle::VideoDecoderListener"),
                 static_cast<void *>(static_cast<VideoDecoderListener *>(f.session())));
        QVERIFY(f.session()->qt_metacast("OcelleVideoSession"));
        QVERIFY(!f.session()->qt_metacast("VideoDecoderListener"));
        const QMetaObject *meta = f.session()->metaObject();
        QVERIFY(meta->indexOfSlot("onStatusChanged(QPVDecoder::Status)") >= 0);
        QVERIFY(QMetaType::type("QPVDecoder::Status") != QMetaType::UnknownType);
        QVERIFY(!f.session()->mirrorOutput());
    }

    void start_runsADecoderInOrderOnItsThreads()
    {
        DecodeServiceFixture f;
        CallLog::instance().clear();
        QString name;
        QThread::Priority priority = QThread::IdlePriority;
        f.script->onInitialize = [&](FakeVideoDecoder &) {
            name = QThread::currentThread()->objectName();
            priority = QThread::currentThread()->priority();
        };
        QVERIFY(f.activate());
        f.control->flush();
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(
                calls(),
                (QStringList { "codecs: createVideoDecoder(3, 0)",
                               "decoder: lockAndSetListener(listener)", "control: statusChanged(4)",
                               "decoder 1: initialize(codec 3, 64x48, 30 fps)",
                               "control: statusChanged(7)", "control: statusChanged(8)",
                               "decoder 1: decode(0, type 0, xy)", "control: statusChanged(6)",
                               "decoder 1: flush()", "decoder 1: stop()", "decoder 1: destroyed",
                               "control: statusChanged(1)" }));
        QCOMPARE(CallLog::instance().threadNames("decoder 1"), QStringList("DecodeWorker"));
        QCOMPARE(name, QString("DecodeWorker"));
        QCOMPARE(priority, QThread::InheritPriority);
        for (const Call &call : CallLog::instance().calls()) {
            if (call.object == "control" || call.object == "codecs" || call.object == "decoder")
                QVERIFY(call.thread == std::this_thread::get_id());
        }
        QCOMPARE(f.script->blocksReleased.load(), 1);
    }

    void settings_areWrittenToTheLog()
    {
        DecodeServiceFixture f;
        MessageLog messages;
        QVERIFY(f.start());
        QString expected;
        QDebug(&expected) << "Decoder settings" << QSize(64, 48) << QString("video/h264");
        QCOMPARE(messages.messages(), QStringList(Debug + expected.trimmed()));
    }

    void startOfTheSameCodec_changesNothing()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        QVERIFY(f.control->start(streamSettings("video/h264", QSize(640, 480))));
        QCOMPARE(f.control->codecSettings(), streamSettings());
        QCOMPARE(f.platform.codecs.madeDecoders(), 1);
        QVERIFY(f.control->decode(testFrame(1)));
        QVERIFY(f.waitForCall("decoder 1: decode(1, type 0, xy)"));
        QCOMPARE(f.recorder.statuses, (QList<int> { Loaded, Starting, Active }));
    }

    void startOfAnotherCodec_endsTheOneBefore()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->decodeGate.close();
        for (quint64 time = 1; time <= 6; ++time)
            QVERIFY(f.control->decode(testFrame(time)));
        QTRY_COMPARE(f.script->decodeGate.waiting(), 1); // and five more wait
        QVERIFY(f.control->start(streamSettings("video/vp8")));
        QCOMPARE(f.control->codecSettings(), streamSettings("video/vp8"));
        f.script->decodeGate.open();
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Loaded, Starting, Active, Stopping,
                                                        Unloaded, Loaded, Starting }));
        QVERIFY(f.control->decode(testFrame(7)));
        QVERIFY(f.waitForStatus(Active));
        QVERIFY(f.waitForCall("decoder 2: decode(7, type 0, xy)"));
        QCOMPARE(calls("decoder 1").mid(2),
                 (QStringList { "decoder 1: decode(1, type 0, xy)", "decoder 1: flush()",
                                "decoder 1: stop()", "decoder 1: destroyed" }));
        QCOMPARE(calls("decoder 2").filter("decode(").size(), 1);
        QCOMPARE(f.script->blocksTaken.load(), 3);
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void anotherCodecAtOnce_getsNoFrameOfTheFirst()
    {
        DecodeServiceFixture f;
        for (int round = 0; round < 20; ++round) {
            QVERIFY(f.control->start(streamSettings("video/h264")));
            f.control->decode(testFrame(3));
            f.control->decode(testFrame(3));
            QVERIFY(f.control->start(streamSettings("video/vp8")));
            const int vp8 = f.platform.codecs.madeDecoders();
            QVERIFY(f.waitForCall(
                    QString("decoder %1: initialize(codec 1, 64x48, 30 fps)").arg(vp8)));
            QVERIFY(f.waitForStatus(Starting));
            QTRY_VERIFY(f.control->decode(testFrame(4)));
            QVERIFY(f.waitForCall(QString("decoder %1: decode(4, type 0, xy)").arg(vp8)));
            QVERIFY(!calls().contains(QString("decoder %1: decode(3, type 0, xy)").arg(vp8)));
            f.control->stop();
            QVERIFY(f.waitForStatus(Unloaded));
        }
        QCOMPARE(f.recorder.errors, QStringList());
        QCOMPARE(f.platform.codecs.heldDecoders(), 0);
    }

    void startOfNothing_isRefused()
    {
        DecodeServiceFixture f;
        CallLog::instance().clear();
        QVERIFY(!f.control->start(QVideoEncoderSettings()));
        QCOMPARE(calls(), QStringList());
        QVERIFY(f.activate());
        QVERIFY(!f.control->start(QVideoEncoderSettings())); // of another codec: ends what runs
        QVERIFY(f.control->codecSettings().isNull());
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(!f.control->decode(testFrame()));
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void codecWithoutADecoder_isAnError()
    {
        DecodeServiceFixture f;
        f.script->createFails = true;
        MessageLog messages;
        QVERIFY(!f.control->start(streamSettings("video/vp9")));
        QCOMPARE(f.recorder.errors, QStringList("1 Couldn't acquire decoder"));
        QCOMPARE(messages.messages("critical"),
                 QStringList(Critical + "QPVDecoder::ResourceError \"Couldn't acquire decoder\""));
        QCOMPARE(f.recorder.statuses, QList<int>());
        QCOMPARE(f.control->codecSettings(), streamSettings("video/vp9"));
        QVERIFY(!f.control->decode(testFrame()));
        f.script->createFails = false;
        QVERIFY(f.start());
    }

    void unknownCodec_isAskedForAllTheSame()
    {
        DecodeServiceFixture f;
        MessageLog messages;
        QVERIFY(f.control->start(streamSettings("video/x")));
        QVERIFY(calls().contains("codecs: createVideoDecoder(0, 0)"));
        QVERIFY(messages.messages().contains(Warning + "Unknown decoder \"video/x\""));
        QVERIFY(f.waitForStatus(Starting));
        QCOMPARE(int(f.decoder()->config().codecType), 0);
    }

    void decoderThatDoesNotStart_isAnErrorAfterStartHasReturned()
    {
        DecodeServiceFixture f;
        f.script->initializeFails = true;
        MessageLog messages;
        QVERIFY(f.control->start(streamSettings()));
        QCOMPARE(f.recorder.errors, QStringList());
        QTRY_VERIFY(f.recorder.errors.contains("3 Decoder error"));
        QVERIFY(messages.messages().contains(Critical + "QPVDecoder::DecodeError "
                                                        "\"Decoder error\""));
        QTRY_COMPARE(f.recorder.statuses, (QList<int> { Loaded, Unloaded }));
        for (const Call &call : CallLog::instance().calls()) {
            if (call.what.startsWith("error("))
                QCOMPARE(call.threadName, QString("DecodeWorker"));
        }
        f.control->stop();
        f.script->initializeFails = false;
        QVERIFY(f.start());
        QVERIFY(f.control->decode(testFrame()));
        QVERIFY(f.waitForStatus(Active));
    }

    void decode_isRefusedSilentlyUnlessDecoding()
    {
        DecodeServiceFixture f;
        MessageLog messages;
        QVERIFY(!f.control->decode(testFrame()));
        QVERIFY(f.activate());
        messages.clear();
        QVERIFY(!f.control->decode(QPVEncodedVideoFrame()));
        f.control->stop();
        QVERIFY(!f.control->decode(testFrame()));
        f.control->stop();
        f.control->drain();
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(!f.control->decode(testFrame()));
        QCOMPARE(messages.messages(), QStringList());
    }

    void fullQueue_isWarnedOf()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->decodeGate.close();
        QVERIFY(f.control->decode(testFrame(1)));
        QTRY_COMPARE(f.script->decodeGate.waiting(), 1);
        for (quint64 time = 2; time <= 21; ++time)
            QVERIFY(f.control->decode(testFrame(time)));
        MessageLog messages;
        QVERIFY(!f.control->decode(testFrame(22)));
        QCOMPARE(messages.messages(), QStringList(Warning + "The decoder queue is full"));
        f.control->drain();
        f.script->decodeGate.open();
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(calls("decoder 1").filter("decode(").size(), 22);
        QCOMPARE(calls("decoder 1").mid(22),
                 (QStringList { "decoder 1: decode(21, type 0, xy)", "decoder 1: drain()",
                                "decoder 1: stop()", "decoder 1: destroyed" }));
        QCOMPARE(f.script->blocksReleased.load(), 22);
    }

    void error_isLoggedButForNone_andAlwaysTold()
    {
        DecodeServiceFixture f;
        MessageLog messages;
        f.session()->setError(QPVDecoder::NoError, "nothing");
        QCOMPARE(messages.messages(), QStringList());
        f.session()->setError(QPVDecoder::DecodeError, "bad \"bits\"");
        QCOMPARE(messages.messages(),
                 QStringList(Critical + "QPVDecoder::DecodeError \"bad \\\"bits\\\"\""));
        QCOMPARE(f.recorder.errors, (QStringList { "0 nothing", "3 bad \"bits\"" }));
        QCOMPARE(f.recorder.statuses, QList<int>());
    }

    void errorOfTheDecoder_isToldOnItsThreadAsUtf8()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        MessageLog messages;
        LibraryThread::run("FakeDecoder", [&f] { f.decoder()->fail("Zerst\xC3\xB6rt"); });
        QCOMPARE(calls("control").last(), QString::fromUtf8("control: error(3 Zerst\xC3\xB6rt)"));
        QVERIFY(CallLog::instance().threadNames("control").contains("FakeDecoder"));
        QTRY_COMPARE(f.recorder.errors, QStringList(QString::fromUtf8("3 Zerst\xC3\xB6rt")));
        QVERIFY(messages.messages().first().startsWith(Critical + "QPVDecoder::DecodeError \""));
        QCOMPARE(int(f.control->status()), Active);
    }
};

QTEST_GUILESS_MAIN(TestDecodeSession)
#include "tst_ocelledecodesession.moc"

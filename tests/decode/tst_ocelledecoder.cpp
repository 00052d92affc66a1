// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "decoderfixture.h"

#include <QtTest>

#include <limits>
#include <memory>

using namespace Statuses;
using Veltra::Ocelle::CodecType;
using StatusList = QList<int>;

class TestDecoder : public QObject
{
    Q_OBJECT
private slots:
    void construction_isUnloadedAndTellsNobody()
    {
        QObject parent;
        OcelleDecoder decoder(&parent);
        QCOMPARE(decoder.parent(), &parent);
        QCOMPARE(int(decoder.status()), Unloaded);
        const QMetaObject *meta = decoder.metaObject();
        QCOMPARE(meta->methodCount() - meta->methodOffset(), 1);
        QCOMPARE(meta->method(meta->methodOffset()).methodSignature(),
                 QByteArray("statusChanged(QPVDecoder::Status)"));
    }

    void codecType_takesTheWholeNameExactly_data()
    {
        QTest::addColumn<QString>("mimeType");
        QTest::addColumn<int>("type");
        const auto row = [](const char *mimeType, int type) {
            QTest::newRow(*mimeType ? mimeType : "empty") << QString(mimeType) << type;
        };
        row("video/h264", 3);
        row("video/h265", 4);
        row("video/vp8", 1);
        row("video/vp9", 2);
        row("video/H264", 0);
        row("Video/vp8", 0);
        row(" video/vp8", 0);
        row("video/vp80", 0);
        row("video/vp", 0);
        row("", 0);
    }

    void codecType_takesTheWholeNameExactly()
    {
        QFETCH(QString, mimeType);
        QFETCH(int, type);
        MessageLog messages;
        QCOMPARE(int(OcelleDecoder::codecType(mimeType)), type);
        const QString warning("warning veltra.palaver.decoder.ocelle: Unknown decoder \"%1\"");
        QCOMPARE(messages.messages(), type ? QStringList() : QStringList(warning.arg(mimeType)));
    }

    void setStatus_tellsOnlyOfChanges()
    {
        DecoderFixture f;
        f.decoder.setStatus(QPVDecoder::UnloadedStatus);
        f.decoder.setStatus(QPVDecoder::ActiveStatus);
        f.decoder.setStatus(QPVDecoder::ActiveStatus);
        QCOMPARE(f.statuses, StatusList { Active });
        f.decoder.setStatus(QPVDecoder::UnloadedStatus);
        QCOMPARE(f.statuses, (StatusList { Active, Unloaded }));
    }

    void load_takesADecoderWhenUnloadedOrStandby_data() { addStatusRows(); }

    void load_takesADecoderWhenUnloadedOrStandby()
    {
        QFETCH(int, status);
        DecoderFixture f;
        f.bringTo(status);
        const auto other = f.make(2);
        const bool takes = status == Unloaded || status == Standby;
        QCOMPARE(f.decoder.load(other), takes);
        QCOMPARE(f.statuses, takes ? StatusList { Loaded } : StatusList());
        QCOMPARE(other.use_count(), takes ? 2L : 1L);
        QCOMPARE(f.fake.use_count(), takes ? 1L : 2L); // the one held before
    }

    void loadOfNothing_forcesUnloadedAndKeepsTheDecoder_data() { addStatusRows(); }

    void loadOfNothing_forcesUnloadedAndKeepsTheDecoder()
    {
        QFETCH(int, status);
        DecoderFixture f;
        f.bringTo(status);
        QVERIFY(!f.decoder.load(nullptr));
        QCOMPARE(f.statuses, status == Unloaded ? StatusList() : StatusList { Unloaded });
        QCOMPARE(f.fake.use_count(), status == Unloaded ? 1L : 2L);
        QVERIFY(f.calls().filter("decoder").isEmpty());
        QVERIFY(f.decoder.load(f.make(2))); // takes the place of the old one
        QCOMPARE(f.fake.use_count(), 1L);
    }

    void start_configuresALoadedDecoderOnly_data() { addStatusRows(); }

    void start_configuresALoadedDecoderOnly()
    {
        QFETCH(int, status);
        DecoderFixture f;
        f.bringTo(status);
        QCOMPARE(f.decoder.start(streamSettings("video/vp9", QSize(640, 360))), status == Loaded);
        const QStringList calls { "decoder 1: initialize(codec 2, 640x360, 30 fps)", "status: 7" };
        QCOMPARE(f.calls(), status == Loaded ? calls : QStringList());
        QCOMPARE(f.fake->config().reserved[0], std::uint64_t(0));
        QCOMPARE(f.fake->config().reserved[1], std::uint64_t(0));
    }

    void start_passesOddStreamsOn()
    {
        DecoderFixture f;
        f.bringTo(Loaded);
        QVideoEncoderSettings settings = streamSettings("video/x", QSize(-5, 1000000));
        settings.setFrameRate(0);
        QVERIFY(f.decoder.start(settings));
        QCOMPARE(f.calls().first(), QString("decoder 1: initialize(codec 0, -5x1000000, 30 fps)"));
        QCOMPARE(f.messages.messages().size(), 1);
    }

    void refusedConfiguration_leavesTheDecoderLoaded()
    {
        DecoderFixture f;
        f.bringTo(Loaded);
        f.script->initializeFails = true;
        QVERIFY(!f.decoder.start(streamSettings()));
        QCOMPARE(f.statuses, StatusList());
        QCOMPARE(int(f.decoder.status()), Loaded);
        QCOMPARE(f.fake.use_count(), 2L);
        QVERIFY(!f.decoder.load(f.make(2)));
        f.script->initializeFails = false;
        QVERIFY(f.decoder.start(streamSettings()));
    }

    void firstFrame_makesItActiveBeforeTheLibrarySeesIt()
    {
        DecoderFixture f;
        f.bringTo(Starting);
        f.script->decodeFails = true;
        QVERIFY(!f.decoder.decode(testFrame(1)));
        f.script->decodeFails = false;
        QVERIFY(f.decoder.decode(testFrame(2)));
        QCOMPARE(f.calls(), (QStringList { "status: 8", "decoder 1: decode(1, type 0, xy)",
                                           "decoder 1: decode(2, type 0, xy)" }));
    }

    void decode_belowStarting_takesNothing_data() { addStatusRows(); }

    void decode_belowStarting_takesNothing()
    {
        QFETCH(int, status);
        DecoderFixture f;
        f.bringTo(status);
        const int before = f.script->blocksTaken;
        const bool decodes = status == Starting || status == Active;
        QCOMPARE(f.decoder.decode(testFrame()), decodes);
        QCOMPARE(f.script->blocksTaken - before, decodes ? 1 : 0);
        if (!decodes)
            QCOMPARE(f.calls(), QStringList());
    }

    void frameType_isKeyForOneValueOnly_data()
    {
        QTest::addColumn<int>("frameType");
        QTest::addColumn<int>("passedOn");
        QTest::newRow("0") << 0 << 1;
        QTest::newRow("1") << 1 << 0;
        QTest::newRow("2") << 2 << 1;
        QTest::newRow("3") << 3 << 1;
        QTest::newRow("-1") << -1 << 1;
        QTest::newRow("257") << 257 << 1;
        QTest::newRow("largest") << std::numeric_limits<int>::max() << 1;
    }

    void frameType_isKeyForOneValueOnly()
    {
        QFETCH(int, frameType);
        QFETCH(int, passedOn);
        DecoderFixture f;
        f.bringTo(Active);
        QVERIFY(f.decoder.decode(testFrame(std::numeric_limits<quint64>::max(), frameType)));
        const QString call("decoder 1: decode(18446744073709551615, type %1, xy)");
        QCOMPARE(f.calls(), QStringList(call.arg(passedOn)));
    }

    void payload_isTheLibrarysOwnBlock_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : { 1, 2, 4096, 3000001 })
            QTest::newRow(qPrintable(QString::number(size))) << size;
    }

    void payload_isTheLibrarysOwnBlock()
    {
        QFETCH(int, size);
        DecoderFixture f;
        f.bringTo(Starting);
        f.script->keepsBlocks = true;
        QByteArray bytes(size, 'a');
        bytes[0] = '\0';
        {
            const QPVEncodedVideoFrame frame(bytes.constData(), static_cast<unsigned long>(size),
                                             { QPVEncodedVideoFrame::KeyFrame, 1 });
            QVERIFY(f.decoder.decode(frame));
            QCOMPARE(frame.data(), bytes); // untouched
        }
        QCOMPARE(f.fake->keptBytes(), QList<QByteArray> { bytes });
        QCOMPARE(f.script->blocksReleased.load(), 0);
        f.decoder.flush();
        QCOMPARE(f.script->blocksReleased.load(), 0); // the library's affair alone
        f.fake->releaseBlocks();
        QCOMPARE(f.script->blocksReleased.load(), 1);
        QCOMPARE(f.script->foreignBlocks.load(), 0);
    }

    void refusedFrame_isLeftToTheLibrary()
    {
        DecoderFixture f;
        f.bringTo(Active);
        f.script->keepsBlocks = true;
        f.script->decodeFails = true;
        QVERIFY(!f.decoder.decode(testFrame()));
        QCOMPARE(f.fake->keptBytes(), QList<QByteArray> { "xy" });
        QCOMPARE(int(f.decoder.status()), Active);
    }

    void flushAndDrain_takeAStartedDecoderDown_data()
    {
        QTest::addColumn<bool>("flush");
        QTest::addColumn<int>("status");
        QTest::newRow("flush, starting") << true << Starting;
        QTest::newRow("flush, active") << true << Active;
        QTest::newRow("flush, stopping") << true << Stopping;
        QTest::newRow("drain, starting") << false << Starting;
        QTest::newRow("drain, active") << false << Active;
        QTest::newRow("drain, stopping") << false << Stopping;
    }

    void flushAndDrain_takeAStartedDecoderDown()
    {
        QFETCH(bool, flush);
        QFETCH(int, status);
        DecoderFixture f;
        f.bringTo(status);
        f.fake.reset();
        flush ? f.decoder.flush() : f.decoder.drain();
        QStringList calls { flush ? "decoder 1: flush()" : "decoder 1: drain()",
                            "decoder 1: stop()", "decoder 1: destroyed", "status: 1" };
        if (status != Stopping)
            calls.prepend("status: 6");
        QCOMPARE(f.calls(), calls);
    }

    void flushAndDrain_onlyUnloadWhatIsNotStarted_data()
    {
        QTest::addColumn<bool>("flush");
        QTest::addColumn<int>("status");
        QTest::newRow("flush, loaded") << true << Loaded;
        QTest::newRow("flush, standby") << true << Standby;
        QTest::newRow("drain, loaded") << false << Loaded;
        QTest::newRow("drain, standby") << false << Standby;
    }

    void flushAndDrain_onlyUnloadWhatIsNotStarted()
    {
        QFETCH(bool, flush);
        QFETCH(int, status);
        DecoderFixture f;
        flush ? f.decoder.flush() : f.decoder.drain();
        QCOMPARE(f.calls(), QStringList());
        f.bringTo(status);
        flush ? f.decoder.flush() : f.decoder.drain();
        QCOMPARE(f.calls(), QStringList("status: 1"));
        QCOMPARE(f.fake.use_count(), 2L);
        const auto next = f.make(2);
        QVERIFY(f.decoder.load(next));
        QCOMPARE(f.fake.use_count(), 1L);
        QCOMPARE(next.use_count(), 2L);
    }

    void destruction_endsAnActiveDecoderOnly_data() { addStatusRows(); }

    void destruction_endsAnActiveDecoderOnly()
    {
        QFETCH(int, status);
        auto f = std::make_unique<DecoderFixture>();
        f->bringTo(status);
        const auto fake = f->fake;
        f.reset();
        QCOMPARE(CallLog::instance().texts(),
                 status == Active ? (QStringList { "decoder 1: flush()", "decoder 1: stop()" })
                                  : QStringList());
        QCOMPARE(fake.use_count(), 1L);
    }
};

QTEST_GUILESS_MAIN(TestDecoder)
#include "tst_ocelledecoder.moc"

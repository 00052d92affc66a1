// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "decoderfixture.h"
#include "librarythread.h"

#include <QElapsedTimer>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

using namespace Statuses;
using namespace Veltra::Ocelle;
using StatusList = QList<int>;

namespace {

/*! Takes everything at once and keeps nothing. */
class QuickDecoder : public VideoDecoder
{
public:
    bool initialize(DecoderConfig) override { return true; }
    bool decode(const unsigned char *, std::uint64_t, std::uint64_t, FrameType,
                void (*release)(void *), void *releaseArg) override
    {
        release(releaseArg);
        return true;
    }
    void flush() override {}
    void drain() override {}
    void stop() override {}
};

/*! Takes some nanoseconds for each of \a steps. */
void linger(int steps)
{
    for (volatile int step = 0; step < steps; step = step + 1) {
    }
}

void waitFor(const std::atomic<int> &count, int wanted)
{
    while (count < wanted)
        std::this_thread::yield();
}

} // namespace

/*! The end of a decoder that is not asked to finish. */
class TestDecoderKill : public QObject
{
    Q_OBJECT
private slots:
    void kill_dropsWithoutACall_data() { addStatusRows(); }

    void kill_dropsWithoutACall()
    {
        QFETCH(int, status);
        DecoderFixture f;
        f.bringTo(status);
        f.fake.reset();
        if (status == Unloaded)
            CallLog::instance().clear();
        f.decoder.kill();
        QCOMPARE(f.calls(), status == Unloaded
                                    ? QStringList()
                                    : (QStringList { "status: 1", "decoder 1: destroyed" }));
        f.decoder.kill();
        QCOMPARE(f.statuses, status == Unloaded ? StatusList() : StatusList { Unloaded });
    }

    void kill_ofAnUnloadedButHeldDecoder_tellsNobody()
    {
        DecoderFixture f;
        f.bringTo(Loaded);
        f.decoder.flush();
        CallLog::instance().clear();
        f.decoder.kill();
        QCOMPARE(f.calls(), QStringList());
        QCOMPARE(f.fake.use_count(), 1L);
    }

    void load_leavesADecoderThatIsKilledMeanwhile()
    {
        DecoderFixture f;
        f.bringTo(Loaded);
        QVERIFY(!f.decoder.load(nullptr)); // it is held on to
        const auto other = f.make(2);
        f.script->onDestroy = [&f](FakeVideoDecoder &) { f.decoder.kill(); };
        f.fake.reset();
        QVERIFY(!f.decoder.load(other)); // which lets the old one go
        f.script->onDestroy = nullptr;
        QCOMPARE(int(f.decoder.status()), Unloaded);
        QCOMPARE(f.statuses, StatusList { Unloaded });
        QCOMPARE(other.use_count(), 1L);
    }

    void kill_withinTheConfiguration_isNoFailure()
    {
        DecoderFixture f;
        f.bringTo(Loaded);
        f.fake.reset();
        f.script->onInitialize = [&f](FakeVideoDecoder &) { f.decoder.kill(); };
        QVERIFY(f.decoder.start(streamSettings()));
        QCOMPARE(f.statuses, StatusList { Unloaded }); // starting nowhere
        QCOMPARE(int(f.decoder.status()), Unloaded);
        QCOMPARE(f.calls().last(), QString("decoder 1: destroyed"));
    }

    void kill_withinAnEnding_isTheEnd_data()
    {
        QTest::addColumn<bool>("flush");
        QTest::newRow("flush") << true;
        QTest::newRow("drain") << false;
    }

    void kill_withinAnEnding_isTheEnd()
    {
        QFETCH(bool, flush);
        DecoderFixture f;
        f.bringTo(Active);
        f.fake.reset();
        f.script->onFlush = [&f](FakeVideoDecoder &) { f.decoder.kill(); };
        f.script->onDrain = f.script->onFlush;
        flush ? f.decoder.flush() : f.decoder.drain();
        QCOMPARE(f.calls(),
                 (QStringList { "status: 6", flush ? "decoder 1: flush()" : "decoder 1: drain()",
                                "status: 1", "decoder 1: destroyed" }));
    }

    void kill_whileAStatusIsTold_leavesTheDecoderUncalled_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<int>("told");
        QTest::newRow("start") << "start" << Starting;
        QTest::newRow("decode") << "decode" << Active;
        QTest::newRow("flush") << "flush" << Stopping;
        QTest::newRow("drain") << "drain" << Stopping;
    }

    void kill_whileAStatusIsTold_leavesTheDecoderUncalled()
    {
        QFETCH(QString, call);
        QFETCH(int, told);
        DecoderFixture f;
        f.bringTo(call == "start" ? Loaded : Starting);
        f.fake.reset();
        connect(&f.decoder, &OcelleDecoder::statusChanged, this, [&](QPVDecoder::Status now) {
            if (now == told)
                f.decoder.kill();
        });
        if (call == "start")
            QVERIFY(f.decoder.start(streamSettings()));
        else if (call == "decode")
            QVERIFY(!f.decoder.decode(testFrame()));
        else
            call == "flush" ? f.decoder.flush() : f.decoder.drain();
        QCOMPARE(f.statuses, (StatusList { told, Unloaded }));
        QCOMPARE(int(f.decoder.status()), Unloaded);
        const QStringList calls = f.calls().mid(call == "start" ? 1 : 0); // that it was started by
        QCOMPARE(calls, (QStringList { QString("status: %1").arg(told), "status: 1",
                                       "decoder 1: destroyed" }));
        QCOMPARE(f.script->blocksTaken.load(), 0);
    }

    void kill_besideACall_isToldOnceAndLast_data()
    {
        QTest::addColumn<QString>("call");
        for (const char *call : { "decode", "flush", "drain" })
            QTest::newRow(call) << QString(call);
    }

    void kill_besideACall_isToldOnceAndLast()
    {
        QFETCH(QString, call);
        constexpr int Wanted = 1500; // kills that come just before what the call does
        constexpr int Limit = 3000;  // ms, where there is but one processor for both threads
        constexpr int Steps = 32;    // either thread is the later one by up to that many
        const auto fake = std::make_shared<QuickDecoder>();
        const QVideoEncoderSettings settings = streamSettings();
        const QPVEncodedVideoFrame frame = testFrame();
        OcelleDecoder decoder(nullptr);
        std::atomic<int> unloaded { 0 };
        std::atomic<int> others { 0 };
        connect(
                &decoder, &OcelleDecoder::statusChanged, this,
                [&](QPVDecoder::Status now) { ++(now == Unloaded ? unloaded : others); },
                Qt::DirectConnection);
        std::atomic<int> begun { 0 };
        std::atomic<int> killed { 0 };
        std::atomic<bool> ends { false };
        LibraryThread killer("Killer", [&] {
            for (int round = 1; waitFor(begun, round), !ends; ++round) {
                linger(round % Steps);
                decoder.kill();
                killed = round;
            }
        });
        QElapsedTimer timer;
        timer.start();
        int round = 0;
        int before = 0;
        int wrong = 0;
        while (before < Wanted && !timer.hasExpired(Limit)) {
            decoder.load(fake);
            decoder.start(settings);
            unloaded = 0;
            others = 0;
            begun = ++round;
            linger(round / Steps % Steps);
            if (call == QLatin1String("decode"))
                decoder.decode(frame);
            else
                call == QLatin1String("flush") ? decoder.flush() : decoder.drain();
            waitFor(killed, round);
            before += others == 0;
            wrong += unloaded != 1 || decoder.status() != Unloaded;
            decoder.setStatus(QPVDecoder::UnloadedStatus); // for the next round all the same
        }
        ends = true;
        begun = round + 1;
        killer.join();
        QCOMPARE(wrong, 0);
    }
};

QTEST_GUILESS_MAIN(TestDecoderKill)
#include "tst_ocelledecoderkill.moc"

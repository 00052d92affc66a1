// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "decodeservicefixture.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QtTest>

#include <thread>

using namespace Statuses;

namespace {

QStringList calls(const QString &object = QString())
{
    return CallLog::instance().texts(object);
}

Gate &gateOf(FakeDecoderScript &script, const QString &call)
{
    if (call == "initialize")
        return script.initializeGate;
    if (call == "decode")
        return script.decodeGate;
    if (call == "flush")
        return script.flushGate;
    if (call == "drain")
        return script.drainGate;
    return script.stopGate;
}

} // namespace

/*! The end of a service whose decoder takes long, or for ever. */
class TestDecodeSessionDrop : public QObject
{
    Q_OBJECT
private:
    /*! Has the worker inside of \a call, held up by its gate. */
    void blockIn(DecodeServiceFixture &f, const QString &call)
    {
        Gate &gate = gateOf(*f.script, call);
        if (call != "initialize")
            QVERIFY(f.activate());
        gate.close();
        if (call == "initialize") {
            QVERIFY(f.control->start(streamSettings()));
        } else if (call == "decode") {
            QVERIFY(f.control->decode(testFrame(1)));
            QVERIFY(f.control->decode(testFrame(2)));
        } else if (call == "drain") {
            f.control->drain();
        } else {
            f.control->flush();
        }
        QTRY_COMPARE(gate.waiting(), 1);
    }

private slots:
    void decoderThatBlocksForShort_isWaitedFor_data()
    {
        QTest::addColumn<QString>("call");
        for (const char *call : { "initialize", "decode", "flush", "drain", "stop" })
            QTest::newRow(call) << QString(call);
    }

    void decoderThatBlocksForShort_isWaitedFor()
    {
        QFETCH(QString, call);
        DecodeServiceFixture f;
        blockIn(f, call);
        QTimer::singleShot(100, this, [&] { gateOf(*f.script, call).open(); }); // needs events
        QElapsedTimer timer;
        timer.start();
        f.service.reset();
        QVERIFY(timer.elapsed() >= 90);
        QCOMPARE(f.recorder.statuses.last(), Unloaded);
        QCOMPARE(f.recorder.errors, QStringList());
        QStringList last = calls("decoder 1");
        last = last.mid(last.size() - 3);
        const QString ending = call == "drain" ? "drain" : "flush";
        QCOMPARE(last, (QStringList { "decoder 1: " + ending + "()", "decoder 1: stop()",
                                      "decoder 1: destroyed" }));
        QCOMPARE(f.script->blocksReleased.load(), f.script->blocksTaken.load());
        QVERIFY(!calls().contains("decoder 1: decode(2, type 0, xy)"));
    }

    void decoderThatBlocksForLong_isDroppedAtTheMark_data()
    {
        decoderThatBlocksForShort_isWaitedFor_data();
    }

    void decoderThatBlocksForLong_isDroppedAtTheMark()
    {
        QFETCH(QString, call);
        FakeSurface surface;
        DecodeServiceFixture f;
        f.renderer->setSurface(&surface);
        blockIn(f, call);
        f.script->onDestroy = [](FakeVideoDecoder &decoder) { decoder.endStream(); };
        const QStringList before = calls("decoder 1");
        CallLog::instance().clear();
        QElapsedTimer timer;
        qint64 unloadedAt = -1; // ms
        bool stopped = false;
        connect(f.control, &QPVDecodeControl::statusChanged, this, [&](QPVDecoder::Status now) {
            if (now != Unloaded || unloadedAt >= 0)
                return;
            unloadedAt = timer.elapsed();
            stopped = calls("output").contains("output 1: stop()");
            QCOMPARE(gateOf(*f.script, call).waiting(), 1); // still inside
            QCOMPARE(f.platform.codecs.heldDecoders(), 1);
        });
        QTimer::singleShot(2000, this, [&] { gateOf(*f.script, call).open(); });
        timer.start();
        f.service.reset();
        QVERIFY(timer.elapsed() >= 1850); // however long it takes
        QVERIFY2(unloadedAt >= 470, qPrintable(QString::number(unloadedAt)));
        QVERIFY(stopped);
        QCOMPARE(calls("decoder 1"), QStringList("decoder 1: destroyed"));
        QVERIFY(!before.contains("decoder 1: destroyed"));
        QCOMPARE(calls("control"), QStringList("control: statusChanged(1)"));
        QCOMPARE(f.script->blocksReleased.load(), f.script->blocksTaken.load());
        QCOMPARE(f.platform.codecs.heldDecoders(), 0);
        f.script->onDestroy = nullptr;
    }

    void decoderThatBlocksWhileItIsDropped_isLetGoOnceOnly()
    {
        // The block of the call it hangs in is still the library's.
        DecodeServiceFixture f;
        f.script->keepsBlocks = true;
        blockIn(f, "decode");
        connect(f.control, &QPVDecodeControl::statusChanged, this, [&](QPVDecoder::Status now) {
            if (now == Unloaded) {
                QCOMPARE(f.script->blocksReleased.load(), 0);
                f.script->decodeGate.open();
            }
        });
        f.service.reset();
        QCOMPARE(f.script->blocksTaken.load(), 2);
        QCOMPARE(f.script->blocksReleased.load(), 2);
        QCOMPARE(calls("decoder 1").filter("destroyed").size(), 1);
    }

    void decoderThatIsDroppedWhileAStatusIsTold_isCalledNoMore()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        connect(f.control, &QPVDecodeControl::statusChanged, this, [&](QPVDecoder::Status now) {
            if (now == Stopping) // the worker waits meanwhile
                QVERIFY(f.waitForStatus(Unloaded));
        });
        CallLog::instance().clear();
        f.service.reset();
        QCOMPARE(calls("decoder 1"), QStringList("decoder 1: destroyed"));
        QCOMPARE(f.recorder.statuses.mid(3), (QList<int> { Stopping, Unloaded }));
    }

    void statusOnItsWayWhileTheDecoderIsDropped_comesTooLate()
    {
        DecodeServiceFixture f;
        blockIn(f, "decode");
        f.recorder.statuses.clear();
        bool wasStopping = false;
        // Falls due in one go with the fallback, and before it.
        QTimer::singleShot(400, Qt::PreciseTimer, this, [&] {
            f.script->decodeGate.open();
            while (f.control->status() == Active)
                std::this_thread::yield();
            wasStopping = f.control->status() == Stopping;
        });
        QTimer::singleShot(0, this, [] {
            QElapsedTimer busy;
            busy.start();
            while (busy.elapsed() < 600)
                std::this_thread::yield();
        });
        f.service.reset();
        QVERIFY(wasStopping);
        QCOMPARE(f.recorder.statuses, QList<int> { Unloaded });
        QVERIFY(calls("decoder 1").filter("flush").isEmpty());
    }

    void decoderWhoseTurnNeverCame_mayTellOfAnErrorWhenTheControlIsGone()
    {
        DecodeServiceFixture f;
        blockIn(f, "decode");
        QVERIFY(f.control->start(streamSettings("video/vp8"))); // waits for the worker
        f.script->onDestroy = [](FakeVideoDecoder &decoder) {
            decoder.fail("torn down");
            decoder.endStream();
        };
        int heldWithoutControl = -1;
        connect(f.control, &QObject::destroyed, this,
                [&] { heldWithoutControl = f.platform.codecs.heldDecoders(); });
        QTimer::singleShot(20, this, [&f] { f.script->decodeGate.open(); });
        f.service.reset();
        QCOMPARE(heldWithoutControl, 1); // the worker and what it has go last
        QCOMPARE(f.platform.codecs.heldDecoders(), 0);
        QVERIFY(!calls().filter("decoder 2: destroyed").isEmpty());
        QCOMPARE(f.recorder.errors.size(), 1); // the first decoder's, while there was a control
        QVERIFY(calls("decoder 2").filter("initialize").isEmpty());
        f.script->onDestroy = nullptr;
    }
};

QTEST_GUILESS_MAIN(TestDecodeSessionDrop)
#include "tst_ocelledecodesessiondrop.moc"

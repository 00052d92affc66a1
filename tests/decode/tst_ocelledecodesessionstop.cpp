// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "decodeservicefixture.h"

#include <QtTest>

using namespace Statuses;

namespace {

QStringList calls(const QString &object = QString())
{
    return CallLog::instance().texts(object);
}

void end(DecodeServiceFixture &f, const QString &how)
{
    if (how == "flush")
        f.control->flush();
    else if (how == "stop")
        f.control->stop();
    else
        f.control->drain();
}

} // namespace

/*! The ends of a stream, and what comes after. */
class TestDecodeSessionStop : public QObject
{
    Q_OBJECT
private slots:
    void startFlushStart_inOneGo_runsTheLast()
    {
        DecodeServiceFixture f;
        for (int round = 0; round < 20; ++round) {
            QVERIFY(f.control->start(streamSettings()));
            f.control->decode(testFrame(3));
            f.control->flush();
            QVERIFY(!f.control->decode(testFrame(3)));
            QVERIFY(f.control->start(streamSettings()));
            const int last = f.platform.codecs.madeDecoders();
            QVERIFY(f.waitForCall(
                    QString("decoder %1: initialize(codec 3, 64x48, 30 fps)").arg(last)));
            QVERIFY(f.waitForStatus(Starting));
            QCOMPARE(f.platform.codecs.heldDecoders(), 1);
            QVERIFY(!calls().contains(QString("decoder %1: decode(3, type 0, xy)").arg(last)));
            f.control->stop();
            QVERIFY(f.waitForStatus(Unloaded));
        }
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void drainBeforeTheDecoderCouldStart_isAnErrorForEachFrame()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->drainGate.close();
        f.control->drain();
        QTRY_COMPARE(f.script->drainGate.waiting(), 1);
        QVERIFY(f.control->start(streamSettings()));
        QVERIFY(f.control->decode(testFrame(1)) && f.control->decode(testFrame(2)));
        f.control->drain();
        f.script->drainGate.open();
        QTRY_COMPARE(f.recorder.errors, (QStringList { "3 Decoder error", "3 Decoder error" }));
        QCOMPARE(calls("decoder 1").filter("decode(").size(), 1);
        QCOMPARE(calls("decoder 2"), QStringList());
    }

    void flushFromASlot_isTakenInEveryStatus_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("how");
        for (const char *how : { "flush", "drain", "restart" }) {
            for (const int status : { Loaded, Starting, Active, Stopping, Unloaded })
                QTest::addRow("%s, %d", how, status) << status << how;
        }
    }

    void flushFromASlot_isTakenInEveryStatus()
    {
        QFETCH(int, status);
        QFETCH(QString, how);
        DecodeServiceFixture f;
        bool done = false;
        connect(f.control, &QPVDecodeControl::statusChanged, this, [&](QPVDecoder::Status now) {
            if (now != status || done)
                return;
            done = true;
            if (how == "flush")
                f.control->flush();
            else if (how == "drain")
                f.control->drain();
            else
                QVERIFY(f.control->start(streamSettings("video/vp9")));
        });
        QVERIFY(f.control->start(streamSettings()));
        f.control->decode(testFrame());
        if (status == Stopping || status == Unloaded) {
            QVERIFY(f.waitForStatus(Active));
            f.control->stop();
        }
        QTRY_VERIFY(done);
        if (how == "restart") {
            QVERIFY(f.waitForCall("decoder 2: initialize(codec 2, 64x48, 30 fps)"));
            QVERIFY(f.waitForStatus(Starting));
        } else {
            QVERIFY(f.waitForStatus(Unloaded));
            QCOMPARE(f.platform.codecs.heldDecoders(), 0);
        }
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void endOfNothing_leavesTheNextStart_data()
    {
        QTest::addColumn<QString>("how");
        for (const char *how : { "flush", "stop", "drain" })
            QTest::newRow(how) << QString(how);
    }

    void endOfNothing_leavesTheNextStart()
    {
        QFETCH(QString, how);
        bool taken = false; // before the service, whose end is told too
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        connect(f.control, &QPVDecodeControl::statusChanged, this, [&](QPVDecoder::Status now) {
            if (now != Unloaded || taken)
                return;
            end(f, how); // the worker waits meanwhile
            taken = f.control->start(streamSettings()) && f.control->decode(testFrame(1));
        });
        f.control->stop();
        QTRY_VERIFY(taken);
        QVERIFY(f.waitForStatus(Active));
        QVERIFY(f.waitForCall("decoder 2: decode(1, type 0, xy)"));
        QCOMPARE(f.recorder.statuses, (QList<int> { Loaded, Starting, Active, Stopping, Unloaded,
                                                    Loaded, Starting, Active }));
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void endOfADrainingStream_losesNoFrame_data() { endOfNothing_leavesTheNextStart_data(); }

    void endOfADrainingStream_losesNoFrame()
    {
        QFETCH(QString, how);
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->decodeGate.close();
        for (quint64 time = 1; time <= 6; ++time)
            QVERIFY(f.control->decode(testFrame(time)));
        QTRY_COMPARE(f.script->decodeGate.waiting(), 1); // and five more wait
        f.control->drain();
        end(f, how);
        f.script->decodeGate.open();
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(calls("decoder 1").filter("decode(").size(), 7);
        QCOMPARE(calls("decoder 1").mid(7),
                 (QStringList { "decoder 1: decode(6, type 0, xy)", "decoder 1: drain()",
                                "decoder 1: stop()", "decoder 1: destroyed" }));
    }
};

QTEST_GUILESS_MAIN(TestDecodeSessionStop)
#include "tst_ocelledecodesessionstop.moc"

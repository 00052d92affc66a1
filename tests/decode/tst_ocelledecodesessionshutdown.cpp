// SPDX-License-Identifier: BSD-3-Clause
#include "decodeservicefixture.h"
#include "fakegraphicbuffer.h"
#include "librarythread.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QtTest>

using namespace Statuses;
using namespace Veltra::Ocelle;

class TestDecodeSessionShutdown : public QObject
{
    Q_OBJECT
private slots:
    void service_goesInEveryStatus_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("restarting");
        QTest::newRow("unloaded") << Unloaded << false;
        QTest::newRow("start asked for") << Loaded << false;
        QTest::newRow("starting") << Starting << false;
        QTest::newRow("active") << Active << false;
        QTest::newRow("stop asked for") << Stopping << false;
        QTest::newRow("restart asked for") << Active << true;
    }

    void service_goesInEveryStatus()
    {
        QFETCH(int, status);
        QFETCH(bool, restarting);
        FakeSurface surface;
        DecodeServiceFixture f;
        f.renderer->setSurface(&surface);
        f.script->keepsBlocks = true;
        f.script->onDestroy = [](FakeVideoDecoder &decoder) {
            decoder.deliver(GraphicBuffer::create(1));
            decoder.fail("torn down");
            decoder.endStream();
        };
        if (status == Loaded) {
            QVERIFY(f.control->start(streamSettings()));
            f.control->decode(testFrame());
        }
        if (status == Starting)
            QVERIFY(f.start());
        if (status == Active || status == Stopping)
            QVERIFY(f.activate());
        if (status == Stopping)
            f.control->stop();
        if (restarting)
            QVERIFY(f.control->start(streamSettings("video/vp8")));
        QElapsedTimer timer;
        timer.start();
        f.service.reset();
        QVERIFY(timer.elapsed() < 450); // no need for the fallback
        QCOMPARE(f.platform.codecs.heldDecoders(), 0);
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QCOMPARE(GraphicBuffer::alive(), 0);
        QCOMPARE(f.script->blocksReleased.load(), f.script->blocksTaken.load());
        if (status == Active || status == Stopping)
            QCOMPARE(f.recorder.statuses.last(), Unloaded);
    }

    void service_mayGoInASlotOfEachStatus_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("how");
        for (const char *how : { "flush", "drain", "restart" }) {
            for (const int status : { Loaded, Starting, Active, Stopping, Unloaded })
                QTest::addRow("%s, %d", how, status) << status << how;
        }
    }

    void service_mayGoInASlotOfEachStatus()
    {
        QFETCH(int, status);
        QFETCH(QString, how);
        FakeSurface surface;
        DecodeServiceFixture f;
        f.renderer->setSurface(&surface);
        if (status == Stopping || status == Unloaded)
            QVERIFY(f.activate());
        connect(f.control, &QPVDecodeControl::statusChanged, this, [&](QPVDecoder::Status now) {
            if (now == status)
                delete f.service.release();
        });
        QPointer<OcelleDecodeService> service(f.service.get());
        QElapsedTimer timer;
        timer.start();
        if (status != Stopping && status != Unloaded) {
            QVERIFY(f.control->start(streamSettings()));
            f.control->decode(testFrame());
        } else if (how == "flush") {
            f.control->flush();
        } else if (how == "drain") {
            f.control->drain();
        } else {
            QVERIFY(f.control->start(streamSettings("video/vp8")));
        }
        QTRY_VERIFY(service.isNull());
        QVERIFY(timer.elapsed() < 450);
        QCOMPARE(f.platform.codecs.heldDecoders(), 0);
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QCOMPARE(f.script->blocksReleased.load(), f.script->blocksTaken.load());
    }

    void service_mayGoInASlotOfAnError_data()
    {
        QTest::addColumn<QString>("what");
        for (const char *what : { "create", "restart", "initialize", "frame", "decoder" })
            QTest::newRow(what) << QString(what);
    }

    void service_mayGoInASlotOfAnError()
    {
        QFETCH(QString, what);
        DecodeServiceFixture f;
        if (what == "restart" || what == "frame" || what == "decoder")
            QVERIFY(f.activate());
        QPointer<OcelleDecodeService> service(f.service.get());
        QObject receiver; // takes with it what is queued for it once the service has gone
        connect(f.control, &QPVDecodeControl::error, &receiver,
                [&] { delete f.service.release(); });
        if (what == "create" || what == "restart") {
            f.script->createFails = true;
            QVERIFY(!f.control->start(streamSettings("video/vp8")));
            QVERIFY(service.isNull());
        } else if (what == "initialize") {
            f.script->initializeFails = true;
            QVERIFY(f.control->start(streamSettings()));
        } else if (what == "frame") {
            f.script->decodeFails = true;
            QVERIFY(f.control->decode(testFrame(1)));
        } else {
            const auto decoder = f.decoder();
            LibraryThread::run("FakeDecoder", [&] { decoder->fail("text"); }); // arrives queued
        }
        QTRY_VERIFY(service.isNull());
        QCOMPARE(f.platform.codecs.heldDecoders(), 0);
    }

    void startFromASlotWhileTheServiceGoes_endsAllTheSame_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("stopping") << Stopping;
        QTest::newRow("unloaded") << Unloaded;
    }

    void startFromASlotWhileTheServiceGoes_endsAllTheSame()
    {
        QFETCH(int, status);
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        connect(f.control, &QPVDecodeControl::statusChanged, this, [&](QPVDecoder::Status now) {
            if (now == status) {
                f.control->start(streamSettings("video/vp9"));
                f.control->decode(testFrame(1));
            }
        });
        f.service.reset();
        QCOMPARE(f.platform.codecs.heldDecoders(), 0);
        QCOMPARE(f.script->blocksReleased.load(), f.script->blocksTaken.load());
    }

    void session_mayGoWithoutShutdown()
    {
        FakePlatform platform;
        platform.codecs.giveDecoders();
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        {
            OcelleDecodeSession session(&provider, nullptr);
            QVERIFY(session.startDecoder(streamSettings()));
        }
        QCOMPARE(platform.codecs.heldDecoders(), 0);
    }

    void manyRuns_leaveNothingBehind()
    {
        DecodeServiceFixture f;
        for (int round = 0; round < 100; ++round) {
            QVERIFY(f.control->start(streamSettings()));
            const int number = f.platform.codecs.madeDecoders();
            QVERIFY(f.waitForCall(
                    QString("decoder %1: initialize(codec 3, 64x48, 30 fps)").arg(number)));
            for (quint64 time = 0; time < 5; ++time)
                f.control->decode(testFrame(time));
            round % 2 ? f.control->drain() : f.control->stop();
        }
        QTRY_COMPARE(int(f.control->status()), Unloaded);
        QTRY_COMPARE(f.platform.codecs.heldDecoders(), 0);
        QCOMPARE(f.recorder.errors, QStringList());
        QCOMPARE(f.script->blocksReleased.load(), f.script->blocksTaken.load());
        QVERIFY(f.script->blocksTaken >= 250); // what was drained is not lost
    }
};

QTEST_GUILESS_MAIN(TestDecodeSessionShutdown)
#include "tst_ocelledecodesessionshutdown.moc"

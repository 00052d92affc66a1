// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encodeservicefixture.h"
#include "librarythread.h"
#include "recordingsink.h"
#include "testpicture.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

using namespace Statuses;
using Veltra::Ocelle::FrameType;

namespace {

QStringList calls(const QString &object = QString())
{
    return CallLog::instance().texts(object);
}

void tellEverything(FakeVideoEncoder &encoder)
{
    encoder.deliver("too late", 8);
    encoder.fail("torn down");
    encoder.endStream();
}

} // namespace

class TestEncodeSessionShutdown : public QObject
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
        RecordingSink sink;
        EncodeServiceFixture f;
        f.source->addSink(&sink);
        if (status == Loaded)
            QVERIFY(f.control->start(surfaceFormat()));
        if (status == Starting)
            QVERIFY(f.start());
        if (status == Active || status == Stopping)
            QVERIFY(f.activate());
        if (status == Stopping)
            f.control->stop();
        if (restarting)
            f.settings->setVideoSettings(encoderSettings(1, "rotate", 90));
        f.service.reset();
        QCOMPARE(f.platform.codecs.heldEncoders(), 0);
        const QStringList told = calls("sink");
        QVERIFY(told.filter("start(").size() <= told.filter("stop()").size());
        if (!told.filter("start(").isEmpty())
            QCOMPARE(told.mid(told.size() - 2), (QStringList { "sink: finish()", "sink: stop()" }));
        QCOMPARE(calls("codecs").filter("createVideoEncoder").size(), status == Unloaded ? 0 : 1);
    }

    void service_waitsForAnEncoderThatIsBusy_andServesEvents()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->encodeGate.close();
        QVERIFY(f.control->encode(testPicture(1)));
        QTRY_COMPARE(f.script->encodeGate.waiting(), 1);
        QTimer::singleShot(20, this, [&f] { f.script->encodeGate.open(); }); // needs events
        f.service.reset();
        QCOMPARE(calls("encoder").last(), QString("encoder 1: destroyed"));
        QCOMPARE(f.recorder.statuses.last(), Unloaded);
    }

    void service_mayGoInASlotOfEachStatus_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("whileRestarting");
        QTest::newRow("loaded") << Loaded << false;
        QTest::newRow("starting") << Starting << false;
        QTest::newRow("stopping") << Stopping << false;
        QTest::newRow("unloaded") << Unloaded << false;
        QTest::newRow("loaded, restarting") << Loaded << true;
        QTest::newRow("starting, restarting") << Starting << true;
        QTest::newRow("stopping, restarting") << Stopping << true;
        QTest::newRow("unloaded, restarting") << Unloaded << true;
        QTest::newRow("active") << Active << false;
    }

    void service_mayGoInASlotOfEachStatus()
    {
        QFETCH(int, status);
        QFETCH(bool, whileRestarting);
        RecordingSink sink;
        EncodeServiceFixture f;
        f.source->addSink(&sink);
        if (whileRestarting || status == Stopping || status == Unloaded)
            QVERIFY(f.activate());
        connect(f.control, &QPVEncodeControl::statusChanged, this, [&](QPVEncoder::Status now) {
            if (now == status)
                delete f.service.release();
        });
        QPointer<OcelleEncodeService> service(f.service.get());
        if (whileRestarting) {
            f.settings->setVideoSettings(encoderSettings(1, "rotate", 90));
        } else if (status == Stopping || status == Unloaded) {
            f.control->stop();
        } else {
            QVERIFY(f.control->start(surfaceFormat()));
            QVERIFY(f.control->encode(testPicture()));
        }
        QTRY_VERIFY(service.isNull());
        QCOMPARE(f.platform.codecs.heldEncoders(), 0);
        const QStringList told = calls("sink");
        if (!told.filter("start(").isEmpty())
            QCOMPARE(told.last(), QString("sink: stop()"));
        QVERIFY(told.filter("start(").size() <= 1);
    }

    void service_mayGoInASlotOfAnError_data()
    {
        QTest::addColumn<QString>("what");
        for (const char *what : { "start", "restart", "sink", "format", "encoder" })
            QTest::newRow(what) << QString(what);
    }

    void service_mayGoInASlotOfAnError()
    {
        QFETCH(QString, what);
        RecordingSink sink;
        EncodeServiceFixture f;
        if (what == "restart" || what == "sink" || what == "encoder")
            QVERIFY(f.activate());
        QPointer<OcelleEncodeService> service(f.service.get());
        QObject receiver; // takes with it what is queued for it once the service has gone
        connect(f.control, &QPVEncodeControl::error, &receiver,
                [&] { delete f.service.release(); });
        sink.starts = false;
        if (what == "start" || what == "restart")
            f.script->createFails = true;
        if (what == "start") {
            QVERIFY(!f.control->start(surfaceFormat()));
        } else if (what == "restart") {
            f.settings->setVideoSettings(encoderSettings(1, "rotate", 90));
        } else if (what == "sink") {
            QVERIFY(f.source->addSink(&sink));
        } else if (what == "format") {
            sink.supportsFormat = false;
            f.source->addSink(&sink);
            QVERIFY(!f.control->start(surfaceFormat()));
        } else {
            const auto encoder = f.platform.codecs.encoder();
            LibraryThread::run("FakeEncoder", [&] { encoder->fail("text"); }); // arrives queued
        }
        QTRY_VERIFY(service.isNull());
    }

    void startFromASlotWhileTheServiceGoes_isRefused()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        QList<bool> answers;
        connect(f.control, &QPVEncodeControl::statusChanged, this, [&](QPVEncoder::Status now) {
            if (now == Unloaded)
                answers.append(f.control->start(surfaceFormat()));
        });
        f.service.reset();
        QCOMPARE(answers, QList<bool> { false });
        QCOMPARE(f.platform.codecs.heldEncoders(), 0);
    }

    void session_mayGoWithoutShutdown()
    {
        FakePlatform platform;
        const auto script = platform.codecs.giveEncoders();
        OcelleProvider provider(&platform.cameras, &platform.codecs);
        {
            OcelleEncodeSession session(&provider, nullptr);
            session.setVideoSettings(encoderSettings());
            QVERIFY(session.startEncoder(surfaceFormat()));
        }
        QCOMPARE(platform.codecs.heldEncoders(), 0);
    }

    void outputFromTheEncodersOwnDestruction_isDelivered()
    {
        RecordingSink sink;
        EncodeServiceFixture f;
        f.source->addSink(&sink);
        f.script->onDestroy = [](FakeVideoEncoder &encoder) {
            encoder.deliver("last", 99);
            encoder.fail("torn down");
            encoder.endStream();
        };
        QVERIFY(f.activate());
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(calls("sink").contains("sink: present(99)"));
        QVERIFY(calls("sink").indexOf("sink: present(99)") <
                calls("sink").indexOf("sink: finish()"));
        QTRY_COMPARE(f.recorder.frames().size(), 1);
        QCOMPARE(f.recorder.endsOfStream, 1);
        QVERIFY(f.activate()); // and now as the service goes
        f.service.reset();
        QCOMPARE(calls("sink").filter("present(99)").size(), 2);
        f.script->onDestroy = nullptr;
    }

    void encoderWhoseTurnNeverCame_tellsNobody()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->encodeGate.close();
        QVERIFY(f.control->encode(testPicture(1)));
        QTRY_COMPARE(f.script->encodeGate.waiting(), 1);
        QVERIFY(f.control->start(surfaceFormat())); // waits for the worker
        f.script->onDestroy = [](FakeVideoEncoder &encoder) { encoder.fail("torn down"); };
        QTimer::singleShot(20, this, [&f] { f.script->encodeGate.open(); });
        f.service.reset();
        QCOMPARE(f.platform.codecs.heldEncoders(), 0);
        f.script->onDestroy = nullptr;
    }

    void encoderThatThePlatformKeeps_findsNobodyLater()
    {
        RecordingSink sink;
        EncodeServiceFixture f;
        f.source->addSink(&sink);
        QVERIFY(f.activate());
        const auto kept = f.platform.codecs.encoder();
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(kept->deliver("late", 7)); // it may still have something to put out
        QVERIFY(calls("sink").contains("sink: present(7)"));
        f.service.reset();
        tellEverything(*kept);
        QVERIFY(!calls("sink").contains("sink: present(8)"));
    }

    void encoderThatThePlatformDropsWhileTheServiceGoes_findsNobodyLater()
    {
        RecordingSink sink;
        EncodeServiceFixture f;
        f.source->addSink(&sink);
        QVERIFY(f.activate());
        auto kept = f.platform.codecs.encoder();
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        f.script->onDestroy = tellEverything;
        f.script->destroyGate.close();
        LibraryThread library("FakeEncoder", [&kept] { kept.reset(); });
        QTRY_COMPARE(f.script->destroyGate.waiting(), 1);
        f.service.reset(); // nobody can be told now: the last reference has gone
        f.script->destroyGate.open();
        library.join();
        QVERIFY(calls("encoder").contains("encoder 1: destroyed"));
        QVERIFY(!calls("sink").contains("sink: present(8)"));
        f.script->onDestroy = nullptr;
    }

    void service_waitsForACallOfAnEncoderThatThePlatformDrops()
    {
        RecordingSink sink;
        EncodeServiceFixture f;
        f.source->addSink(&sink);
        QVERIFY(f.activate());
        auto kept = f.platform.codecs.encoder();
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        f.script->onDestroy = tellEverything;
        Gate callGate;
        callGate.close();
        std::atomic<bool> hasReturned { false };
        connect(
                f.control, &QPVEncodeControl::error, f.control,
                [&] {
                    callGate.pass();
                    hasReturned = true;
                },
                Qt::DirectConnection);
        LibraryThread library("FakeEncoder", [&kept] { kept.reset(); });
        QTRY_COMPARE(callGate.waiting(), 1);
        LibraryThread opener("FakeOpener", [&] {
            QTest::qSleep(50); // long enough for a service that does not wait to be gone
            callGate.open();
        });
        f.service.reset();
        QVERIFY(hasReturned);
        library.join();
        opener.join();
        f.script->onDestroy = nullptr;
    }

    void service_servesASlotThatACallOfAnEncoderWaitsFor()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        const auto kept = f.platform.codecs.encoder();
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        std::atomic<bool> isInside { false };
        bool isServed = false;
        connect(
                f.control, &QPVEncodeControl::error, f.control, [&] { isInside = true; },
                Qt::DirectConnection);
        connect(
                f.control, &QPVEncodeControl::error, this, [&] { isServed = true; },
                Qt::BlockingQueuedConnection);
        LibraryThread library("FakeEncoder", [&kept] { kept->fail("text"); });
        while (!isInside)
            std::this_thread::yield();
        f.service.reset();
        library.join();
        QVERIFY(isServed);
    }

    void service_mayGoInACallOfAnEncoderThatIsGivenUp()
    {
        EncodeServiceFixture f;
        QVERIFY(f.activate());
        f.script->onDestroy = [](FakeVideoEncoder &encoder) {
            if (QThread::currentThread() == QCoreApplication::instance()->thread())
                encoder.fail("given up");
        };
        QPointer<OcelleEncodeService> service(f.service.get());
        connect(f.control, &QPVEncodeControl::error, this, [&] { delete f.service.release(); });
        // The restart is called off while it gets its encoder, which is given up on this thread.
        f.script->onCreate = [&f] { f.control->stop(); };
        f.settings->setVideoSettings(encoderSettings(1, "rotate", 90));
        QTRY_VERIFY(service.isNull());
        QTRY_COMPARE(f.platform.codecs.heldEncoders(), 0);
        f.script->onDestroy = nullptr;
    }

    void pictureThatThePlatformKeeps_outlivesTheService()
    {
        const auto track = std::make_shared<BufferTrack>();
        std::shared_ptr<FakeVideoEncoder> kept;
        {
            EncodeServiceFixture f;
            f.script->keepsPictures = true;
            QVERIFY(f.start());
            QVERIFY(f.control->encode(trackedPicture(track)));
            QVERIFY(f.waitForStatus(Active));
            kept = f.platform.codecs.encoder();
        }
        QCOMPARE(track->buffers.load(), 1);
        QCOMPARE(track->unmaps.load(), 0);
        LibraryThread::run("FakeEncoder", [&kept] { kept->dropPictures(); });
        QCOMPARE(track->unmaps.load(), 1);
        QCOMPARE(track->buffers.load(), 0);
    }

    void framesThatKeepComing_doNotDisturbTheEnd()
    {
        for (int round = 0; round < 20; ++round) {
            RecordingSink sink;
            EncodeServiceFixture f;
            f.source->addSink(&sink);
            QVERIFY(f.activate());
            std::atomic<bool> ends { false };
            LibraryThread library("FakeEncoder", [&, encoder = f.platform.codecs.encoder()] {
                for (unsigned long time = 1; !ends; ++time) {
                    encoder->deliver("x", time);
                    encoder->endStream();
                }
            });
            if (round % 2)
                QTRY_VERIFY(!calls("sink").filter("present").isEmpty());
            f.service.reset();
            CallLog::instance().clear();
            ends = true;
            library.join();
            QCOMPARE(calls("sink"), QStringList());
            QCOMPARE(calls("control"), QStringList());
            QCOMPARE(sink.callsAtOnce.load(), 1);
        }
    }

    void manyRuns_leaveNothingBehind()
    {
        EncodeServiceFixture f;
        for (int round = 0; round < 50; ++round) {
            QVERIFY(f.control->start(surfaceFormat()));
            QVERIFY(QTest::qWaitFor([&] { return int(f.control->status()) == Starting; }));
            f.control->encode(testPicture(round));
            f.control->stop();
        }
        QTRY_COMPARE(int(f.control->status()), Unloaded);
        QTRY_COMPARE(f.platform.codecs.heldEncoders(), 0);
        QCOMPARE(f.recorder.errors, QStringList());
    }
};

QTEST_GUILESS_MAIN(TestEncodeSessionShutdown)
#include "tst_ocelleencodesessionshutdown.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "decodeservicefixture.h"
#include "fakegraphicbuffer.h"
#include "librarythread.h"
#include "messagelog.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

using namespace Statuses;
using namespace Veltra::Ocelle;

namespace {

QStringList calls(const QString &object = QString())
{
    return CallLog::instance().texts(object);
}

void tellEverything(FakeVideoDecoder &decoder)
{
    const YCbCrFrame frame {};
    decoder.deliver(&frame);
    decoder.deliver(GraphicBuffer::create(1));
    decoder.changeParameter(VideoDecoderParameter::ViewportParameter, "(1,2,3,4)");
    decoder.fail("too late");
    decoder.endStream();
}

} // namespace

/*! What decoders tell while the service goes, and later. */
class TestDecodeListener : public QObject
{
    Q_OBJECT
private slots:
    void service_mayGoInASlotThatADecodersThreadWaitsFor()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        const auto decoder = f.decoder();
        connect(
                f.control, &QPVDecodeControl::error, this, [&] { delete f.service.release(); },
                Qt::BlockingQueuedConnection);
        LibraryThread library("FakeDecoder", [&decoder] { decoder->fail("text"); });
        QTRY_VERIFY(!f.service);
        library.join();
        tellEverything(*decoder);
        QCOMPARE(f.recorder.errors.filter("too late"), QStringList());
    }

    void service_goesWhileADecodersThreadTellsOfAnError()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        const auto decoder = f.decoder();
        Gate slotGate;
        slotGate.close();
        connect(
                f.control, &QPVDecodeControl::error, f.control, [&slotGate] { slotGate.pass(); },
                Qt::DirectConnection);
        QPointer<QPVDecodeControl> control(f.control);
        LibraryThread library("FakeDecoder", [&decoder] { decoder->fail("text"); });
        QTRY_COMPARE(slotGate.waiting(), 1);
        f.service.reset();
        QVERIFY(control); // its signal is being handled
        slotGate.open();
        library.join();
        QTRY_VERIFY(!control);
    }

    void service_waitsForAPictureThatADecoderDelivers()
    {
        FakeSurface surface;
        DecodeServiceFixture f;
        f.renderer->setSurface(&surface);
        QVERIFY(f.activate());
        const auto kept = f.decoder();
        const auto output = FakeVideoOutput::at(1);
        output->bufferGate.close();
        LibraryThread library("FakeDecoder", [&kept] { kept->deliver(GraphicBuffer::create(7)); });
        QTRY_COMPARE(output->bufferGate.waiting(), 1);
        LibraryThread opener("FakeOpener", [&output] {
            while (!calls("decoder 1").contains("decoder 1: stop()"))
                std::this_thread::yield();
            output->bufferGate.open();
        });
        f.service.reset();
        library.join();
        QCOMPARE(output->buffers(), QVector<int> { 7 });
        QCOMPARE(GraphicBuffer::alive(), 0);
    }

    void decoderThatThePlatformKeeps_findsNobodyLater()
    {
        FakeSurface surface;
        DecodeServiceFixture f;
        f.renderer->setSurface(&surface);
        QVERIFY(f.activate());
        const auto kept = f.decoder();
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(kept->fail("late")); // there is still a service
        QTRY_COMPARE(f.recorder.errors, QStringList("3 late"));
        f.service.reset();
        CallLog::instance().clear();
        tellEverything(*kept);
        QCOMPARE(calls(), QStringList());
        QCOMPARE(GraphicBuffer::alive(), 0);
    }

    void decoderThatThePlatformDropsWhileTheServiceGoes_findsNobodyLater()
    {
        FakeSurface surface;
        DecodeServiceFixture f;
        f.renderer->setSurface(&surface);
        QVERIFY(f.activate());
        auto kept = f.decoder();
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        Gate destroyGate;
        destroyGate.close();
        f.script->onDestroy = [&destroyGate](FakeVideoDecoder &decoder) {
            destroyGate.pass();
            tellEverything(decoder);
        };
        LibraryThread library("FakeDecoder", [&kept] { kept.reset(); });
        QTRY_COMPARE(destroyGate.waiting(), 1);
        f.service.reset(); // nobody can be told now: the last reference has gone
        CallLog::instance().clear();
        destroyGate.open();
        library.join();
        QCOMPARE(calls(), QStringList("decoder 1: destroyed"));
        QCOMPARE(GraphicBuffer::alive(), 0);
        f.script->onDestroy = nullptr;
    }

    void listener_isAttachedToEachDecoderOnceAndNeverDetached()
    {
        DecodeServiceFixture f;
        CallLog::instance().clear();
        QVERIFY(f.activate());
        const auto kept = f.decoder();
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(f.activate());
        const auto second = f.decoder();
        QVERIFY(f.control->start(streamSettings("video/vp8")));
        QVERIFY(f.waitForStatus(Starting));
        f.service.reset();
        QCOMPARE(f.platform.codecs.madeDecoders(), 3);
        QCOMPARE(calls().filter("lockAndSetListener"),
                 QStringList::fromVector(
                         QVector<QString>(3, "decoder: lockAndSetListener(listener)")));
    }

    void service_servesEventsWhileItWaitsForADecodersCall()
    {
        DecodeServiceFixture f;
        std::atomic<QThread *> worker { nullptr };
        f.script->onInitialize = [&worker](FakeVideoDecoder &) {
            worker = QThread::currentThread();
        };
        MessageLog messages;
        QVERIFY(f.activate());
        const auto kept = f.decoder();
        messages.gate.close();
        LibraryThread library("FakeDecoder", [&kept] { kept->endStream(); }); // is warned of
        QTRY_COMPARE(messages.gate.waiting(), 1);
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            if (worker.load()->isFinished()) // so that it is the call alone that is waited for
                messages.gate.open();
        });
        timer.start(1);
        f.service.reset();
        const int inside = messages.gate.waiting();
        messages.gate.open();
        library.join();
        QCOMPARE(inside, 0);
    }

    void decodersCallThatTakesLong_isNoMatterOfTheMark()
    {
        DecodeServiceFixture f;
        MessageLog messages;
        QVERIFY(f.activate());
        const auto kept = f.decoder();
        f.control->stop();
        QVERIFY(f.waitForStatus(Unloaded));
        messages.gate.close();
        LibraryThread library("FakeDecoder", [&kept] { kept->endStream(); });
        QTRY_COMPARE(messages.gate.waiting(), 1);
        CallLog::instance().clear();
        QObject context; // takes the opener along
        QTimer::singleShot(800, &context, [&messages] { messages.gate.open(); });
        QElapsedTimer timer;
        timer.start();
        f.service.reset();
        const qint64 waited = timer.elapsed(); // ms
        messages.gate.open();
        library.join();
        QVERIFY2(waited >= 700, qPrintable(QString::number(waited)));
        QCOMPARE(calls("control"), QStringList()); // it was unloaded already
    }

    void picturesThatKeepComing_doNotDisturbTheEnd()
    {
        for (int round = 0; round < 20; ++round) {
            FakeSurface surface;
            DecodeServiceFixture f;
            f.renderer->setSurface(&surface);
            std::atomic<bool> ends { false };
            std::unique_ptr<LibraryThread> library;
            // As a library does: its thread goes with the decoder.
            f.script->onInitialize = [&](FakeVideoDecoder &decoder) {
                library = std::make_unique<LibraryThread>("FakeDecoder", [&] {
                    while (!ends) {
                        decoder.deliver(GraphicBuffer::create(1));
                        decoder.changeParameter(VideoDecoderParameter::ViewportParameter,
                                                "(1,2,3,4)");
                        decoder.endStream();
                        decoder.fail("again");
                    }
                });
            };
            f.script->onDestroy = [&](FakeVideoDecoder &) {
                ends = true;
                library.reset();
            };
            if (round % 2)
                QVERIFY(f.activate() && f.waitForCall("control: error(3 again)"));
            else
                QVERIFY(f.control->start(streamSettings()));
            f.service.reset();
            QCOMPARE(f.platform.codecs.heldDecoders(), 0);
            QCOMPARE(GraphicBuffer::alive(), 0);
            QCOMPARE(FakeVideoOutput::alive(), 0);
            CallLog::instance().clear();
            f.script->onDestroy = nullptr;
        }
    }
};

QTEST_GUILESS_MAIN(TestDecodeListener)
#include "tst_ocelledecodelistener.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "decodeservicefixture.h"
#include "fakegraphicbuffer.h"
#include "librarythread.h"
#include "messagelog.h"
#include "threadstate.h"

#include <QtTest>

#include <atomic>
#include <limits>
#include <memory>

using namespace Statuses;
using namespace Veltra::Ocelle;

namespace {

const QString Debug("debug veltra.palaver.decoder.ocelle: ");
const QString Eos("warning veltra.palaver.decoder.ocelle: EOS is not handled yet.");

QStringList calls(const QString &object)
{
    return CallLog::instance().texts(object);
}

/*! A service that decodes to a surface. */
class OutputFixture : public DecodeServiceFixture
{
public:
    OutputFixture()
    {
        renderer->setSurface(&surface);
        ready = activate();
        output = FakeVideoOutput::at(1);
        CallLog::instance().clear();
    }
    ~OutputFixture() { script->openGates(); }

    FakeSurface surface;
    std::shared_ptr<FakeVideoOutput> output;
    bool ready = false;
};

} // namespace

class TestDecodeSessionOutput : public QObject
{
    Q_OBJECT
private slots:
    void pictures_reachTheOutputWithinTheCallback()
    {
        OutputFixture f;
        QVERIFY(f.ready);
        const YCbCrFrame frame {};
        const auto decoder = f.decoder();
        LibraryThread::run("FakeDecoder", [&] {
            decoder->deliver(GraphicBuffer::create(1));
            decoder->deliver(&frame);
            decoder->deliver(GraphicBuffer::create(2));
        });
        const QString address = QString::number(reinterpret_cast<quintptr>(&frame), 16);
        QCOMPARE(calls("output"), (QStringList { "output 1: onGraphicBuffer(1)",
                                                 "output 1: onVideoFrame(0x" + address + ')',
                                                 "output 1: onGraphicBuffer(2)" }));
        QCOMPARE(CallLog::instance().threadNames("output"), QStringList("FakeDecoder"));
        QCOMPARE(GraphicBuffer::alive(), 0);
    }

    void pictures_withoutASurfaceAreDropped()
    {
        OutputFixture f;
        f.renderer->setSurface(nullptr);
        CallLog::instance().clear();
        MessageLog messages;
        const YCbCrFrame frame {};
        LibraryThread::run("FakeDecoder", [&f, &frame] {
            f.decoder()->deliver(GraphicBuffer::create(1));
            f.decoder()->deliver(&frame);
            f.decoder()->changeParameter(VideoDecoderParameter::ViewportParameter, "(1,2,3,4)");
        });
        QCOMPARE(calls("output"), QStringList());
        QCOMPARE(messages.messages(), QStringList());
        QCOMPARE(GraphicBuffer::alive(), 0);
        f.renderer->setSurface(&f.surface);
        QCOMPARE(FakeVideoOutput::at(2)->viewport(), QRect()); // not kept
    }

    void viewport_isReadAsFourNumbers_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QRect>("viewport"); // null: ignored
        const auto row = [](const char *text, const QRect &viewport) {
            QTest::newRow(*text ? text : "empty") << QByteArray(text) << viewport;
        };
        row("(0,0,64,48)", QRect(0, 0, 64, 48));
        row("(8,16,640,360)", QRect(8, 16, 640, 360));
        row("(-8,-16,640,360)", QRect(-8, -16, 640, 360));
        row("(1,2,-3,-4)", QRect(1, 2, -3, -4));
        row("(1,2,3,4", QRect(1, 2, 3, 4));
        row("(1,2,3,4]", QRect(1, 2, 3, 4));
        row("(1,2,3,4)5", QRect(1, 2, 3, 4));
        row("(1,2,3,4,5)", QRect(1, 2, 3, 4));
        row("(1,2,3,4.5)", QRect(1, 2, 3, 4));
        row("(+1, 2,\t3,4)", QRect(1, 2, 3, 4));
        row("(0,0,2147483647,2147483647)", QRect(0, 0, 2147483647, 2147483647));
        row("(1,2,3,)", QRect());
        row("(1,2,3", QRect());
        row("(1,2,3)", QRect());
        row("(1;2;3;4)", QRect());
        row("(1 ,2,3,4)", QRect());
        row("1,2,3,4", QRect());
        row(" (1,2,3,4)", QRect());
        row("((1,2,3,4))", QRect());
        row("(a,2,3,4)", QRect());
        row("(1,2,3,0x", QRect(1, 2, 3, 0));
        row("%d%s%n", QRect());
        row("", QRect());
    }

    void viewport_isReadAsFourNumbers()
    {
        QFETCH(QByteArray, text);
        QFETCH(QRect, viewport);
        OutputFixture f;
        QVERIFY(f.ready);
        MessageLog messages;
        const auto decoder = f.decoder();
        LibraryThread::run("FakeDecoder", [&] {
            decoder->changeParameter(VideoDecoderParameter::ViewportParameter, text.toStdString());
        });
        if (viewport == QRect()) {
            QCOMPARE(calls("output"), QStringList());
            QCOMPARE(messages.messages(), QStringList());
            return;
        }
        QCOMPARE(calls("output").size(), 1);
        QCOMPARE(f.output->viewport(), viewport);
        QString expected;
        QDebug(&expected) << "Changing viewport - " << viewport.x() << viewport.y()
                          << viewport.width() << viewport.height();
        QCOMPARE(messages.messages(), QStringList(Debug + expected.trimmed()));
    }

    void viewport_whoseFarEdgeIsBeyondAllNumbers_isPassedOn_data()
    {
        QTest::addColumn<QByteArray>("numbers");
        QTest::addColumn<QRect>("viewport");
        const int least = std::numeric_limits<int>::min();
        const int most = std::numeric_limits<int>::max();
        QTest::newRow("to the right")
                << QByteArray("2147483647,0,2147483647,1") << QRect(QPoint(most, 0), QPoint(-3, 0));
        QTest::newRow("below") << QByteArray("0,2147483647,1,2")
                               << QRect(QPoint(0, most), QPoint(0, least));
        QTest::newRow("to the left")
                << QByteArray("-2147483648,0,0,1") << QRect(QPoint(least, 0), QPoint(most, 0));
        QTest::newRow("least size") << QByteArray("0,0,-2147483648,-2147483648")
                                    << QRect(QPoint(0, 0), QPoint(most, most));
    }

    void viewport_whoseFarEdgeIsBeyondAllNumbers_isPassedOn()
    {
        QFETCH(QByteArray, numbers);
        QFETCH(QRect, viewport);
        OutputFixture f;
        QVERIFY(f.ready);
        MessageLog messages;
        f.decoder()->changeParameter(VideoDecoderParameter::ViewportParameter,
                                     '(' + numbers.toStdString() + ')');
        QVERIFY(f.output->viewport() == viewport);
        QCOMPARE(messages.messages(),
                 QStringList(Debug + "Changing viewport -  " + QString(numbers).replace(',', ' ')));
    }

    void viewport_ofAbsurdNumbersDisturbsNothing_data()
    {
        QTest::addColumn<QByteArray>("text");
        for (const char *text : { "(99999999999,0,99999999999,1)",
                                  "(99999999999999999999999,0,1,-99999999999999999999999)" })
            QTest::newRow(text) << QByteArray(text);
        QTest::newRow("long") << '(' + QByteArray(1 << 20, '9') + ",1,2,3)";
        QTest::newRow("null inside") << QByteArray("(1,2\0,3,4)", 10);
    }

    void viewport_ofAbsurdNumbersDisturbsNothing()
    {
        QFETCH(QByteArray, text);
        OutputFixture f;
        QVERIFY(f.ready);
        f.decoder()->changeParameter(VideoDecoderParameter::ViewportParameter, text.toStdString());
        f.decoder()->changeParameter(VideoDecoderParameter::ViewportParameter, "(1,2,3,4)");
        QCOMPARE(f.output->viewport(), QRect(1, 2, 3, 4));
        QVERIFY(calls("output").filter("setViewport").size() <= 2);
        QCOMPARE(f.recorder.errors, QStringList());
    }

    void otherParameters_areIgnored()
    {
        OutputFixture f;
        for (const int parameter : { 0, 2, 3, -1, 65537 })
            f.decoder()->changeParameter(static_cast<VideoDecoderParameter>(parameter),
                                         "(1,2,3,4)");
        QCOMPARE(calls("output"), QStringList());
    }

    void unloading_stopsTheOutputBeforeItIsTold()
    {
        OutputFixture f;
        f.control->flush();
        QVERIFY(f.waitForStatus(Unloaded));
        QStringList order = CallLog::instance().texts();
        QCOMPARE(order.mid(order.size() - 2),
                 (QStringList { "output 1: stop()", "control: statusChanged(1)" }));
        QCOMPARE(CallLog::instance().count("output 1: stop()"), 1);
    }

    void endOfStream_stopsTheOutputAndWarns()
    {
        OutputFixture f;
        MessageLog messages;
        LibraryThread::run("FakeDecoder", [&f] { f.decoder()->endStream(); });
        QCOMPARE(calls("output"), QStringList("output 1: stop()"));
        QCOMPARE(CallLog::instance().threadNames("output"), QStringList("FakeDecoder"));
        QCOMPARE(messages.messages(), QStringList(Eos));
        QCOMPARE(int(f.control->status()), Active);
        f.renderer->setSurface(nullptr);
        CallLog::instance().clear();
        f.decoder()->endStream();
        QCOMPARE(calls("output"), QStringList());
        QCOMPARE(messages.messages(), (QStringList { Eos, Eos }));
    }

    void endOfStream_doesNotWaitForADelivery()
    {
        OutputFixture f;
        QVERIFY(f.ready);
        const auto decoder = f.decoder();
        f.output->bufferGate.close();
        LibraryThread delivery("FakeDecoder", [&] { decoder->deliver(GraphicBuffer::create(1)); });
        QTRY_COMPARE(f.output->bufferGate.waiting(), 1);
        LibraryThread::run("FakeEnd", [&] { decoder->endStream(); }); // returns
        QCOMPARE(calls("output").last(), QString("output 1: stop()"));
        QCOMPARE(f.output->bufferGate.waiting(), 1);
        f.output->bufferGate.open();
    }

    void surface_isNotTakenAwayUnderAnEndOfStream()
    {
        OutputFixture f;
        QVERIFY(f.ready);
        const auto decoder = f.decoder();
        f.output->stopGate.close();
        LibraryThread end("FakeEnd", [&] { decoder->endStream(); });
        QTRY_COMPARE(f.output->stopGate.waiting(), 1);
        bool aliveAfterStop = false;
        const pid_t application = ThreadState::current();
        LibraryThread opener("Opener", [&] {
            int delivered = 0;
            do // until it is detached
                decoder->deliver(GraphicBuffer::create(++delivered));
            while (f.output->buffers().contains(delivered));
            ThreadState::waitUntilAsleep(application); // here, or in join() where there is a fault
            aliveAfterStop = f.output->isAlive();
            f.output->stopGate.open();
        });
        f.renderer->setSurface(nullptr); // waits
        opener.join();
        end.join();
        QVERIFY(aliveAfterStop);
        QVERIFY(!f.output->isAlive());
    }

    void surface_mayChangeWhilePicturesArrive()
    {
        OutputFixture f;
        QVERIFY(f.ready);
        FakeSurface other;
        std::atomic<bool> ends { false };
        std::atomic<int> delivered { 0 };
        const auto decoder = f.decoder();
        const YCbCrFrame frame {};
        LibraryThread pictures("FakeDecoder", [&] {
            for (int number = 0; !ends; ++number) {
                decoder->deliver(GraphicBuffer::create(number));
                decoder->deliver(&frame);
                ++delivered;
            }
        });
        LibraryThread rest("FakeEnd", [&] {
            while (!ends) {
                decoder->endStream();
                decoder->changeParameter(VideoDecoderParameter::ViewportParameter, "(1,2,3,4)");
            }
        });
        for (int round = 0; round < 200; ++round) {
            f.renderer->setSurface(&other);
            f.renderer->setSurface(round % 2 ? nullptr : &f.surface);
            const int seen = delivered;
            while (delivered == seen)
                std::this_thread::yield();
            if (round % 50 == 0)
                CallLog::instance().clear();
        }
        ends = true;
        pictures.join();
        rest.join();
        f.renderer->setSurface(nullptr);
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QCOMPARE(GraphicBuffer::alive(), 0);
    }
};

QTEST_GUILESS_MAIN(TestDecodeSessionOutput)
#include "tst_ocelledecodesessionoutput.moc"

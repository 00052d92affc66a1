// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakegraphicbuffer.h"
#include "fakeplatform.h"
#include "librarythread.h"
#include "memberpointers.h"
#include "ocellevideooutput.h"
#include "ocellevideosession.h"
#include "threadstate.h"

#include <QMutexLocker>
#include <QtTest>

#include <atomic>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

/*! Delivers as the sessions do, and shows what they inherit. */
class Session : public OcelleVideoSession
{
public:
    explicit Session(bool mirror = false)
        : OcelleVideoSession(nullptr)
        , m_mirror(mirror)
    {
    }

    bool mirrorOutput() const override
    {
        const_cast<Session *>(this)->notePosition();
        return m_mirror;
    }

    void deliver(int number)
    {
        QMutexLocker locker(&m_mutex);
        if (m_videoOutput)
            m_videoOutput->onGraphicBuffer(GraphicBuffer::create(number));
        CallLog::instance().add("session", "delivered");
    }

    void stopNow() { stopVideoOutputNow(); }

    OcelleVideoOutput *output()
    {
        QMutexLocker locker(&m_mutex);
        return m_videoOutput;
    }

    bool isRecursive() { return m_mutex.isRecursive(); }

private:
    void notePosition()
    {
        const bool free = m_mutex.tryLock();
        if (free)
            m_mutex.unlock();
        CallLog::instance().add("session", free ? "mirrorOutput() unlocked" : "mirrorOutput()");
    }

    const bool m_mirror;
};

} // namespace

class TestVideoSession : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasParentAndNoOutput()
    {
        QObject parent;
        OcelleVideoSession withParent(&parent);
        QCOMPARE(withParent.parent(), &parent);
        Session session;
        QVERIFY(!session.output());
        QVERIFY(!session.isRecursive());
    }

    void baseSession_doesNotMirror()
    {
        FakePlatform platform;
        OcelleVideoSession session(nullptr);
        QVERIFY(!session.mirrorOutput());
        OcelleVideoOutput output(nullptr);
        session.setVideoOutput(&output);
        QVERIFY(!FakeVideoOutput::at(1)->isMirrored());
        QCOMPARE(CallLog::instance().texts().last(), QString("output 1: setMirrored(0)"));
        session.setVideoOutput(nullptr);
    }

    void setVideoOutput_asksTheOverride_underTheMutex()
    {
        FakePlatform platform;
        Session session(true);
        OcelleVideoOutput output(nullptr);
        CallLog::instance().clear();
        session.setVideoOutput(&output);
        QCOMPARE(session.output(), &output);
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "session: mirrorOutput()", "output 1: setMirrored(1)" }));
    }

    void setVideoOutput_null_detachesAndTouchesNothing()
    {
        FakePlatform platform;
        Session session(true);
        OcelleVideoOutput output(nullptr);
        session.setVideoOutput(&output);
        CallLog::instance().clear();
        session.setVideoOutput(nullptr);
        QVERIFY(!session.output());
        session.setVideoOutput(nullptr);
        session.deliver(1);
        QCOMPARE(CallLog::instance().texts(), QStringList("session: delivered"));
    }

    void setVideoOutput_replacesWithoutTouchingThePrevious()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoOutput first(nullptr);
        OcelleVideoOutput second(nullptr);
        session.setVideoOutput(&first);
        CallLog::instance().clear();
        session.setVideoOutput(&second);
        session.deliver(1);
        QCOMPARE(CallLog::instance().texts("output 1"), QStringList());
        QCOMPARE(FakeVideoOutput::at(2)->buffers(), QVector<int> { 1 });
    }

    void setVideoOutput_waitsForADeliveryOnAnotherThread()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoOutput output(nullptr);
        session.setVideoOutput(&output);
        FakeVideoOutput::at(1)->bufferGate.close();
        LibraryThread delivery("Pictures", [&] { session.deliver(1); });
        QTRY_COMPARE(FakeVideoOutput::at(1)->bufferGate.waiting(), 1);
        std::atomic<pid_t> number { 0 };
        LibraryThread detaching("Detaching", [&] {
            number = ThreadState::current();
            session.setVideoOutput(nullptr);
            CallLog::instance().add("session", "detached");
        });
        QTRY_VERIFY(number > 0);
        ThreadState::waitUntilAsleep(number);
        FakeVideoOutput::at(1)->bufferGate.open();
        delivery.join();
        detaching.join();
        QVERIFY(CallLog::instance().indexOf("session: delivered") <
                CallLog::instance().indexOf("session: detached"));
        QVERIFY(!session.output());
    }

    void deliveries_neverReachAnOutputThatIsGone()
    {
        FakePlatform platform;
        Session session;
        std::atomic<bool> done { false };
        LibraryThread pictures("Pictures", [&] {
            for (int number = 0; !done; ++number)
                session.deliver(number);
        });
        for (int i = 0; i < 200; ++i) {
            OcelleVideoOutput output(nullptr);
            session.setVideoOutput(&output);
            session.setVideoOutput(nullptr);
        }
        done = true;
        pictures.join();
        QCOMPARE(FakeVideoOutput::alive(), 0);
        for (int number = 1; number <= FakeVideoOutput::count(); ++number) {
            const QStringList calls =
                    CallLog::instance()
                            .texts(QString("output %1").arg(number))
                            .filter(QRegularExpression(QString("^output %1:").arg(number)));
            QCOMPARE(calls.last(), QString("output %1: destroyed").arg(number));
        }
    }

    void stopNow_stopsTheOutputThereIs()
    {
        FakePlatform platform;
        Session session;
        session.stopNow();
        QCOMPARE(CallLog::instance().texts(), QStringList());
        OcelleVideoOutput output(nullptr);
        session.setVideoOutput(&output);
        CallLog::instance().clear();
        session.stopNow();
        session.setVideoOutput(nullptr);
        session.stopNow();
        QCOMPARE(CallLog::instance().texts(), QStringList("output 1: stop()"));
    }

    void stopNow_doesNotWaitForADelivery()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoOutput output(nullptr);
        session.setVideoOutput(&output);
        FakeVideoOutput::at(1)->bufferGate.close();
        LibraryThread delivery("Pictures", [&] { session.deliver(1); });
        QTRY_COMPARE(FakeVideoOutput::at(1)->bufferGate.waiting(), 1);
        session.stopNow();
        QCOMPARE(CallLog::instance().texts().last(), QString("output 1: stop()"));
        QCOMPARE(FakeVideoOutput::at(1)->bufferGate.waiting(), 1);
        FakeVideoOutput::at(1)->bufferGate.open();
    }

    void setVideoOutput_waitsForEveryStopNow_data()
    {
        QTest::addColumn<bool>("another");
        QTest::newRow("detached") << false;
        QTest::newRow("replaced") << true;
    }

    void setVideoOutput_waitsForEveryStopNow()
    {
        QFETCH(bool, another);
        FakePlatform platform;
        Session session;
        OcelleVideoOutput output(nullptr);
        OcelleVideoOutput next(nullptr);
        session.setVideoOutput(&output);
        Gate &gate = FakeVideoOutput::at(1)->stopGate;
        gate.close();
        const auto stop = [&] {
            session.stopNow();
            CallLog::instance().add("session", "stopped");
        };
        LibraryThread first("First", stop);
        LibraryThread second("Second", stop);
        while (gate.waiting() < 2)
            std::this_thread::yield();
        std::atomic<pid_t> number { 0 };
        LibraryThread replacing("Replacing", [&] {
            number = ThreadState::current();
            session.setVideoOutput(another ? &next : nullptr);
            CallLog::instance().add("session", "replaced");
        });
        while (session.output() == &output)
            std::this_thread::yield();
        ThreadState::waitUntilAsleep(number);
        const int tooEarly = CallLog::instance().count("session: replaced");
        session.deliver(1); // goes on meanwhile
        gate.open();
        for (LibraryThread *const thread : { &first, &second, &replacing })
            thread->join();
        QCOMPARE(tooEarly, 0);
        QCOMPARE(CallLog::instance().count("session: stopped"), 2);
        QCOMPARE(CallLog::instance().count("session: replaced"), 1);
        QCOMPARE(FakeVideoOutput::at(1)->buffers(), QVector<int>());
        QCOMPARE(FakeVideoOutput::at(2)->buffers(), another ? QVector<int> { 1 } : QVector<int>());
    }

    void metaObject_hasNoSignalsSlotsOrPropertiesOfItsOwn()
    {
        const QMetaObject &meta = OcelleVideoSession::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleVideoSession");
        QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
        QCOMPARE(meta.methodCount(), QObject::staticMetaObject.methodCount());
        QCOMPARE(meta.propertyCount(), QObject::staticMetaObject.propertyCount());
    }

    void mirrorOutput_isTheFirstVirtualOperationAfterQObjects()
    {
        QCOMPARE(slotOf(&OcelleVideoSession::mirrorOutput), slotOf(&QObject::eventFilter) + 6);
    }
};

QTEST_GUILESS_MAIN(TestVideoSession)
#include "tst_ocellevideosession.moc"

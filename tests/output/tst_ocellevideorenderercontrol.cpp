// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakegraphicbuffer.h"
#include "fakeplatform.h"
#include "fakesurface.h"
#include "ocellevideooutput.h"
#include "ocellevideorenderercontrol.h"
#include "ocellevideosession.h"

#include <QMutexLocker>
#include <QtTest>

using namespace Veltra::Ocelle;

namespace {

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
        CallLog::instance().add("session", "mirrorOutput()");
        return m_mirror;
    }

    void deliver(int number)
    {
        QMutexLocker locker(&m_mutex);
        if (m_videoOutput)
            m_videoOutput->onGraphicBuffer(GraphicBuffer::create(number));
    }

    OcelleVideoOutput *output() { return m_videoOutput; }

private:
    const bool m_mirror;
};

} // namespace

class TestVideoRendererControl : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasNeitherSurfaceNorOutput()
    {
        FakePlatform platform;
        Session session;
        QObject parent;
        OcelleVideoRendererControl control(&session, &parent);
        QCOMPARE(control.parent(), &parent);
        QVERIFY(!control.surface());
        QCOMPARE(FakeVideoOutput::count(), 0);
    }

    void firstSurface_makesAnOutputOfTheSession_thenAttachesIt()
    {
        FakePlatform platform;
        Session session(true);
        OcelleVideoRendererControl control(&session, nullptr);
        FakeSurface surface;
        control.setSurface(&surface);
        QCOMPARE(control.surface(), &surface);
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "output 1: created", "output 1: setVideoSurface(surface)",
                                "session: mirrorOutput()", "output 1: setMirrored(1)" }));
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &surface);
        const QList<OcelleVideoOutput *> children = session.findChildren<OcelleVideoOutput *>();
        QCOMPARE(children, QList<OcelleVideoOutput *> { session.output() });
    }

    void attachedOutput_isMirroredAsTheSessionSays_data()
    {
        QTest::addColumn<bool>("mirror");
        QTest::newRow("mirrored") << true;
        QTest::newRow("as it is") << false;
    }

    void attachedOutput_isMirroredAsTheSessionSays()
    {
        QFETCH(bool, mirror);
        FakePlatform platform;
        Session session(mirror);
        OcelleVideoRendererControl control(&session, nullptr);
        FakeSurface surface;
        control.setSurface(&surface);
        QCOMPARE(FakeVideoOutput::at(1)->isMirrored(), mirror);
    }

    void sameSurfaceAgain_changesNothing()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoRendererControl control(&session, nullptr);
        FakeSurface surface;
        control.setSurface(&surface);
        CallLog::instance().clear();
        control.setSurface(&surface);
        QCOMPARE(CallLog::instance().texts(), QStringList());
        QCOMPARE(FakeVideoOutput::count(), 1);
    }

    void nullWithoutSurface_changesNothing()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoRendererControl control(&session, nullptr);
        control.setSurface(nullptr);
        QCOMPARE(CallLog::instance().texts(), QStringList());
    }

    void anotherSurface_isGivenToTheSameOutput_withoutAttachingAgain()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoRendererControl control(&session, nullptr);
        FakeSurface a;
        FakeSurface b;
        control.setSurface(&a);
        OcelleVideoOutput *output = session.output();
        CallLog::instance().clear();
        control.setSurface(&b);
        QCOMPARE(control.surface(), &b);
        QCOMPARE(session.output(), output);
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &b);
        QCOMPARE(CallLog::instance().texts(), QStringList("output 1: setVideoSurface(surface)"));
    }

    void null_detachesTheOutputBeforeItIsDeleted()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoRendererControl control(&session, nullptr);
        FakeSurface surface;
        control.setSurface(&surface);
        bool detached = false;
        CallLog::instance().setObserver([&](const Call &call) {
            if (call.text() == "output 1: destroyed")
                detached = session.output() == nullptr;
        });
        control.setSurface(nullptr);
        QVERIFY(!control.surface());
        QVERIFY(detached);
        QCOMPARE(FakeVideoOutput::alive(), 0);
        session.deliver(1);
        QCOMPARE(FakeVideoOutput::at(1)->buffers(), QVector<int>());
        QCOMPARE(CallLog::instance().count("output 1: stop()"), 0); // the sessions' business
    }

    void surfaceSetWhileTheOutputIsDeleted_getsANewOutput()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoRendererControl control(&session, nullptr);
        FakeSurface a;
        FakeSurface b;
        control.setSurface(&a);
        // An output stops its surface as it goes, which the application may answer with another.
        CallLog::instance().setObserver([&](const Call &call) {
            if (call.text() == "output 1: destroyed")
                control.setSurface(&b);
        });
        control.setSurface(nullptr);
        QCOMPARE(control.surface(), &b);
        QCOMPARE(FakeVideoOutput::alive(), 1);
        QVERIFY(session.output());
        session.deliver(4);
        QCOMPARE(FakeVideoOutput::at(2)->surface(), &b);
        QCOMPARE(FakeVideoOutput::at(2)->buffers(), QVector<int> { 4 });
    }

    void serviceTakenDownWhileTheOutputIsDeleted_isSafe()
    {
        FakePlatform platform;
        auto *session = new Session;
        auto *control = new OcelleVideoRendererControl(session, nullptr);
        FakeSurface surface;
        control->setSurface(&surface);
        CallLog::instance().setObserver([&](const Call &call) {
            if (call.text() == "output 1: destroyed") {
                delete control;
                delete session;
            }
        });
        control->setSurface(nullptr);
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QCOMPARE(CallLog::instance().count("output 1: destroyed"), 1);
    }

    void surfaceAfterNull_getsANewOutput()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoRendererControl control(&session, nullptr);
        FakeSurface surface;
        control.setSurface(&surface);
        control.setSurface(nullptr);
        control.setSurface(&surface);
        QCOMPARE(FakeVideoOutput::count(), 2);
        QCOMPARE(FakeVideoOutput::alive(), 1);
        session.deliver(3);
        QCOMPARE(FakeVideoOutput::at(2)->buffers(), QVector<int> { 3 });
    }

    void destroyedSurface_readsAsNull_andNullThenDoesNothing()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoRendererControl control(&session, nullptr);
        {
            FakeSurface surface;
            control.setSurface(&surface);
        }
        QVERIFY(!control.surface());
        CallLog::instance().clear();
        control.setSurface(nullptr);
        QCOMPARE(CallLog::instance().texts(), QStringList());
        QVERIFY(session.output()); // still there: there was no live surface to replace
    }

    void surfaceAfterADestroyedOne_reusesTheOutput()
    {
        FakePlatform platform;
        Session session;
        OcelleVideoRendererControl control(&session, nullptr);
        {
            FakeSurface surface;
            control.setSurface(&surface);
        }
        FakeSurface next;
        control.setSurface(&next);
        QCOMPARE(FakeVideoOutput::count(), 1);
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &next);
    }

    void destruction_detachesThenDeletesTheOutput()
    {
        FakePlatform platform;
        Session session;
        FakeSurface surface;
        bool detached = false;
        {
            OcelleVideoRendererControl control(&session, nullptr);
            control.setSurface(&surface);
            CallLog::instance().setObserver([&](const Call &call) {
                if (call.text() == "output 1: destroyed")
                    detached = session.output() == nullptr;
            });
        }
        QVERIFY(detached);
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QVERIFY(session.children().isEmpty());
    }

    void destruction_afterTheSurfaceWentAway_deletesTheOutput()
    {
        FakePlatform platform;
        Session session;
        {
            OcelleVideoRendererControl control(&session, nullptr);
            FakeSurface surface;
            control.setSurface(&surface);
        }
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QVERIFY(!session.output());
    }

    void metaObject_hasNoSignalsSlotsOrPropertiesOfItsOwn()
    {
        const QMetaObject &meta = OcelleVideoRendererControl::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleVideoRendererControl");
        QCOMPARE(meta.superClass(), &QVideoRendererControl::staticMetaObject);
        QCOMPARE(meta.methodCount(), QVideoRendererControl::staticMetaObject.methodCount());
        QCOMPARE(meta.propertyCount(), QVideoRendererControl::staticMetaObject.propertyCount());
    }
};

QTEST_GUILESS_MAIN(TestVideoRendererControl)
#include "tst_ocellevideorenderercontrol.moc"

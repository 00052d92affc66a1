// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encoderfixture.h"
#include "testpicture.h"

#include <QtTest>

using namespace Statuses;

class TestEncoder : public QObject
{
    Q_OBJECT
private slots:
    void construction_isUnloaded()
    {
        QObject parent;
        OcelleEncoder encoder(&parent);
        QCOMPARE(encoder.parent(), &parent);
        QCOMPARE(int(encoder.status()), Unloaded);
    }

    void load_takesTheEncoderOnce()
    {
        EncoderFixture f;
        QVERIFY(f.encoder.load(f.fake));
        QCOMPARE(int(f.encoder.status()), Loaded);
        QVERIFY(!f.encoder.load(std::make_shared<FakeVideoEncoder>(2, f.script)));
        QCOMPARE(int(f.encoder.status()), Loaded);
        QCOMPARE(f.statuses, QList<int> { Loaded });
        QCOMPARE(f.calls(), QStringList { "encoder 2: destroyed" }); // the first one stays
    }

    void load_ofNothing_unloadsFromAnyStatus()
    {
        EncoderFixture f;
        QVERIFY(!f.encoder.load(nullptr));
        QCOMPARE(f.statuses, QList<int>()); // it was so already
        f.start(h264Settings());
        QVERIFY(!f.encoder.load(nullptr));
        QCOMPARE(int(f.encoder.status()), Unloaded);
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting, Unloaded }));
        f.fake.reset();
        QCOMPARE(f.calls(), QStringList { "encoder 1: destroyed" });
    }

    void start_isForALoadedEncoderOnly()
    {
        EncoderFixture f;
        QVERIFY(!f.encoder.start(h264Settings()));
        QCOMPARE(int(f.encoder.status()), Unloaded);
        f.start(h264Settings());
        QCOMPARE(int(f.encoder.status()), Starting);
        QVERIFY(!f.encoder.start(h264Settings()));
        QCOMPARE(f.statuses, (QList<int> { Loaded, Starting }));
        QCOMPARE(f.calls(), QStringList()); // untouched until the first picture
    }

    void changeSettings_belowStarting_isRefused()
    {
        EncoderFixture f;
        QVERIFY(!f.encoder.changeSettings(h264Settings(1)));
        QVERIFY(f.encoder.load(f.fake));
        QVERIFY(!f.encoder.changeSettings(h264Settings(1)));
        QVERIFY(f.encoder.start(h264Settings(2)));
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.fake->config().bitrate, 2);
    }

    void changeSettings_whileStarting_isForTheFirstPicture()
    {
        EncoderFixture f;
        f.start(h264Settings(1000));
        QVERIFY(f.encoder.changeSettings(h264Settings(2000)));
        QCOMPARE(f.calls(), QStringList());
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.fake->config().bitrate, 2000);
    }

    void changeSettings_whileActive_changesTheBitRateOnly()
    {
        EncoderFixture f;
        f.start(h264Settings(1000));
        QVERIFY(f.encoder.encode(testPicture()));
        CallLog::instance().clear();
        QVideoEncoderSettings settings = h264Settings(3000);
        settings.setFrameRate(10);
        settings.setCodec("video/vp8");
        settings.setEncodingOption("rotate", 90);
        QVERIFY(f.encoder.changeSettings(settings));
        QCOMPARE(f.calls(), QStringList { "encoder 1: setBitrate(3000)" });
        QCOMPARE(int(f.encoder.status()), Active);
    }

    void flushAndDrain_releaseTheEncoderByWayOfStopping_data()
    {
        QTest::addColumn<bool>("flush");
        QTest::addColumn<bool>("active");
        QTest::newRow("flush, starting") << true << false;
        QTest::newRow("flush, active") << true << true;
        QTest::newRow("drain, starting") << false << false;
        QTest::newRow("drain, active") << false << true;
    }

    void flushAndDrain_releaseTheEncoderByWayOfStopping()
    {
        QFETCH(bool, flush);
        QFETCH(bool, active);
        EncoderFixture f;
        f.start(h264Settings());
        if (active)
            QVERIFY(f.encoder.encode(testPicture()));
        CallLog::instance().clear();
        f.statuses.clear();
        f.fake.reset();
        connect(&f.encoder, &OcelleEncoder::statusChanged, [](QPVEncoder::Status status) {
            CallLog::instance().add("test", QString::number(status));
        });
        flush ? f.encoder.flush() : f.encoder.drain();
        QCOMPARE(f.statuses, (QList<int> { Stopping, Unloaded }));
        QCOMPARE(f.calls(), (QStringList { "test: 4", "encoder 1: destroyed", "test: 1" }));
        QCOMPARE(int(f.encoder.status()), Unloaded);
    }

    void flushAndDrain_doNothingUpToLoaded()
    {
        EncoderFixture f;
        f.encoder.flush();
        f.encoder.drain();
        QVERIFY(f.encoder.load(f.fake));
        f.encoder.flush();
        f.encoder.drain();
        QCOMPARE(int(f.encoder.status()), Loaded);
        QCOMPARE(f.statuses, QList<int> { Loaded });
        QCOMPARE(f.fake.use_count(), 2L);
    }

    void setStatus_tellsOnlyOfChanges()
    {
        EncoderFixture f;
        f.encoder.setStatus(QPVEncoder::ActiveStatus);
        f.encoder.setStatus(QPVEncoder::ActiveStatus);
        f.encoder.setStatus(QPVEncoder::UnloadedStatus);
        QCOMPARE(f.statuses, (QList<int> { Active, Unloaded }));
    }

    void destruction_releasesTheEncoderInAnyStatus()
    {
        for (int steps = 0; steps < 3; ++steps) {
            const auto script = std::make_shared<FakeEncoderScript>();
            const auto fake = std::make_shared<FakeVideoEncoder>(1, script);
            {
                OcelleEncoder encoder(nullptr);
                QVERIFY(encoder.load(fake));
                QVERIFY(steps < 1 || encoder.start(h264Settings()));
                QVERIFY(steps < 2 || encoder.encode(testPicture()));
            }
            QCOMPARE(fake.use_count(), 1L);
        }
    }
};

QTEST_GUILESS_MAIN(TestEncoder)
#include "tst_ocelleencoder.moc"

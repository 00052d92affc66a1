// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleframequeue.h"
#include "testpicture.h"

#include <QtTest>

class TestFrameQueue : public QObject
{
    Q_OBJECT
private slots:
    void emptyQueue_givesAnInvalidFrame()
    {
        OcelleFrameQueue queue;
        QCOMPARE(queue.size(), 0);
        QVERIFY(queue.isEmpty());
        QVERIFY(!queue.takeFirst().isValid());
        QVERIFY(queue.isEmpty());
    }

    void frames_comeOutInTheOrderTheyWentIn_data()
    {
        QTest::addColumn<int>("inFlight");
        QTest::newRow("one") << 1;
        QTest::newRow("two") << 2;
        QTest::newRow("twenty") << 20;
        QTest::newRow("a thousand") << 1000;
    }

    void frames_comeOutInTheOrderTheyWentIn()
    {
        QFETCH(int, inFlight);
        OcelleFrameQueue queue;
        qint64 in = 0;
        qint64 out = 0;
        for (; in < inFlight; ++in)
            queue.append(testPicture(in));
        for (; in < inFlight + 300; ++in) {
            QCOMPARE(queue.takeFirst().startTime(), out++);
            QCOMPARE(queue.size(), inFlight - 1);
            queue.append(testPicture(in));
            QCOMPARE(queue.size(), inFlight);
        }
        while (!queue.isEmpty())
            QCOMPARE(queue.takeFirst().startTime(), out++);
        QCOMPARE(out, in);
    }

    void takenFrame_isNotKept()
    {
        const auto track = std::make_shared<BufferTrack>();
        OcelleFrameQueue queue;
        queue.append(trackedPicture(track));
        queue.append(trackedPicture(track));
        queue.takeFirst();
        QCOMPARE(track->buffers.load(), 1);
        queue.append(trackedPicture(track));
        queue.takeFirst();
        queue.takeFirst();
        QCOMPARE(track->buffers.load(), 0);
    }

    void swap_exchangesWhatIsLeft()
    {
        OcelleFrameQueue one;
        OcelleFrameQueue other;
        for (qint64 time = 0; time < 3; ++time)
            one.append(testPicture(time));
        one.takeFirst();
        one.swap(other);
        QVERIFY(one.isEmpty());
        QCOMPARE(other.size(), 2);
        QCOMPARE(other.takeFirst().startTime(), qint64(1));
    }
};

QTEST_GUILESS_MAIN(TestFrameQueue)
#include "tst_ocelleframequeue.moc"

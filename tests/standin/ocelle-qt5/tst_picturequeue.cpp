// SPDX-License-Identifier: BSD-3-Clause
#include "picturequeue.h"

#include <QtTest>

using namespace Veltra::Ocelle;

namespace {

Picture numbered(int number, bool live)
{
    Picture picture;
    picture.buffer = std::make_shared<GraphicBuffer>();
    picture.buffer->sequence = std::uint64_t(number);
    picture.buffer->live = live;
    return picture;
}

QList<int> drain(PictureQueue &queue)
{
    QList<int> numbers;
    while (!queue.isEmpty())
        numbers.append(int(queue.takeFirst().buffer->sequence));
    return numbers;
}

QList<int> range(int first, int last)
{
    QList<int> numbers;
    for (int i = first; i <= last; ++i)
        numbers.append(i);
    return numbers;
}

} // namespace

class TestPictureQueue : public QObject
{
    Q_OBJECT
private slots:
    void keepsOrder();
    void keepsOrder_whenItGoesRoundItsMemory();
    void keepsOnlyTheNewestLivePicture();
    void dropsTheOldest_whenFull();
    void livePictureReplacesLiveOne_amongOthers();
    void livePictureReplacesTheOldest_whenFullOfOthers();
    void holdsNoPictureItGaveAway();
    void endIsBehindWhatWaits();
    void endDropsALivePicture();
    void endStaysInItsPlace_whenPicturesGo();
};

void TestPictureQueue::keepsOrder()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    for (int i = 1; i <= 5; ++i)
        QVERIFY(!queue.push(numbered(i, false), dropped));
    QCOMPARE(queue.size(), 5);
    QCOMPARE(drain(queue), range(1, 5));
}

void TestPictureQueue::keepsOrder_whenItGoesRoundItsMemory()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    int next = 1;
    for (int i = 0; i < 20; ++i)
        queue.push(numbered(next++, false), dropped);
    for (int expected = 1; expected <= 100; ++expected) {
        QCOMPARE(int(queue.takeFirst().buffer->sequence), expected);
        QVERIFY(!queue.push(numbered(next++, false), dropped));
    }
    QCOMPARE(drain(queue), range(101, 120));
}

void TestPictureQueue::keepsOnlyTheNewestLivePicture()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    QVERIFY(!queue.push(numbered(1, true), dropped));
    QVERIFY(queue.push(numbered(2, true), dropped));
    QCOMPARE(int(dropped->sequence), 1);
    QCOMPARE(drain(queue), range(2, 2));
}

void TestPictureQueue::dropsTheOldest_whenFull()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    for (int i = 1; i <= PictureQueue::Capacity; ++i)
        QVERIFY(!queue.push(numbered(i, false), dropped));
    QVERIFY(queue.push(numbered(33, false), dropped));
    QCOMPARE(int(dropped->sequence), 1);
    QCOMPARE(drain(queue), range(2, 33));
}

void TestPictureQueue::livePictureReplacesLiveOne_amongOthers()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    queue.push(numbered(1, false), dropped);
    queue.push(numbered(2, true), dropped);
    queue.push(numbered(3, false), dropped);
    QVERIFY(queue.push(numbered(4, true), dropped));
    QCOMPARE(int(dropped->sequence), 2);
    QCOMPARE(drain(queue), (QList<int> { 1, 3, 4 }));
}

void TestPictureQueue::livePictureReplacesTheOldest_whenFullOfOthers()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    for (int i = 1; i <= PictureQueue::Capacity; ++i)
        queue.push(numbered(i, false), dropped);
    QVERIFY(queue.push(numbered(33, true), dropped));
    QCOMPARE(int(dropped->sequence), 1);
    QCOMPARE(queue.size(), PictureQueue::Capacity);
}

void TestPictureQueue::endIsBehindWhatWaits()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    queue.push(numbered(1, false), dropped);
    QVERIFY(!queue.end(dropped));
    QVERIFY(queue.hasEnd());
    queue.push(numbered(2, false), dropped);
    QVERIFY(!queue.hasEnd());
    queue.push(numbered(3, false), dropped);
    QVERIFY(!queue.takeFirst().isBehindEnd);
    QVERIFY(queue.takeFirst().isBehindEnd);
    QVERIFY(!queue.takeFirst().isBehindEnd);
    QVERIFY(!queue.end(dropped));
    QVERIFY(queue.isEmpty());
    queue.takeEnd();
    QVERIFY(!queue.hasEnd());
}

void TestPictureQueue::endDropsALivePicture()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    queue.push(numbered(1, false), dropped);
    queue.push(numbered(2, true), dropped);
    queue.push(numbered(3, false), dropped);
    QVERIFY(queue.end(dropped));
    QCOMPARE(int(dropped->sequence), 2);
    QVERIFY(queue.hasEnd());
    QCOMPARE(drain(queue), (QList<int> { 1, 3 }));
}

void TestPictureQueue::endStaysInItsPlace_whenPicturesGo()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    queue.end(dropped);
    queue.push(numbered(1, false), dropped); // the one behind the end, and first to go
    queue.push(numbered(2, true), dropped);
    for (int i = 3; i <= PictureQueue::Capacity; ++i)
        queue.push(numbered(i, false), dropped);
    QVERIFY(queue.push(numbered(33, false), dropped));
    QCOMPARE(int(dropped->sequence), 1);
    QVERIFY(queue.push(numbered(34, true),
                       dropped)); // for the live one, which had the end before it
    QCOMPARE(int(dropped->sequence), 2);
    QVERIFY(queue.takeFirst().isBehindEnd);
    QVERIFY(!queue.takeFirst().isBehindEnd);
    while (!queue.isEmpty())
        queue.takeFirst();
    queue.push(numbered(1, true), dropped);
    queue.end(dropped);
    queue.push(numbered(2, true), dropped);
    QVERIFY(queue.push(numbered(3, true), dropped));
    QVERIFY(queue.takeFirst().isBehindEnd);
    QVERIFY(!queue.hasEnd());
}

void TestPictureQueue::holdsNoPictureItGaveAway()
{
    PictureQueue queue;
    std::shared_ptr<GraphicBuffer> dropped;
    Picture picture = numbered(1, false);
    const std::weak_ptr<GraphicBuffer> watch = picture.buffer;
    queue.push(std::move(picture), dropped);
    queue.takeFirst();
    QVERIFY(watch.expired());
}

QTEST_GUILESS_MAIN(TestPictureQueue)
#include "tst_picturequeue.moc"

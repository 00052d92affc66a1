// SPDX-License-Identifier: BSD-3-Clause
#include "bufferpool.h"

#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

using namespace Veltra::Ocelle;

namespace {

std::atomic<int> s_alive { 0 };

struct Picture
{
    Picture() { ++s_alive; }
    ~Picture() { --s_alive; }
    void release()
    {
        ++releases;
        value = 0;
    }

    int releases = 0;
    int value = 0;
};

using Pool = BufferPool<Picture>;

} // namespace

class TestBufferPool : public QObject
{
    Q_OBJECT
private slots:
    void take_givesEachPictureOnce_untilNoneIsLeft();
    void take_givesThePictureThatCameBackLast();
    void droppedPicture_isReleasedOnceAndFree();
    void picture_staysTaken_whileAWeakPointerIsLeft();
    void pictures_outliveThePoolsOwner();
    void pictures_comeBackFromOtherThreads();
};

void TestBufferPool::take_givesEachPictureOnce_untilNoneIsLeft()
{
    const auto pool = std::make_shared<Pool>();
    std::vector<std::shared_ptr<Picture>> taken;
    for (std::size_t i = 0; i < Pool::Size; ++i) {
        taken.push_back(pool->take());
        QVERIFY(taken.back());
        for (std::size_t j = 0; j < i; ++j)
            QVERIFY(taken[j] != taken[i]);
    }
    QCOMPARE(pool->freeCount(), std::size_t(0));
    QVERIFY(!pool->take());

    taken.pop_back();
    QVERIFY(pool->take());
}

void TestBufferPool::take_givesThePictureThatCameBackLast()
{
    const auto pool = std::make_shared<Pool>();
    std::shared_ptr<Picture> first = pool->take();
    std::shared_ptr<Picture> second = pool->take();
    const Picture *const address = first.get();
    first.reset();
    QCOMPARE(pool->take().get(), address);
    second.reset();
    QVERIFY(pool->take().get() != address);
}

void TestBufferPool::droppedPicture_isReleasedOnceAndFree()
{
    const auto pool = std::make_shared<Pool>();
    std::shared_ptr<Picture> picture = pool->take();
    picture->value = 7;
    std::shared_ptr<Picture> second = picture;
    const Picture *const address = picture.get();
    picture.reset();
    QCOMPARE(second->releases, 0);
    QCOMPARE(second->value, 7);
    second.reset();

    picture = pool->take();
    QCOMPARE(picture.get(), address);
    QCOMPARE(picture->releases, 1);
    QCOMPARE(picture->value, 0);
}

void TestBufferPool::picture_staysTaken_whileAWeakPointerIsLeft()
{
    const auto pool = std::make_shared<Pool>();
    std::shared_ptr<Picture> picture = pool->take();
    std::weak_ptr<Picture> weak = picture;
    const std::size_t free = pool->freeCount();
    picture.reset();
    QVERIFY(weak.expired());
    QCOMPARE(pool->freeCount(), free);
    weak.reset();
    QCOMPARE(pool->freeCount(), free + 1);
}

void TestBufferPool::pictures_outliveThePoolsOwner()
{
    auto pool = std::make_shared<Pool>();
    std::shared_ptr<Picture> first = pool->take();
    std::shared_ptr<Picture> second = pool->take();
    pool.reset();
    QCOMPARE(s_alive.load(), int(Pool::Size));
    first->value = 1;
    first.reset();
    QCOMPARE(s_alive.load(), int(Pool::Size));
    second->value = 2;
    second.reset();
    QCOMPARE(s_alive.load(), 0);
}

void TestBufferPool::pictures_comeBackFromOtherThreads()
{
    const auto pool = std::make_shared<Pool>();
    std::vector<std::thread> threads;
    std::atomic<int> taken { 0 };
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 5000; ++round) {
                std::shared_ptr<Picture> picture = pool->take();
                if (!picture)
                    continue;
                ++taken;
                ++picture->value; // a data race if anyone else had it
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(taken.load(), 4 * 5000); // four at a time never exhaust it
    QCOMPARE(pool->freeCount(), Pool::Size);
}

QTEST_APPLESS_MAIN(TestBufferPool)
#include "tst_bufferpool.moc"

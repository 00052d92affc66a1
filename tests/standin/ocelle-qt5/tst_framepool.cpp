// SPDX-License-Identifier: BSD-3-Clause
#include "framepool.h"

#include <QtTest>

#include <atomic>
#include <cstdlib>
#include <new>
#include <set>
#include <thread>

using namespace Veltra::Ocelle;

namespace {
thread_local int allocations = 0;              // by this thread, of any kind of operator new
constexpr auto TooMuch = std::size_t(1) << 40; // bytes, of which there never are as many
} // namespace

// Counted, so that a test can say that there were none.
void *operator new(std::size_t size)
{
    ++allocations;
    if (void *memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void *operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t &) noexcept
{
    ++allocations;
    if (size >= TooMuch) // sanitizers would end the program
        return nullptr;
    const auto align = std::size_t(alignment);
    return std::aligned_alloc(align, (size + align - 1) / align * align);
}
void operator delete(void *memory) noexcept
{
    std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void *memory, std::align_val_t) noexcept
{
    std::free(memory);
}

class TestFramePool : public QObject
{
    Q_OBJECT
private slots:
    void handsOutNoMoreThanItsCapacity();
    void memoryIsAlignedAndWritable();
    void usesMemoryAgain();
    void allocatesNothing_onceWarm();
    void growsMemory_whenLargerPicturesCome();
    void answersNull_whenThereIsNoMemory();
    void handsOutCleanRecords();
    void livesAsLongAsItsPictures();
    void keepsPicture_thatWeakPointersWatch();
    void takesPicturesBackOnAnyThread();
};

void TestFramePool::handsOutNoMoreThanItsCapacity()
{
    const auto pool = FramePool::create(3);
    std::vector<std::shared_ptr<PooledFrame>> out;
    std::set<std::uint8_t *> memory;
    for (int i = 0; i < 3; ++i) {
        out.push_back(pool->acquire(100));
        QVERIFY(out.back());
        memory.insert(out.back()->memory);
    }
    QCOMPARE(memory.size(), std::size_t(3));
    QVERIFY(!pool->acquire(100));
    out.pop_back();
    QVERIFY(pool->acquire(100));
}

void TestFramePool::memoryIsAlignedAndWritable()
{
    const auto pool = FramePool::create(1);
    const auto frame = pool->acquire(1000);
    QCOMPARE(reinterpret_cast<std::uintptr_t>(frame->memory) % 64, std::uintptr_t(0));
    std::fill_n(frame->memory, 1000, std::uint8_t(7));
    QCOMPARE(int(frame->memory[999]), 7);
}

void TestFramePool::usesMemoryAgain()
{
    const auto pool = FramePool::create(2);
    std::uint8_t *const first = pool->acquire(1000)->memory;
    QCOMPARE(pool->acquire(500)->memory, first);
    QCOMPARE(pool->acquire(1000)->memory, first);
}

void TestFramePool::allocatesNothing_onceWarm()
{
    const auto pool = FramePool::create(4);
    const int beforeWarm = allocations;
    {
        const auto a = pool->acquire(1000);
        const auto b = pool->acquire(1000);
    }
    QVERIFY(allocations > beforeWarm); // that they are counted at all
    const int before = allocations;
    for (int i = 0; i < 100; ++i) {
        const auto a = pool->acquire(1000);
        const auto b = pool->acquire(900);
        const std::shared_ptr<GraphicBuffer> passedOn = a;
    }
    QCOMPARE(allocations, before);
}

void TestFramePool::growsMemory_whenLargerPicturesCome()
{
    const auto pool = FramePool::create(1);
    pool->acquire(10);
    const auto frame = pool->acquire(100000);
    QVERIFY(frame);
    std::fill_n(frame->memory, 100000, std::uint8_t(1));
}

void TestFramePool::answersNull_whenThereIsNoMemory()
{
    const auto pool = FramePool::create(1);
    QVERIFY(!pool->acquire(TooMuch));
    QVERIFY(pool->acquire(100)); // the place is not lost
}

void TestFramePool::handsOutCleanRecords()
{
    const auto pool = FramePool::create(1);
    {
        const auto frame = pool->acquire(10);
        frame->live = true;
        frame->width = 5;
        frame->planeCount = 2;
    }
    const auto frame = pool->acquire(10);
    QCOMPARE(frame->live, false);
    QCOMPARE(frame->width, 0);
    QCOMPARE(frame->planeCount, 0);
}

void TestFramePool::livesAsLongAsItsPictures()
{
    auto pool = FramePool::create(1);
    const std::weak_ptr<FramePool> watch = pool;
    auto frame = pool->acquire(100);
    pool.reset();
    std::fill_n(frame->memory, 100, std::uint8_t(1));
    QVERIFY(!watch.expired());
    frame.reset();
    QVERIFY(watch.expired());
}

void TestFramePool::keepsPicture_thatWeakPointersWatch()
{
    const auto pool = FramePool::create(1);
    auto frame = pool->acquire(100);
    std::weak_ptr<PooledFrame> watch = frame;
    frame.reset();
    QVERIFY(watch.expired());
    QVERIFY(!pool->acquire(100)); // its record is still looked at
    watch.reset();
    QVERIFY(pool->acquire(100));
}

void TestFramePool::takesPicturesBackOnAnyThread()
{
    const auto pool = FramePool::create(2);
    std::atomic<int> got { 0 };
    const auto work = [&] {
        for (int i = 0; i < 5000; ++i) {
            auto frame = pool->acquire(64);
            if (!frame)
                continue;
            ++got;
            std::thread::id *const owner = reinterpret_cast<std::thread::id *>(frame->memory);
            *owner = std::this_thread::get_id();
            if (i % 16 == 0)
                std::this_thread::yield();
            if (*owner != std::this_thread::get_id())
                got = -1000000; // two had the same memory
        }
    };
    std::thread first(work);
    std::thread second(work);
    std::thread third(work);
    first.join();
    second.join();
    third.join();
    QVERIFY(got > 0);
    const auto a = pool->acquire(64);
    const auto b = pool->acquire(64);
    QVERIFY(a && b && !pool->acquire(64));
}

QTEST_GUILESS_MAIN(TestFramePool)
#include "tst_framepool.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include "framepool.h"

#include <new>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::align_val_t MemoryAlignment { 64 }; // bytes, a cache line
constexpr std::size_t RecordSize = 128;            // bytes, room for a shared pointer's record

struct AlignedDelete
{
    void operator()(std::uint8_t *memory) const { ::operator delete[](memory, MemoryAlignment); }
};

} // namespace

struct FramePool::Slot
{
    bool grow(std::size_t wanted)
    {
        if (bytes >= wanted)
            return true;
        memory.reset();
        memory.reset(new (MemoryAlignment, std::nothrow) std::uint8_t[wanted]);
        bytes = memory ? wanted : 0;
        return bool(memory);
    }

    PooledFrame buffer;
    std::unique_ptr<std::uint8_t[], AlignedDelete> memory;
    std::size_t bytes = 0;
    alignas(std::max_align_t) std::uint8_t record[RecordSize];
};

/*!
 * Puts the shared pointer's record into the slot. Its deallocation is the last thing that happens
 * to the record, and so it is what gives the slot back.
 */
template <typename T>
class FramePool::SlotAllocator
{
public:
    using value_type = T;

    SlotAllocator(std::shared_ptr<FramePool> pool, Slot *slot)
        : m_pool(std::move(pool))
        , m_slot(slot)
    {
    }
    template <typename U>
    SlotAllocator(const SlotAllocator<U> &other)
        : m_pool(other.m_pool)
        , m_slot(other.m_slot)
    {
    }

    T *allocate(std::size_t)
    {
        static_assert(sizeof(T) <= RecordSize, "a shared pointer's record fits its slot");
        return reinterpret_cast<T *>(m_slot->record);
    }
    void deallocate(T *, std::size_t) noexcept { m_pool->giveBack(m_slot); }

    template <typename U>
    bool operator==(const SlotAllocator<U> &other) const
    {
        return m_slot == other.m_slot;
    }
    template <typename U>
    bool operator!=(const SlotAllocator<U> &other) const
    {
        return m_slot != other.m_slot;
    }

private:
    template <typename U>
    friend class SlotAllocator;

    std::shared_ptr<FramePool> m_pool;
    Slot *m_slot;
};

std::shared_ptr<FramePool> FramePool::create(int capacity)
{
    return std::shared_ptr<FramePool>(new FramePool(capacity));
}

FramePool::FramePool(int capacity)
    : m_capacity(std::size_t(capacity))
{
    m_slots.reserve(m_capacity);
    m_free.reserve(m_capacity);
}

FramePool::~FramePool() = default;

std::shared_ptr<PooledFrame> FramePool::acquire(std::size_t bytes)
{
    Slot *const slot = takeSlot();
    if (!slot)
        return nullptr;
    if (!slot->grow(bytes)) {
        giveBack(slot);
        return nullptr;
    }
    slot->buffer = PooledFrame();
    slot->buffer.memory = slot->memory.get();
    return std::shared_ptr<PooledFrame>(
            &slot->buffer, [](PooledFrame *) {},
            SlotAllocator<PooledFrame>(shared_from_this(), slot));
}

/*! A slot that nobody uses; null if there is none left. */
FramePool::Slot *FramePool::takeSlot()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_free.empty()) {
        if (m_slots.size() == m_capacity)
            return nullptr;
        m_slots.push_back(std::make_unique<Slot>());
        return m_slots.back().get();
    }
    Slot *const slot = m_free.back();
    m_free.pop_back();
    return slot;
}

void FramePool::giveBack(Slot *slot)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_free.push_back(slot);
}

} // namespace Ocelle
} // namespace Veltra

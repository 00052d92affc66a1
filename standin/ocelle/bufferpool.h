// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

namespace Veltra {
namespace Ocelle {

/*!
 * A fixed number of pictures, handed out as shared pointers and taken back with the last of these.
 *
 * Each picture has room beside it for the shared pointer's control block, so handing out allocates
 * nothing. The most recently returned one is handed out next: with consumers that keep up, two or
 * three are ever touched. \a Picture needs a default constructor and release(), called when
 * the last shared pointer to it is dropped, before it can be handed out again.
 *
 * Threads: any. release() is called on the thread that dropped the picture, with no lock held.
 * Owner:   whoever made it, and every picture that is out: those may outlive their maker.
 * Errors:  take() returns an empty pointer while all pictures are out.
 */
template <class Picture>
class BufferPool : public std::enable_shared_from_this<BufferPool<Picture>>
{
public:
    static constexpr std::size_t Size = 8; // pictures

    BufferPool()
    {
        for (std::size_t i = 0; i < Size; ++i)
            m_free[i] = &m_slots[i];
    }
    BufferPool(const BufferPool &) = delete;
    BufferPool &operator=(const BufferPool &) = delete;

    std::shared_ptr<Picture> take()
    {
        Slot *slot;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_freeCount == 0)
                return {};
            slot = m_free[--m_freeCount];
        }
        slot->pool = this->shared_from_this();
        return std::shared_ptr<Picture>(&slot->picture, Release(), Allocator<Picture>(slot));
    }

    /*! How many pictures could be taken now. */
    std::size_t freeCount() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_freeCount;
    }

private:
    struct Slot
    {
        Picture picture;
        std::shared_ptr<BufferPool> pool; // while it is out
        alignas(std::max_align_t) std::array<std::byte, 64> controlBlock;
    };

    struct Release
    {
        void operator()(Picture *picture) const { picture->release(); }
    };

    // Gives the slot back when the control block goes, which is after the last weak pointer too.
    template <class T>
    struct Allocator
    {
        using value_type = T;

        explicit Allocator(Slot *forSlot)
            : slot(forSlot)
        {
        }
        template <class U>
        Allocator(const Allocator<U> &other)
            : slot(other.slot)
        {
        }

        T *allocate(std::size_t)
        {
            static_assert(sizeof(T) <= sizeof(Slot::controlBlock), "control block does not fit");
            static_assert(alignof(T) <= alignof(std::max_align_t), "control block does not fit");
            return reinterpret_cast<T *>(slot->controlBlock.data());
        }
        void deallocate(T *, std::size_t)
        {
            const std::shared_ptr<BufferPool> pool = std::move(slot->pool); // goes last of all
            pool->putBack(slot);
        }
        template <class U>
        bool operator==(const Allocator<U> &other) const
        {
            return slot == other.slot;
        }
        template <class U>
        bool operator!=(const Allocator<U> &other) const
        {
            return slot != other.slot;
        }

        Slot *slot;
    };

    void putBack(Slot *slot)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_free[m_freeCount++] = slot;
    }

    std::array<Slot, Size> m_slots;

    mutable std::mutex m_mutex; // guards what follows
    std::array<Slot *, Size> m_free;
    std::size_t m_freeCount = Size;
};

} // namespace Ocelle
} // namespace Veltra

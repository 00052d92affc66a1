// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! A picture in memory of a FramePool; whoever acquired it fills in the rest of the record. */
class PooledFrame : public GraphicBuffer
{
public:
    std::uint8_t *memory = nullptr; // 64-byte aligned, at least as long as was asked for
};

/*!
 * At most so many picture buffers, made when first needed and then used again: once they are warm
 * and large enough, acquiring allocates nothing, the shared pointer's own record included.
 *
 * Threads: any.
 * Owner:   its user and every buffer that is out, so that it outlives them all.
 * Errors:  acquire() returns null when all buffers are out or there is no memory.
 */
class FramePool : public std::enable_shared_from_this<FramePool>
{
public:
    static std::shared_ptr<FramePool> create(int capacity);
    ~FramePool();

    std::shared_ptr<PooledFrame> acquire(std::size_t bytes);

private:
    struct Slot;
    template <typename T>
    class SlotAllocator;

    explicit FramePool(int capacity);
    Slot *takeSlot();
    void giveBack(Slot *slot);

    std::mutex m_mutex;                         // guards all below
    std::vector<std::unique_ptr<Slot>> m_slots; // at most m_capacity
    std::vector<Slot *> m_free;
    const std::size_t m_capacity; // buffers
};

} // namespace Ocelle
} // namespace Veltra

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

namespace Veltra {
namespace Ocelle {

/*!
 * The way to a listener: one call at a time, and none once set() has returned.
 *
 * Threads: any. set() waits for a call that is under way on another thread; from within a call it
 *          returns at once, and that call is the last for the old listener.
 * Owner:   the listener is borrowed.
 */
template <class Listener>
class ListenerGate
{
public:
    void set(Listener *listener)
    {
        if (isCalling()) { // this thread has the mutex
            m_listener = listener;
            return;
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_listener = listener;
    }

    /*! Makes \a function(listener), if there is one; not from within such a function. */
    template <class Function>
    void call(Function &&function)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_listener)
            return;
        m_caller.store(std::this_thread::get_id(), std::memory_order_relaxed);
        function(*m_listener);
        m_caller.store(std::thread::id(), std::memory_order_relaxed);
    }

    /*! Whether the calling thread is within call(). */
    bool isCalling() const
    {
        return m_caller.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

private:
    std::mutex m_mutex; // guards m_listener; held during the call on purpose, see set()
    Listener *m_listener = nullptr;
    std::atomic<std::thread::id> m_caller { std::thread::id() }; // only its own thread relies on it
};

} // namespace Ocelle
} // namespace Veltra

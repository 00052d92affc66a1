// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace Veltra {
namespace Ocelle {

/*!
 * Stands for a call to a listener that the calling thread is making under its owner's lock, so
 * that what the listener calls in turn does not wait for that lock.
 *
 * Threads: each knows of its own calls only. On the stack, innermost last.
 */
class ListenerCallScope
{
public:
    /*! The call is made by \a owner, an encoder or a decoder. */
    explicit ListenerCallScope(const void *owner);
    ~ListenerCallScope();
    ListenerCallScope(const ListenerCallScope &) = delete;
    ListenerCallScope &operator=(const ListenerCallScope &) = delete;

    /*! Whether the calling thread is within a call made by \a owner. */
    static bool isActive(const void *owner);

private:
    const void *m_owner;
    const ListenerCallScope *m_outer;
};

} // namespace Ocelle
} // namespace Veltra

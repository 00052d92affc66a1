// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <memory>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * Counts the instances of one codec, of which only so many may run at once.
 *
 * Threads: any.
 */
class InstanceCount
{
public:
    /*! Stands for one running instance; movable. */
    using Token = std::shared_ptr<void>;

    explicit InstanceCount(int most)
        : m_most(most)
        , m_running(std::make_shared<std::atomic<int>>(0))
    {
    }

    /*! Null where that would be one too many. The token may outlive the count. */
    Token take()
    {
        const std::shared_ptr<std::atomic<int>> running = m_running;
        if (running->fetch_add(1) >= m_most) {
            running->fetch_sub(1);
            return {};
        }
        return Token(running.get(), [running](void *) { running->fetch_sub(1); });
    }

    int most() const { return m_most; }

private:
    const int m_most;
    const std::shared_ptr<std::atomic<int>> m_running;
};

} // namespace Ocelle
} // namespace Veltra

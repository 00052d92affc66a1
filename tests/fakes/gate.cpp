// SPDX-License-Identifier: BSD-3-Clause
#include "gate.h"

Gate::~Gate()
{
    open();
}

void Gate::close()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_isOpen = false;
}

void Gate::open()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_isOpen = true;
    m_opened.notify_all();
}

void Gate::pass()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    ++m_waiting;
    m_opened.wait(lock, [this] { return m_isOpen; });
    --m_waiting;
}

int Gate::waiting() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_waiting;
}

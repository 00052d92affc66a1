// SPDX-License-Identifier: BSD-3-Clause
#include "ocellelistenergate.h"

#include "ocelleworkerthread.h"

#include <QMutexLocker>

#include <utility>
#include <vector>

thread_local OcelleListenerGate::Call *OcelleListenerGate::Call::s_innermost = nullptr;

OcelleListenerGate::Call::Call(OcelleListenerGate *gate)
    : m_gate(gate)
    , m_outer(s_innermost)
{
    ++m_gate->m_calls;
    m_isLetIn = m_gate->m_isOpen;
    s_innermost = this;
}

OcelleListenerGate::Call::~Call()
{
    s_innermost = m_outer;
    --m_gate->m_calls;
    if (m_gate->m_isOpen)
        return;
    QMutexLocker locker(&m_gate->m_mutex); // not between close()'s look and its wait
    m_gate->m_ended.wakeAll();
}

int OcelleListenerGate::Call::ofThisThread(const OcelleListenerGate *gate)
{
    int count = 0;
    for (const Call *call = s_innermost; call; call = call->m_outer)
        count += call->m_gate == gate ? 1 : 0;
    return count;
}

OcelleListenerGate::OcelleListenerGate() = default;

OcelleListenerGate::~OcelleListenerGate() = default;

void OcelleListenerGate::keep(std::unique_ptr<OcelleListenerGate> gate)
{
    // Never destroyed, not even when the process ends: codecs may still be there.
    static QMutex *const mutex = new QMutex;
    static auto *const all = new std::vector<std::unique_ptr<OcelleListenerGate>>;
    QMutexLocker locker(mutex);
    all->push_back(std::move(gate));
}

void OcelleListenerGate::close()
{
    const int own = Call::ofThisThread(this);
    m_isOpen = false;
    while (!waitForCalls(own))
        OcelleWorkerThread::serveEvents();
}

/*! Waits a moment at most; true once no more than the \a own calls of this thread are inside. */
bool OcelleListenerGate::waitForCalls(int own)
{
    QMutexLocker locker(&m_mutex);
    if (m_calls > own)
        m_ended.wait(&m_mutex, 1);
    return m_calls <= own;
}

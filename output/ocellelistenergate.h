// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMutex>
#include <QWaitCondition>

#include <atomic>
#include <memory>

/*!
 * Base of what the platform's codecs call: lets calls through to a session for as long as there is
 * one.
 *
 * A codec lives for as long as the platform holds it, and may call its listener from a thread of its
 * own or from its destructor, when nobody can detach it any more. Nothing tells when the last call is
 * over. So a listener, some hundred bytes for each session, stays until the process ends.
 *
 * Threads: any, but for close().
 * Owner:   itself, once kept.
 */
class OcelleListenerGate
{
public:
    virtual ~OcelleListenerGate();
    OcelleListenerGate(const OcelleListenerGate &) = delete;
    OcelleListenerGate &operator=(const OcelleListenerGate &) = delete;

    /*!
     * Application thread. Waits for calls that other threads are in, and serves events meanwhile, as
     * such a call may wait for a slot; calls that come later end at the gate.
     */
    void close();

protected:
    /*! One call of a codec; false where it must not go on to the session, which stays otherwise. */
    class Call
    {
    public:
        explicit Call(OcelleListenerGate *gate);
        ~Call();
        Call(const Call &) = delete;
        Call &operator=(const Call &) = delete;

        explicit operator bool() const { return m_isLetIn; }

        /*! How many of \a gate's calls the current thread is in. */
        static int ofThisThread(const OcelleListenerGate *gate);

    private:
        static thread_local Call *s_innermost;

        OcelleListenerGate *const m_gate;
        Call *const m_outer;
        bool m_isLetIn;
    };

    OcelleListenerGate();

    /*! Keeps \a gate until the process ends. */
    static void keep(std::unique_ptr<OcelleListenerGate> gate);

private:
    bool waitForCalls(int own);

    // Who comes in is counted first and looks whether it is open then; closing does it the other way
    // round.
    std::atomic<bool> m_isOpen { true };
    std::atomic<int> m_calls { 0 }; // that are inside
    QMutex m_mutex;                 // for the wait for these alone
    QWaitCondition m_ended;
};

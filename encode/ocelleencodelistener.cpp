// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodelistener.h"

#include <QMutexLocker>

#include <memory>
#include <vector>

using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::VideoEncoderListener;
using Veltra::Ocelle::VideoEncoderParameter;

/*! One call of an encoder: keeps the target from going meanwhile. */
class OcelleEncodeListener::Call
{
public:
    explicit Call(OcelleEncodeListener *listener)
        : m_listener(listener)
        , m_outer(s_innermost)
    {
        ++m_listener->m_calls;
        m_target = m_listener->m_target;
        s_innermost = this;
    }

    ~Call()
    {
        s_innermost = m_outer;
        --m_listener->m_calls;
        if (m_listener->m_target)
            return;
        QMutexLocker locker(&m_listener->m_mutex); // not between close()'s look and its wait
        m_listener->m_ended.wakeAll();
    }

    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

    explicit operator bool() const { return m_target; }
    VideoEncoderListener *operator->() const { return m_target; }

    /*! How many of \a listener's calls the current thread is in. */
    static int ofThisThread(const OcelleEncodeListener *listener)
    {
        int count = 0;
        for (const Call *call = s_innermost; call; call = call->m_outer)
            count += call->m_listener == listener ? 1 : 0;
        return count;
    }

private:
    static thread_local Call *s_innermost;

    OcelleEncodeListener *const m_listener;
    Call *const m_outer;
    VideoEncoderListener *m_target;
};

thread_local OcelleEncodeListener::Call *OcelleEncodeListener::Call::s_innermost = nullptr;

OcelleEncodeListener::OcelleEncodeListener(VideoEncoderListener *target)
    : m_target(target)
{
}

OcelleEncodeListener *OcelleEncodeListener::create(VideoEncoderListener *target)
{
    // Never destroyed, not even when the process ends: encoders may still be there.
    static QMutex *const mutex = new QMutex;
    static auto *const all = new std::vector<std::unique_ptr<OcelleEncodeListener>>;
    QMutexLocker locker(mutex);
    all->emplace_back(new OcelleEncodeListener(target));
    return all->back().get();
}

void OcelleEncodeListener::close()
{
    const int own = Call::ofThisThread(this);
    m_target = nullptr;
    QMutexLocker locker(&m_mutex);
    while (m_calls > own)
        m_ended.wait(&m_mutex);
}

void OcelleEncodeListener::onEncodedFrame(unsigned char *data, unsigned long size,
                                          unsigned long timestamp, FrameType type)
{
    if (const Call target { this })
        target->onEncodedFrame(data, size, timestamp, type);
}

void OcelleEncodeListener::onEncoderParameterChanged(VideoEncoderParameter parameter,
                                                     const std::string &value)
{
    if (const Call target { this })
        target->onEncoderParameterChanged(parameter, value);
}

void OcelleEncodeListener::onEncoderError(const std::string &message)
{
    if (const Call target { this })
        target->onEncoderError(message);
}

void OcelleEncodeListener::onEncoderEOS()
{
    if (const Call target { this })
        target->onEncoderEOS();
}

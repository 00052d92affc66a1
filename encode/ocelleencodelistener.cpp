// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodelistener.h"

#include <QMutexLocker>

#include <algorithm>
#include <memory>

using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::VideoEncoderListener;
using Veltra::Ocelle::VideoEncoderParameter;

/*! One call of an encoder: keeps the target from going meanwhile. */
class OcelleEncodeListener::Call
{
public:
    explicit Call(OcelleEncodeListener *listener)
        : m_listener(listener)
    {
        QMutexLocker locker(&m_listener->m_mutex);
        m_target = m_listener->m_target;
        if (m_target)
            m_listener->m_callers.push_back(std::this_thread::get_id());
    }

    ~Call()
    {
        if (!m_target)
            return;
        QMutexLocker locker(&m_listener->m_mutex);
        auto &callers = m_listener->m_callers;
        callers.erase(std::find(callers.begin(), callers.end(), std::this_thread::get_id()));
        if (!m_listener->m_target)
            m_listener->m_ended.wakeAll();
    }

    Call(const Call &) = delete;
    Call &operator=(const Call &) = delete;

    explicit operator bool() const { return m_target; }
    VideoEncoderListener *operator->() const { return m_target; }

private:
    OcelleEncodeListener *const m_listener;
    VideoEncoderListener *m_target;
};

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
    const auto isOther = [](std::thread::id caller) {
        return caller != std::this_thread::get_id();
    };
    QMutexLocker locker(&m_mutex);
    m_target = nullptr;
    while (std::any_of(m_callers.begin(), m_callers.end(), isOther))
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

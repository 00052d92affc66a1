// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodelistener.h"

#include <memory>

using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::VideoEncoderListener;
using Veltra::Ocelle::VideoEncoderParameter;

OcelleEncodeListener::OcelleEncodeListener(VideoEncoderListener *target)
    : m_target(target)
{
}

OcelleEncodeListener *OcelleEncodeListener::create(VideoEncoderListener *target)
{
    auto *const listener = new OcelleEncodeListener(target);
    keep(std::unique_ptr<OcelleListenerGate>(listener));
    return listener;
}

void OcelleEncodeListener::onEncodedFrame(unsigned char *data, unsigned long size,
                                          unsigned long timestamp, FrameType type)
{
    if (const Call call { this })
        m_target->onEncodedFrame(data, size, timestamp, type);
}

void OcelleEncodeListener::onEncoderParameterChanged(VideoEncoderParameter parameter,
                                                     const std::string &value)
{
    if (const Call call { this })
        m_target->onEncoderParameterChanged(parameter, value);
}

void OcelleEncodeListener::onEncoderError(const std::string &message)
{
    if (const Call call { this })
        m_target->onEncoderError(message);
}

void OcelleEncodeListener::onEncoderEOS()
{
    if (const Call call { this })
        m_target->onEncoderEOS();
}

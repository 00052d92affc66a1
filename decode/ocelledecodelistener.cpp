// SPDX-License-Identifier: BSD-3-Clause
#include "ocelledecodelistener.h"

#include "ocelledecodesession.h"

#include <utility>

using namespace Veltra::Ocelle;

OcelleDecodeListener::OcelleDecodeListener(OcelleDecodeSession *session)
    : m_session(session)
{
}

OcelleDecodeListener *OcelleDecodeListener::create(OcelleDecodeSession *session)
{
    auto *const listener = new OcelleDecodeListener(session);
    keep(std::unique_ptr<OcelleListenerGate>(listener));
    return listener;
}

void OcelleDecodeListener::onDecodedYCbCrFrame(const YCbCrFrame *frame)
{
    if (const Call call { this })
        m_session->onDecodedYCbCrFrame(frame);
}

void OcelleDecodeListener::onDecodedGraphicBuffer(std::shared_ptr<GraphicBuffer> buffer)
{
    if (const Call call { this })
        m_session->onDecodedGraphicBuffer(std::move(buffer));
}

void OcelleDecodeListener::onDecoderParameterChanged(VideoDecoderParameter parameter,
                                                     const std::string &value)
{
    if (const Call call { this })
        m_session->onDecoderParameterChanged(parameter, value);
}

void OcelleDecodeListener::onDecoderError(const std::string &message)
{
    std::shared_ptr<OcelleDecodeControl> control;
    {
        const Call call { this };
        if (!call)
            return;
        control = m_session->sharedControl();
    }
    OcelleDecodeSession::tellError(control, message);
}

void OcelleDecodeListener::onDecoderEOS()
{
    if (const Call call { this })
        m_session->onDecoderEOS();
}

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocellelistenergate.h"

#include <ocelle/videodecoder.h>

#include <memory>
#include <string>

class OcelleDecodeSession;

/*!
 * What the platform's decoders call, and what hands their calls on to the session for as long as
 * there is one.
 *
 * The session does not wait for an error that is being told: a slot may end the service.
 *
 * Threads: any.
 * Owner:   itself.
 */
class OcelleDecodeListener final : public Veltra::Ocelle::VideoDecoderListener,
                                   public OcelleListenerGate
{
public:
    /*! Hands on to \a session until it is closed. */
    static OcelleDecodeListener *create(OcelleDecodeSession *session);

    void onDecodedYCbCrFrame(const Veltra::Ocelle::YCbCrFrame *frame) override;
    void onDecodedGraphicBuffer(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer) override;
    void onDecoderParameterChanged(Veltra::Ocelle::VideoDecoderParameter parameter,
                                   const std::string &value) override;
    void onDecoderError(const std::string &message) override;
    void onDecoderEOS() override;

private:
    explicit OcelleDecodeListener(OcelleDecodeSession *session);

    OcelleDecodeSession *const m_session; // there while a call is let in
};

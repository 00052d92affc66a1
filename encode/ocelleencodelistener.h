// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "ocellelistenergate.h"

#include <ocelle/videoencoder.h>

#include <string>

/*!
 * What the platform's encoders call, and what hands their calls on to the session for as long as
 * there is one.
 *
 * Threads: any.
 * Owner:   itself.
 */
class OcelleEncodeListener final : public Veltra::Ocelle::VideoEncoderListener,
                                   public OcelleListenerGate
{
public:
    /*! Hands on to \a target until it is closed. */
    static OcelleEncodeListener *create(Veltra::Ocelle::VideoEncoderListener *target);

    void onEncodedFrame(unsigned char *data, unsigned long size, unsigned long timestamp,
                        Veltra::Ocelle::FrameType type) override;
    void onEncoderParameterChanged(Veltra::Ocelle::VideoEncoderParameter parameter,
                                   const std::string &value) override;
    void onEncoderError(const std::string &message) override;
    void onEncoderEOS() override;

private:
    explicit OcelleEncodeListener(Veltra::Ocelle::VideoEncoderListener *target);

    Veltra::Ocelle::VideoEncoderListener *const m_target; // there while a call is let in
};

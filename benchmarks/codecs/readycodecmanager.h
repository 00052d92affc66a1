// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/codecmanager.h>

/*! Offers ready encoders and decoders of H.264. */
class ReadyCodecManager : public Veltra::Ocelle::CodecManager
{
public:
    bool prepare() override { return true; }
    bool isEncoderSupported(Veltra::Ocelle::CodecType type, bool) override;
    bool isDecoderSupported(Veltra::Ocelle::CodecType type, bool) override;
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> createVideoEncoder(Veltra::Ocelle::CodecType,
                                                                     int) override;
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> createVideoDecoder(Veltra::Ocelle::CodecType,
                                                                     int) override;
    std::vector<Veltra::Ocelle::VideoCodecInfo> getVideoCodecs() override;
};

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/codecmanager.h>

#include <atomic>

/*!
 * The double's codecs: H.264, whose pictures come in buffers, and VP8, whose pictures come in memory.
 *
 * Threads: any.
 */
class DoubleCodecManager : public Veltra::Ocelle::CodecManager
{
public:
    static constexpr int MostInstances = 3; // of each

    bool prepare() override;
    bool isEncoderSupported(Veltra::Ocelle::CodecType type, bool flag) override;
    bool isDecoderSupported(Veltra::Ocelle::CodecType type, bool flag) override;
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> createVideoEncoder(Veltra::Ocelle::CodecType type,
                                                                     int flags) override;
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> createVideoDecoder(Veltra::Ocelle::CodecType type,
                                                                     int flags) override;
    std::vector<Veltra::Ocelle::VideoCodecInfo> getVideoCodecs() override;

private:
    std::atomic<int> m_listings { 0 };
};

// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/codecmanager.h>

#include <memory>
#include <mutex>
#include <vector>

namespace Veltra {
namespace Ocelle {

class DecoderFactory;
class EncoderFactory;

/*!
 * The video codecs of this machine.
 *
 * A factory stands for one codec; where several are for the same kind the earlier is preferred.
 * Each is asked once whether it works here, by prepare() or when the codecs are first needed.
 *
 * Threads: any.
 * Errors:  an empty pointer, with one line on standard error, where no codec can be had.
 */
class LocalCodecManager final : public CodecManager
{
public:
    using EncoderFactories = std::vector<std::shared_ptr<EncoderFactory>>;
    using DecoderFactories = std::vector<std::shared_ptr<DecoderFactory>>;

    LocalCodecManager(EncoderFactories encoders, DecoderFactories decoders);
    ~LocalCodecManager() override;

    bool prepare() override;
    /*! The flag says nothing here, as the flags of the other operations. */
    bool isEncoderSupported(CodecType type, bool flag) override;
    bool isDecoderSupported(CodecType type, bool flag) override;
    std::shared_ptr<VideoEncoder> createVideoEncoder(CodecType type, int flags) override;
    std::shared_ptr<VideoDecoder> createVideoDecoder(CodecType type, int flags) override;
    std::vector<VideoCodecInfo> getVideoCodecs() override;

private:
    void dropUnavailable();
    EncoderFactories encodersFor(CodecType type);

    std::once_flag m_dropped;
    EncoderFactories m_encoders; // do not change once m_dropped is set
    DecoderFactories m_decoders;
};

} // namespace Ocelle
} // namespace Veltra

#pragma once

#include <ocelle/codecmanager.h>

#include <memory>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * The video codecs of this machine: none so far.
 *
 * Threads: any.
 */
class LocalCodecManager final : public CodecManager
{
public:
    bool prepare() override;
    bool isEncoderSupported(CodecType type, bool flag) override;
    bool isDecoderSupported(CodecType type, bool flag) override;
    std::shared_ptr<VideoEncoder> createVideoEncoder(CodecType type, int flags) override;
    std::shared_ptr<VideoDecoder> createVideoDecoder(CodecType type, int flags) override;
    std::vector<VideoCodecInfo> getVideoCodecs() override;
};

} // namespace Ocelle
} // namespace Veltra

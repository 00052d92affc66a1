#include "localcodecmanager.h"

namespace Veltra {
namespace Ocelle {

bool LocalCodecManager::prepare()
{
    return true; // nothing to get ready
}

bool LocalCodecManager::isEncoderSupported(CodecType, bool)
{
    return false;
}

bool LocalCodecManager::isDecoderSupported(CodecType, bool)
{
    return false;
}

std::shared_ptr<VideoEncoder> LocalCodecManager::createVideoEncoder(CodecType, int)
{
    return {};
}

std::shared_ptr<VideoDecoder> LocalCodecManager::createVideoDecoder(CodecType, int)
{
    return {};
}

std::vector<VideoCodecInfo> LocalCodecManager::getVideoCodecs()
{
    return {};
}

} // namespace Ocelle
} // namespace Veltra

#include "readyencoder.h"

using Veltra::Ocelle::CodecType;
using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::VideoCodecInfo;
using Veltra::Ocelle::VideoDecoder;
using Veltra::Ocelle::VideoEncoder;
using Veltra::Ocelle::YCbCrFrame;

bool ReadyEncoder::encode(std::shared_ptr<YCbCrFrame> frame, bool keyFrame)
{
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener)
        m_listener->onEncodedFrame(m_unit.data(), m_unit.size(),
                                   static_cast<unsigned long>(frame->timestamp),
                                   keyFrame ? FrameType::Key : FrameType::Delta);
    return true;
}

bool ReadyCodecManager::isEncoderSupported(CodecType type, bool)
{
    return type == CodecType::H264;
}

std::shared_ptr<VideoEncoder> ReadyCodecManager::createVideoEncoder(CodecType, int)
{
    return std::make_shared<ReadyEncoder>();
}

std::shared_ptr<VideoDecoder> ReadyCodecManager::createVideoDecoder(CodecType, int)
{
    return {};
}

std::vector<VideoCodecInfo> ReadyCodecManager::getVideoCodecs()
{
    return {};
}

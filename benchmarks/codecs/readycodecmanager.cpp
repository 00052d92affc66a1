// SPDX-License-Identifier: BSD-3-Clause
#include "readycodecmanager.h"

#include "readydecoder.h"
#include "readyencoder.h"

using Veltra::Ocelle::CodecType;
using Veltra::Ocelle::VideoCodecInfo;
using Veltra::Ocelle::VideoDecoder;
using Veltra::Ocelle::VideoEncoder;

bool ReadyCodecManager::isEncoderSupported(CodecType type, bool)
{
    return type == CodecType::H264;
}

bool ReadyCodecManager::isDecoderSupported(CodecType type, bool)
{
    return type == CodecType::H264;
}

std::shared_ptr<VideoEncoder> ReadyCodecManager::createVideoEncoder(CodecType, int)
{
    return std::make_shared<ReadyEncoder>();
}

std::shared_ptr<VideoDecoder> ReadyCodecManager::createVideoDecoder(CodecType, int)
{
    return std::make_shared<ReadyDecoder>();
}

std::vector<VideoCodecInfo> ReadyCodecManager::getVideoCodecs()
{
    return {};
}

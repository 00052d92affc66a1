// SPDX-License-Identifier: BSD-3-Clause
#include "doublecodecmanager.h"

#include "doubledecoder.h"
#include "doubleencoder.h"
#include "doubleplatform.h"

#include <algorithm>
#include <limits>

using namespace Veltra::Ocelle;

namespace {

bool isListed(CodecType type)
{
    return type == CodecType::H264 || type == CodecType::VP8;
}

bool isFull(int alive, Fault fault)
{
    if (DoublePlatform::has(Fault::CodecsAreLimitless))
        return false;
    const int fewer = DoublePlatform::has(fault) ? 1 : 0;
    return alive >= DoubleCodecManager::MostInstances - fewer;
}

} // namespace

bool DoubleCodecManager::prepare()
{
    return true;
}

bool DoubleCodecManager::isEncoderSupported(CodecType type, bool)
{
    if (isListed(type))
        return !DoublePlatform::has(Fault::EncoderIsDenied);
    return DoublePlatform::has(Fault::OthersArePromised);
}

bool DoubleCodecManager::isDecoderSupported(CodecType type, bool)
{
    return isListed(type) && !DoublePlatform::has(Fault::DecoderIsDenied);
}

std::shared_ptr<VideoEncoder> DoubleCodecManager::createVideoEncoder(CodecType type, int)
{
    if (isFull(DoubleEncoder::alive(), Fault::EncodersAreFewer) || !isListed(type))
        return {};
    return std::make_shared<DoubleEncoder>(type);
}

std::shared_ptr<VideoDecoder> DoubleCodecManager::createVideoDecoder(CodecType type, int)
{
    const bool isGiven = isListed(type) || DoublePlatform::has(Fault::OthersAreGiven);
    if (isFull(DoubleDecoder::alive(), Fault::DecodersAreFewer) || !isGiven)
        return {};
    return std::make_shared<DoubleDecoder>(type);
}

std::vector<VideoCodecInfo> DoubleCodecManager::getVideoCodecs()
{
    std::vector<VideoCodecInfo> codecs;
    const bool isLimitless = DoublePlatform::has(Fault::CodecsAreLimitless);
    const int instances = isLimitless ? std::numeric_limits<int>::max() : MostInstances;
    for (const CodecType type : { CodecType::H264, CodecType::VP8 }) {
        const std::string name = type == CodecType::H264 ? "h264" : "vp8";
        codecs.push_back({ type, true, name + ".encoder", 0, instances, true });
        if (!DoublePlatform::has(Fault::DecodersAreMissing))
            codecs.push_back({ type, false, name + ".decoder", 0, instances, true });
        if (isLimitless) {
            codecs.push_back({ type, true, name + ".other.encoder", 0, instances, true });
            codecs.push_back({ type, false, name + ".other.decoder", 0, instances, true });
        }
    }
    const int listing = m_listings++;
    if (DoublePlatform::has(Fault::CodecsShuffle) && listing % 2 == 1)
        std::reverse(codecs.begin(), codecs.end());
    if (DoublePlatform::has(Fault::CodecIsNameless))
        codecs.push_back({ CodecType(5), true, "", 0, 1, false });
    return codecs;
}

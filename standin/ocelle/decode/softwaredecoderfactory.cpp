// SPDX-License-Identifier: BSD-3-Clause
#include "softwaredecoderfactory.h"

#include "localvideodecoder.h"

#include <algorithm>
#include <thread>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace Veltra {
namespace Ocelle {

namespace {
// More at once could not keep up with anything, and each keeps tens of megabytes.
int mostInstances()
{
    constexpr int perProcessor = 8;
    return perProcessor * std::max(1, int(std::thread::hardware_concurrency()));
}
} // namespace

SoftwareDecoderFactory::SoftwareDecoderFactory(CodecType type, const std::string &name,
                                               std::string avName, DecoderSettings settings)
    : DecoderFactory({ type, false, "software." + name + ".decoder", 0, mostInstances(), false })
    , m_avName(std::move(avName))
    , m_settings(settings)
{
}

bool SoftwareDecoderFactory::isAvailable()
{
    return avcodec_find_decoder_by_name(m_avName.c_str()) != nullptr;
}

std::shared_ptr<VideoDecoder> SoftwareDecoderFactory::create(std::string *error)
{
    InstanceCount::Token token = instances().take();
    if (!token) {
        *error = "all " + std::to_string(instances().most()) + " instances are in use";
        return {};
    }
    return std::make_shared<LocalVideoDecoder>(info().type, info().codecName,
                                               AvDecoderKind { m_avName, {}, false }, m_settings,
                                               std::move(token));
}

std::vector<std::shared_ptr<DecoderFactory>> SoftwareDecoderFactory::all(DecoderSettings settings)
{
    const auto make = [settings](CodecType type, const char *name, const char *avName) {
        return std::make_shared<SoftwareDecoderFactory>(type, name, avName, settings);
    };
    return { make(CodecType::H264, "h264", "h264"), make(CodecType::H265, "h265", "hevc"),
             make(CodecType::VP8, "vp8", "vp8"), make(CodecType::VP9, "vp9", "vp9") };
}

} // namespace Ocelle
} // namespace Veltra

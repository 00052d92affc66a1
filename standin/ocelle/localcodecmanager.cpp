// SPDX-License-Identifier: BSD-3-Clause
#include "localcodecmanager.h"

#include "decode/decoderfactory.h"
#include "encode/encodersettings.h"
#include "encode/localvideoencoder.h"
#include "log.h"

#include <ocelle/videodecoder.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {
template <class Factories>
void removeUnavailable(Factories *factories)
{
    factories->erase(std::remove_if(factories->begin(), factories->end(),
                                    [](const auto &factory) { return !factory->isAvailable(); }),
                     factories->end());
}

bool hasFreeInstance(const std::shared_ptr<EncoderFactory> &factory)
{
    return factory->instances().take() != nullptr;
}
} // namespace

LocalCodecManager::LocalCodecManager(EncoderFactories encoders, DecoderFactories decoders)
    : m_encoders(std::move(encoders))
    , m_decoders(std::move(decoders))
{
}

LocalCodecManager::~LocalCodecManager() = default;

bool LocalCodecManager::prepare()
{
    dropUnavailable();
    return true;
}

void LocalCodecManager::dropUnavailable()
{
    std::call_once(m_dropped, [this] {
        removeUnavailable(&m_encoders);
        removeUnavailable(&m_decoders);
    });
}

LocalCodecManager::EncoderFactories LocalCodecManager::encodersFor(CodecType type)
{
    dropUnavailable();
    EncoderFactories factories;
    std::copy_if(m_encoders.begin(), m_encoders.end(), std::back_inserter(factories),
                 [type](const auto &factory) { return factory->info().type == type; });
    return factories;
}

bool LocalCodecManager::isEncoderSupported(CodecType type, bool)
{
    return !encodersFor(type).empty();
}

bool LocalCodecManager::isDecoderSupported(CodecType type, bool)
{
    dropUnavailable();
    return std::any_of(m_decoders.begin(), m_decoders.end(),
                       [type](const auto &factory) { return factory->info().type == type; });
}

std::shared_ptr<VideoEncoder> LocalCodecManager::createVideoEncoder(CodecType type, int)
{
    EncoderFactories factories = encodersFor(type);
    if (factories.empty()) {
        printLine(std::string("no encoder for ") + codecName(type));
        return {};
    }
    if (std::none_of(factories.begin(), factories.end(), hasFreeInstance)) {
        printLine(std::string("all encoders for ") + codecName(type) + " are in use");
        return {};
    }
    return std::make_shared<LocalVideoEncoder>(type, std::move(factories));
}

std::shared_ptr<VideoDecoder> LocalCodecManager::createVideoDecoder(CodecType type, int)
{
    dropUnavailable();
    std::string failures; // of the ones before
    for (const std::shared_ptr<DecoderFactory> &factory : m_decoders) {
        if (factory->info().type != type)
            continue;
        const std::string &name = factory->info().codecName;
        std::string error;
        std::shared_ptr<VideoDecoder> decoder = factory->create(&error);
        if (decoder) {
            if (!failures.empty())
                printLine("taking " + name + ", since " + failures);
            return decoder;
        }
        failures += (failures.empty() ? "" : ", ") + name + " does not open (" + error + ")";
    }
    printLine(std::string("no decoder for ") + codecName(type) +
              (failures.empty() ? "" : ": " + failures));
    return {};
}

std::vector<VideoCodecInfo> LocalCodecManager::getVideoCodecs()
{
    dropUnavailable();
    std::vector<VideoCodecInfo> codecs;
    for (const auto &factory : m_encoders)
        codecs.push_back(factory->info());
    for (const auto &factory : m_decoders)
        codecs.push_back(factory->info());
    return codecs;
}

} // namespace Ocelle
} // namespace Veltra

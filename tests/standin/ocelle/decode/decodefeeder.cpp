// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"

#include <localcodecmanager.h>
#include <softwaredecoderfactory.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

using namespace Veltra::Ocelle;

DecodeFeeder::DecodeFeeder(std::shared_ptr<VideoDecoder> decoder)
    : m_decoder(std::move(decoder))
{
}

DecodeFeeder::~DecodeFeeder()
{
    for (const auto &block : m_blocks) {
        if (block->releases == 0)
            std::free(block->memory);
    }
}

bool DecodeFeeder::decode(const Bytes &data, std::uint64_t timestamp)
{
    m_blocks.push_back(std::make_unique<Block>());
    Block &block = *m_blocks.back();
    block.memory = std::malloc(data.size()); // exactly that: a byte more read is found
    if (!data.empty())
        std::memcpy(block.memory, data.data(), data.size());
    return m_decoder->decode(static_cast<unsigned char *>(block.memory), data.size(), timestamp,
                             FrameType::Delta, release, &block);
}

void DecodeFeeder::release(void *block)
{
    auto &released = *static_cast<Block *>(block);
    if (released.releases++ == 0)
        std::free(released.memory);
}

bool DecodeFeeder::isAllReleasedOnce() const
{
    return std::all_of(m_blocks.begin(), m_blocks.end(),
                       [](const auto &block) { return block->releases == 1; });
}

std::shared_ptr<VideoDecoder> softwareDecoder(const DecoderWish &wish,
                                              VideoDecoderListener *listener)
{
    DecoderSettings settings;
    settings.output = wish.usesFrames ? DecoderOutput::YCbCr : DecoderOutput::Buffer;
    settings.threads = wish.hasDelay ? DecoderThreads::Throughput : DecoderThreads::LowDelay;
    LocalCodecManager manager({}, SoftwareDecoderFactory::all(settings));
    std::shared_ptr<VideoDecoder> decoder = manager.createVideoDecoder(wish.type, 0);
    if (!decoder)
        return {};
    decoder->lockAndSetListener(listener);
    if (!decoder->initialize(decoderConfig(wish.type, wish.width, wish.height)))
        return {};
    return decoder;
}

DecoderConfig decoderConfig(CodecType type, int width, int height)
{
    return { type, width, height, 30, { 0, 0 } };
}

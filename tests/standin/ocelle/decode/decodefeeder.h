// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "mediaunits.h"

#include <ocelle/videodecoder.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/*!
 * Passes compressed frames to a decoder in blocks of their own, as the back end does, and counts
 * how often each block is given back.
 *
 * Threads: one.
 */
class DecodeFeeder
{
public:
    explicit DecodeFeeder(std::shared_ptr<Veltra::Ocelle::VideoDecoder> decoder);
    ~DecodeFeeder();

    bool decode(const Bytes &data, std::uint64_t timestamp = 0);

    int passed() const { return int(m_blocks.size()); }
    /*! Whether each block passed so far came back once. */
    bool isAllReleasedOnce() const;

private:
    struct Block
    {
        void *memory;
        int releases = 0;
    };
    static void release(void *block);

    const std::shared_ptr<Veltra::Ocelle::VideoDecoder> m_decoder;
    std::vector<std::unique_ptr<Block>> m_blocks;
};

/*!
 * A decoder of this machine that runs on the processor and reports to \a listener, configured;
 * null where that fails.
 */
struct DecoderWish
{
    Veltra::Ocelle::CodecType type;
    bool usesFrames = false; // onDecodedYCbCrFrame()
    bool hasDelay = false;   // threads for throughput
    int width = 0;
    int height = 0;
};
std::shared_ptr<Veltra::Ocelle::VideoDecoder>
softwareDecoder(const DecoderWish &wish, Veltra::Ocelle::VideoDecoderListener *listener);

/*! What to configure one with. */
Veltra::Ocelle::DecoderConfig decoderConfig(Veltra::Ocelle::CodecType type, int width = 0,
                                            int height = 0);
